// FFTW as a second, independent oracle: every complex and real-data kernel
// against FFTW's double-precision transform (the complex DFT, r2c, c2r, or
// the discrete Hartley r2r, all unnormalised as the kernels under flag 8) of
// the very numbers the kernel reads (built only when FFTW is found).
#include <gtest/gtest.h>

#include <fftw3.h>

#include <algorithm>
#include <vector>

#include "complex_kernels.h"
#include "real_kernels.h"
#include "test_support.h"

using namespace tvktest;

namespace {

// FFTW's transform of a complex kernel's input cells x, in its output cells.
std::vector<double> fftwOf(const ComplexKernel& k, const std::vector<long double>& x)
{
    fftw_complex* in = fftw_alloc_complex(k.size);
    fftw_complex* out = fftw_alloc_complex(k.size);
    const fftw_plan plan = fftw_plan_dft_1d(k.size, in, out, k.inverse ? FFTW_BACKWARD : FFTW_FORWARD, FFTW_ESTIMATE);
    std::copy(x.begin(), x.end(), in[0]);
    fftw_execute(plan);
    const std::vector<double> result(out[0], out[0] + 2 * k.size);
    fftw_destroy_plan(plan);
    fftw_free(in);
    fftw_free(out);
    return result;
}

// And of a real-data kernel's: the spectrum passes in CCS cells.
std::vector<double> fftwOf(const RealKernel& k, const std::vector<long double>& x)
{
    const int n = k.size;
    double* real = fftw_alloc_real(n);
    fftw_complex* spectrum = fftw_alloc_complex(n / 2 + 1);
    const fftw_plan plan =
        k.family == RealFamily::Forward   ? fftw_plan_dft_r2c_1d(n, real, spectrum, FFTW_ESTIMATE)
        : k.family == RealFamily::Inverse ? fftw_plan_dft_c2r_1d(n, spectrum, real, FFTW_ESTIMATE)
                                          : fftw_plan_r2r_1d(n, real, real, FFTW_DHT, FFTW_ESTIMATE);
    if (k.family == RealFamily::Inverse) {
        const auto ccs = fromLayout(x, k.layout, n);
        std::copy(ccs.begin(), ccs.end(), spectrum[0]);
    } else {
        std::copy(x.begin(), x.end(), real);
    }
    fftw_execute(plan);
    std::vector<double> out(k.outCells());
    if (k.family == RealFamily::Forward)
        toLayout(spectrum[0], k.layout, n, out);
    else
        std::copy(real, real + n, out.begin());
    fftw_destroy_plan(plan);
    fftw_free(real);
    fftw_free(spectrum);
    return out;
}

// Every output cell within `bound` of FFTW's, for the inputs of `seeds`
// seeds from `first` on.
template <class Kernel>
void expectAgreesWithFftw(const Kernel& k, unsigned first, unsigned seeds, double bound)
{
    for (unsigned seed = first; seed < first + seeds; ++seed) {
        const auto src = randomInput(k, seed), dst = runKernel(k, src, ScaleNoDivide);
        const auto want = fftwOf(k, numbersOf(k, src)); // the very numbers the kernel reads
        for (int c = 0; c < k.outCells(); ++c)
            EXPECT_NEAR(static_cast<double>(numberAt(k, dst.data(), c)), want[c], bound)
                << "seed " << seed << " cell " << c;
    }
}

class ComplexFftwOracleTest : public ::testing::TestWithParam<ComplexKernel> {};

TEST_P(ComplexFftwOracleTest, AgreesWithFftw)
{
    const ComplexKernel& k = GetParam();
    expectAgreesWithFftw(k, 80, 10, k.is64() ? 1e-14 : 3e-6);
}

class RealFftwOracleTest : public ::testing::TestWithParam<RealKernel> {};

TEST_P(RealFftwOracleTest, AgreesWithFftw)
{
    const RealKernel& k = GetParam();
    // Forward, inverse, Hartley.
    const double bounds64[] = {1e-14, 4e-14, 2e-14}, bounds32[] = {3e-6, 1e-5, 5e-6};
    expectAgreesWithFftw(k, 90, 6, (k.is64() ? bounds64 : bounds32)[static_cast<int>(k.family)]);
}

INSTANTIATE_TEST_SUITE_P(Built, ComplexFftwOracleTest, ::testing::ValuesIn(builtComplexKernels()), ByLabel());
INSTANTIATE_TEST_SUITE_P(Built, RealFftwOracleTest, ::testing::ValuesIn(allRealKernels()), ByLabel());

} // namespace
