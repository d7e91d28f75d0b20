// DCT-IV plans of every power of two from 2 to 2^17, out of place, beside
// FFTW's REDFT11 of the same length and type (which computes twice our
// transform: the factor costs nothing and is left alone). A further case
// times building a plan in a caller's block.
#include <vector>

#include "bench_support.h"
#include "tvkgen.h"

#ifdef TVKGEN_BENCH_FFTW
#include <fftw3.h>
#endif

namespace {

constexpr int kMaxLen = 1 << 17;

template <typename Real, typename Plan, auto getSize, auto init, auto run>
void registerOurs(const char* type, int len)
{
    tvkbench::registerCase("dct4", type, "run", len, tvkbench::kOurs, [len](benchmark::State& state) {
        int32_t size = 0;
        getSize(len, &size);
        std::vector<uint8_t> mem(size);
        Plan* plan = nullptr;
        init(&plan, len, mem.data());
        auto src = tvkbench::alignedReals<Real>(len);
        auto dst = tvkbench::alignedReals<Real>(len);
        for (auto _ : state) {
            run(src.get(), dst.get(), plan);
            benchmark::ClobberMemory();
        }
    });
    tvkbench::registerCase("dct4", type, "init", len, tvkbench::kOurs, [len](benchmark::State& state) {
        int32_t size = 0;
        getSize(len, &size);
        std::vector<uint8_t> mem(size);
        for (auto _ : state) {
            Plan* plan = nullptr;
            init(&plan, len, mem.data());
            benchmark::DoNotOptimize(plan);
        }
    });
}

#ifdef TVKGEN_BENCH_FFTW
// Planned with FFTW_MEASURE on arrays of the timed alignment, then run with
// the new-array execute call.
template <typename Real, typename FftwPlan, auto planR2r, auto executeR2r, auto destroyPlan>
void registerFftw(const char* type, int len)
{
    tvkbench::registerCase("dct4", type, "run", len, "fftw", [len](benchmark::State& state) {
        auto src = tvkbench::alignedReals<Real>(len);
        auto dst = tvkbench::alignedReals<Real>(len);
        const FftwPlan plan = planR2r(len, src.get(), dst.get(), FFTW_REDFT11, FFTW_MEASURE);
        tvkbench::fillInput(src.get(), len);
        for (auto _ : state) {
            executeR2r(plan, src.get(), dst.get());
            benchmark::ClobberMemory();
        }
        destroyPlan(plan);
    });
}
#endif

const bool registered = [] {
    for (int len = 2; len <= kMaxLen; len *= 2) {
        registerOurs<Tvk32f, TvkgDCT4Plan_32f, tvkgDCT4GetSize_32f, tvkgDCT4Init_32f, tvkgDCT4_32f>("32f", len);
        registerOurs<Tvk64f, TvkgDCT4Plan_64f, tvkgDCT4GetSize_64f, tvkgDCT4Init_64f, tvkgDCT4_64f>("64f", len);
#ifdef TVKGEN_BENCH_FFTW
        registerFftw<float, fftwf_plan, fftwf_plan_r2r_1d, fftwf_execute_r2r, fftwf_destroy_plan>("32f", len);
        registerFftw<double, fftw_plan, fftw_plan_r2r_1d, fftw_execute_r2r, fftw_destroy_plan>("64f", len);
#endif
    }
    return true;
}();

} // namespace
