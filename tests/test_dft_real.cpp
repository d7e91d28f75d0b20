// What the forward real kernels compute, expanded over the kernels of the
// build (type, size, layout) and flags; their frame is tested with the
// other families on real data.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <vector>

#include "dft_real_forward_counts.h"
#include "real_inputs.h"

using namespace tvktest;

namespace {

bool isPositiveZero(long double v) { return v == 0 && !std::signbit(v); }

class RealForwardTest : public ::testing::TestWithParam<RealKernel> {
protected:
    const RealKernel& k = GetParam();
    std::vector<unsigned char> run(const std::vector<unsigned char>& input, int flag) const
    {
        return runKernel(k, input, flag);
    }
};

// Against a long-double direct DFT, under every flag, to a bound a few
// units of the element type times log2 N.
TEST_P(RealForwardTest, AgreesWithTheDefinition)
{
    const long double eps = k.is64() ? std::numeric_limits<double>::epsilon() : std::numeric_limits<float>::epsilon();
    for (unsigned seed = 0; seed < 3; ++seed) {
        const auto input = randomInput(k, 10 + seed);
        std::vector<std::complex<long double>> x(k.size);
        for (int i = 0; i < k.size; ++i)
            x[i] = numberAt(k, input.data(), i);
        const auto X = directDft(x, false);
        for (int flag : kGoodFlags) {
            const auto out = run(input, flag);
            const long double f = scaleOf(k, flag);
            const long double bound = 8 * eps * std::log2(static_cast<long double>(k.size) + 1) * std::sqrt(k.size) * f;
            for (int b = 0; 2 * b <= k.size; ++b)
                for (bool imaginary : {false, true}) {
                    const int cell = cellOf(k.layout, k.size, b, imaginary);
                    if (cell < 0)
                        continue;
                    const long double want = (imaginary ? X[b].imag() : X[b].real()) * f;
                    EXPECT_NEAR(static_cast<double>(numberAt(k, out.data(), cell)), static_cast<double>(want),
                                static_cast<double>(bound))
                        << (imaginary ? "I[" : "R[") << b << "] flag " << flag;
                }
        }
    }
}

// The tests of one size and type across layouts, run from its CCS kernel.
using RealForwardSizeTest = RealForwardTest;

// A value has the same bits in every layout; Pack and Perm are one array at
// odd N and at 2.
TEST_P(RealForwardSizeTest, SameValueBitsInEveryLayout)
{
    const auto input = randomInput(k, 3);
    std::vector<std::vector<unsigned char>> outs;
    for (Layout l : kLayouts) {
        RealKernel other = k;
        other.layout = l;
        other.fn = dlsym(RTLD_DEFAULT, other.name().c_str());
        ASSERT_NE(other.fn, nullptr) << other.name();
        std::vector<unsigned char> out(other.outCells() * k.realBytes());
        ASSERT_EQ(other.run(input.data(), out.data(), ScaleDivForwardByN), StatusOk);
        outs.push_back(out);
    }
    const int bytes = k.realBytes();
    for (int b = 0; 2 * b <= k.size; ++b)
        for (bool imaginary : {false, true}) {
            const int ccs = cellOf(Layout::CCS, k.size, b, imaginary);
            for (int l = 1; l < 3; ++l) {
                const int cell = cellOf(kLayouts[l], k.size, b, imaginary);
                if (cell >= 0) {
                    EXPECT_EQ(0, std::memcmp(&outs[0][ccs * bytes], &outs[l][cell * bytes], bytes))
                        << layoutName(kLayouts[l]) << (imaginary ? " I[" : " R[") << b << "]";
                }
            }
        }
    if (k.size % 2 == 1 || k.size == 2) {
        EXPECT_EQ(outs[1], outs[2]);
    }
}

// CCS cells 1 and (even N) N+1 hold +0.0 stored as a constant: no input
// reaches them, not a NaN or an infinity.
TEST_P(RealForwardSizeTest, ConstantCellsOfCcsStayPositiveZero)
{
    for (long double value : {0.0L, std::numeric_limits<long double>::quiet_NaN(),
                              std::numeric_limits<long double>::infinity(), -1.0L}) {
        const auto out = run(filledInput(k, value), ScaleNoDivide);
        EXPECT_TRUE(isPositiveZero(numberAt(k, out.data(), 1))) << "input " << static_cast<double>(value);
        if (k.size % 2 == 0) {
            EXPECT_TRUE(isPositiveZero(numberAt(k, out.data(), k.size + 1)));
        }
    }
}

// An impulse gives the bare factor in every real cell and +0.0 in every
// imaginary one; zeros give +0.0 everywhere, also where the graph ends in
// a negation.
TEST_P(RealForwardTest, ImpulseAndZeroInput)
{
    for (int flag : kGoodFlags) {
        std::vector<unsigned char> impulse = filledInput(k, 0);
        setNumber(k, impulse.data(), 0, 1);
        const auto out = run(impulse, flag);
        const long double f = scaleOf(k, flag);
        for (int b = 0; 2 * b <= k.size; ++b) {
            const int re = cellOf(k.layout, k.size, b, false), im = cellOf(k.layout, k.size, b, true);
            EXPECT_EQ(numberAt(k, out.data(), re), f) << "R[" << b << "] flag " << flag;
            if (im >= 0) {
                EXPECT_TRUE(isPositiveZero(numberAt(k, out.data(), im))) << "I[" << b << "] flag " << flag;
            }
        }
        const auto zeros = run(filledInput(k, 0), flag);
        for (int c = 0; c < k.outCells(); ++c)
            EXPECT_TRUE(isPositiveZero(numberAt(k, zeros.data(), c))) << "cell " << c << " flag " << flag;
    }
}

// Flags 2 and 8 give the same bytes in forward kernels; flag 1 multiplies by
// the stored 1/N.
TEST_P(RealForwardTest, FlagsPickTheirFactors)
{
    const auto input = randomInput(k, 5);
    EXPECT_EQ(run(input, ScaleDivInverseByN), run(input, ScaleNoDivide));
    std::vector<unsigned char> impulse = filledInput(k, 0);
    setNumber(k, impulse.data(), 0, 1);
    const auto out = run(impulse, ScaleDivForwardByN);
    const long double stored = k.is64() ? 1.0 / k.size : 1.0f / static_cast<float>(k.size);
    EXPECT_EQ(numberAt(k, out.data(), 0), stored);
}

// Binary32 kernels form their statements with products in binary64; sizes 2
// and 4 have no such statement and no binary64 operation at all. Binary64
// kernels have no type change.
TEST(RealForwardRounding, Binary64OperationsOnlyInStatementsWithProducts)
{
    for (const RealKernelCounts& c : kRealForwardCounts) {
        const bool single = std::string(c.type) == "32f";
        if (!single || c.size == 2 || c.size == 4) {
            EXPECT_EQ(c.wide, 0) << c.type << " size " << c.size;
        } else {
            EXPECT_GT(c.wide, 0) << c.type << " size " << c.size;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Built, RealForwardTest, ::testing::ValuesIn(builtRealForwardKernels()),
                         [](const auto& info) { return realKernelLabel(info.param); });
INSTANTIATE_TEST_SUITE_P(Built, RealForwardSizeTest,
                         ::testing::ValuesIn(kernelsWhere(builtRealForwardKernels(),
                                                          [](const auto& k) { return k.layout == Layout::CCS; })),
                         [](const auto& info) { return realKernelLabel(info.param); });

} // namespace
