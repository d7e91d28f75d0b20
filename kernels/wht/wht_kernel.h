// The Walsh-Hadamard kernel of one order and element type: its bodies, its
// work buffer and its passes, run in the call frame of every kernel
// (kernel_frame.h). runOrder<Real, n> is the whole body of tvkgWHT_<n>_<t>.
#pragma once

#include <cstdint>

#include "kernel_frame.h"
#include "tvkcore.h"
#include "tvkgen.h"
#include "wht_blocks.h"
#include "wht_plans.h"
#include "wht_scale.h"

namespace tvkgen::wht {

template <class Real>
constexpr bool isScalarOrder(int order)
{
    return order <= 2 || (order == 3 && sizeof(Real) == 4);
}

// ---- orders 1 and 2, and 3 of 32f: scalar, safe at any address -------------

template <class Real, int Order>
TVKG_INLINE void scalarBody(const Real* src, Real* dst, Real scale)
{
    constexpr int n = 1 << Order;
    Real x[n];
    unrolled<n>([&](auto i) TVKG_LAMBDA_INLINE { x[i] = simd::loadScalar(src + i); });
    unrolled<Order>([&](auto level) TVKG_LAMBDA_INLINE {
        constexpr int half = 1 << level;
        unrolled<n / 2>([&](auto j) TVKG_LAMBDA_INLINE {
            constexpr int i = (j / half) * 2 * half + j % half;
            const Real sum = x[i] + x[i + half];
            x[i + half] = x[i] - x[i + half];
            x[i] = sum;
        });
    });
    unrolled<n>([&](auto i) TVKG_LAMBDA_INLINE { simd::storeScalar(dst + i, x[i] * scale); });
}

// ---- orders 3 to 7: in registers and the stack frame -------------------------

template <class Ops, int Order, class Access>
TVKG_INLINE void vectorBody(const typename Ops::Real* src, typename Ops::Real* dst, typename Ops::Real scale)
{
    constexpr int lanes = Ops::kLanes, vectors = (1 << Order) / lanes;
    typename Ops::V v[vectors];
    unrolled<vectors>([&](auto m) TVKG_LAMBDA_INLINE { v[m] = Access::load(src + m * lanes); });
    transformBlock<Ops, Order>(v);
    const typename Ops::V s = Ops::broadcast(scale);
    unrolled<vectors>([&](auto m) TVKG_LAMBDA_INLINE { Access::store(dst + m * lanes, Ops::mul(v[m], s)); });
}

// ---- orders 8 to 13: passes through the work buffer --------------------------

// One block of 2^BlockOrder elements from `from` to `to`, unscaled.
template <class Ops, int BlockOrder, class From, class To>
TVKG_INLINE void blockStep(const typename Ops::Real* from, typename Ops::Real* to)
{
    constexpr int lanes = Ops::kLanes, vectors = (1 << BlockOrder) / lanes;
    typename Ops::V v[vectors];
    unrolled<vectors>([&](auto m) TVKG_LAMBDA_INLINE { v[m] = From::load(from + m * lanes); });
    transformBlock<Ops, BlockOrder>(v);
    unrolled<vectors>([&](auto m) TVKG_LAMBDA_INLINE { To::store(to + m * lanes, v[m]); });
}

// Column steps of radix R over places `Stride` elements apart: one column per
// vector position within the stride, in ascending order. No shuffles; only
// the last stage of a kernel multiplies by the scale.
template <class Ops, int R, int Stride, class From, class To, bool Scaled>
TVKG_INLINE void columnStage(const typename Ops::Real* from, typename Ops::Real* to, typename Ops::V scale)
{
    for (int c = 0; c < Stride; c += Ops::kLanes) {
        typename Ops::V v[R];
        unrolled<R>([&](auto k) TVKG_LAMBDA_INLINE { v[k] = From::load(from + c + k * Stride); });
        column<Ops, R, 1>(v);
        unrolled<R>([&](auto k) TVKG_LAMBDA_INLINE {
            To::store(to + c + k * Stride, Scaled ? Ops::mul(v[k], scale) : v[k]);
        });
    }
}

// src is read only in the first pass and dst written only in the last, so
// in-place calls need no care; every block and column is read whole before
// its place is written, so the buffer may even be src or dst.
template <class Ops, int Order, class Access>
TVKG_INLINE void passes(const typename Ops::Real* src, typename Ops::Real* dst, typename Ops::Real scale,
                        typename Ops::Real* buffer)
{
    using Buffer = BufferAccess<Ops>;
    constexpr Plan plan = planOf<typename Ops::Real>(Order);
    constexpr int n = 1 << Order, block = 1 << plan.blockOrder;
    const typename Ops::V s = Ops::broadcast(scale);
    if constexpr (plan.chunkOrder == 0) {
        for (int b = 0; b < n; b += block)
            blockStep<Ops, plan.blockOrder, Access, Buffer>(src + b, buffer + b);
        columnStage<Ops, n / block, block, Buffer, Access, true>(buffer, dst, s);
    } else {
        // Chunk by chunk: its blocks go to the tail region, and a radix-8
        // stage takes them to the chunk's own place in the main region.
        constexpr int chunk = 1 << plan.chunkOrder;
        static_assert(chunk / block == 8);
        typename Ops::Real* const tail = buffer + n;
        for (int c = 0; c < n; c += chunk) {
            for (int b = 0; b < chunk; b += block)
                blockStep<Ops, plan.blockOrder, Access, Buffer>(src + c + b, tail + b);
            columnStage<Ops, 8, block, Buffer, Buffer, false>(tail, buffer + c, s);
        }
        columnStage<Ops, n / chunk, chunk, Buffer, Access, true>(buffer, dst, s);
    }
}

// ---- the kernel in the call frame ----------------------------------------------

// Whether a caller's buffer of `bytes` shares a byte with an array of
// `arrayBytes` other than by starting where it starts (a buffer that is src
// or dst itself is read whole before it is written, see passes).
TVKG_INLINE bool overlapsPartly(const void* buffer, size_t bytes, const void* array, size_t arrayBytes)
{
    const auto b = reinterpret_cast<uintptr_t>(buffer), a = reinterpret_cast<uintptr_t>(array);
    return b != a && b < a + arrayBytes && a < b + bytes;
}

// The frame's checks come first; the work buffer is the kernel's own
// argument after the flag.
template <class RealType, int Order>
struct OrderKernel {
    using Real = RealType;
    static constexpr ScaleRow kRow = ScaleRow::SelfInverse;
    static constexpr const Real* kScale = kScales<Real, Order>;

