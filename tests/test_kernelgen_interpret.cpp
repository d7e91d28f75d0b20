// The graph interpreter, held to the compiled kernels: run on the inputs of
// the digest program, it reproduces the committed digests of the complex,
// real and Hartley kernels from the generator's graphs alone, so that it
// can judge the generator's passes (test_kernelgen_passes.cpp) bit for bit.
#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "digest_inputs.h"
#include "kernelgen_families.h"
#include "scale.h"

using namespace kernelgen;
using namespace tvktest;

namespace {

size_t numberBytes(const FramedKernel& k) { return isSingle(k.scaleKind) ? 4 : 8; }

// The graph an entry point runs: its own, or the body it shares.
const Graph& bodyOf(const FramedKernelFile& file, const FramedKernel& k)
{
    if (k.sameBodyAs.empty())
        return k.graph;
    for (const FramedKernel& other : file.kernels)
        if (other.structName == k.sameBodyAs)
            return other.graph;
    throw std::logic_error(k.exportedName + " shares a body that is not in its file");
}

// The factor the call frame hands a kernel's body under a flag, in the
// kernel's scale type.
double frameScale(const FramedKernel& k, int flag)
{
    using tvkgen::ScaleRow;
    const ScaleRow row = k.scaleRow == "Forward"   ? ScaleRow::Forward
                         : k.scaleRow == "Inverse" ? ScaleRow::Inverse
                                                   : ScaleRow::SelfInverse;
    const Exact factor = k.scaleFactors.at(tvkgen::scaleIndex(flag, row));
    return isSingle(k.scaleKind) ? roundToFloat(factor) : roundToDouble(factor);
}

// "kernel path" -> hash, as committed.
const std::map<std::string, std::string>& committedDigests()
{
    static const auto lines = readDigests(TVKGEN_COMMITTED_DIGESTS);
    return lines;
}

class Digests : public testing::TestWithParam<Family> {};

// Every kernel of the family in both types, on 16 inputs under each flag:
// the hash of its outputs is the committed one of all three paths (the
// aligned body, the unaligned twin and the in-place call give one result),
// and no committed kernel of the family is left out. The DCT-IV plans and
// the Walsh-Hadamard kernels run hand-written code around their pieces and
// are not graphs.
TEST_P(Digests, AreThoseOfTheCompiledKernels)
{
    const Family& family = GetParam();
    constexpr size_t kMostInputs = 130; // 64 complex numbers, or CCS of 64 with room
    int kernels = 0;
    for (Precision precision : {Precision::Single, Precision::Double}) {
        const size_t bytes = precision == Precision::Single ? 4 : 8;
        std::vector<Bytes> inputs; // the digest program's
        for (unsigned seed = 0; seed < 16; ++seed)
            fixedInput(bytes == 8, kMostInputs, inputs.emplace_back(kMostInputs * bytes).data(), seed);
        for (int size : family.sizes(precision)) {
            const FramedKernelFile file = family.sizeFile(precision, size);
            for (const FramedKernel& k : file.kernels) {
                ASSERT_EQ(numberBytes(k), bytes) << k.exportedName;
                uint64_t hash = kFnvBasis;
                for (const Bytes& src : inputs)
                    for (int flag : {1, 2, 4, 8}) {
                        const Bytes out = run(bodyOf(file, k), src, frameScale(k, flag));
                        hash = fnv1a(out.data(), out.size(), hash);
                    }
                for (const char* path : {" aligned", " unaligned", " inplace"}) {
                    const auto committed = committedDigests().find(k.exportedName + path);
                    ASSERT_NE(committed, committedDigests().end()) << k.exportedName << path;
                    EXPECT_EQ(hexDigest(hash), committed->second) << k.exportedName << path;
                }
                ++kernels;
            }
        }
    }
    int committed = 0;
    for (const auto& [key, hash] : committedDigests())
        for (const std::string& prefix : family.prefixes)
            committed += key.starts_with(prefix);
    EXPECT_EQ(committed, 3 * kernels);
}

INSTANTIATE_TEST_SUITE_P(Families, Digests, testing::ValuesIn(kFamilies),
                         [](const testing::TestParamInfo<Family>& info) { return std::string(info.param.name); });

} // namespace
