// What the Hartley kernels compute, expanded over sizes, types and flags:
// the definition, their own inverse, the flags, impulse and constant
// inputs, sizes 2 to 5 and 8 bit for bit, and the operation counts.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <numbers>
#include <vector>

#include "dft_real_forward_counts.h"
#include "hartley_counts.h"
#include "real_inputs.h"

using namespace tvktest;

namespace {

class HartleyTest : public ::testing::TestWithParam<RealKernel> {
protected:
    const RealKernel& k = GetParam();
    long double eps() const
    {
        return k.is64() ? std::numeric_limits<double>::epsilon() : std::numeric_limits<float>::epsilon();
    }
    long double bound() const { return 16 * eps() * std::log2(k.size + 1.0L) * std::sqrt(k.size + 0.0L); }
};

// H[k] = factor * sum x[n] (cos + sin)(2 pi n k / N).
TEST_P(HartleyTest, AgreesWithTheDefinition)
{
    const long double pi = std::numbers::pi_v<long double>;
    for (unsigned seed = 0; seed < 3; ++seed) {
        const auto input = randomInput(k, 40 + seed);
        for (int flag : kGoodFlags) {
            const auto out = runKernel(k, input, flag);
            ASSERT_FALSE(out.empty());
            const long double f = scaleOf(k, flag);
            for (int b = 0; b < k.size; ++b) {
                long double h = 0;
                for (int n = 0; n < k.size; ++n) {
                    const long double angle = 2 * pi * ((static_cast<long long>(n) * b) % k.size) / k.size;
                    h += numberAt(k, input.data(), n) * (std::cos(angle) + std::sin(angle));
                }
                EXPECT_NEAR(static_cast<double>(numberAt(k, out.data(), b)), static_cast<double>(h * f),
                            static_cast<double>(bound() * f))
                    << "H[" << b << "] flag " << flag;
            }
        }
    }
}

// Flags 1 and 2 both divide by N, with the same bytes; flag 4 twice, and
// flag 8 then flag 1, give the input back.
TEST_P(HartleyTest, FlagsAndSelfInverse)
{
    const auto x = randomInput(k, 50);
    EXPECT_EQ(runKernel(k, x, ScaleDivForwardByN), runKernel(k, x, ScaleDivInverseByN));
    for (const auto& [first, second] : {std::pair{ScaleDivBySqrtN, ScaleDivBySqrtN}, std::pair{ScaleNoDivide, ScaleDivForwardByN},
                                       std::pair{ScaleNoDivide, ScaleDivInverseByN}}) {
        const auto back = runKernel(k, runKernel(k, x, first), second);
        for (int n = 0; n < k.size; ++n)
            EXPECT_NEAR(static_cast<double>(numberAt(k, back.data(), n)), static_cast<double>(numberAt(k, x.data(), n)),
                        static_cast<double>(bound()))
                << "x[" << n << "] flags " << first << ", " << second;
    }
}

// An impulse at x[0] gives the bare factor in every cell; a constant gives
// N c times the factor in cell 0 and near zero elsewhere.
TEST_P(HartleyTest, ImpulseAndConstant)
{
    for (int flag : kGoodFlags) {
        const long double f = scaleOf(k, flag);
        auto impulse = filledInput(k, 0);
        setNumber(k, impulse.data(), 0, 1);
        const auto out = runKernel(k, impulse, flag);
        for (int b = 0; b < k.size; ++b)
            EXPECT_EQ(numberAt(k, out.data(), b), f) << "H[" << b << "] flag " << flag;
        const auto ones = runKernel(k, filledInput(k, 1), flag);
        const long double dc = k.is64() ? static_cast<long double>(k.size * static_cast<double>(f))
                                        : static_cast<long double>(k.size * static_cast<float>(f));
        EXPECT_EQ(numberAt(k, ones.data(), 0), dc) << "flag " << flag;
        for (int b = 1; b < k.size; ++b)
            EXPECT_NEAR(static_cast<double>(numberAt(k, ones.data(), b)), 0.0, static_cast<double>(bound() * f))
                << "H[" << b << "] flag " << flag;
    }
}

// ---- Sizes 2 to 5 and 8 bit for bit --------------------------------------
// Binary32 kernels: the core's statements with products in binary64, each
// rounded once; the parts P and Q rounded before the butterfly, which is a
// binary32 sum; the factor in binary32.

template <class T>
std::vector<T> hartleyFormula(int n, const std::vector<T>& x, bool roundParts)
{
    using W = double;
    std::vector<T> h(n);
    // H[k] and H[n-k] from the parts P and Q (Im X = -Q), rounded or not.
    const auto pair = [&](int k, W p, W q) {
        if (roundParts) {
            const T P = static_cast<T>(p), Q = static_cast<T>(q);
            h[k] = P + Q;
            h[n - k] = P - Q;
        } else {
            h[k] = static_cast<T>(p + q);
            h[n - k] = static_cast<T>(p - q);
        }
    };
    switch (n) {
    case 2: h = {x[0] + x[1], x[0] - x[1]}; break;
    case 3: {
        const T t = x[1] + x[2], d = x[1] - x[2];
        h[0] = x[0] + t;
        pair(1, W(x[0]) - 0.5 * W(t), static_cast<T>(0.8660254037844386 * W(d)));
        break;
    }
    case 4: {
        const T p = x[0] + x[2], q = x[0] - x[2], r = x[1] + x[3], s = x[1] - x[3];
        h = {p + r, q + s, p - r, q - s};
        break;
    }
    case 5: {
        const T a1 = x[1] + x[4], a2 = x[2] + x[3], b1 = x[1] - x[4], b2 = x[2] - x[3];
        const double c1 = 0.30901699437494745, c2 = 0.8090169943749475;
        const double s1 = 0.9510565162951535, s2 = 0.5877852522924731;
        h[0] = x[0] + (a1 + a2);
        pair(1, (W(x[0]) + c1 * W(a1)) - c2 * W(a2), s1 * W(b1) + s2 * W(b2));
        pair(2, (W(x[0]) - c2 * W(a1)) + c1 * W(a2), s2 * W(b1) - s1 * W(b2));
        break;
    }
    case 8: {
        // The forward size-8 graph without its factors and negations: the
        // products c b1, c b3 alone, each rounded; then Q = -Im X.
        T a[4], b[4];
        for (int i = 0; i < 4; ++i) {
            a[i] = x[i] + x[i + 4];
            b[i] = x[i] - x[i + 4];
        }
        const T e = a[0] + a[2], g = a[1] + a[3];
        const T p = static_cast<T>(0.7071067811865476 * W(b[1])), q = static_cast<T>(0.7071067811865476 * W(b[3]));
        const T u = p - q, v = p + q;
        h[0] = e + g;
        h[4] = e - g;
        pair(1, b[0] + u, b[2] + v);
        pair(2, a[0] - a[2], a[1] - a[3]);
        pair(3, b[0] - u, v - b[2]);
        break;
    }
    }
    return h;
}

template <class T>
void expectHartleyFormula(const RealKernel& k)
{
    for (int flag : kGoodFlags) {
        const T f = static_cast<T>(scaleOf(k, flag));
        for (unsigned seed = 0; seed < 20; ++seed) {
            const std::vector<T> x = randomReals<T>(k.size, 600 + seed, T(-4), T(4));
            std::vector<T> want = hartleyFormula<T>(k.size, x, true), got(k.size);
            ASSERT_EQ(k.run(x.data(), got.data(), flag), StatusOk);
            for (int b = 0; b < k.size; ++b) {
                want[b] *= f;
                EXPECT_EQ(0, std::memcmp(&got[b], &want[b], sizeof(T)))
                    << "H[" << b << "] flag " << flag << " seed " << seed << ": " << got[b] << " vs " << want[b];
            }
        }
    }
}

class HartleyFormulaTest : public ::testing::TestWithParam<RealKernel> {};

TEST_P(HartleyFormulaTest, BitForBit)
{
    const RealKernel& k = GetParam();
    if (k.is64())
        expectHartleyFormula<double>(k);
    else
        expectHartleyFormula<float>(k);
}

// The formula above tells the rounding of P and Q from a butterfly that
// would take them unrounded: on some inputs the two give other bits.
TEST(HartleyFormula, Size5RoundsThePartsBeforeTheButterfly)
{
    int differing = 0;
    for (unsigned seed = 0; seed < 50; ++seed) {
        const std::vector<float> x = randomReals<float>(5, 700 + seed, -4.0f, 4.0f);
        const auto rounded = hartleyFormula<float>(5, x, true), unrounded = hartleyFormula<float>(5, x, false);
        differing += std::memcmp(rounded.data(), unrounded.data(), 5 * sizeof(float)) != 0;
    }
    EXPECT_GT(differing, 0);
}

// ---- Counts ---------------------------------------------------------------

// Additions of the budget: the forward core's, less its negations, plus
// the butterflies.
const std::map<int, int> kAdditions = {{2, 2}, {3, 6}, {4, 8}, {5, 16}, {8, 26}, {16, 72}};

// Multiplications where the budget departs from the forward kernel, and
// ours: we keep the forward core at every size (33, 44 and 55 with the
// inverse family's 11-point block, which costs what direct folding costs).
struct Departure {
    int budget, ours;
};
const std::map<int, Departure> kDepartures = {
    {13, {44, 38}},   {18, {36, 40}},   {27, {100, 110}}, {31, {194, 194}}, {32, {42, 44}},
    {36, {72, 80}},   {37, {236, 230}}, {45, {162, 172}}, {48, {72, 68}},   {53, {450, 406}},
    {54, {200, 220}}, {62, {388, 388}}, {64, {134, 132}},
};

TEST(HartleyCounts, ForwardCoreButterfliesAndFactor)
{
    std::map<std::pair<std::string, int>, RealKernelCounts> forward;
    for (const RealKernelCounts& c : kRealForwardCounts)
        forward[{c.type, c.size}] = c;
    for (const HartleyCounts& c : kHartleyCounts) {
        SCOPED_TRACE(std::string(c.type) + " size " + std::to_string(c.size));
        EXPECT_EQ(c.scaleMul, c.size);
        EXPECT_EQ(c.mul, forward.at({c.type, c.size}).mul) << "the forward core's products";
        if (const auto a = kAdditions.find(c.size); a != kAdditions.end()) {
            EXPECT_EQ(c.addSub, a->second);
        }
        if (const auto d = kDepartures.find(c.size); d != kDepartures.end()) {
            EXPECT_EQ(c.mul, d->second.ours) << "budget " << d->second.budget;
        }
        const bool single = std::string(c.type) == "32f";
        if (!single || c.size == 2 || c.size == 4) {
            EXPECT_EQ(c.wide, 0) << "binary64 operations";
        } else {
            EXPECT_GT(c.wide, 0) << "no binary64 statement";
        }
    }
}

std::vector<RealKernel> hartleyKernels() { return builtRealKernels(RealFamily::Hartley); }

INSTANTIATE_TEST_SUITE_P(Built, HartleyTest, ::testing::ValuesIn(hartleyKernels()),
                         [](const auto& info) { return realKernelLabel(info.param); });
INSTANTIATE_TEST_SUITE_P(Sizes2To5And8, HartleyFormulaTest,
                         ::testing::ValuesIn(kernelsWhere(hartleyKernels(),
                                                          [](const auto& k) { return k.size <= 5 || k.size == 8; })),
                         [](const auto& info) { return realKernelLabel(info.param); });

} // namespace
