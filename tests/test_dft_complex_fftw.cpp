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
    const double bound = k.is64() ? 1e-14 : 3e-6;
    std::vector<unsigned char> src(2 * n * k.realBytes()), dst(src.size());
    for (unsigned seed = 80; seed < 90; ++seed) {
        const auto v = randomReals<double>(2 * n, seed);
        for (int i = 0; i < n; ++i)
            setElement(k, src.data(), i, {v[2 * i], v[2 * i + 1]});
        // FFTW sees the very numbers the kernel sees.
        for (int i = 0; i < n; ++i) {
            const auto x = elementAt(k, src.data(), i);
            in[i][0] = static_cast<double>(x.real());
            in[i][1] = static_cast<double>(x.imag());
        }
        fftw_execute(plan);
        ASSERT_EQ(k.run(src.data(), dst.data(), ScaleNoDivide), StatusOk);
        for (int i = 0; i < n; ++i) {
            const std::complex<long double> expected(out[i][0], out[i][1]);
            EXPECT_LT(static_cast<double>(std::abs(elementAt(k, dst.data(), i) - expected)), bound)
                << "seed " << seed << " bin " << i;
        }
    }
    fftw_destroy_plan(plan);
    fftw_free(in);
    fftw_free(out);
}

INSTANTIATE_TEST_SUITE_P(Built, FftwOracleTest, ::testing::ValuesIn(builtComplexKernels()),
                         [](const auto& info) { return kernelLabel(info.param); });

} // namespace
