// FFTW as a second, independent oracle for the kernels on real data: each
// against FFTW's double-precision transform of the very numbers the kernel
// sees (built only when FFTW is found).
#include <gtest/gtest.h>

#include <fftw3.h>

#include <vector>

#include "real_kernels.h"
#include "test_support.h"

using namespace tvktest;

namespace {

class RealFftwOracleTest : public ::testing::TestWithParam<RealKernel> {};
using RealInverseFftwOracleTest = RealFftwOracleTest;
using HartleyFftwOracleTest = RealFftwOracleTest;

TEST_P(RealFftwOracleTest, AgreesWithFftw)
{
    const RealKernel& k = GetParam();
    const int n = k.size;
    double* in = fftw_alloc_real(n);
    fftw_complex* out = fftw_alloc_complex(n / 2 + 1);
    const fftw_plan plan = fftw_plan_dft_r2c_1d(n, in, out, FFTW_ESTIMATE);
    const double bound = k.is64() ? 1e-14 : 3e-6;
    std::vector<unsigned char> src(n * k.realBytes()), dst(k.outCells() * k.realBytes());
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
                if (cell >= 0) {
                    EXPECT_NEAR(static_cast<double>(numberAt(k, dst.data(), cell)), out[b][part], bound)
                        << "seed " << seed << (part ? " I[" : " R[") << b << "]";
                }
            }
    }
    fftw_destroy_plan(plan);
    fftw_free(in);
    fftw_free(out);
}

// FFTW's c2r transform (unnormalised, as the inverse kernels with flag 8)
// of the spectrum the inverse kernel reads through its layout.
TEST_P(RealInverseFftwOracleTest, AgreesWithFftw)
{
    const RealKernel& k = GetParam();
    const int n = k.size;
    fftw_complex* in = fftw_alloc_complex(n / 2 + 1);
    double* out = fftw_alloc_real(n);
    const fftw_plan plan = fftw_plan_dft_c2r_1d(n, in, out, FFTW_ESTIMATE);
    const double bound = k.is64() ? 4e-14 : 1e-5;
    std::vector<unsigned char> src(k.inCells() * k.realBytes()), dst(n * k.realBytes());
    for (unsigned seed = 90; seed < 96; ++seed) {
        const auto v = randomReals<double>(k.inCells(), seed);
        for (int i = 0; i < k.inCells(); ++i)
            setNumber(k, src.data(), i, v[i]);
        for (int b = 0; 2 * b <= n; ++b)
            for (int part = 0; part < 2; ++part) {
                const int cell = cellOf(k.layout, n, b, part == 1);
                const bool realBin = b == 0 || 2 * b == n;
                in[b][part] = cell < 0 || (part == 1 && realBin) ? 0.0 : static_cast<double>(numberAt(k, src.data(), cell));
            }
        fftw_execute(plan); // c2r overwrites its input: it is set anew each time
        ASSERT_EQ(k.run(src.data(), dst.data(), ScaleNoDivide), StatusOk);
        for (int i = 0; i < n; ++i)
            EXPECT_NEAR(static_cast<double>(numberAt(k, dst.data(), i)), out[i], bound) << "seed " << seed << " y[" << i << "]";
    }
    fftw_destroy_plan(plan);
    fftw_free(in);
    fftw_free(out);
}

// FFTW's discrete Hartley transform (r2r, FFTW_DHT).
TEST_P(HartleyFftwOracleTest, AgreesWithFftw)
{
    const RealKernel& k = GetParam();
    const int n = k.size;
    double* in = fftw_alloc_real(n);
    double* out = fftw_alloc_real(n);
    const fftw_plan plan = fftw_plan_r2r_1d(n, in, out, FFTW_DHT, FFTW_ESTIMATE);
    const double bound = k.is64() ? 2e-14 : 5e-6;
    std::vector<unsigned char> src(n * k.realBytes()), dst(n * k.realBytes());
    for (unsigned seed = 90; seed < 96; ++seed) {
        const auto v = randomReals<double>(n, seed);
        for (int i = 0; i < n; ++i) {
            setNumber(k, src.data(), i, v[i]);
            in[i] = static_cast<double>(numberAt(k, src.data(), i));
        }
        fftw_execute(plan);
        ASSERT_EQ(k.run(src.data(), dst.data(), ScaleNoDivide), StatusOk);
        for (int i = 0; i < n; ++i)
            EXPECT_NEAR(static_cast<double>(numberAt(k, dst.data(), i)), out[i], bound) << "seed " << seed << " H[" << i << "]";
    }
    fftw_destroy_plan(plan);
    fftw_free(in);
    fftw_free(out);
}

INSTANTIATE_TEST_SUITE_P(Built, RealFftwOracleTest, ::testing::ValuesIn(builtRealForwardKernels()),
                         [](const auto& info) { return realKernelLabel(info.param); });
INSTANTIATE_TEST_SUITE_P(Built, RealInverseFftwOracleTest, ::testing::ValuesIn(builtRealKernels(RealFamily::Inverse)),
                         [](const auto& info) { return realKernelLabel(info.param); });
INSTANTIATE_TEST_SUITE_P(Built, HartleyFftwOracleTest, ::testing::ValuesIn(builtRealKernels(RealFamily::Hartley)),
                         [](const auto& info) { return realKernelLabel(info.param); });

} // namespace
