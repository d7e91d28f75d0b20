// Forward real DFT: every built size and type into CCS, the layout FFTW's
// r2c writes too (the three layouts share one graph), unscaled, beside
// FFTW's r2c plan of the same size and type.
#include "bench_support.h"
#include "real_kernels.h"
#include "tvkgen.h"

#ifdef TVKGEN_BENCH_FFTW
#include <fftw3.h>
#endif

namespace {

template <typename Real>
using RealKernelFn = TvkStatus (*)(const Real*, Real*, int);

template <typename Real>
void registerOurs(const tvktest::RealKernel& k)
{
    const auto fn = reinterpret_cast<RealKernelFn<Real>>(k.fn);
    const int size = k.size, cells = k.outCells();
    tvkbench::registerCase("dft_real", k.type, "fwd", size, tvkbench::kOurs, [fn, size, cells](benchmark::State& state) {
        auto src = tvkbench::alignedReals<Real>(size);
        auto dst = tvkbench::alignedReals<Real>(cells);
        for (auto _ : state) {
            fn(src.get(), dst.get(), ScaleNoDivide);
            benchmark::ClobberMemory();
        }
    });
}

#ifdef TVKGEN_BENCH_FFTW
template <typename Real, typename FftwComplex, typename Plan, auto planR2c, auto executeR2c, auto destroyPlan>
void registerFftw(const tvktest::RealKernel& k)
{
    const int size = k.size;
    tvkbench::registerCase("dft_real", k.type, "fwd", size, "fftw", [size](benchmark::State& state) {
        auto src = tvkbench::alignedReals<Real>(size);
        auto dst = tvkbench::alignedReals<Real>(2 * (size / 2 + 1));
        const auto out = reinterpret_cast<FftwComplex*>(dst.get());
        // Measuring overwrites the arrays: refill the input afterwards.
        const Plan plan = planR2c(size, src.get(), out, FFTW_MEASURE);
        tvkbench::fillInput(src.get(), size);
        for (auto _ : state) {
            executeR2c(plan, src.get(), out);
            benchmark::ClobberMemory();
        }
        destroyPlan(plan);
    });
}
#endif

const bool registered = [] {
    for (const tvktest::RealKernel& k : tvktest::builtRealForwardKernels()) {
        if (k.fn == nullptr || k.layout != tvktest::Layout::CCS)
            continue;
        if (k.is64()) {
            registerOurs<Tvk64f>(k);
#ifdef TVKGEN_BENCH_FFTW
            registerFftw<Tvk64f, fftw_complex, fftw_plan, fftw_plan_dft_r2c_1d, fftw_execute_dft_r2c,
                         fftw_destroy_plan>(k);
#endif
        } else {
            registerOurs<Tvk32f>(k);
#ifdef TVKGEN_BENCH_FFTW
            registerFftw<Tvk32f, fftwf_complex, fftwf_plan, fftwf_plan_dft_r2c_1d, fftwf_execute_dft_r2c,
                         fftwf_destroy_plan>(k);
#endif
        }
    }
    return true;
}();

} // namespace
