// FFTW as a second, independent oracle: every complex kernel against FFTW's
// double-precision transform of the same input (built only when FFTW is
// found at configure time).
#include <gtest/gtest.h>

#include <fftw3.h>

#include <complex>
#include <vector>

#include "complex_kernels.h"
#include "test_support.h"

using namespace tvktest;

namespace {

class FftwOracleTest : public ::testing::TestWithParam<ComplexKernel> {};

TEST_P(FftwOracleTest, AgreesWithFftw)
{
    const ComplexKernel& k = GetParam();
    const int n = k.size;
    fftw_complex* in = fftw_alloc_complex(n);
    fftw_complex* out = fftw_alloc_complex(n);
    const fftw_plan plan = fftw_plan_dft_1d(n, in, out, k.inverse ? FFTW_BACKWARD : FFTW_FORWARD, FFTW_ESTIMATE);
    for (unsigned seed = 80; seed < 90; ++seed) {
        const auto src = randomInput(k, seed), dst = runKernel(k, src, ScaleNoDivide);
        for (int c = 0; c < 2 * n; ++c) // FFTW sees the very numbers the kernel sees
            in[c / 2][c % 2] = static_cast<double>(numberAt(k, src.data(), c));
        fftw_execute(plan);
        for (int i = 0; i < n; ++i)
            EXPECT_LT(std::abs(elementAt(k, dst.data(), i) - std::complex<long double>(out[i][0], out[i][1])),
                      k.is64() ? 1e-14 : 3e-6)
                << "seed " << seed << " bin " << i;
    }
    fftw_destroy_plan(plan);
    fftw_free(in);
    fftw_free(out);
}

INSTANTIATE_TEST_SUITE_P(Built, FftwOracleTest, ::testing::ValuesIn(builtComplexKernels()),
                         [](const auto& info) { return kernelLabel(info.param); });

} // namespace
