// The generator's passes against the interpreter, on any host whatever
// processor level the pass serves: every kernel that the generator prints
// for the call frame, lowered for every target (scalar sections paired
// into 128-bit lanes, the pairing into 256-bit operations where it has
// them, the scheduling), keeps its operation counts (a paired operation
// does the work of the sections it holds) and gives the bytes of its own
// graph on random inputs under each scale factor; so does the lowered
// graph read per element, with scalar operations only. Every load comes
// before the first store, as in-place calls need.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>

#include "digest_inputs.h"
#include "families/dct4.h"
#include "kernelgen_families.h"
#include "passes/lanes.h"
#include "passes/lower.h"

using namespace kernelgen;
using namespace tvktest;

namespace {

class Passes : public testing::TestWithParam<std::tuple<Family, Precision, std::string>> {};

// Where the target pairs into 256 bits, the complex kernels of size 64 do,
// and so does the 32fc size 20 (one 128-bit set per stage) with its real
// parts beside its imaginary ones; where it pairs those again into 512
// bits, the 64fc kernels of size 52 do; where its vectors are native, the
// real and Hartley
// kernels of size 60 run sections in lanes, and so do the scalar 32fc
// kernels (below 6) with their real and imaginary parts.
TEST_P(Passes, KeepEveryBitOfEveryKernel)
{
    const auto& [family, precision, targetName] = GetParam();
    const Target target = targetNamed(targetName);
    const size_t numberBytes = precision == Precision::Single ? 4 : 8;
    unsigned seed = 24;
    for (int size : family.sizes(precision))
        for (const FramedKernel& k : family.sizeFile(precision, size).kernels) {
            const Graph lowered = lower(k.graph, target), scalar = perElement(lowered);
            bool paired = false, pairedTwice = false, inLanes = false;
            for (const Node& n : lowered.nodes()) {
                paired = paired || isWide(n.kind);
                pairedTwice = pairedTwice || registerBytes(n.kind) == 64;
                inLanes = inLanes || isVector(n.kind);
            }
            const bool complex = family.sizeFile == complexSizeFile;
            const bool single = precision == Precision::Single;
            if (!target.pairsInto(Kind::V8F32) || (complex && (size == 64 || (single && size == 20)))) {
                EXPECT_EQ(paired, target.pairsInto(Kind::V8F32)) << k.exportedName;
            }
            if (!target.pairsInto(Kind::V8F64) || (complex && !single && size == 52)) {
                EXPECT_EQ(pairedTwice, target.pairsInto(Kind::V8F64)) << k.exportedName;
            }
            const bool scalarComplex = complex && single && size < 6;
            if (scalarComplex || (!complex && size == 60 && k.exportedName.find("Inv") == std::string::npos)) {
                EXPECT_EQ(inLanes, target.nativeVectors) << k.exportedName;
            }
            // A sum paired with a difference negates the difference's
            // operand in its half: sign flips may be added, nothing else.
            const OpCounts was = k.graph.countOps(), is = lowered.countOps();
            EXPECT_TRUE(is.addSub == was.addSub && is.mul == was.mul && is.scaleMul == was.scaleMul &&
                        is.signFlips >= was.signFlips && is.loads == was.loads && is.stores == was.stores)
                << k.exportedName;
            for (const Node& n : scalar.nodes())
                ASSERT_FALSE(isVector(n.kind)) << k.exportedName;
            bool stored = false; // in-place calls need every load first
            for (int v : lowered.printOrder()) {
                ASSERT_FALSE(stored && isLoad(lowered.nodes()[v].op)) << k.exportedName;
                stored = stored || isStore(lowered.nodes()[v].op);
            }
            Bytes src(reach(k.graph, false));
            for (Exact factor : k.scaleFactors) {
                fixedInput(numberBytes == 8, src.size() / numberBytes, src.data(), ++seed);
                const double scale = isSingle(k.scaleKind) ? roundToFloat(factor) : roundToDouble(factor);
                const Bytes want = run(k.graph, src, scale);
                EXPECT_TRUE(run(lowered, src, scale) == want) << k.exportedName << " at scale " << scale;
                EXPECT_TRUE(run(scalar, src, scale) == want)
                    << k.exportedName << " per element, at scale " << scale;
            }
        }
}

// Two rows of one shape but for the order of a difference's operands
// (a - b beside b - a, as the adjoint of a join's conjugated bins makes
// them): they pair, and keep the signs of zero results, on every
// combination of signed zeros and ones.
TEST(Pairing, DifferenceBesideReversedDifference)
{
    Graph g;
    for (int row = 0; row < 2; ++row) {
        SectionScope scope(g, Section("rows", "row", row));
        const Graph::Value a = g.load(Kind::F64, 2 * row), b = g.load(Kind::F64, 2 * row + 1);
        const Graph::Value d = row == 0 ? g.sub(a, b) : g.sub(b, a);
        const Graph::Value e = g.mul(d, g.constant("kThird", Kind::F64, {Exact(1) / 3}));
        g.store(g.add(g.mul(e, e), e), row);
    }
    const Graph lowered = lower(g, targetNamed("sse2"));
    bool paired = false;
    for (const Node& n : lowered.nodes())
        paired = paired || (n.op == Op::Sub && n.kind == Kind::V2F64);
    EXPECT_TRUE(paired);
    const double values[] = {0.0, -0.0, 1.0, -1.0};
    for (int pick = 0; pick < 256; ++pick) {
        Bytes src(4 * sizeof(double));
        for (int i = 0; i < 4; ++i)
            std::memcpy(src.data() + i * sizeof(double), &values[pick >> (2 * i) & 3], sizeof(double));
        EXPECT_TRUE(run(lowered, src, 1.0) == run(g, src, 1.0)) << "inputs " << pick;
    }
}

// Rows of arithmetic alone, and two rows that load and store at two places
// each: the first pairing puts the rows two by two into 128-bit vectors;
// the second pairs the first four into 256-bit vectors and copies the pair
// of the last two as it is, both places of its load and its store kept.
TEST(Pairing, PairLeftAloneKeepsBothPlaces)
{
    Graph g;
    const auto chain = [&](Graph::Value a) {
        const Graph::Value t = g.add(g.mul(a, a), a);
        return g.add(g.mul(t, t), t);
    };
    for (int row = 0; row < 4; ++row) {
        const Graph::Value a = g.load(Kind::F64, row);
        Graph::Value y;
        {
            SectionScope scope(g, Section("rows", "row", row));
            y = chain(a);
        }
        g.store(y, row);
    }
    const int from[] = {8, 12}, to[] = {11, 6};
    for (int row = 0; row < 2; ++row) {
        SectionScope scope(g, Section("rows at two places", "row", row));
        g.store(chain(g.load(Kind::F64, from[row])), to[row]);
    }
    const Graph lowered = lower(g, targetNamed("avx2"));
    bool wide = false, twoPlaces = false;
    for (const Node& n : lowered.nodes()) {
        wide = wide || n.kind == Kind::V4F64;
        twoPlaces = twoPlaces || (n.op == Op::Store && n.kind == Kind::V2F64 && n.offset2 == 6);
    }
    EXPECT_TRUE(wide && twoPlaces);
    Bytes src(13 * sizeof(double));
    fixedInput(true, 13, src.data(), 7);
    EXPECT_TRUE(run(lowered, src, 1.0) == run(g, src, 1.0));
    EXPECT_TRUE(run(perElement(lowered), src, 1.0) == run(g, src, 1.0));
}

// Eight rows of 128-bit vectors that load, compute and store inside their
// sections: at avx512 they pair into 256 bits and again into 512, where each
// 256-bit half loads and stores at its own two places.
TEST(Pairing, EightRowsInOneVector)
{
    Graph g;
    for (int row = 0; row < 8; ++row) {
        SectionScope scope(g, Section("rows", "row", row));
        const Graph::Value a = g.load(Kind::V2F64, 2 * row);
        const Graph::Value t = g.add(g.mul(a, a), a);
        g.store(g.add(g.mul(t, t), t), 2 * ((row * 3) % 8));
    }
    const Graph lowered = lower(g, targetNamed("avx512"));
    int widest = 0;
    for (const Node& n : lowered.nodes())
        widest += n.kind == Kind::V8F64 && (n.op == Op::Add || n.op == Op::Mul);
    EXPECT_EQ(widest, 8);
    Bytes src(16 * sizeof(double));
    fixedInput(true, 16, src.data(), 9);
    EXPECT_TRUE(run(lowered, src, 1.0) == run(g, src, 1.0));
    EXPECT_TRUE(run(perElement(lowered), src, 1.0) == run(g, src, 1.0));
}

// The DCT-IV pieces, lowered for every target that has their vectors, give
// the bytes of their own graphs; at avx512 some run two 256-bit sections in
// one 512-bit vector.
TEST(Pairing, KeepsEveryBitOfTheDct4Pieces)
{
    const PieceFile pieces = dct4Pieces();
    for (const std::string& name : targetNames()) {
        const Target target = targetNamed(name);
        bool pairedTwice = false;
        unsigned seed = 5;
        for (const PieceFunction& f : pieces.functions) {
            bool runs = true, single = false;
            for (const Node& n : f.graph.nodes()) {
                runs = runs && target.has(n.kind);
                single = single || (isLoad(n.op) && isSingle(n.kind));
            }
            if (!runs)
                continue;
            const Graph lowered = lower(f.graph, target);
            for (const Node& n : lowered.nodes())
                pairedTwice = pairedTwice || registerBytes(n.kind) == 64;
            Bytes src(reach(f.graph, false));
            const size_t numberBytes = single ? 4 : 8;
            fixedInput(!single, src.size() / numberBytes, src.data(), ++seed);
            EXPECT_TRUE(run(lowered, src, 1.0) == run(f.graph, src, 1.0)) << name << " " << f.name << f.sizeTag;
        }
        EXPECT_EQ(pairedTwice, target.pairsInto(Kind::V8F64)) << name;
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
