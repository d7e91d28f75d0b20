// The graph interpreter, held to the compiled kernels: run on the inputs of
// the digest program, it reproduces the committed digests of the complex,
// real and Hartley kernels from the generator's graphs alone. Then it
// judges the generator's passes bit for bit on any host, whatever
// processor level the pass serves.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "core/interpret.h"
#include "digest_inputs.h"
#include "families/dft_complex.h"
#include "families/dft_real.h"
#include "families/hartley.h"
#include "passes/lower.h"
#include "scale.h"

using namespace kernelgen;

namespace {

using Bytes = std::vector<std::byte>;

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

Bytes run(const Graph& g, const Bytes& src, size_t outBytes, double scale)
{
    Bytes dst(outBytes);
    interpret(g, src, dst, scale);
    return dst;
}

// ---- The digests ---------------------------------------------------------

// The digest program's inputs, as bytes.
Bytes digestInput(size_t bytesPerNumber, size_t count, unsigned seed)
{
    Bytes out(count * bytesPerNumber);
    tvktest::fixedInput(bytesPerNumber == 8, count, out.data(), seed);
    return out;
}

// "kernel path" -> hash, as committed.
const std::map<std::string, std::string>& committedDigests()
{
    static const std::map<std::string, std::string> lines = [] {
        std::ifstream file(TVKGEN_COMMITTED_DIGESTS);
        if (!file)
            throw std::runtime_error("cannot read " TVKGEN_COMMITTED_DIGESTS);
        std::map<std::string, std::string> read;
        std::string kernel, path, hash;
        while (file >> kernel >> path >> hash)
            read[kernel + " " + path] = hash;
        return read;
    }();
    return lines;
}

// A family as the digest program meets it: its exported names begin with
// one of `prefixes`; each kernel writes a count of numbers fixed by its
// size and layout.
struct Family {
    const char* name;
    std::vector<std::string> prefixes;
    std::function<std::vector<int>(bool single)> sizes;
    std::function<FramedKernelFile(bool single, int size)> sizeFile;
    std::function<size_t(const FramedKernel& k, int size)> outputs;
};

std::vector<int> complexSizesOf(bool single) { return complexSizes(single ? Precision::Single : Precision::Double); }
FramedKernelFile complexFile(bool single, int size)
{
    return complexSizeFile(single ? Precision::Single : Precision::Double, size);
}
std::vector<int> realSizesOf(bool) { return realSizes(); }

template <FramedKernelFile (*sizeFile)(Precision, int)>
FramedKernelFile realFile(bool single, int size)
{
    return sizeFile(single ? Precision::Single : Precision::Double, size);
}

size_t sizeOutputs(const FramedKernel&, int n) { return n; }

const Family kFamilies[] = {
    {"Complex", {"tvkgDFTFwd_CToC_", "tvkgDFTInv_CToC_"}, complexSizesOf, complexFile,
     [](const FramedKernel&, int n) { return size_t(2 * n); }},
    // CCS holds bins 0 to n/2, both parts each; Pack and Perm n cells.
    {"RealForward", {"tvkgDFTFwd_RTo"}, realSizesOf, realFile<realForwardSizeFile>,
     [](const FramedKernel& k, int n) { return size_t(k.structName == "ToCCS" ? 2 * (n / 2 + 1) : n); }},
    {"RealInverse", {"tvkgDFTInv_CCSToR_", "tvkgDFTInv_PackToR_", "tvkgDFTInv_PermToR_"}, realSizesOf,
     realFile<realInverseSizeFile>, sizeOutputs},
    {"Hartley", {"tvkgHartley_"}, realSizesOf, realFile<hartleySizeFile>, sizeOutputs},
};

void PrintTo(const Family& family, std::ostream* out) { *out << family.name; }

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
    for (bool single : {true, false}) {
        const size_t bytes = single ? 4 : 8;
        std::vector<Bytes> inputs;
        for (unsigned seed = 0; seed < 16; ++seed)
            inputs.push_back(digestInput(bytes, kMostInputs, seed));
        for (int size : family.sizes(single)) {
            const FramedKernelFile file = family.sizeFile(single, size);
            for (const FramedKernel& k : file.kernels) {
                ASSERT_EQ(numberBytes(k), bytes) << k.exportedName;
                const size_t outBytes = family.outputs(k, size) * bytes;
                uint64_t hash = tvktest::kFnvBasis;
                for (const Bytes& src : inputs)
                    for (int flag : {1, 2, 4, 8}) {
                        const Bytes out = run(bodyOf(file, k), src, outBytes, frameScale(k, flag));
                        hash = tvktest::fnv1a(out.data(), out.size(), hash);
                    }
                char hex[17];
                std::snprintf(hex, sizeof hex, "%016llx", static_cast<unsigned long long>(hash));
                for (const char* path : {" aligned", " unaligned", " inplace"}) {
                    const auto committed = committedDigests().find(k.exportedName + path);
                    ASSERT_NE(committed, committedDigests().end()) << k.exportedName << path;
                    EXPECT_EQ(hex, committed->second) << k.exportedName << path;
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

// ---- The passes ----------------------------------------------------------

Bytes randomNumbers(size_t bytesPerNumber, size_t count, std::mt19937& random)
{
    std::uniform_real_distribution<double> uniform(-1, 1);
    Bytes out(count * bytesPerNumber);
    for (size_t i = 0; i < count; ++i) {
        const double v = uniform(random);
        const float f = static_cast<float>(v);
        std::memcpy(out.data() + i * bytesPerNumber, bytesPerNumber == 8 ? static_cast<const void*>(&v) : &f,
                    bytesPerNumber);
    }
    return out;
}

} // namespace

namespace kernelgen {
void PrintTo(Precision type, std::ostream* out) { *out << (type == Precision::Single ? "32fc" : "64fc"); }
} // namespace kernelgen

namespace {

class Passes : public testing::TestWithParam<std::tuple<std::string, Precision>> {};

// Every target's passes (the pairing into 256-bit operations where it has
// them, the scheduling) keep the bytes of each complex kernel's graph on
// random inputs under each scale factor, and its operation counts: a
// paired operation does the work of two. Where the target pairs, the
// kernels of size 64 do.
TEST_P(Passes, KeepEveryBitAndCountOfEveryKernel)
{
    const Target target = targetNamed(std::get<0>(GetParam()));
    std::mt19937 random(23);
    for (int size : complexSizes(std::get<1>(GetParam()))) {
        for (const FramedKernel& k : complexSizeFile(std::get<1>(GetParam()), size).kernels) {
            const Graph after = lower(k.graph, target);
            bool paired = false;
            for (const Node& n : after.nodes())
                paired = paired || isWide(n.kind);
            if (!target.pairsSections() || size == 64) {
                EXPECT_EQ(paired, target.pairsSections()) << k.exportedName;
            }
            const OpCounts was = k.graph.countOps(), is = after.countOps();
            EXPECT_TRUE(is.addSub == was.addSub && is.mul == was.mul && is.scaleMul == was.scaleMul &&
                        is.signFlips == was.signFlips && is.loads == was.loads && is.stores == was.stores)
                << k.exportedName;
            const size_t bytes = numberBytes(k) * 2 * size;
            for (int flag : {1, 2, 4}) {
                const Bytes src = randomNumbers(numberBytes(k), 2 * size, random);
                const double scale = frameScale(k, flag);
                EXPECT_TRUE(run(k.graph, src, bytes, scale) == run(after, src, bytes, scale))
                    << k.exportedName << " under flag " << flag;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Targets, Passes,
                         testing::Combine(testing::ValuesIn(targetNames()),
                                          testing::Values(Precision::Single, Precision::Double)),
                         [](const testing::TestParamInfo<std::tuple<std::string, Precision>>& info) {
                             return std::get<0>(info.param) +
                                    (std::get<1>(info.param) == Precision::Single ? "_32fc" : "_64fc");
                         });

} // namespace
