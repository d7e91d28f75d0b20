// Conversions between binary32 and binary64 lanes, and 256-bit broadcasts,
// for code that holds a binary32 kernel's binary64 statements on their own
// lanes (the batch entries). Apart from vec.h so that the kernels of
// libtvkgen do not read them.
//
//   widenLow / widenHigh   the low / high half of the binary32 lanes, to binary64 (exact)
//   narrow                 the binary64 lanes of two vectors to binary32, low first, each rounded once
//   broadcast8 / broadcast4  V8f / V4d of one number
#pragma once

#include "vec.h"

namespace tvkgen::simd {

#if defined(TVKGEN_PORTABLE)
TVKG_INLINE V2d widenLow(V4f a) { return V2d{a[0], a[1]}; }
TVKG_INLINE V2d widenHigh(V4f a) { return V2d{a[2], a[3]}; }
TVKG_INLINE V4f narrow(V2d low, V2d high)
{
    return V4f{static_cast<float>(low[0]), static_cast<float>(low[1]), static_cast<float>(high[0]),
                static_cast<float>(high[1])};
}
#else
TVKG_INLINE V2d widenLow(V4f a) { return _mm_cvtps_pd(a); }
TVKG_INLINE V2d widenHigh(V4f a) { return _mm_cvtps_pd(_mm_movehl_ps(a, a)); }
TVKG_INLINE V4f narrow(V2d low, V2d high) { return _mm_movelh_ps(_mm_cvtpd_ps(low), _mm_cvtpd_ps(high)); }
#if defined(__AVX__)
TVKG_INLINE V8f broadcast8(float x) { return _mm256_set1_ps(x); }
TVKG_INLINE V4d broadcast4(double x) { return _mm256_set1_pd(x); }
TVKG_INLINE V4d widenLow(V8f a) { return _mm256_cvtps_pd(lowHalf(a)); }
TVKG_INLINE V4d widenHigh(V8f a) { return _mm256_cvtps_pd(highHalf(a)); }
TVKG_INLINE V8f narrow(V4d low, V4d high) { return combine(_mm256_cvtpd_ps(low), _mm256_cvtpd_ps(high)); }
#endif
#endif

} // namespace tvkgen::simd
