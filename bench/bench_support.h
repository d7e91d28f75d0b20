// Shared pieces of the benchmark program. Each family registers its cases
// from its own file; a case is named family/type/variant/size/impl, and the
// table printed after the run pairs each "tvkgen" case with the case of the
// same family/type/variant/size run by a peer ("fftw", or "loop" for a
// plain reference loop compiled in this build).
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>

namespace tvkbench {

inline constexpr const char* kOurs = "tvkgen";

// Every array of the program, ours and the peer's, starts on a 64-byte
// boundary, so that both libraries see the same alignment.
struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};
template <typename Real>
using AlignedReals = std::unique_ptr<Real[], FreeDeleter>;

// Normal numbers of modest size: no denormals, nothing that could slow a
// library down on some inputs only.
template <typename Real>
void fillInput(Real* p, size_t count)
{
    for (size_t i = 0; i < count; ++i)
        p[i] = static_cast<Real>(0.25 + 0.5 * static_cast<double>(i % 7) - 0.125 * static_cast<double>(i % 3));
}

template <typename Real>
AlignedReals<Real> alignedReals(size_t count)
{
    const size_t bytes = (count * sizeof(Real) + 63) / 64 * 64;
    AlignedReals<Real> reals(static_cast<Real*>(std::aligned_alloc(64, bytes)));
    fillInput(reals.get(), count);
    return reals;
}

inline void registerCase(const std::string& family, const std::string& type, const std::string& variant, int size,
                         const std::string& impl, std::function<void(benchmark::State&)> body)
{
    const std::string name = family + "/" + type + "/" + variant + "/" + std::to_string(size) + "/" + impl;
    benchmark::RegisterBenchmark(name.c_str(), std::move(body))->Unit(benchmark::kNanosecond);
}

} // namespace tvkbench
