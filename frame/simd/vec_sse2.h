// SSE2 back end of the vector layer.
#pragma once

#include <emmintrin.h>
#if defined(__AVX__)
#include <immintrin.h>
#endif

namespace tvkgen::simd {

using V4f = __m128;
using V2d = __m128d;

TVKG_INLINE V4f load(const float* p) { return _mm_load_ps(p); }
TVKG_INLINE V4f loadu(const float* p) { return _mm_loadu_ps(p); }
TVKG_INLINE void store(float* p, V4f v) { _mm_store_ps(p, v); }
TVKG_INLINE void storeu(float* p, V4f v) { _mm_storeu_ps(p, v); }
// 64-bit moves of one 32fc element. These intrinsics are built-in moves of
// any alignment (movlps, movhps), never a dereference in the language, so
// any address is well defined.
TVKG_INLINE V4f loadElement(const float* p)
{
    return _mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(p));
}
TVKG_INLINE void storeLowElement(float* p, V4f v) { _mm_storel_pi(reinterpret_cast<__m64*>(p), v); }
TVKG_INLINE void storeHighElement(float* p, V4f v) { _mm_storeh_pi(reinterpret_cast<__m64*>(p), v); }

TVKG_INLINE V2d load(const double* p) { return _mm_load_pd(p); }
TVKG_INLINE void store(double* p, V2d v) { _mm_store_pd(p, v); }
// A V2d at any address, moved by its bytes: one unaligned 128-bit move.
TVKG_INLINE V2d loadu(const double* p)
{
    V2d v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
TVKG_INLINE void storeu(double* p, V2d v) { std::memcpy(p, &v, sizeof v); }

TVKG_INLINE V4f add(V4f a, V4f b) { return _mm_add_ps(a, b); }
TVKG_INLINE V4f sub(V4f a, V4f b) { return _mm_sub_ps(a, b); }
TVKG_INLINE V4f mul(V4f a, V4f b) { return _mm_mul_ps(a, b); }
TVKG_INLINE V4f bitXor(V4f a, V4f b) { return _mm_xor_ps(a, b); }
TVKG_INLINE V2d add(V2d a, V2d b) { return _mm_add_pd(a, b); }
TVKG_INLINE V2d sub(V2d a, V2d b) { return _mm_sub_pd(a, b); }
TVKG_INLINE V2d mul(V2d a, V2d b) { return _mm_mul_pd(a, b); }
TVKG_INLINE V2d bitXor(V2d a, V2d b) { return _mm_xor_pd(a, b); }

TVKG_INLINE V2d swapLanes(V2d a) { return _mm_shuffle_pd(a, a, 1); }
TVKG_INLINE V2d unpackLo(V2d a, V2d b) { return _mm_unpacklo_pd(a, b); }
TVKG_INLINE V2d unpackHi(V2d a, V2d b) { return _mm_unpackhi_pd(a, b); }
// Two numbers of a scalar kernel side by side, and back; two binary32
// numbers sit in the low lanes of a V4f, zeros above, and convert in place.
TVKG_INLINE double lowHalf(V2d a) { return _mm_cvtsd_f64(a); }
TVKG_INLINE double highHalf(V2d a) { return _mm_cvtsd_f64(_mm_unpackhi_pd(a, a)); }
TVKG_INLINE V2d combine(double low, double high) { return _mm_setr_pd(low, high); }
TVKG_INLINE float lowHalf(V4f a) { return _mm_cvtss_f32(a); }
TVKG_INLINE float highHalf(V4f a) { return _mm_cvtss_f32(_mm_shuffle_ps(a, a, 1)); }
TVKG_INLINE V4f combine(float low, float high) { return _mm_unpacklo_ps(_mm_set_ss(low), _mm_set_ss(high)); }
TVKG_INLINE V2d toDouble(V4f a) { return _mm_cvtps_pd(a); }
TVKG_INLINE V4f toSingle(V2d a) { return _mm_cvtpd_ps(a); }

template <int i0, int i1, int i2, int i3>
TVKG_INLINE V4f shuffle(V4f a, V4f b)
{
    return _mm_shuffle_ps(a, b, _MM_SHUFFLE(i3, i2, i1, i0));
}
TVKG_INLINE V4f swapLanes(V4f a) { return _mm_shuffle_ps(a, a, _MM_SHUFFLE(3, 2, 0, 1)); }
TVKG_INLINE V4f unpackLo(V4f a, V4f b) { return _mm_unpacklo_ps(a, b); }
TVKG_INLINE V4f unpackHi(V4f a, V4f b) { return _mm_unpackhi_ps(a, b); }
TVKG_INLINE V4f moveLowHalves(V4f a, V4f b) { return _mm_movelh_ps(a, b); }
TVKG_INLINE V4f moveHighHalves(V4f a, V4f b) { return _mm_movehl_ps(b, a); }

TVKG_INLINE V4f broadcast(float x) { return _mm_set1_ps(x); }
TVKG_INLINE V2d broadcast(double x) { return _mm_set1_pd(x); }

#if defined(__AVX__)
// The avx2 level: two 128-bit vectors in the halves of one register, each
// half treated as its own V2d or V4f.
using V4d = __m256d;
using V8f = __m256;

TVKG_INLINE V4d load4(const double* p) { return _mm256_load_pd(p); }
TVKG_INLINE V4d add(V4d a, V4d b) { return _mm256_add_pd(a, b); }
TVKG_INLINE V4d sub(V4d a, V4d b) { return _mm256_sub_pd(a, b); }
TVKG_INLINE V4d mul(V4d a, V4d b) { return _mm256_mul_pd(a, b); }
TVKG_INLINE V4d bitXor(V4d a, V4d b) { return _mm256_xor_pd(a, b); }
TVKG_INLINE V4d swapLanes(V4d a) { return _mm256_permute_pd(a, 5); }
TVKG_INLINE V4d unpackLo(V4d a, V4d b) { return _mm256_unpacklo_pd(a, b); }
TVKG_INLINE V4d unpackHi(V4d a, V4d b) { return _mm256_unpackhi_pd(a, b); }
TVKG_INLINE V2d lowHalf(V4d a) { return _mm256_castpd256_pd128(a); }
TVKG_INLINE V2d highHalf(V4d a) { return _mm256_extractf128_pd(a, 1); }
TVKG_INLINE V4d combine(V2d low, V2d high) { return _mm256_insertf128_pd(_mm256_castpd128_pd256(low), high, 1); }
TVKG_INLINE V4d swapHalves(V4d a) { return _mm256_permute2f128_pd(a, a, 1); }

TVKG_INLINE V8f load8(const float* p) { return _mm256_load_ps(p); }
TVKG_INLINE V8f add(V8f a, V8f b) { return _mm256_add_ps(a, b); }
TVKG_INLINE V8f sub(V8f a, V8f b) { return _mm256_sub_ps(a, b); }
TVKG_INLINE V8f mul(V8f a, V8f b) { return _mm256_mul_ps(a, b); }
TVKG_INLINE V8f bitXor(V8f a, V8f b) { return _mm256_xor_ps(a, b); }
template <int i0, int i1, int i2, int i3>
TVKG_INLINE V8f shuffle(V8f a, V8f b)
{
    return _mm256_shuffle_ps(a, b, _MM_SHUFFLE(i3, i2, i1, i0));
}
TVKG_INLINE V8f unpackLo(V8f a, V8f b) { return _mm256_unpacklo_ps(a, b); }
TVKG_INLINE V8f unpackHi(V8f a, V8f b) { return _mm256_unpackhi_ps(a, b); }
// The 64-bit halves of each 128-bit half, moved as binary64 lanes.
TVKG_INLINE V8f moveLowHalves(V8f a, V8f b)
{
    return _mm256_castpd_ps(_mm256_unpacklo_pd(_mm256_castps_pd(a), _mm256_castps_pd(b)));
}
TVKG_INLINE V8f moveHighHalves(V8f a, V8f b)
{
    return _mm256_castpd_ps(_mm256_unpackhi_pd(_mm256_castps_pd(a), _mm256_castps_pd(b)));
}
TVKG_INLINE V4f lowHalf(V8f a) { return _mm256_castps256_ps128(a); }
TVKG_INLINE V4f highHalf(V8f a) { return _mm256_extractf128_ps(a, 1); }
TVKG_INLINE V8f combine(V4f low, V4f high) { return _mm256_insertf128_ps(_mm256_castps128_ps256(low), high, 1); }
TVKG_INLINE V8f swapHalves(V8f a) { return _mm256_permute2f128_ps(a, a, 1); }
#endif

} // namespace tvkgen::simd
