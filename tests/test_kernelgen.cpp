// The generator's own layers, where a fault would not show in any single
// kernel's output: the adjoint of a graph, the one-value rule of named
// constants and the forms of a rotation.
#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <vector>

#include "arith/lane_arith.h"
#include "arith/signs.h"
#include "arith/split_arith.h"
#include "core/adjoint.h"
#include "methods/codelets.h"
#include "methods/joins.h"
#include "test_support.h"

using namespace kernelgen;

namespace {

// Runs a scalar graph in long double, without rounding: the linear map the
// graph describes. Widen and narrow are exact here.
std::vector<long double> evaluate(const Graph& g, const std::vector<long double>& src, size_t outputs)
{
    std::vector<long double> value(g.nodes().size(), 0), dst(outputs, 0);
    for (size_t i = 0; i < g.nodes().size(); ++i) {
        const Node& n = g.nodes()[i];
        const long double a = n.a >= 0 ? value[n.a] : 0, b = n.b >= 0 ? value[n.b] : 0;
        switch (n.op) {
        case Op::Load: value[i] = src.at(n.offset); break;
        case Op::Store: dst.at(n.offset) = a; break;
        case Op::Constant: value[i] = static_cast<long double>(g.constants()[n.constant].lanes[0]); break;
        case Op::ScaleArg: value[i] = 1; break;
        case Op::Add: value[i] = a + b; break;
        case Op::Sub: value[i] = a - b; break;
        case Op::Mul: value[i] = a * b; break;
        case Op::Neg: value[i] = -a; break;
        case Op::Widen:
        case Op::Narrow: value[i] = a; break;
        default: throw std::logic_error("not a scalar operation");
        }
    }
    return dst;
}

long double dot(const std::vector<long double>& a, const std::vector<long double>& b)
{
    long double s = 0;
    for (size_t i = 0; i < a.size(); ++i)
        s += a[i] * b[i];
    return s;
}

// Transforms the tests run in either arithmetic.
using AnyTransform = TransformOf<ComplexArith>;

// A scalar complex DFT graph of length n built by the method builders:
// interleaved (re, im) in, interleaved out, times the scale. The arithmetic
// of the DCT-IV pieces has rotations by any angle on scalars; the 32fc
// one has the rounding policies.
Graph scalarDft(int n, const AnyTransform& transform, bool anyAngle, Kind kind = Kind::F64,
                RoundingPolicy rounding = RoundingPolicy::elementType())
{
    Graph g;
    SplitArith split(g, Direction::Forward, kind, rounding);
    LaneArith lanes(g, kind);
    ComplexArith& ar = anyAngle ? static_cast<ComplexArith&>(lanes) : split;
    Signal x(n);
    for (int i = 0; i < n; ++i)
        x[i] = Cx{g.load(kind, 2 * i), g.load(kind, 2 * i + 1)};
    const Signal X = transform(ar, x);
    const Graph::Value scale = g.scaleArg(kind);
    for (int k = 0; k < n; ++k) {
        g.store(g.mul(lanes.materialize(X[k].re, X[k].negRe), scale), 2 * k);
        g.store(g.mul(lanes.materialize(X[k].im, X[k].negIm), scale), 2 * k + 1);
    }
    return g;
}

AnyTransform folded5()
{
    return [](ComplexArith& ar, const Signal& x) {
        return close(ar, foldedOddPairs(ar, binsOf(ar, x), DcOrder::SumThenX0));
    };
}

struct DftCase {
    const char* name;
    int n;
    AnyTransform transform;
    bool anyAngle = false;
};

std::vector<DftCase> dftCases()
{
    const AnyTransform d4 = [](ComplexArith& ar, const Signal& x) { return dft4(ar, x); };
    const AnyTransform d3 = [](ComplexArith& ar, const Signal& x) {
        return close(ar, foldedOddPairs(ar, binsOf(ar, x), DcOrder::FromX0));
    };
    return {
        {"dft4", 4, d4},
        {"folded5", 5, folded5()},
        {"road8", 8, [](ComplexArith& ar, const Signal& x) { return road8(ar, x); }},
        {"coprime3x4", 12, [=](ComplexArith& ar, const Signal& x) { return join(ar, x, coprimeMap(3, 4), d3, d4); }},
        {"twiddled4x4", 16, [=](ComplexArith& ar, const Signal& x) { return join(ar, x, twiddledMap(4, 4), d4, d4); },
         true},
        {"twiddled3x3", 9, [=](ComplexArith& ar, const Signal& x) { return join(ar, x, twiddledMap(3, 3), d3, d3); },
         true},
    };
}

class AdjointTest : public ::testing::TestWithParam<DftCase> {};

// Real and imaginary parts negated: the conjugate.
std::vector<long double> conjugate(std::vector<long double> v)
{
    for (size_t i = 1; i < v.size(); i += 2)
        v[i] = -v[i];
    return v;
}

// <A x, y> = <x, A^T y> for random x and y: the transpose is the adjoint;
// the transpose of A^T, a graph of the fan-outs and sums that transposing
// makes, is A^T's adjoint, A. The DFT matrix is symmetric, and on (re, im)
// pairs the map is [[C, S], [-S, C]] per bin pair, so A^T is A between
// conjugations: <A x, y> = <x, conj A conj y>.
TEST_P(AdjointTest, IsTheAdjoint)
{
    const DftCase& c = GetParam();
    const size_t numbers = 2 * c.n;
    const Graph g = scalarDft(c.n, c.transform, c.anyAngle), t = adjoint(g), tt = adjoint(t);
    const auto near = [](long double a, long double b) { return std::fabs(a - b) < 1e-12L; };
    for (unsigned seed = 0; seed < 4; ++seed) {
        const std::vector<long double> x = tvktest::randomReals<long double>(numbers, seed),
                                        y = tvktest::randomReals<long double>(numbers, seed + 100);
        const long double gxy = dot(evaluate(g, x, numbers), y);
        EXPECT_TRUE(near(gxy, dot(x, evaluate(t, y, numbers)))) << c.name << " seed " << seed;
        EXPECT_TRUE(near(dot(evaluate(t, x, numbers), y), dot(x, evaluate(tt, y, numbers))))
            << c.name << " twice, seed " << seed;
        EXPECT_TRUE(near(gxy, dot(x, conjugate(evaluate(g, conjugate(y), numbers))))) << c.name << " seed " << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(Methods, AdjointTest, ::testing::ValuesIn(dftCases()),
                         [](const auto& info) { return std::string(info.param.name); });

// Every load of the original becomes a store of the transpose and every
// store a load, at the same offsets; the rounding policy's type changes
// turn into each other.
TEST(Adjoint, SwapsLoadsWithStoresAndWidenWithNarrow)
{
    const Graph g = scalarDft(5, folded5(), false, Kind::F32, RoundingPolicy::doubleRule());
    const Graph t = adjoint(g);
    const auto count = [](const Graph& graph, Op op) {
        int c = 0;
        const std::vector<bool> live = graph.liveNodes();
        for (size_t i = 0; i < graph.nodes().size(); ++i)
            c += live[i] && graph.nodes()[i].op == op;
        return c;
    };
    EXPECT_EQ(count(t, Op::Load), count(g, Op::Store));
    EXPECT_EQ(count(t, Op::Store), count(g, Op::Load));
    EXPECT_EQ(count(t, Op::Widen), count(g, Op::Narrow));
    EXPECT_EQ(count(t, Op::Narrow), count(g, Op::Widen));
    EXPECT_GT(count(g, Op::Widen), 0);
}

TEST(Adjoint, RefusesTheLanePatternsOfThe32fcLayout)
{
    Graph g;
    const Graph::Value a = g.load(Kind::V4F32, 0), b = g.load(Kind::V4F32, 4);
    g.store(g.shuffle(Shuffle::UnpackLo, a, b), 0);
    EXPECT_THROW(adjoint(g), std::logic_error);
}

TEST(GraphConstant, ANameStandsForOneStoredValue)
{
    Graph g;
    const Graph::Value k = g.constant("kHalf", Kind::F64, {Exact(1) / 2});
    EXPECT_EQ(g.constant("kHalf", Kind::F64, {Exact(1) / 2}), k);
    // The same stored number reached through another binary128 value.
    EXPECT_EQ(g.constant("kHalf", Kind::F64, {Exact(1) / 2 + Exact(1e-30)}), k);
    EXPECT_THROW(g.constant("kHalf", Kind::F64, {Exact(1) / 3}), std::logic_error);
    EXPECT_THROW(g.constant("kHalf", Kind::F32, {Exact(1) / 2}), std::logic_error);
}

TEST(Rotation, TakesTheCheapestFormOfItsAngle)
{
    EXPECT_EQ(classifyRotation(8, 0).form, RotationForm::Identity);
    EXPECT_EQ(classifyRotation(8, -8).form, RotationForm::Identity);
    EXPECT_EQ(classifyRotation(6, 3).form, RotationForm::Negate);
    EXPECT_EQ(classifyRotation(12, 3).form, RotationForm::TimesI);
    EXPECT_EQ(classifyRotation(12, -3).form, RotationForm::TimesMinusI);
    EXPECT_EQ(classifyRotation(16, 6).form, RotationForm::OddEighth);
    EXPECT_EQ(classifyRotation(16, -2).form, RotationForm::OddEighth);
    EXPECT_EQ(classifyRotation(16, -2).r, 14);
    EXPECT_EQ(classifyRotation(12, 1).form, RotationForm::General);
}

} // namespace