    static TVKG_INLINE void body(const Real* src, Real* dst, Real scale, uint8_t* /*buffer*/)
        requires(isScalarOrder<Real>(Order))
    {
        scalarBody<Real, Order>(src, dst, scale);
    }

    template <class Access>
    static TVKG_INLINE void body(const Real* src, Real* dst, Real scale, uint8_t* buffer)
    {
        if constexpr (Order < kFirstBufferedOrder) {
            vectorBody<SimdOps<Real>, Order, Access>(src, dst, scale);
        } else {
            // Allocation results are not tested: a failed tvkMalloc faults on
            // the first store, and callers who must survive that pass a
            // buffer. A buffer that overlaps src or dst partly is set aside
            // for one of the kernel's own, which gives the bytes of a
            // separate buffer.
            constexpr size_t arrayBytes = sizeof(Real) << Order;
            const size_t bytes = static_cast<size_t>(bufferBytes<Real>(Order));
            const bool ownsBuffer = buffer == nullptr || overlapsPartly(buffer, bytes, src, arrayBytes) ||
                                    overlapsPartly(buffer, bytes, dst, arrayBytes);
            if (ownsBuffer)
                buffer = static_cast<uint8_t*>(tvkMalloc(static_cast<uint32_t>(bytes)));
            passes<SimdOps<Real>, Order, Access>(src, dst, scale, reinterpret_cast<Real*>(buffer));
            if (ownsBuffer)
                tvkFree(buffer);
        }
    }
};

// Scalar orders have one body and no alignment test. Order 3 of 64f keeps
// both of its bodies in one routine, the larger orders have a separate twin.
template <class Real, int Order>
TVKG_INLINE TvkStatus runOrder(const Real* src, Real* dst, int flag, uint8_t* buffer)
{
    using Kernel = OrderKernel<Real, Order>;
    if constexpr (isScalarOrder<Real>(Order))
        return runSingleBody<Kernel>(src, dst, flag, buffer);
    else if constexpr (Order == 3)
        return runWithTwins<Kernel>(src, dst, flag, buffer);
    else
        return runWithSeparateTwin<Kernel>(src, dst, flag, buffer);
}

} // namespace tvkgen::wht

// The exported kernel of order n and element type t.
#define TVKG_WHT_DEFINE(t, n)                                                             \
    TvkStatus tvkgWHT_##n##_##t(const Tvk##t* src, Tvk##t* dst, int flag, uint8_t* buffer) \
    {                                                                                     \
        return tvkgen::wht::runOrder<Tvk##t, n>(src, dst, flag, buffer);                  \
    }
