// Properties every complex kernel must have, expanded over all kernels of
// the build (type, size, direction), flags and alignments.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <set>
#include <vector>

#include "complex_kernels.h"
#include "frame_checks.h"
#include "test_support.h"

using namespace tvktest;

namespace {

// 32fc 47 and 59 take the chirp form, whose chirp products round even an
// impulse.
bool takesChirpForm(const ComplexKernel& k) { return !k.is64() && (k.size == 47 || k.size == 59); }

class ComplexKernelTest : public ::testing::TestWithParam<ComplexKernel> {
protected:
    const ComplexKernel& k = GetParam();
    bool isChirp() const { return takesChirpForm(k); }
};

TEST_P(ComplexKernelTest, CallFrame) { expectCallFrame(k); }

// An impulse gives the bare scale constant in every bin, bit for bit.
TEST_P(ComplexKernelTest, ImpulseGivesTheScaleConstant)
{
    auto impulse = filledInput(k, 0);
    setElement(k, impulse.data(), 0, 1.0L);
    for (int flag : kGoodFlags) {
        const auto dst = runKernel(k, impulse, flag);
        const double expected = expectedScale(k, flag);
        // A few units in the last place of binary32 for the chirp kernels.
        const double slack = isChirp() ? 4 * std::ldexp(expected, -23) : 0;
        for (int i = 0; i < k.size; ++i) {
            const auto X = elementAt(k, dst.data(), i);
            EXPECT_NEAR(static_cast<double>(X.real()), expected, slack) << "flag " << flag << " bin " << i;
            EXPECT_NEAR(static_cast<double>(X.imag()), 0.0, slack) << "flag " << flag << " bin " << i;
        }
    }
}

// The factor is one last product: the result under any flag is the
// unscaled result times the constant, rounded once.
TEST_P(ComplexKernelTest, ScaleIsTheLastProduct)
{
    const auto input = randomInput(k, 4), unscaled = runKernel(k, input, ScaleNoDivide);
    for (int flag : kGoodFlags) {
        const double s = expectedScale(k, flag);
        std::vector<unsigned char> expected(unscaled.size());
        for (int i = 0; i < k.outCells(); ++i) {
            const long double u = numberAt(k, unscaled.data(), i);
            setNumber(k, expected.data(), i,
                      k.is64() ? static_cast<double>(u) * s : static_cast<float>(u) * static_cast<float>(s));
        }
        EXPECT_EQ(runKernel(k, input, flag), expected) << "flag " << flag;
    }
}

// Largest absolute error against a long-double direct DFT for inputs in
// [-1, 1] without scaling.
TEST_P(ComplexKernelTest, AgreesWithDirectDft)
{
    const double bound = k.is64() ? (k.size <= 5 ? 1e-15 : 1e-14) : (k.size <= 5 ? 5e-7 : 3e-6);
    double worst = 0;
    for (unsigned seed = 10; seed < 30; ++seed) {
        const auto input = randomInput(k, seed), dst = runKernel(k, input, ScaleNoDivide);
        std::vector<std::complex<long double>> x(k.size);
        for (int i = 0; i < k.size; ++i)
            x[i] = elementAt(k, input.data(), i);
        const auto X = directDft(x, k.inverse);
        for (int i = 0; i < k.size; ++i)
            worst = std::max(worst, static_cast<double>(std::abs(elementAt(k, dst.data(), i) - X[i])));
    }
    EXPECT_LT(worst, bound);
}

// An impulse at x[1] gives the roots of unity W^k, each of modulus 1: every
// twiddle, spectrum and chirp constant of the kernel is exercised.
TEST_P(ComplexKernelTest, ImpulseAtOneGivesTheRootsOfUnity)
{
    auto impulse = filledInput(k, 0);
    setElement(k, impulse.data(), 1, 1.0L);
    const auto dst = runKernel(k, impulse, ScaleNoDivide);
    const long double sign = k.inverse ? 1 : -1;
    const double bound = k.is64() ? 4e-15 : 1.5e-6;
    for (int i = 0; i < k.size; ++i) {
        const long double angle = sign * 2 * 3.141592653589793238462643383279502884L * i / k.size;
        const std::complex<long double> root(std::cos(angle), std::sin(angle));
        EXPECT_LT(static_cast<double>(std::abs(elementAt(k, dst.data(), i) - root)), bound) << "bin " << i;
    }
}

// Kernels that form X[0] without rounding: all but the chirp form, which
// rounds every bin.
class ComplexExactDcTest : public ComplexKernelTest {};

// X[0] is the plain sum of the inputs in every other form: in the
// convolution form it comes from bin 0 before the spectrum product and never
// passes the inverse stage. Small integers make every order of summation
// exact.
TEST_P(ComplexExactDcTest, DcBinIsTheExactSum)
{
    auto src = filledInput(k, 0);
    for (unsigned seed = 60; seed < 70; ++seed) {
        std::complex<long double> sum = 0;
        const auto v = randomReals<double>(2 * k.size, seed, -8, 8);
        for (int i = 0; i < k.size; ++i) {
            const std::complex<long double> x(std::round(v[2 * i]), std::round(v[2 * i + 1]));
            setElement(k, src.data(), i, x);
            sum += x;
        }
        EXPECT_EQ(elementAt(k, runKernel(k, src, ScaleNoDivide).data(), 0), sum) << "seed " << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(Built, ComplexKernelTest, ::testing::ValuesIn(builtComplexKernels()),
                         [](const auto& info) { return kernelLabel(info.param); });

INSTANTIATE_TEST_SUITE_P(Built, ComplexExactDcTest,
                         ::testing::ValuesIn(kernelsWhere(builtComplexKernels(),
                                                          [](const auto& k) { return !takesChirpForm(k); })),
                         [](const auto& info) { return kernelLabel(info.param); });

// Properties of a forward kernel and its inverse together.
class ComplexPairTest : public ComplexKernelTest {};

// The inverse equals the forward transform with real and imaginary parts
// exchanged on the way in and out, bit for bit, except where the two
// directions absorb a sign at different places.
TEST_P(ComplexPairTest, InverseIsTheExchangedForward)
{
    const ComplexKernel inverse = partner(k);
    ASSERT_NE(inverse.fn, nullptr);
    static const std::set<int> kInexact32 = {19, 23, 37, 47, 59, 61};
    static const std::set<int> kInexact64 = {11, 22, 23, 25, 29, 31, 33, 43, 44, 46, 47, 49, 50, 55, 58, 59, 62};
    const bool exact = (k.is64() ? kInexact64 : kInexact32).count(k.size) == 0;
    const auto exchanged = [this](std::vector<unsigned char> a) {
        for (int i = 0; i < k.size; ++i) {
            const auto v = elementAt(k, a.data(), i);
            setElement(k, a.data(), i, {v.imag(), v.real()});
        }
        return a;
    };
    for (unsigned seed = 40; seed < 48; ++seed) {
        const auto input = randomInput(k, seed);
        const auto want = runKernel(inverse, input, ScaleNoDivide);
        const auto got = exchanged(runKernel(k, exchanged(input), ScaleNoDivide));
        if (exact) {
            EXPECT_EQ(got, want) << "seed " << seed;
            continue;
        }
        for (int c = 0; c < k.outCells(); ++c)
            EXPECT_NEAR(static_cast<double>(numberAt(k, got.data(), c)),
                        static_cast<double>(numberAt(k, want.data(), c)), k.is64() ? 1e-14 : 3e-6)
                << "seed " << seed << " cell " << c;
    }
}

// Forward then inverse under the same flag gives the input back (N times
// the input under ScaleNoDivide).
TEST_P(ComplexPairTest, RoundTripUnderEachFlag)
{
    const ComplexKernel inverse = partner(k);
    ASSERT_NE(inverse.fn, nullptr);
    const auto input = randomInput(k, 50);
    for (int flag : kGoodFlags) {
        const auto back = runKernel(inverse, runKernel(k, input, flag), flag);
        const long double gain = flag == ScaleNoDivide ? k.size : 1;
        for (int i = 0; i < k.size; ++i)
            EXPECT_LT(std::abs(elementAt(k, back.data(), i) - gain * elementAt(k, input.data(), i)),
                      (k.is64() ? 1e-14 : 2e-6) * gain)
                << "flag " << flag << " element " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Built, ComplexPairTest,
                         ::testing::ValuesIn(kernelsWhere(builtComplexKernels(),
                                                          [](const auto& k) { return !k.inverse; })),
                         [](const auto& info) { return kernelLabel(info.param); });

} // namespace
