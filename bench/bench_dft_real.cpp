// Kernels on real data, every size and type, unscaled, each beside FFTW's
// plan of the same transform: forward into CCS against r2c, inverse from
// CCS against c2r (the three layouts share one graph), Hartley against the
// r2r DHT.
#include "bench_support.h"
#include "real_kernels.h"
#include "tvkgen.h"

#ifdef TVKGEN_BENCH_FFTW
#include <fftw3.h>
#endif

namespace {

using tvktest::RealFamily;

const char* familyOf(RealFamily f) { return f == RealFamily::Hartley ? "hartley" : "dft_real"; }
const char* variantOf(RealFamily f) { return f == RealFamily::Forward ? "fwd" : f == RealFamily::Inverse ? "inv" : "dht"; }

template <typename Real>
using RealKernelFn = TvkStatus (*)(const Real*, Real*, int);

template <typename Real>
void registerOurs(const tvktest::RealKernel& k)
{
    const auto fn = reinterpret_cast<RealKernelFn<Real>>(k.fn);
    const int in = k.inCells(), out = k.outCells();
    tvkbench::registerCase(familyOf(k.family), k.type, variantOf(k.family), k.size, tvkbench::kOurs,
                           [fn, in, out](benchmark::State& state) {
                               auto src = tvkbench::alignedReals<Real>(in);
                               auto dst = tvkbench::alignedReals<Real>(out);
                               for (auto _ : state) {
                                   fn(src.get(), dst.get(), ScaleNoDivide);
                                   benchmark::ClobberMemory();
                               }
                           });
}

#ifdef TVKGEN_BENCH_FFTW
// FFTW's functions of one precision.
template <typename Real>
struct Fftw;

template <>
struct Fftw<double> {
    using Complex = fftw_complex;
    using Plan = fftw_plan;
    static constexpr auto planR2c = fftw_plan_dft_r2c_1d;
    static constexpr auto planC2r = fftw_plan_dft_c2r_1d;
    static constexpr auto planR2r = fftw_plan_r2r_1d;
    static constexpr auto executeR2c = fftw_execute_dft_r2c;
    static constexpr auto executeC2r = fftw_execute_dft_c2r;
    static constexpr auto executeR2r = fftw_execute_r2r;
    static constexpr auto destroy = fftw_destroy_plan;
};

template <>
struct Fftw<float> {
    using Complex = fftwf_complex;
    using Plan = fftwf_plan;
    static constexpr auto planR2c = fftwf_plan_dft_r2c_1d;
    static constexpr auto planC2r = fftwf_plan_dft_c2r_1d;
    static constexpr auto planR2r = fftwf_plan_r2r_1d;
    static constexpr auto executeR2c = fftwf_execute_dft_r2c;
    static constexpr auto executeC2r = fftwf_execute_dft_c2r;
    static constexpr auto executeR2r = fftwf_execute_r2r;
    static constexpr auto destroy = fftwf_destroy_plan;
};

// FFTW_MEASURE planning overwrites the arrays, so the input is filled after
// it; c2r overwrites its input on every call, as it may.
template <typename Real>
void registerFftw(const tvktest::RealKernel& k)
{
    using F = Fftw<Real>;
    const int size = k.size, cells = 2 * (size / 2 + 1);
    const RealFamily family = k.family;
    tvkbench::registerCase(familyOf(family), k.type, variantOf(family), size, "fftw", [=](benchmark::State& state) {
        auto reals = tvkbench::alignedReals<Real>(cells);
        auto spectrum = tvkbench::alignedReals<Real>(cells);
        const auto complex = reinterpret_cast<typename F::Complex*>(spectrum.get());
        typename F::Plan plan;
        if (family == RealFamily::Forward)
            plan = F::planR2c(size, reals.get(), complex, FFTW_MEASURE);
        else if (family == RealFamily::Inverse)
            plan = F::planC2r(size, complex, reals.get(), FFTW_MEASURE);
        else
            plan = F::planR2r(size, reals.get(), spectrum.get(), FFTW_DHT, FFTW_MEASURE);
        tvkbench::fillInput(reals.get(), size);
        tvkbench::fillInput(spectrum.get(), cells);
        for (auto _ : state) {
            if (family == RealFamily::Forward)
                F::executeR2c(plan, reals.get(), complex);
            else if (family == RealFamily::Inverse)
                F::executeC2r(plan, complex, reals.get());
            else
                F::executeR2r(plan, reals.get(), spectrum.get());
            benchmark::ClobberMemory();
        }
        F::destroy(plan);
    });
}
#endif

const bool registered = [] {
    for (const tvktest::RealKernel& k : tvktest::allRealKernels()) {
        if (k.fn == nullptr || k.layout != tvktest::Layout::CCS)
            continue;
        if (k.is64())
            registerOurs<Tvk64f>(k);
        else
            registerOurs<Tvk32f>(k);
#ifdef TVKGEN_BENCH_FFTW
        if (k.is64())
            registerFftw<double>(k);
        else
            registerFftw<float>(k);
#endif
    }
    return true;
}();

} // namespace
