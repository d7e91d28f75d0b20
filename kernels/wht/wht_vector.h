// Vector pieces of the Walsh-Hadamard kernels: the operations the family
// uses, compile-time unrolling, the butterfly and the column step.
//
// Every routine is a template over an operations type `Ops` (element type,
// lane count, arithmetic, shuffles, aligned buffer moves) and, where it
// touches src or dst, over an access policy. The library instantiates them
// with SimdOps; a test instantiates the same descriptions with a counting
// vector type.
#pragma once

#include <utility>

#include "simd/vec.h"

// Lambdas of the unrolled steps are inlined like the functions around them,
// so that a block's vectors stay in registers (left to the compiler where
// TVKG_INLINE is).
#ifdef TVKGEN_SANITIZED
#define TVKG_LAMBDA_INLINE
#else
#define TVKG_LAMBDA_INLINE __attribute__((always_inline))
#endif

namespace tvkgen::wht {

// The vector layer's operations, which overload on the vector type.
template <class RealType>
struct SimdOpsOf {
    using Real = RealType;
    using V = decltype(simd::broadcast(Real{}));
    static constexpr int kLanes = 16 / sizeof(Real);
    static TVKG_INLINE V add(V a, V b) { return simd::add(a, b); }
    static TVKG_INLINE V sub(V a, V b) { return simd::sub(a, b); }
    static TVKG_INLINE V mul(V a, V b) { return simd::mul(a, b); }
    static TVKG_INLINE V broadcast(Real x) { return simd::broadcast(x); }
    static TVKG_INLINE V unpackLo(V a, V b) { return simd::unpackLo(a, b); }
    static TVKG_INLINE V unpackHi(V a, V b) { return simd::unpackHi(a, b); }
    // The work buffer is always 16-byte aligned.
    static TVKG_INLINE V load(const Real* p) { return simd::load(p); }
    static TVKG_INLINE void store(Real* p, V v) { simd::store(p, v); }
};

template <class Real>
struct SimdOps;

template <>
struct SimdOps<float> : SimdOpsOf<float> {
    static TVKG_INLINE V moveLowHalves(V a, V b) { return simd::moveLowHalves(a, b); }
    static TVKG_INLINE V moveHighHalves(V a, V b) { return simd::moveHighHalves(a, b); }
};

template <>
struct SimdOps<double> : SimdOpsOf<double> {};

// The aligned moves of Ops as an access policy, for the passes that read or
// write the work buffer.
template <class Ops>
struct BufferAccess {
    static TVKG_INLINE typename Ops::V load(const typename Ops::Real* p) { return Ops::load(p); }
    static TVKG_INLINE void store(typename Ops::Real* p, typename Ops::V v) { Ops::store(p, v); }
};

// f(integral_constant<int, 0>) ... f(integral_constant<int, Count - 1>), as
// straight-line code: the kernels have no loops below the block level.
template <int Count, class F>
TVKG_INLINE void unrolled(F&& f)
{
    [&]<int... I>(std::integer_sequence<int, I...>) TVKG_LAMBDA_INLINE {
        (f(std::integral_constant<int, I>{}), ...);
    }(std::make_integer_sequence<int, Count>{});
}

// One butterfly of a level: a becomes a + b, b becomes a - b.
template <class Ops>
TVKG_INLINE void butterfly(typename Ops::V& a, typename Ops::V& b)
{
    const typename Ops::V sum = Ops::add(a, b);
    b = Ops::sub(a, b);
    a = sum;
}

// log2(R) levels, in ascending order, across the R vectors v[0], v[S], ...,
// v[(R-1)S]. The lowest two levels run in fours, the others across the
// fours, so that at most four vectors of a step are live at once.
template <class Ops, int R, int S>
TVKG_INLINE void column(typename Ops::V* v)
{
    static_assert(R >= 2 && (R & (R - 1)) == 0);
    if constexpr (R == 2) {
        butterfly<Ops>(v[0], v[S]);
    } else {
        unrolled<R / 4>([&](auto q) TVKG_LAMBDA_INLINE {
            typename Ops::V* four = v + q * 4 * S;
            butterfly<Ops>(four[0], four[S]);
            butterfly<Ops>(four[2 * S], four[3 * S]);
            butterfly<Ops>(four[0], four[2 * S]);
            butterfly<Ops>(four[S], four[3 * S]);
        });
        if constexpr (R > 4)
            unrolled<4>([&](auto j) TVKG_LAMBDA_INLINE { column<Ops, R / 4, 4 * S>(v + j * S); });
    }
}

} // namespace tvkgen::wht
