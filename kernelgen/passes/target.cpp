#include "passes/target.h"

#include <algorithm>
#include <stdexcept>

namespace kernelgen {

namespace {

// The portable layer emulates the 128-bit vectors of the sse2 level with
// the same operations, so it runs the same graphs. The avx512 level runs
// the avx2 level's vectors, and two of them in one register, with twice
// the registers.
const std::vector<Target>& targets()
{
    static const std::vector<Target> all = {
        {"sse2", {Kind::V4F32, Kind::V2F64}, 16, true},
        {"avx2", {Kind::V4F32, Kind::V2F64, Kind::V8F32, Kind::V4F64}, 16, true},
        {"avx512", {Kind::V4F32, Kind::V2F64, Kind::V8F32, Kind::V4F64, Kind::V16F32, Kind::V8F64}, 32, true},
        {"portable", {Kind::V4F32, Kind::V2F64}, 16, false},
    };
    return all;
}

} // namespace

bool Target::has(Kind kind) const
{
    return !isVector(kind) || std::find(vectorKinds.begin(), vectorKinds.end(), kind) != vectorKinds.end();
}

Target targetNamed(const std::string& name)
{
    for (const Target& t : targets())
        if (t.name == name)
            return t;
    throw std::invalid_argument("no target named '" + name + "'");
}

std::vector<std::string> targetNames()
{
    std::vector<std::string> names;
    for (const Target& t : targets())
        names.push_back(t.name);
    return names;
}

} // namespace kernelgen
