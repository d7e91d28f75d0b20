// The call frame of a size-specific kernel: null tests, flag test, pick of
// the scale constant, then the body. Kernels with an unaligned twin test the
// alignment of src and dst first, and each body has its own copy of the
// checks.
#pragma once

#include <cstdint>

#include "scale.h"
#include "simd/vec.h"
#include "tvkgen.h"

namespace tvkgen {

// A Kernel type provides:
//   using Real = float | double;
//   static constexpr ScaleRow kRow;
//   static constexpr Real kScale[3][lanes];   // indexed by ScaleIndex
//   body(src, dst, scale), a template over the access policy for kernels
//   with twins.
template <class Kernel, class Access>
TVKG_INLINE TvkStatus checkAndRunBody(const typename Kernel::Real* src, typename Kernel::Real* dst, int flag)
{
    if (src == nullptr || dst == nullptr)
        return StatusNullPointer;
    const int pick = scaleIndex(flag, Kernel::kRow);
    if (pick < 0)
        return StatusScaleFlagError;
    Kernel::template body<Access>(src, dst, Kernel::kScale[pick]);
    return StatusOk;
}

template <class Kernel>
TVKG_INLINE TvkStatus runWithTwins(const void* src, void* dst, int flag)
{
    using Real = typename Kernel::Real;
    auto* in = static_cast<const Real*>(src);
    auto* out = static_cast<Real*>(dst);
    if ((reinterpret_cast<std::uintptr_t>(src) | reinterpret_cast<std::uintptr_t>(dst)) & 15)
        return checkAndRunBody<Kernel, simd::UnalignedAccess>(in, out, flag);
    return checkAndRunBody<Kernel, simd::AlignedAccess>(in, out, flag);
}

// Scalar kernels: one body, safe at any address, no alignment test.
template <class Kernel>
TVKG_INLINE TvkStatus runSingleBody(const void* src, void* dst, int flag)
{
    using Real = typename Kernel::Real;
    if (src == nullptr || dst == nullptr)
        return StatusNullPointer;
    const int pick = scaleIndex(flag, Kernel::kRow);
    if (pick < 0)
        return StatusScaleFlagError;
    Kernel::body(static_cast<const Real*>(src), static_cast<Real*>(dst), Kernel::kScale[pick]);
    return StatusOk;
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
