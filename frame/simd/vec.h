// The vector layer: every vector operation of the kernels goes through the
// free functions declared by one of the two back ends below, on the types
// V4f (four binary32 lanes) and V2d (two binary64 lanes); at the avx2 level
// the sse2 back end adds V8f and V4d, two of those in one 256-bit register,
// and at the avx512 level vec_avx512.h adds V16f and V8d, two of those in
// one 512-bit register.
//
//   loadScalar / storeScalar  one number at any byte address
//   load / store            aligned 128-bit moves
//   loadu / storeu          unaligned 128-bit moves, by their bytes
//   loadElement             (p0, p1, 0, 0): one 32fc element, 64-bit move
//   storeLowElement / storeHighElement
//                           lanes 0-1 / 2-3 as one 64-bit move
//   add, sub, mul, bitXor   lane-wise arithmetic; bitXor flips sign bits
//   swapLanes               (a1, a0) of a V2d; (a1, a0, a2, a3) of a V4f
//   shuffle<i0,i1,i2,i3>    (a[i0], a[i1], b[i2], b[i3])
//   unpackLo / unpackHi     (a0, b0, a1, b1) / (a2, b2, a3, b3); V2d: (a0, b0) / (a1, b1)
//   moveLowHalves           (a0, a1, b0, b1)
//   moveHighHalves          (a2, a3, b2, b3)
//   broadcast (V4f or V2d by argument type)
//   load8 / load4           aligned 256-bit loads (V8f / V4d)
//   load16 / load8          aligned 512-bit loads (V16f / V8d)
//   lowHalf / highHalf / combine  a vector's halves, and back: a 512-bit
//                           vector's two 256-bit ones, a 256-bit vector's
//                           two 128-bit ones, a V2d's two numbers, the two
//                           numbers in a V4f's low lanes (zeros above)
//   swapHalves              a 256- or 512-bit vector's halves exchanged
//   toDouble / toSingle     the two low lanes of a V4f to a V2d and back
//
// Both back ends give the same bytes: each lane is one IEEE operation of the
// element type with round-to-nearest, and no operation is fused.
#pragma once

#include <cfloat>

static_assert(FLT_EVAL_METHOD == 0, "kernels need every operation rounded to its own type");

// No fused multiply-add: builds pass -ffp-contract=off and -mno-fma. AVX-512F
// brings fused forms of its own, which -mno-fma leaves on and only a
// contraction would use; the test no_fused_multiply_add reads the built
// libraries for them.
#if defined(__FAST_MATH__) || defined(__FMA__) || (defined(__FP_FAST_FMA) && !defined(__AVX512F__))
#error "build without fast-math and without fused multiply-add contraction"
#endif

// The kernels' helpers are always inlined, so that a body's vectors stay in
// registers. Sanitizer builds leave the choice to the compiler: their checks
// in the fully inlined bodies took most of their compile time.
#ifdef TVKGEN_SANITIZED
#define TVKG_INLINE inline
#else
#define TVKG_INLINE inline __attribute__((always_inline))
#endif

#include <cstring>

namespace tvkgen::simd {

// A number moved by its bytes: well defined at any address, which a plain
// dereference of a misaligned pointer is not; compilers make one move of it.
template <class T>
TVKG_INLINE T loadScalar(const T* p)
{
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <class T>
TVKG_INLINE void storeScalar(T* p, T v)
{
    std::memcpy(p, &v, sizeof v);
}

} // namespace tvkgen::simd

#if defined(TVKGEN_PORTABLE)
#include "vec_portable.h"
#else
#include "vec_sse2.h"
#endif
#if defined(__AVX512F__)
#include "vec_avx512.h"
#endif

namespace tvkgen::simd {

// Load/store policies of the two bodies of a kernel: the unaligned twin
// moves its vectors with unaligned 128-bit moves (a 64fc element's two
// halves in one move, which is what compilers made of two adjacent 64-bit
// moves anyway).
struct AlignedAccess {
    static TVKG_INLINE V2d load(const double* p) { return simd::load(p); }
    static TVKG_INLINE void store(double* p, V2d v) { simd::store(p, v); }
    static TVKG_INLINE V4f load(const float* p) { return simd::load(p); }
    static TVKG_INLINE void store(float* p, V4f v) { simd::store(p, v); }
};

struct UnalignedAccess {
    static TVKG_INLINE V2d load(const double* p) { return simd::loadu(p); }
    static TVKG_INLINE void store(double* p, V2d v) { simd::storeu(p, v); }
    static TVKG_INLINE V4f load(const float* p) { return simd::loadu(p); }
    static TVKG_INLINE void store(float* p, V4f v) { simd::storeu(p, v); }
};

} // namespace tvkgen::simd
