// The generator's passes against the interpreter, on any host whatever
// processor level the pass serves: every kernel that the generator prints
// for the call frame, lowered for every target (the pairing into 256-bit
// operations where it has them, the scheduling), keeps its operation counts
// (a paired operation does the work of two) and gives the bytes of its own
// graph on random inputs under each scale factor; so does the lowered
// graph read per element, with scalar operations only.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "core/interpret.h"
#include "families/dft_complex.h"
#include "families/dft_real.h"
#include "families/hartley.h"
#include "passes/lanes.h"
#include "passes/lower.h"

using namespace kernelgen;

namespace {

using Bytes = std::vector<std::byte>;

struct Family {
    const char* name;
    FramedKernelFile (*sizeFile)(Precision, int);
    std::vector<int> (*sizes)(Precision);
};

std::vector<int> realSizesOf(Precision) { return realSizes(); }
void PrintTo(const Family& family, std::ostream* out) { *out << family.name; }

const Family kFamilies[] = {
    {"Complex", complexSizeFile, complexSizes},
    {"RealForward", realForwardSizeFile, realSizesOf},
    {"RealInverse", realInverseSizeFile, realSizesOf},
    {"Hartley", hartleySizeFile, realSizesOf},
};

// The bytes a graph's loads (stores) reach: one past its last number.
size_t reach(const Graph& g, bool stores)
{
    size_t end = 0;
    for (const Node& n : g.nodes())
        if (stores ? isStore(n.op) : isLoad(n.op)) {
            const int lanes = n.op == Op::Load || n.op == Op::Store ? laneCount(n.kind) : 2;
            const int last = std::max(n.offset + (n.offset2 >= 0 ? lanes / 2 : lanes), n.offset2 + lanes / 2);
            end = std::max(end, static_cast<size_t>(last) * (isSingle(n.kind) ? 4 : 8));
        }
    return end;
}

Bytes run(const Graph& g, const Bytes& src, size_t outBytes, double scale)
{
    Bytes dst(outBytes);
    interpret(g, src, dst, scale);
    return dst;
}

class Passes : public testing::TestWithParam<std::tuple<Family, Precision, std::string>> {};

// Where the target pairs, the complex kernels of size 64 do.
TEST_P(Passes, KeepEveryBitOfEveryKernel)
{
    const auto& [family, precision, targetName] = GetParam();
    const Target target = targetNamed(targetName);
    std::mt19937 random(24);
    std::uniform_real_distribution<double> uniform(-1, 1);
    for (int size : family.sizes(precision))
        for (const FramedKernel& k : family.sizeFile(precision, size).kernels) {
            const Graph lowered = lower(k.graph, target), scalar = perElement(lowered);
            bool paired = false;
            for (const Node& n : lowered.nodes())
                paired = paired || isWide(n.kind);
            if (!target.pairsSections() || (family.sizeFile == complexSizeFile && size == 64)) {
                EXPECT_EQ(paired, target.pairsSections()) << k.exportedName;
            }
            const OpCounts was = k.graph.countOps(), is = lowered.countOps();
            EXPECT_TRUE(is.addSub == was.addSub && is.mul == was.mul && is.scaleMul == was.scaleMul &&
                        is.signFlips == was.signFlips && is.loads == was.loads && is.stores == was.stores)
                << k.exportedName;
            for (const Node& n : scalar.nodes())
                ASSERT_FALSE(isVector(n.kind)) << k.exportedName;
            const size_t outBytes = reach(k.graph, true);
            ASSERT_EQ(reach(scalar, true), outBytes) << k.exportedName;
            Bytes src(reach(k.graph, false));
            for (Exact factor : k.scaleFactors) {
                for (size_t at = 0; at < src.size(); at += precision == Precision::Single ? 4 : 8) {
                    const double v = uniform(random);
                    const float f = static_cast<float>(v);
                    std::memcpy(src.data() + at, precision == Precision::Single ? static_cast<const void*>(&f) : &v,
                                precision == Precision::Single ? 4 : 8);
                }
                const double scale = isSingle(k.scaleKind) ? roundToFloat(factor) : roundToDouble(factor);
                const Bytes want = run(k.graph, src, outBytes, scale);
                EXPECT_TRUE(run(lowered, src, outBytes, scale) == want) << k.exportedName << " at scale " << scale;
                EXPECT_TRUE(run(scalar, src, outBytes, scale) == want)
                    << k.exportedName << " per element, at scale " << scale;
            }
        }
}

INSTANTIATE_TEST_SUITE_P(
    Kernels, Passes,
    testing::Combine(testing::ValuesIn(kFamilies), testing::Values(Precision::Single, Precision::Double),
                     testing::ValuesIn(targetNames())),
    [](const testing::TestParamInfo<std::tuple<Family, Precision, std::string>>& info) {
        return std::string(std::get<0>(info.param).name) +
               (std::get<1>(info.param) == Precision::Single ? "_32f_" : "_64f_") + std::get<2>(info.param);
    });

} // namespace
