// The generator's kernel families as its interpreter and pass tests walk
// them, each kernel's graph run on bytes by the interpreter.
#pragma once

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "core/interpret.h"
#include "families/dft_complex.h"
#include "families/dft_real.h"
#include "families/hartley.h"

namespace tvktest {

using Bytes = std::vector<std::byte>;

// A family: its size files, whose exported names begin with one of
// `prefixes`.
struct Family {
    const char* name;
    std::vector<std::string> prefixes;
    std::vector<int> (*sizes)(kernelgen::Precision);
    kernelgen::FramedKernelFile (*sizeFile)(kernelgen::Precision, int);
};

inline std::vector<int> realSizesOf(kernelgen::Precision) { return kernelgen::realSizes(); }

inline const Family kFamilies[] = {
    {"Complex", {"tvkgDFTFwd_CToC_", "tvkgDFTInv_CToC_"}, kernelgen::complexSizes, kernelgen::complexSizeFile},
    {"RealForward", {"tvkgDFTFwd_RTo"}, realSizesOf, kernelgen::realForwardSizeFile},
    {"RealInverse", {"tvkgDFTInv_CCSToR_", "tvkgDFTInv_PackToR_", "tvkgDFTInv_PermToR_"}, realSizesOf,
     kernelgen::realInverseSizeFile},
    {"Hartley", {"tvkgHartley_"}, realSizesOf, kernelgen::hartleySizeFile},
};

inline void PrintTo(const Family& family, std::ostream* out) { *out << family.name; }

// The bytes a graph's loads (stores) reach: one past its last number.
inline size_t reach(const kernelgen::Graph& g, bool stores)
{
    using namespace kernelgen;
    size_t end = 0;
    for (const Node& n : g.nodes())
        if (stores ? isStore(n.op) : isLoad(n.op)) {
            const int lanes = n.op == Op::Load || n.op == Op::Store ? laneCount(n.kind) : 2;
            const int last = std::max(n.offset + (n.offset2 >= 0 ? lanes / 2 : lanes), n.offset2 + lanes / 2);
            end = std::max(end, static_cast<size_t>(last) * (isSingle(n.kind) ? 4 : 8));
        }
    return end;
}

// The bytes the graph stores, from `src`, at the factor `scale`.
inline Bytes run(const kernelgen::Graph& g, const Bytes& src, double scale)
{
    Bytes dst(reach(g, true));
    kernelgen::interpret(g, src, dst, scale);
    return dst;
}

} // namespace tvktest
