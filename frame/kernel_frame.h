// The call frame of every kernel: null tests, flag test, pick of the scale
// constant, then the body. Kernels with an unaligned twin test the alignment
// of src and dst first, then run the checks of checkAndRunBody in the twin
// chosen.
#pragma once

#include <cstdint>
#include <type_traits>

#include "scale.h"
#include "simd/vec.h"
#include "tvkgen.h"

namespace tvkgen {

// A Kernel type provides:
//   using Real = float | double;
//   static constexpr ScaleRow kRow;
//   kScale, indexed by ScaleIndex: a table of rows of lanes, or of numbers;
//   body(src, dst, kScale[pick], extra...), a template over the access
//   policy for kernels with twins. `extra` are the kernel's own arguments
//   after the flag, passed through untouched.

// The checks, written once: null pointers first, then the flag. Access void
// runs the one body of a kernel without twins.
template <class Kernel, class Access, class... Extra>
TVKG_INLINE TvkStatus checkAndRunBody(const typename Kernel::Real* src, typename Kernel::Real* dst, int flag,
                                      Extra... extra)
{
    if (src == nullptr || dst == nullptr)
        return StatusNullPointer;
    const int pick = scaleIndex(flag, Kernel::kRow);
    if (pick < 0)
        return StatusScaleFlagError;
    if constexpr (std::is_void_v<Access>)
        Kernel::body(src, dst, Kernel::kScale[pick], extra...);
    else
        Kernel::template body<Access>(src, dst, Kernel::kScale[pick], extra...);
    return StatusOk;
}

// Whether src or dst rules out aligned 128-bit moves; a null address counts
// as aligned, so that the null test of either body reports it.
TVKG_INLINE bool misaligned(const void* src, const void* dst)
{
    return ((reinterpret_cast<std::uintptr_t>(src) | reinterpret_cast<std::uintptr_t>(dst)) & 15) != 0;
}

// Both bodies in one routine.
template <class Kernel, class... Extra>
TVKG_INLINE TvkStatus runWithTwins(const void* src, void* dst, int flag, Extra... extra)
{
    using Real = typename Kernel::Real;
    auto* in = static_cast<const Real*>(src);
    auto* out = static_cast<Real*>(dst);
    if (misaligned(src, dst))
        return checkAndRunBody<Kernel, simd::UnalignedAccess>(in, out, flag, extra...);
    return checkAndRunBody<Kernel, simd::AlignedAccess>(in, out, flag, extra...);
}

// The unaligned body as a routine of its own, for kernels whose bodies are
// too large to keep twice in one.
template <class Kernel, class... Extra>
[[gnu::noinline]] TvkStatus unalignedTwin(const typename Kernel::Real* src, typename Kernel::Real* dst, int flag,
                                          Extra... extra)
{
    return checkAndRunBody<Kernel, simd::UnalignedAccess>(src, dst, flag, extra...);
}

template <class Kernel, class... Extra>
TVKG_INLINE TvkStatus runWithSeparateTwin(const void* src, void* dst, int flag, Extra... extra)
{
    using Real = typename Kernel::Real;
    auto* in = static_cast<const Real*>(src);
    auto* out = static_cast<Real*>(dst);
    if (misaligned(src, dst))
        return unalignedTwin<Kernel>(in, out, flag, extra...);
    return checkAndRunBody<Kernel, simd::AlignedAccess>(in, out, flag, extra...);
}

// Scalar kernels: one body, safe at any address, no alignment test.
template <class Kernel, class... Extra>
TVKG_INLINE TvkStatus runSingleBody(const void* src, void* dst, int flag, Extra... extra)
{
    using Real = typename Kernel::Real;
    return checkAndRunBody<Kernel, void>(static_cast<const Real*>(src), static_cast<Real*>(dst), flag, extra...);
}

// Size dispatchers: the size test first, then a dense jump; every size in
// the range has its kernel.
template <class Src, class Dst>
using KernelFn = TvkStatus (*)(const Src*, Dst*, int);

constexpr int kMinDftSize = 2;
constexpr int kMaxDftSize = 64;

template <class Src, class Dst>
TVKG_INLINE TvkStatus dispatchBySize(const KernelFn<Src, Dst> (&table)[kMaxDftSize - kMinDftSize + 1],
                                     const Src* src, Dst* dst, int len, int flag)
{
    if (len < kMinDftSize || len > kMaxDftSize)
        return StatusSizeError;
    return table[len - kMinDftSize](src, dst, flag);
}

} // namespace tvkgen
