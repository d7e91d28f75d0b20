// The avx512 level's 512-bit vectors: V16f (sixteen binary32 lanes) and V8d
// (eight binary64 lanes), with the operations the batch bodies and their
// transposes use, and those of the kernels that run two 256-bit vectors of
// the avx2 level in one register. As at the avx2 level, the shuffles work
// within each 128-bit quarter, and every lane is one IEEE operation of its
// type, never fused. Included by vec.h after the sse2 back end.
#pragma once

#include <immintrin.h>

namespace tvkgen::simd {

using V8d = __m512d;
using V16f = __m512;

// The masked forms with every lane selected, and the binary64 extract for
// binary32 quarters: the plain forms' undefined source operand draws a false
// "may be used uninitialized" from GCC 12.
inline constexpr __mmask8 kAll8 = 0xFF;
inline constexpr __mmask16 kAll16 = 0xFFFF;

TVKG_INLINE V8d add(V8d a, V8d b) { return _mm512_add_pd(a, b); }
TVKG_INLINE V8d sub(V8d a, V8d b) { return _mm512_sub_pd(a, b); }
TVKG_INLINE V8d mul(V8d a, V8d b) { return _mm512_mul_pd(a, b); }
TVKG_INLINE V8d bitXor(V8d a, V8d b) { return _mm512_xor_pd(a, b); }
TVKG_INLINE V8d unpackLo(V8d a, V8d b) { return _mm512_mask_unpacklo_pd(a, kAll8, a, b); }
TVKG_INLINE V8d unpackHi(V8d a, V8d b) { return _mm512_mask_unpackhi_pd(a, kAll8, a, b); }
TVKG_INLINE V8d broadcast8(double x) { return _mm512_set1_pd(x); }
// Quarter q (lanes 2q, 2q + 1), and four quarters into one vector.
template <int q>
TVKG_INLINE V2d quarter(V8d a)
{
    return _mm512_extractf64x2_pd(a, q);
}
TVKG_INLINE V8d combine(V2d q0, V2d q1, V2d q2, V2d q3)
{
    const V8d low = _mm512_insertf64x2(_mm512_castpd128_pd512(q0), q1, 1);
    return _mm512_insertf64x2(_mm512_insertf64x2(low, q2, 2), q3, 3);
}

// Two 256-bit vectors in the halves of one register, each half treated as
// the avx2 level's V4d or V8f.
TVKG_INLINE V8d load8(const double* p) { return _mm512_load_pd(p); }
TVKG_INLINE V8d swapLanes(V8d a) { return _mm512_maskz_permute_pd(kAll8, a, 0x55); }
TVKG_INLINE V4d lowHalf(V8d a) { return _mm512_maskz_extractf64x4_pd(kAll8, a, 0); }
TVKG_INLINE V4d highHalf(V8d a) { return _mm512_maskz_extractf64x4_pd(kAll8, a, 1); }
TVKG_INLINE V8d combine(V4d low, V4d high)
{
    return _mm512_maskz_insertf64x4(kAll8, _mm512_castpd256_pd512(low), high, 1);
}
TVKG_INLINE V8d swapHalves(V8d a) { return _mm512_maskz_shuffle_f64x2(kAll8, a, a, 0x4E); }

TVKG_INLINE V16f load16(const float* p) { return _mm512_load_ps(p); }
template <int i0, int i1, int i2, int i3>
TVKG_INLINE V16f shuffle(V16f a, V16f b)
{
    return _mm512_maskz_shuffle_ps(kAll16, a, b, _MM_SHUFFLE(i3, i2, i1, i0));
}
TVKG_INLINE V8f lowHalf(V16f a) { return _mm512_maskz_extractf32x8_ps(kAll8, a, 0); }
TVKG_INLINE V8f highHalf(V16f a) { return _mm512_maskz_extractf32x8_ps(kAll8, a, 1); }
TVKG_INLINE V16f combine(V8f low, V8f high)
{
    return _mm512_maskz_insertf32x8(kAll16, _mm512_castps256_ps512(low), high, 1);
}
TVKG_INLINE V16f swapHalves(V16f a) { return _mm512_maskz_shuffle_f32x4(kAll16, a, a, 0x4E); }

TVKG_INLINE V16f add(V16f a, V16f b) { return _mm512_add_ps(a, b); }
TVKG_INLINE V16f sub(V16f a, V16f b) { return _mm512_sub_ps(a, b); }
TVKG_INLINE V16f mul(V16f a, V16f b) { return _mm512_mul_ps(a, b); }
TVKG_INLINE V16f bitXor(V16f a, V16f b) { return _mm512_xor_ps(a, b); }
TVKG_INLINE V16f unpackLo(V16f a, V16f b) { return _mm512_mask_unpacklo_ps(a, kAll16, a, b); }
TVKG_INLINE V16f unpackHi(V16f a, V16f b) { return _mm512_mask_unpackhi_ps(a, kAll16, a, b); }
// The 64-bit halves of each 128-bit quarter, moved as binary64 lanes.
TVKG_INLINE V16f moveLowHalves(V16f a, V16f b)
{
    return _mm512_castpd_ps(unpackLo(_mm512_castps_pd(a), _mm512_castps_pd(b)));
}
TVKG_INLINE V16f moveHighHalves(V16f a, V16f b)
{
    return _mm512_castpd_ps(unpackHi(_mm512_castps_pd(a), _mm512_castps_pd(b)));
}
TVKG_INLINE V16f broadcast16(float x) { return _mm512_set1_ps(x); }
template <int q>
TVKG_INLINE V4f quarter(V16f a)
{
    return _mm_castpd_ps(_mm512_extractf64x2_pd(_mm512_castps_pd(a), q));
}
TVKG_INLINE V16f combine(V4f q0, V4f q1, V4f q2, V4f q3)
{
    const V16f low = _mm512_insertf32x4(_mm512_castps128_ps512(q0), q1, 1);
    return _mm512_insertf32x4(_mm512_insertf32x4(low, q2, 2), q3, 3);
}

// Binary32 lanes to binary64 and back, each conversion rounded once as in
// the 128-bit forms.
TVKG_INLINE V8d widenLow(V16f a) { return _mm512_maskz_cvtps_pd(kAll8, _mm512_maskz_extractf32x8_ps(kAll8, a, 0)); }
TVKG_INLINE V8d widenHigh(V16f a) { return _mm512_maskz_cvtps_pd(kAll8, _mm512_maskz_extractf32x8_ps(kAll8, a, 1)); }
TVKG_INLINE V16f narrow(V8d low, V8d high)
{
    return _mm512_insertf32x8(_mm512_castps256_ps512(_mm512_maskz_cvtpd_ps(kAll8, low)),
                              _mm512_maskz_cvtpd_ps(kAll8, high), 1);
}

} // namespace tvkgen::simd
