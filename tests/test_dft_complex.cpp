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
    size_t bytes() const { return 2 * k.size * k.realBytes(); }
    bool isChirp() const { return takesChirpForm(k); }
};

TEST_P(ComplexKernelTest, CallFrame) { expectCallFrame(k); }

// An impulse gives the bare scale constant in every bin, bit for bit.
TEST_P(ComplexKernelTest, ImpulseGivesTheScaleConstant)
{
    std::vector<unsigned char> src(bytes(), 0), dst(bytes());
    setElement(k, src.data(), 0, 1.0L);
    for (int flag : kGoodFlags) {
        ASSERT_EQ(k.run(src.data(), dst.data(), flag), StatusOk);
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
    const auto input = randomInput(k, 4);
    std::vector<unsigned char> unscaled(bytes()), scaled(bytes()), expected(bytes());
    ASSERT_EQ(k.run(input.data(), unscaled.data(), ScaleNoDivide), StatusOk);
    for (int flag : kGoodFlags) {
        ASSERT_EQ(k.run(input.data(), scaled.data(), flag), StatusOk);
        const double s = expectedScale(k, flag);
        if (k.is64()) {
            auto* u = reinterpret_cast<const double*>(unscaled.data());
            auto* e = reinterpret_cast<double*>(expected.data());
            for (int i = 0; i < 2 * k.size; ++i)
                e[i] = u[i] * s;
        } else {
            auto* u = reinterpret_cast<const float*>(unscaled.data());
            auto* e = reinterpret_cast<float*>(expected.data());
            for (int i = 0; i < 2 * k.size; ++i)
                e[i] = u[i] * static_cast<float>(s);
        }
        EXPECT_EQ(scaled, expected) << "flag " << flag;
    }
}

// Largest absolute error against a long-double direct DFT for inputs in
// [-1, 1] without scaling.
TEST_P(ComplexKernelTest, AgreesWithDirectDft)
{
    const double bound = k.is64() ? (k.size <= 5 ? 1e-15 : 1e-14) : (k.size <= 5 ? 5e-7 : 3e-6);
    double worst = 0;
    for (unsigned seed = 10; seed < 30; ++seed) {
        const auto input = randomInput(k, seed);
        std::vector<unsigned char> dst(bytes());
        ASSERT_EQ(k.run(input.data(), dst.data(), ScaleNoDivide), StatusOk);
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
    std::vector<unsigned char> src(bytes(), 0), dst(bytes());
    setElement(k, src.data(), 1, 1.0L);
    ASSERT_EQ(k.run(src.data(), dst.data(), ScaleNoDivide), StatusOk);
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
    std::vector<unsigned char> src(bytes()), dst(bytes());
    for (unsigned seed = 60; seed < 70; ++seed) {
        std::complex<long double> sum = 0;
        const auto v = randomReals<double>(2 * k.size, seed, -8, 8);
        for (int i = 0; i < k.size; ++i) {
            const std::complex<long double> x(std::round(v[2 * i]), std::round(v[2 * i + 1]));
            setElement(k, src.data(), i, x);
            sum += x;
        }
        ASSERT_EQ(k.run(src.data(), dst.data(), ScaleNoDivide), StatusOk);
        EXPECT_EQ(elementAt(k, dst.data(), 0), sum) << "seed " << seed;
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
    const ComplexKernel& fwd = k;
    const ComplexKernel inverse = partner(k);
    ASSERT_NE(inverse.fn, nullptr);
    static const std::set<int> kInexact32 = {19, 23, 37, 47, 59, 61};
    static const std::set<int> kInexact64 = {11, 22, 23, 25, 29, 31, 33, 43, 44, 46, 47, 49, 50, 55, 58, 59, 62};
    const bool exact = (k.is64() ? kInexact64 : kInexact32).count(k.size) == 0;
    const double tolerance = k.is64() ? 1e-14 : 3e-6;
    for (unsigned seed = 40; seed < 48; ++seed) {
        const auto input = randomInput(k, seed);
        std::vector<unsigned char> inv(bytes()), swapped(bytes()), out(bytes());
        ASSERT_EQ(inverse.run(input.data(), inv.data(), ScaleNoDivide), StatusOk);
        for (int i = 0; i < k.size; ++i) {
            const auto v = elementAt(k, input.data(), i);
            setElement(k, swapped.data(), i, {v.imag(), v.real()});
        }
        ASSERT_EQ(fwd.run(swapped.data(), out.data(), ScaleNoDivide), StatusOk);
        for (int i = 0; i < k.size; ++i) {
            const auto a = elementAt(k, inv.data(), i);
            const auto b = elementAt(k, out.data(), i);
            if (exact) {
                EXPECT_EQ(a.real(), b.imag()) << "bin " << i;
                EXPECT_EQ(a.imag(), b.real()) << "bin " << i;
            } else {
                EXPECT_NEAR(static_cast<double>(a.real()), static_cast<double>(b.imag()), tolerance);
                EXPECT_NEAR(static_cast<double>(a.imag()), static_cast<double>(b.real()), tolerance);
            }
        }
    }
}

// Forward then inverse under the same flag gives the input back (N times
// the input under ScaleNoDivide).
TEST_P(ComplexPairTest, RoundTripUnderEachFlag)
{
    const ComplexKernel inv = partner(k);
    ASSERT_NE(inv.fn, nullptr);
    const auto input = randomInput(k, 50);
    const double tolerance = k.is64() ? 1e-14 : 2e-6;
    for (int flag : kGoodFlags) {
        std::vector<unsigned char> spectrum(bytes()), back(bytes());
        ASSERT_EQ(k.run(input.data(), spectrum.data(), flag), StatusOk);
        ASSERT_EQ(inv.run(spectrum.data(), back.data(), flag), StatusOk);
        const long double gain = flag == ScaleNoDivide ? k.size : 1;
        for (int i = 0; i < k.size; ++i)
            EXPECT_LT(std::abs(elementAt(k, back.data(), i) - gain * elementAt(k, input.data(), i)),
                      tolerance * gain)
                << "flag " << flag << " element " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Built, ComplexPairTest,
                         ::testing::ValuesIn(kernelsWhere(builtComplexKernels(), [](const auto& k) { return !k.inverse; })),
                         [](const auto& info) { return kernelLabel(info.param); });

} // namespace
