// FFTW's r2c transform as a second, independent oracle: every forward real
// kernel against FFTW's double-precision transform of the same numbers,
// read through the kernel's layout (built only when FFTW is found).
#include <gtest/gtest.h>

#include <fftw3.h>

#include <vector>

#include "real_kernels.h"
#include "test_support.h"

using namespace tvktest;

namespace {

class RealFftwOracleTest : public ::testing::TestWithParam<RealKernel> {};

TEST_P(RealFftwOracleTest, AgreesWithFftw)
{
    const RealKernel& k = GetParam();
    const int n = k.size;
    double* in = fftw_alloc_real(n);
    fftw_complex* out = fftw_alloc_complex(n / 2 + 1);
    const fftw_plan plan = fftw_plan_dft_r2c_1d(n, in, out, FFTW_ESTIMATE);
    const double bound = k.is64() ? 1e-14 : 3e-6;
    std::vector<unsigned char> src(n * k.realBytes()), dst(k.cells() * k.realBytes());
    for (unsigned seed = 90; seed < 96; ++seed) {
        const auto v = randomReals<double>(n, seed);
        for (int i = 0; i < n; ++i) {
            setNumber(k, src.data(), i, v[i]);
            in[i] = static_cast<double>(numberAt(k, src.data(), i)); // the very numbers the kernel sees
        }
        fftw_execute(plan);
        ASSERT_EQ(k.run(src.data(), dst.data(), ScaleNoDivide), StatusOk);
        for (int b = 0; 2 * b <= n; ++b)
            for (int part = 0; part < 2; ++part) {
                const int cell = cellOf(k.layout, n, b, part == 1);
                if (cell >= 0)
                    EXPECT_NEAR(static_cast<double>(numberAt(k, dst.data(), cell)), out[b][part], bound)
                        << "seed " << seed << (part ? " I[" : " R[") << b << "]";
            }
    }
    fftw_destroy_plan(plan);
    fftw_free(in);
    fftw_free(out);
}

INSTANTIATE_TEST_SUITE_P(Built, RealFftwOracleTest, ::testing::ValuesIn(builtRealForwardKernels()),
                         [](const auto& info) { return realKernelLabel(info.param); });

} // namespace
