// Complex DFT: every built kernel, out of place, unscaled, beside FFTW's
// plan of the same size, type and direction.
#include "bench_support.h"
#include "complex_kernels.h"
#include "tvkgen.h"

#ifdef TVKGEN_BENCH_FFTW
#include <fftw3.h>
#endif

namespace {

template <typename Complex>
using RealOf = decltype(Complex::re);

template <typename Complex>
Complex* asComplex(const tvkbench::AlignedReals<RealOf<Complex>>& reals)
{
    return reinterpret_cast<Complex*>(reals.get());
}

template <typename Complex>
using ComplexKernelFn = TvkStatus (*)(const Complex*, Complex*, int);

template <typename Complex>
void registerOurs(const tvktest::ComplexKernel& k)
{
    const auto fn = reinterpret_cast<ComplexKernelFn<Complex>>(k.fn);
    const int size = k.size;
    tvkbench::registerCase("dft_complex", k.type, k.inverse ? "inv" : "fwd", size, tvkbench::kOurs,
                           [fn, size](benchmark::State& state) {
                               auto src = tvkbench::alignedReals<RealOf<Complex>>(2 * size);
                               auto dst = tvkbench::alignedReals<RealOf<Complex>>(2 * size);
                               for (auto _ : state) {
                                   fn(asComplex<Complex>(src), asComplex<Complex>(dst), ScaleNoDivide);
                                   benchmark::ClobberMemory();
                               }
                           });
}

#ifdef TVKGEN_BENCH_FFTW
// One plan per case, measured once on arrays of the same alignment as the
// timed ones, then run on those arrays with the new-array execute call.
template <typename Complex, typename FftwComplex, typename Plan, auto planDft, auto executeDft, auto destroyPlan>
void registerFftw(const tvktest::ComplexKernel& k)
{
    const int size = k.size;
    const int sign = k.inverse ? FFTW_BACKWARD : FFTW_FORWARD;
    tvkbench::registerCase("dft_complex", k.type, k.inverse ? "inv" : "fwd", size, "fftw",
                           [size, sign](benchmark::State& state) {
                               auto src = tvkbench::alignedReals<RealOf<Complex>>(2 * size);
                               auto dst = tvkbench::alignedReals<RealOf<Complex>>(2 * size);
                               const auto in = reinterpret_cast<FftwComplex*>(src.get());
                               const auto out = reinterpret_cast<FftwComplex*>(dst.get());
                               // Measuring overwrites the arrays: refill the input afterwards.
                               const Plan plan = planDft(size, in, out, sign, FFTW_MEASURE);
                               tvkbench::fillInput(src.get(), 2 * size);
                               for (auto _ : state) {
                                   executeDft(plan, in, out);
                                   benchmark::ClobberMemory();
                               }
                               destroyPlan(plan);
                           });
}
#endif

const bool registered = [] {
    for (const tvktest::ComplexKernel& k : tvktest::builtComplexKernels()) {
        if (k.fn == nullptr)
            continue;
        if (k.is64()) {
            registerOurs<Tvk64fc>(k);
#ifdef TVKGEN_BENCH_FFTW
            registerFftw<Tvk64fc, fftw_complex, fftw_plan, fftw_plan_dft_1d, fftw_execute_dft, fftw_destroy_plan>(k);
#endif
        } else {
            registerOurs<Tvk32fc>(k);
#ifdef TVKGEN_BENCH_FFTW
            registerFftw<Tvk32fc, fftwf_complex, fftwf_plan, fftwf_plan_dft_1d, fftwf_execute_dft,
                         fftwf_destroy_plan>(k);
#endif
        }
    }
    return true;
}();

} // namespace
