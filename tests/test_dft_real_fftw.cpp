// FFTW as a second, independent oracle for the kernels on real data: each
// against FFTW's double-precision transform (r2c, c2r, or the discrete
// Hartley r2r, all unnormalised as the kernels under flag 8) of the very
// numbers the kernel reads (built only when FFTW is found).
#include <gtest/gtest.h>

#include <fftw3.h>

#include <algorithm>
#include <vector>

#include "real_kernels.h"
#include "test_support.h"

using namespace tvktest;

namespace {

// FFTW's transform of the kernel's input cells x, in its output cells.
std::vector<double> fftwOf(const RealKernel& k, const std::vector<double>& x)
{
    const int n = k.size;
    double* real = fftw_alloc_real(n);
    fftw_complex* spectrum = fftw_alloc_complex(n / 2 + 1);
    std::vector<double> out(k.outCells());
    const auto eachCell = [&](auto visit) {
        for (int b = 0; 2 * b <= n; ++b)
            for (int part = 0; part < 2; ++part)
                visit(b, part, cellOf(k.layout, n, b, part == 1));
    };
    fftw_plan plan;
    if (k.family == RealFamily::Forward) {
        plan = fftw_plan_dft_r2c_1d(n, real, spectrum, FFTW_ESTIMATE);
        std::copy(x.begin(), x.end(), real);
        fftw_execute(plan);
        eachCell([&](int b, int part, int cell) {
            if (cell >= 0)
                out[cell] = spectrum[b][part];
        });
    } else if (k.family == RealFamily::Inverse) {
        plan = fftw_plan_dft_c2r_1d(n, spectrum, real, FFTW_ESTIMATE);
        eachCell([&](int b, int part, int cell) {
            const bool unread = cell < 0 || (part == 1 && (b == 0 || 2 * b == n));
            spectrum[b][part] = unread ? 0.0 : x[cell];
        });
        fftw_execute(plan);
        std::copy(real, real + n, out.begin());
    } else {
        plan = fftw_plan_r2r_1d(n, real, real, FFTW_DHT, FFTW_ESTIMATE);
        std::copy(x.begin(), x.end(), real);
        fftw_execute(plan);
        std::copy(real, real + n, out.begin());
    }
    fftw_destroy_plan(plan);
    fftw_free(real);
    fftw_free(spectrum);
    return out;
}

class RealFftwOracleTest : public ::testing::TestWithParam<RealKernel> {};

TEST_P(RealFftwOracleTest, AgreesWithFftw)
{
    const RealKernel& k = GetParam();
    // Forward, inverse, Hartley.
    const double bounds64[] = {1e-14, 4e-14, 2e-14}, bounds32[] = {3e-6, 1e-5, 5e-6};
    const double bound = (k.is64() ? bounds64 : bounds32)[static_cast<int>(k.family)];
    std::vector<double> x(k.inCells());
    for (unsigned seed = 90; seed < 96; ++seed) {
        const auto src = randomInput(k, seed), dst = runKernel(k, src, ScaleNoDivide);
        for (int i = 0; i < k.inCells(); ++i) // the very numbers the kernel reads
            x[i] = static_cast<double>(numberAt(k, src.data(), i));
        const auto want = fftwOf(k, x);
        for (int c = 0; c < k.outCells(); ++c)
            EXPECT_NEAR(static_cast<double>(numberAt(k, dst.data(), c)), want[c], bound)
                << "seed " << seed << " cell " << c;
    }
}

INSTANTIATE_TEST_SUITE_P(Built, RealFftwOracleTest, ::testing::ValuesIn(allRealKernels()),
                         [](const auto& info) { return realKernelLabel(info.param); });

} // namespace
