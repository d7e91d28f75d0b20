// Properties every complex kernel must have, expanded over all kernels of
// the build (type, size, direction), flags and alignments.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vector>

#include "complex_kernels.h"
#include "kernel_checks.h"
#include "test_support.h"

using namespace tvktest;
using ::testing::ValuesIn;

namespace {

// 32fc 47 and 59 take the chirp form, whose chirp products round even an
// impulse.
bool takesChirpForm(const ComplexKernel& k) { return !k.is64() && (k.size == 47 || k.size == 59); }

class ComplexKernelTest : public ::testing::TestWithParam<ComplexKernel> {
protected:
    const ComplexKernel& k = GetParam();
};

TEST_P(ComplexKernelTest, CallFrame) { expectCallFrame(k); }

// An impulse gives the bare scale constant in every bin, bit for bit, and
// zeros +0.0; a few units in the last place of binary32, and zeros of
// either sign, in the chirp kernels.
TEST_P(ComplexKernelTest, ImpulseGivesTheScaleConstant)
{
    expectUnitGivesTheFactor(k, takesChirpForm(k) ? 0x1p-21 : 0);
}

// Against a long-double direct DFT for inputs in [-1, 1], and for an
// impulse at x[1], which gives the roots of unity W^k, each of modulus 1:
// every twiddle, spectrum and chirp constant of the kernel is exercised.
TEST_P(ComplexKernelTest, AgreesWithTheDefinition)
{
    for (unsigned seed = 10; seed < 30; ++seed)
        expectNearTheDefinition(k, randomInput(k, seed),
                                k.is64() ? (k.size <= 5 ? 1e-15 : 1e-14) : (k.size <= 5 ? 5e-7 : 3e-6));
    expectNearTheDefinition(k, unitAt(k, 2), k.is64() ? 4e-15 : 1.5e-6);
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
    for (unsigned seed = 60; seed < 70; ++seed) {
        auto x = randomReals<double>(k.inCells(), seed, -8, 8);
        long double sum[2] = {}; // real and imaginary parts
        for (int c = 0; c < k.inCells(); ++c)
            sum[c % 2] += x[c] = std::round(x[c]);
        const auto out = runKernel(k, bytesOf(k, x), ScaleNoDivide);
        for (int part : {0, 1})
            EXPECT_EQ(numberAt(k, out.data(), part), sum[part]) << "seed " << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(Built, ComplexKernelTest, ValuesIn(builtComplexKernels()), ByLabel());
INSTANTIATE_TEST_SUITE_P(Built, ComplexExactDcTest,
                         ValuesIn(kernelsWhere(builtComplexKernels(), std::not_fn(takesChirpForm))), ByLabel());

} // namespace
