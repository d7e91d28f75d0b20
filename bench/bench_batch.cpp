// Batch entries beside a loop of single calls, FFTW's advanced interface
// (when installed: FFTW_MEASURE, the same count and distances) and a copy
// of the same bytes, per call of `count` transforms of one size, out of
// place, unscaled. Cases are batch_<family>/<type>/<direction>_<count>/<size>/<impl>,
// impl tvkgen (the batch call), singles, fftw or copy (the Walsh-Hadamard
// size is the order); the time of a case is per call, items count
// transforms and bytes what a call reads and writes.
#include <benchmark/benchmark.h>

#include <cstring>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "bench_support.h"
#include "tvkgen_batch.h"

#ifdef TVKGEN_BENCH_FFTW
#include <fftw3.h>
#endif

namespace {

// In cache, and from memory.
constexpr int kCounts[] = {256, 65536};
constexpr int kSizes[] = {4, 8, 12, 16, 17, 24, 32, 48, 60, 64};
constexpr int kMemorySizes[] = {16, 64};

// One transform's numbers in and out, and the distance that holds either.
struct Shape {
    int in;
    int out;
    int dist() const { return in > out ? in : out; }
};

// The place of a case: which transform, of what type and size, how many.
struct Case {
    const char* family;
    const char* direction;
    const char* type;
    int size;
    int count;
    Shape shape;
};

template <class Real>
void registerCase(const Case& c, const char* impl, std::function<void(benchmark::State&, Real*, Real*)> run)
{
    const std::string variant = std::string(c.direction) + "_" + std::to_string(c.count);
    tvkbench::registerCase(std::string("batch_") + c.family, c.type, variant, c.size, impl,
                           [=](benchmark::State& state) {
                               auto src = tvkbench::alignedReals<Real>(size_t(c.shape.dist()) * c.count);
                               auto dst = tvkbench::alignedReals<Real>(size_t(c.shape.dist()) * c.count);
                               run(state, src.get(), dst.get());
                               state.SetItemsProcessed(state.iterations() * c.count);
                               state.SetBytesProcessed(state.iterations() * c.count * int64_t(c.shape.in + c.shape.out) *
                                                       int64_t(sizeof(Real)));
                           });
}

// Our two ways and the copy, on arrays of Real numbers; elements of
// `perElement` numbers.
template <class Element, class Real>
void registerOurs(const Case& c, TvkStatus (*single)(const Element*, Element*, int, int),
                  TvkStatus (*batch)(const Element*, int, Element*, int, int, int, int))
{
    constexpr int perElement = sizeof(Element) / sizeof(Real);
    const int dist = c.shape.dist() / perElement;
    registerCase<Real>(c, "singles", [=](benchmark::State& state, Real* src, Real* dst) {
        const auto in = reinterpret_cast<const Element*>(src);
        const auto out = reinterpret_cast<Element*>(dst);
        for (auto _ : state) {
            for (int m = 0; m < c.count; ++m)
                single(in + m * dist, out + m * dist, c.size, ScaleNoDivide);
            benchmark::ClobberMemory();
        }
    });
    registerCase<Real>(c, tvkbench::kOurs, [=](benchmark::State& state, Real* src, Real* dst) {
        for (auto _ : state) {
            batch(reinterpret_cast<const Element*>(src), dist, reinterpret_cast<Element*>(dst), dist, c.size, c.count,
                  ScaleNoDivide);
            benchmark::ClobberMemory();
        }
    });
    // The memory traffic alone: each transform's input read, its output written.
    registerCase<Real>(c, "copy", [=](benchmark::State& state, Real* src, Real* dst) {
        const size_t bytes = size_t(c.shape.out) * sizeof(Real);
        for (auto _ : state) {
            for (int m = 0; m < c.count; ++m)
                std::memcpy(dst + size_t(m) * c.shape.dist(), src + size_t(m) * c.shape.dist(), bytes);
            benchmark::ClobberMemory();
        }
    });
}

#ifdef TVKGEN_BENCH_FFTW
// A plan over arrays of Real numbers `dist` apart, made by `plan(n, count,
// in, out, dist)` and measured once, then run with the new-array execute
// call (the real inverse may overwrite its input, as FFTW's may).
template <class Real, class PlanT>
void registerFftw(const Case& c, PlanT (*plan)(int, int, Real*, Real*, int), void (*execute)(PlanT, Real*, Real*),
                  void (*destroy)(PlanT))
{
    registerCase<Real>(c, "fftw", [=](benchmark::State& state, Real* src, Real* dst) {
        const PlanT p = plan(c.size, c.count, src, dst, c.shape.dist());
        tvkbench::fillInput(src, size_t(c.shape.dist()) * c.count);
        for (auto _ : state) {
            execute(p, src, dst);
            benchmark::ClobberMemory();
        }
        destroy(p);
    });
}

// The advanced interface's plans, by type: complex forward, real forward
// (r2c), real inverse (c2r), Hartley; distances in numbers.
template <class Real>
struct Fftw;

#define TVKG_FFTW_PLANS(Real, X)                                                                                      \
    template <>                                                                                                        \
    struct Fftw<Real> {                                                                                                \
        using Plan = X##_plan;                                                                                         \
        using Complex = X##_complex;                                                                                   \
        static Complex* cx(Real* p) { return reinterpret_cast<Complex*>(p); }                                          \
        static Plan complex(int n, int count, Real* in, Real* out, int dist)                                           \
        {                                                                                                              \
            return X##_plan_many_dft(1, &n, count, cx(in), nullptr, 1, dist / 2, cx(out), nullptr, 1, dist / 2,       \
                                     FFTW_FORWARD, FFTW_MEASURE);                                                      \
        }                                                                                                              \
        static Plan realForward(int n, int count, Real* in, Real* out, int dist)                                       \
        {                                                                                                              \
            return X##_plan_many_dft_r2c(1, &n, count, in, nullptr, 1, dist, cx(out), nullptr, 1, dist / 2,           \
                                         FFTW_MEASURE);                                                                \
        }                                                                                                              \
        static Plan realInverse(int n, int count, Real* in, Real* out, int dist)                                       \
        {                                                                                                              \
            return X##_plan_many_dft_c2r(1, &n, count, cx(in), nullptr, 1, dist / 2, out, nullptr, 1, dist,           \
                                         FFTW_MEASURE);                                                                \
        }                                                                                                              \
        static Plan hartley(int n, int count, Real* in, Real* out, int dist)                                           \
        {                                                                                                              \
            const X##_r2r_kind kind = FFTW_DHT;                                                                        \
            return X##_plan_many_r2r(1, &n, count, in, nullptr, 1, dist, out, nullptr, 1, dist, &kind, FFTW_MEASURE); \
        }                                                                                                              \
        static void runComplex(Plan p, Real* in, Real* out) { X##_execute_dft(p, cx(in), cx(out)); }                  \
        static void runRealForward(Plan p, Real* in, Real* out) { X##_execute_dft_r2c(p, in, cx(out)); }              \
        static void runRealInverse(Plan p, Real* in, Real* out) { X##_execute_dft_c2r(p, cx(in), out); }              \
        static void runHartley(Plan p, Real* in, Real* out) { X##_execute_r2r(p, in, out); }                          \
        static void destroy(Plan p) { X##_destroy_plan(p); }                                                           \
    };
TVKG_FFTW_PLANS(float, fftwf)
TVKG_FFTW_PLANS(double, fftw)
#undef TVKG_FFTW_PLANS
#endif

// Our entries of one type, single and batch, by family.
template <class Real, class Complex>
struct Entries {
    TvkStatus (*complexSingle)(const Complex*, Complex*, int, int);
    TvkStatus (*complexBatch)(const Complex*, int, Complex*, int, int, int, int);
    TvkStatus (*forwardSingle)(const Real*, Real*, int, int);
    TvkStatus (*forwardBatch)(const Real*, int, Real*, int, int, int, int);
    TvkStatus (*inverseSingle)(const Real*, Real*, int, int);
    TvkStatus (*inverseBatch)(const Real*, int, Real*, int, int, int, int);
    TvkStatus (*hartleySingle)(const Real*, Real*, int, int);
    TvkStatus (*hartleyBatch)(const Real*, int, Real*, int, int, int, int);
};

template <class Real, class Complex>
void registerType(const char* real, const char* complex, int size, int count, const Entries<Real, Complex>& e)
{
    const int cells = 2 * (size / 2 + 1);
    const Case complexCase{"complex", "fwd", complex, size, count, {2 * size, 2 * size}};
    const Case forward{"real_ccs", "fwd", real, size, count, {size, cells}};
    const Case inverse{"real_ccs", "inv", real, size, count, {cells, size}};
    const Case hartley{"hartley", "dht", real, size, count, {size, size}};
    registerOurs<Complex, Real>(complexCase, e.complexSingle, e.complexBatch);
    registerOurs<Real, Real>(forward, e.forwardSingle, e.forwardBatch);
    registerOurs<Real, Real>(inverse, e.inverseSingle, e.inverseBatch);
    registerOurs<Real, Real>(hartley, e.hartleySingle, e.hartleyBatch);
#ifdef TVKGEN_BENCH_FFTW
    using F = Fftw<Real>;
    registerFftw<Real>(complexCase, F::complex, F::runComplex, F::destroy);
    registerFftw<Real>(forward, F::realForward, F::runRealForward, F::destroy);
    registerFftw<Real>(inverse, F::realInverse, F::runRealInverse, F::destroy);
    registerFftw<Real>(hartley, F::hartley, F::runHartley, F::destroy);
#endif
}

// Walsh-Hadamard calls with one work buffer for all, so that neither way
// allocates.
alignas(64) uint8_t whtBuffer[(8192 + 1024) * sizeof(double)];

template <class Real, TvkStatus (*single)(const Real*, Real*, int, int, uint8_t*)>
TvkStatus whtSingle(const Real* src, Real* dst, int order, int flag)
{
    return single(src, dst, order, flag, whtBuffer);
}

template <class Real, TvkStatus (*batch)(const Real*, int, Real*, int, int, int, int, uint8_t*)>
TvkStatus whtBatch(const Real* src, int srcDist, Real* dst, int dstDist, int order, int count, int flag)
{
    return batch(src, srcDist, dst, dstDist, order, count, flag, whtBuffer);
}

const bool registered = [] {
    const Entries<float, Tvk32fc> single{tvkgDFTFwd_CToC_32fc,  tvkgBatchDFTFwd_CToC_32fc,
                                         tvkgDFTFwd_RToCCS_32f, tvkgBatchDFTFwd_RToCCS_32f,
                                         tvkgDFTInv_CCSToR_32f, tvkgBatchDFTInv_CCSToR_32f,
                                         tvkgHartley_32f,       tvkgBatchHartley_32f};
    const Entries<double, Tvk64fc> dbl{tvkgDFTFwd_CToC_64fc,  tvkgBatchDFTFwd_CToC_64fc,
                                       tvkgDFTFwd_RToCCS_64f, tvkgBatchDFTFwd_RToCCS_64f,
                                       tvkgDFTInv_CCSToR_64f, tvkgBatchDFTInv_CCSToR_64f,
                                       tvkgHartley_64f,       tvkgBatchHartley_64f};
    for (int count : kCounts)
        for (int size : count == kCounts[0] ? std::vector<int>(std::begin(kSizes), std::end(kSizes))
                                            : std::vector<int>(std::begin(kMemorySizes), std::end(kMemorySizes))) {
            registerType("32f", "32fc", size, count, single);
            registerType("64f", "64fc", size, count, dbl);
        }
    for (int order = 1; order <= 10; ++order) {
        const Shape shape{1 << order, 1 << order};
        registerOurs<float, float>({"wht", "wht", "32f", order, kCounts[0], shape}, whtSingle<float, tvkgWHT_32f>,
                                   whtBatch<float, tvkgBatchWHT_32f>);
        registerOurs<double, double>({"wht", "wht", "64f", order, kCounts[0], shape}, whtSingle<double, tvkgWHT_64f>,
                                     whtBatch<double, tvkgBatchWHT_64f>);
    }
    return true;
}();

} // namespace

BENCHMARK_MAIN();
