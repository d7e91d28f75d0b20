// Walsh-Hadamard: the kernel of every order and element type, with a
// caller's work buffer, beside a plain scalar butterfly loop compiled in this
// build. The console line of each case also shows the time per element.
#include <dlfcn.h>

#include <cstdint>
#include <string>

#include "bench_support.h"
#include "tvkgen.h"

namespace {

// Levels in ascending order, then the scale, as the kernels round. Kept
// scalar on purpose: it stands for the loop a caller would write.
template <typename Real>
[[gnu::optimize("no-tree-vectorize")]] void butterflyLoop(const Real* src, Real* dst, int n, Real scale)
{
    for (int i = 0; i < n; ++i)
        dst[i] = src[i];
    for (int half = 1; half < n; half *= 2)
        for (int start = 0; start < n; start += 2 * half)
            for (int i = start; i < start + half; ++i) {
                const Real a = dst[i], b = dst[i + half];
                dst[i] = a + b;
                dst[i + half] = a - b;
            }
    for (int i = 0; i < n; ++i)
        dst[i] *= scale;
}

void perElement(benchmark::State& state, int n)
{
    state.counters["per_element"] =
        benchmark::Counter(n, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

template <typename Real>
using WhtKernelFn = TvkStatus (*)(const Real*, Real*, int, uint8_t*);

template <typename Real, typename BufferSize>
void registerOrder(const char* type, int order, BufferSize bufferSize)
{
    const int n = 1 << order;
    const std::string name = "tvkgWHT_" + std::to_string(order) + "_" + type;
    const auto kernel = reinterpret_cast<WhtKernelFn<Real>>(dlsym(RTLD_DEFAULT, name.c_str()));
    tvkbench::registerCase("wht", type, "buffer", n, tvkbench::kOurs, [=](benchmark::State& state) {
        auto src = tvkbench::alignedReals<Real>(n);
        auto dst = tvkbench::alignedReals<Real>(n);
        int32_t bytes = 0;
        bufferSize(order, &bytes);
        auto buffer = tvkbench::alignedReals<uint8_t>(bytes);
        for (auto _ : state) {
            kernel(src.get(), dst.get(), ScaleNoDivide, buffer.get());
            benchmark::ClobberMemory();
        }
        perElement(state, n);
    });
    tvkbench::registerCase("wht", type, "buffer", n, "loop", [=](benchmark::State& state) {
        auto src = tvkbench::alignedReals<Real>(n);
        auto dst = tvkbench::alignedReals<Real>(n);
        for (auto _ : state) {
            butterflyLoop<Real>(src.get(), dst.get(), n, Real(1));
            benchmark::ClobberMemory();
        }
        perElement(state, n);
    });
}

const bool registered = [] {
    for (int order = 1; order <= 13; ++order) {
        registerOrder<Tvk32f>("32f", order, tvkgWHTGetBufferSize_32f);
        registerOrder<Tvk64f>("64f", order, tvkgWHTGetBufferSize_64f);
    }
    return true;
}();

} // namespace
