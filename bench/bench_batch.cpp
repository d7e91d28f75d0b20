// Batch entries beside a loop of single calls and FFTW's advanced interface
// (when installed, FFTW_MEASURE, the same count and distances), per call of
// `count` transforms of one size, out of place, unscaled; items per second
// count transforms. Cases are batch/<family>/<type>/<size>x<count>/<impl>.
#include <benchmark/benchmark.h>

#include <string>

#include "bench_support.h"
#include "tvkgen_batch.h"

#ifdef TVKGEN_BENCH_FFTW
#include <fftw3.h>
#endif

namespace {

constexpr int kSizes[] = {8, 12, 16, 17, 32, 60, 64};
constexpr int kCount = 256;

// One transform's numbers in and out, and the distance that holds either.
struct Shape {
    int in;
    int out;
    int dist() const { return in > out ? in : out; }
};

std::string caseName(const char* family, const char* type, int size, const char* impl)
{
    return std::string("batch/") + family + "/" + type + "/" + std::to_string(size) + "x" + std::to_string(kCount) +
           "/" + impl;
}

// Our two ways, on arrays of Real numbers; elements of `perElement` numbers.
template <class Element, class Real>
void registerOurs(const char* family, const char* type, int size, Shape shape,
                  TvkStatus (*single)(const Element*, Element*, int, int),
                  TvkStatus (*batch)(const Element*, int, Element*, int, int, int, int))
{
    constexpr int perElement = sizeof(Element) / sizeof(Real);
    const int dist = shape.dist() / perElement;
    benchmark::RegisterBenchmark(caseName(family, type, size, "loop").c_str(), [=](benchmark::State& state) {
        auto src = tvkbench::alignedReals<Real>(shape.dist() * kCount);
        auto dst = tvkbench::alignedReals<Real>(shape.dist() * kCount);
        const auto in = reinterpret_cast<const Element*>(src.get());
        const auto out = reinterpret_cast<Element*>(dst.get());
        for (auto _ : state) {
            for (int m = 0; m < kCount; ++m)
                single(in + m * dist, out + m * dist, size, ScaleNoDivide);
            benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(state.iterations() * kCount);
    });
    benchmark::RegisterBenchmark(caseName(family, type, size, "batch").c_str(), [=](benchmark::State& state) {
        auto src = tvkbench::alignedReals<Real>(shape.dist() * kCount);
        auto dst = tvkbench::alignedReals<Real>(shape.dist() * kCount);
        for (auto _ : state) {
            batch(reinterpret_cast<const Element*>(src.get()), dist, reinterpret_cast<Element*>(dst.get()), dist, size,
                  kCount, ScaleNoDivide);
            benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(state.iterations() * kCount);
    });
}

#ifdef TVKGEN_BENCH_FFTW
// A plan over arrays of Real numbers `dist` apart, made by `plan(n, in, out,
// dist)`, measured once, then run with the new-array execute call.
template <class Real, class PlanT>
void registerFftw(const char* family, const char* type, int size, Shape shape, PlanT (*plan)(int, Real*, Real*, int),
                  void (*execute)(PlanT, Real*, Real*), void (*destroy)(PlanT))
{
    benchmark::RegisterBenchmark(caseName(family, type, size, "fftw").c_str(), [=](benchmark::State& state) {
        auto src = tvkbench::alignedReals<Real>(shape.dist() * kCount);
        auto dst = tvkbench::alignedReals<Real>(shape.dist() * kCount);
        const PlanT p = plan(size, src.get(), dst.get(), shape.dist());
        tvkbench::fillInput(src.get(), shape.dist() * kCount);
        for (auto _ : state) {
            execute(p, src.get(), dst.get());
            benchmark::ClobberMemory();
        }
        destroy(p);
        state.SetItemsProcessed(state.iterations() * kCount);
    });
}

// The advanced interface's plans, by family and type.
template <class Real>
struct Fftw;

template <>
struct Fftw<float> {
    static fftwf_plan complex(int n, float* in, float* out, int dist)
    {
        return fftwf_plan_many_dft(1, &n, kCount, reinterpret_cast<fftwf_complex*>(in), nullptr, 1, dist / 2,
                                   reinterpret_cast<fftwf_complex*>(out), nullptr, 1, dist / 2, FFTW_FORWARD,
                                   FFTW_MEASURE);
    }
    static fftwf_plan realForward(int n, float* in, float* out, int dist)
    {
        return fftwf_plan_many_dft_r2c(1, &n, kCount, in, nullptr, 1, dist, reinterpret_cast<fftwf_complex*>(out),
                                       nullptr, 1, dist / 2, FFTW_MEASURE);
    }
    static fftwf_plan hartley(int n, float* in, float* out, int dist)
    {
        const fftwf_r2r_kind kind = FFTW_DHT;
        return fftwf_plan_many_r2r(1, &n, kCount, in, nullptr, 1, dist, out, nullptr, 1, dist, &kind, FFTW_MEASURE);
    }
    static void executeComplex(fftwf_plan p, float* in, float* out)
    {
        fftwf_execute_dft(p, reinterpret_cast<fftwf_complex*>(in), reinterpret_cast<fftwf_complex*>(out));
    }
    static void executeRealForward(fftwf_plan p, float* in, float* out)
    {
        fftwf_execute_dft_r2c(p, in, reinterpret_cast<fftwf_complex*>(out));
    }
    static void executeHartley(fftwf_plan p, float* in, float* out) { fftwf_execute_r2r(p, in, out); }
    static void destroy(fftwf_plan p) { fftwf_destroy_plan(p); }
};

template <>
struct Fftw<double> {
    static fftw_plan complex(int n, double* in, double* out, int dist)
    {
        return fftw_plan_many_dft(1, &n, kCount, reinterpret_cast<fftw_complex*>(in), nullptr, 1, dist / 2,
                                  reinterpret_cast<fftw_complex*>(out), nullptr, 1, dist / 2, FFTW_FORWARD,
                                  FFTW_MEASURE);
    }
    static fftw_plan realForward(int n, double* in, double* out, int dist)
    {
        return fftw_plan_many_dft_r2c(1, &n, kCount, in, nullptr, 1, dist, reinterpret_cast<fftw_complex*>(out),
                                      nullptr, 1, dist / 2, FFTW_MEASURE);
    }
    static fftw_plan hartley(int n, double* in, double* out, int dist)
    {
        const fftw_r2r_kind kind = FFTW_DHT;
        return fftw_plan_many_r2r(1, &n, kCount, in, nullptr, 1, dist, out, nullptr, 1, dist, &kind, FFTW_MEASURE);
    }
    static void executeComplex(fftw_plan p, double* in, double* out)
    {
        fftw_execute_dft(p, reinterpret_cast<fftw_complex*>(in), reinterpret_cast<fftw_complex*>(out));
    }
    static void executeRealForward(fftw_plan p, double* in, double* out)
    {
        fftw_execute_dft_r2c(p, in, reinterpret_cast<fftw_complex*>(out));
    }
    static void executeHartley(fftw_plan p, double* in, double* out) { fftw_execute_r2r(p, in, out); }
    static void destroy(fftw_plan p) { fftw_destroy_plan(p); }
};
#endif

template <class Real, class Complex>
void registerType(const char* real, const char* complex, int size,
                  TvkStatus (*complexSingle)(const Complex*, Complex*, int, int),
                  TvkStatus (*complexBatch)(const Complex*, int, Complex*, int, int, int, int),
                  TvkStatus (*ccsSingle)(const Real*, Real*, int, int),
                  TvkStatus (*ccsBatch)(const Real*, int, Real*, int, int, int, int),
                  TvkStatus (*hartleySingle)(const Real*, Real*, int, int),
                  TvkStatus (*hartleyBatch)(const Real*, int, Real*, int, int, int, int))
{
    const Shape complexShape{2 * size, 2 * size}, ccs{size, 2 * (size / 2 + 1)}, hartley{size, size};
    registerOurs<Complex, Real>("complex_fwd", complex, size, complexShape, complexSingle, complexBatch);
    registerOurs<Real, Real>("real_fwd_ccs", real, size, ccs, ccsSingle, ccsBatch);
    registerOurs<Real, Real>("hartley", real, size, hartley, hartleySingle, hartleyBatch);
#ifdef TVKGEN_BENCH_FFTW
    registerFftw<Real>("complex_fwd", complex, size, complexShape, Fftw<Real>::complex, Fftw<Real>::executeComplex,
                       Fftw<Real>::destroy);
    registerFftw<Real>("real_fwd_ccs", real, size, ccs, Fftw<Real>::realForward, Fftw<Real>::executeRealForward,
                       Fftw<Real>::destroy);
    registerFftw<Real>("hartley", real, size, hartley, Fftw<Real>::hartley, Fftw<Real>::executeHartley,
                       Fftw<Real>::destroy);
#endif
}

const bool registered = [] {
    for (int size : kSizes) {
        registerType<float, Tvk32fc>("32f", "32fc", size, tvkgDFTFwd_CToC_32fc, tvkgBatchDFTFwd_CToC_32fc,
                                     tvkgDFTFwd_RToCCS_32f, tvkgBatchDFTFwd_RToCCS_32f, tvkgHartley_32f,
                                     tvkgBatchHartley_32f);
        registerType<double, Tvk64fc>("64f", "64fc", size, tvkgDFTFwd_CToC_64fc, tvkgBatchDFTFwd_CToC_64fc,
                                      tvkgDFTFwd_RToCCS_64f, tvkgBatchDFTFwd_RToCCS_64f, tvkgHartley_64f,
                                      tvkgBatchHartley_64f);
    }
    return true;
}();

} // namespace

BENCHMARK_MAIN();
