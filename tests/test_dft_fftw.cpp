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

fftw_complex* complexCells(std::vector<double>& v) { return reinterpret_cast<fftw_complex*>(v.data()); }

// FFTW's transform of a complex kernel's input cells x, in its output cells
// (planned with FFTW_ESTIMATE, which leaves the arrays as they are).
std::vector<double> fftwOf(const ComplexKernel& k, const std::vector<long double>& x)
{
    std::vector<double> in(x.begin(), x.end()), out(x.size());
    const fftw_plan plan = fftw_plan_dft_1d(k.size, complexCells(in), complexCells(out),
                                            k.inverse ? FFTW_BACKWARD : FFTW_FORWARD, FFTW_ESTIMATE);
    fftw_execute(plan);
    fftw_destroy_plan(plan);
    return out;
}

// And of a real-data kernel's: the spectrum passes in CCS cells.
std::vector<double> fftwOf(const RealKernel& k, const std::vector<long double>& x)
{
    const int n = k.size;
    std::vector<double> real(x.begin(), x.begin() + n), ccs(n + 2);
    if (k.family == RealFamily::Inverse)
        std::ranges::copy(fromLayout(x, k.layout, n), ccs.begin());
    const fftw_plan plan =
        k.family == RealFamily::Forward   ? fftw_plan_dft_r2c_1d(n, real.data(), complexCells(ccs), FFTW_ESTIMATE)
        : k.family == RealFamily::Inverse ? fftw_plan_dft_c2r_1d(n, complexCells(ccs), real.data(), FFTW_ESTIMATE)
                                          : fftw_plan_r2r_1d(n, real.data(), real.data(), FFTW_DHT, FFTW_ESTIMATE);
    fftw_execute(plan);
    fftw_destroy_plan(plan);
    if (k.family != RealFamily::Forward)
        return real;
    std::vector<double> out(k.outCells());
    toLayout(ccs, k.layout, n, out);
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
