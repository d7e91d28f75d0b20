// The frame of the batch entries: many transforms of one size in one call,
// vector lanes across the transforms. A block body holds each number of its
// kernel's per-element graph as one vector whose lane t belongs to
// transform t of the block; transforms enter and leave the lanes through
// in-register transposes. Every lane runs the single kernel's operations in
// their types and roundings, so each member gets the single call's bytes.
#pragma once

#include <cstddef>
#include <cstring>

#include "scale.h"
#include "simd/convert.h"
#include "simd/lanes.h"
#include "tvkgen.h"

namespace tvkgen::batch {

using namespace simd;
using std::ptrdiff_t;

// Lanes across the transforms at every level but the portable one, whose
// emulated vectors take the compiler minutes per batch kernel: there the
// entries run every member as a single call, and the build prints no block
// functions.
#ifdef TVKGEN_PORTABLE
#define TVKGEN_BATCH_LANES 0
#else
#define TVKGEN_BATCH_LANES 1
#endif

// A block's vectors: binary32 numbers in Vs, binary64 numbers in Vd. A
// binary32 kernel holds each of its binary64 statements in two Vd, the low
// lanes first. TVKGEN_BATCH_BITS is their width.
#if defined(__AVX512F__)
#define TVKGEN_BATCH_BITS 512
using Vs = V16f;
using Vd = V8d;
TVKG_INLINE Vs splat(float x) { return broadcast16(x); }
TVKG_INLINE Vd splat(double x) { return broadcast8(x); }
#elif defined(__AVX__) && !defined(TVKGEN_PORTABLE)
#define TVKGEN_BATCH_BITS 256
using Vs = V8f;
using Vd = V4d;
TVKG_INLINE Vs splat(float x) { return broadcast8(x); }
TVKG_INLINE Vd splat(double x) { return broadcast4(x); }
#else
#define TVKGEN_BATCH_BITS 128
using Vs = V4f;
using Vd = V2d;
TVKG_INLINE Vs splat(float x) { return broadcast(x); }
TVKG_INLINE Vd splat(double x) { return broadcast(x); }
#endif

template <class Real>
struct BlockVector;
template <>
struct BlockVector<float> {
    using Type = Vs;
};
template <>
struct BlockVector<double> {
    using Type = Vd;
};
template <class Real>
using VectorOf = typename BlockVector<Real>::Type;

// Transforms per block: the lanes of the kernel's own element type.
template <class Real>
inline constexpr int kLanes = sizeof(VectorOf<Real>) / sizeof(Real);

// A sign flip of every lane, as the single kernels' negation and sign masks.
TVKG_INLINE Vs neg(Vs a) { return bitXor(a, splat(-0.0f)); }
TVKG_INLINE Vd neg(Vd a) { return bitXor(a, splat(-0.0)); }

// Numbers p[0..3] of the block's transforms, `dist` numbers apart, into
// columns: c[j] holds number j, lane t from transform t. At the avx2 level
// transforms t and t + 4 share a row, one in each 128-bit half; at avx512
// transforms t, t + 4, t + 8 and t + 12, one in each quarter.
TVKG_INLINE void loadColumns(const float* p, ptrdiff_t dist, Vs (&c)[4])
{
#if TVKGEN_BATCH_BITS == 512
    Vs r[4];
    for (int t = 0; t < 4; ++t)
        r[t] = combine(loadu(p + t * dist), loadu(p + (t + 4) * dist), loadu(p + (t + 8) * dist),
                       loadu(p + (t + 12) * dist));
    transpose4(r[0], r[1], r[2], r[3], c[0], c[1], c[2], c[3]);
#elif TVKGEN_BATCH_BITS == 256
    Vs r[4];
    for (int t = 0; t < 4; ++t)
        r[t] = combine(loadu(p + t * dist), loadu(p + (t + 4) * dist));
    transpose4(r[0], r[1], r[2], r[3], c[0], c[1], c[2], c[3]);
#else
    transpose4(loadu(p), loadu(p + dist), loadu(p + 2 * dist), loadu(p + 3 * dist), c[0], c[1], c[2], c[3]);
#endif
}

TVKG_INLINE void storeColumns(float* p, ptrdiff_t dist, Vs c0, Vs c1, Vs c2, Vs c3)
{
    Vs r[4];
    transpose4(c0, c1, c2, c3, r[0], r[1], r[2], r[3]);
    for (int t = 0; t < 4; ++t) {
#if TVKGEN_BATCH_BITS == 512
        storeu(p + t * dist, quarter<0>(r[t]));
        storeu(p + (t + 4) * dist, quarter<1>(r[t]));
        storeu(p + (t + 8) * dist, quarter<2>(r[t]));
        storeu(p + (t + 12) * dist, quarter<3>(r[t]));
#elif TVKGEN_BATCH_BITS == 256
        storeu(p + t * dist, lowHalf(r[t]));
        storeu(p + (t + 4) * dist, highHalf(r[t]));
#else
        storeu(p + t * dist, r[t]);
#endif
    }
}

// Numbers p[0..1] of binary64 transforms; at the avx2 level transforms t
// and t + 2 share a row, at avx512 t, t + 2, t + 4 and t + 6.
TVKG_INLINE void loadColumns(const double* p, ptrdiff_t dist, Vd (&c)[2])
{
#if TVKGEN_BATCH_BITS == 512
    transpose2(combine(loadu(p), loadu(p + 2 * dist), loadu(p + 4 * dist), loadu(p + 6 * dist)),
               combine(loadu(p + dist), loadu(p + 3 * dist), loadu(p + 5 * dist), loadu(p + 7 * dist)), c[0], c[1]);
#elif TVKGEN_BATCH_BITS == 256
    transpose2(combine(loadu(p), loadu(p + 2 * dist)), combine(loadu(p + dist), loadu(p + 3 * dist)), c[0], c[1]);
#else
    transpose2(loadu(p), loadu(p + dist), c[0], c[1]);
#endif
}

TVKG_INLINE void storeColumns(double* p, ptrdiff_t dist, Vd c0, Vd c1)
{
    Vd r[2];
    transpose2(c0, c1, r[0], r[1]);
    for (int t = 0; t < 2; ++t) {
#if TVKGEN_BATCH_BITS == 512
        storeu(p + t * dist, quarter<0>(r[t]));
        storeu(p + (t + 2) * dist, quarter<1>(r[t]));
        storeu(p + (t + 4) * dist, quarter<2>(r[t]));
        storeu(p + (t + 6) * dist, quarter<3>(r[t]));
#elif TVKGEN_BATCH_BITS == 256
        storeu(p + t * dist, lowHalf(r[t]));
        storeu(p + (t + 2) * dist, highHalf(r[t]));
#else
        storeu(p + t * dist, r[t]);
#endif
    }
}

// One number of each transform, where no run of the kernel's numbers fills
// a column block.
template <class Real>
TVKG_INLINE VectorOf<Real> gather(const Real* p, ptrdiff_t dist)
{
    Real lanes[kLanes<Real>];
    for (int t = 0; t < kLanes<Real>; ++t)
        lanes[t] = loadScalar(p + t * dist);
    VectorOf<Real> v;
    std::memcpy(&v, lanes, sizeof v);
    return v;
}

template <class Real>
TVKG_INLINE void scatter(Real* p, ptrdiff_t dist, VectorOf<Real> v)
{
    Real lanes[kLanes<Real>];
    std::memcpy(lanes, &v, sizeof v);
    for (int t = 0; t < kLanes<Real>; ++t)
        storeScalar(p + t * dist, lanes[t]);
}

// The blocks of one size and direction: `blocks` runs of kLanes transforms,
// distances in numbers, the scale factor by its index.
template <class Real>
using BlocksFn = void (*)(const Real* src, ptrdiff_t srcDist, Real* dst, ptrdiff_t dstDist, ptrdiff_t blocks, int pick);

template <class Kernel, class Real>
TVKG_INLINE void runBlocks(const Real* src, ptrdiff_t srcDist, Real* dst, ptrdiff_t dstDist, ptrdiff_t blocks, int pick)
{
    for (ptrdiff_t b = 0; b < blocks; ++b)
        Kernel::body(src + b * kLanes<Real> * srcDist, srcDist, dst + b * kLanes<Real> * dstDist, dstDist,
                     &Kernel::kScale[pick]);
}

// An exported batch entry after its size test: a negative count, then a
// distance shorter than one transform's extent (in elements), give
// StatusSizeError; then the null tests and the flag as in a single call.
// Whole blocks run in the lanes, the remainder (every member at a level
// without batch lanes: `blocks` null) through the single kernel. Every
// block reads all of its transforms before it stores, so src == dst with
// equal distances runs in place.
template <class Real, class Src, class Dst>
TVKG_INLINE TvkStatus runBatch(BlocksFn<Real> blocks, TvkStatus (*single)(const Src*, Dst*, int, int), ScaleRow row,
                               const Src* src, int srcDist, Dst* dst, int dstDist, int len, int count, int flag,
                               int srcExtent, int dstExtent)
{
    if (count < 0 || srcDist < srcExtent || dstDist < dstExtent)
        return StatusSizeError;
    if (src == nullptr || dst == nullptr)
        return StatusNullPointer;
    const int pick = scaleIndex(flag, row);
    if (pick < 0)
        return StatusScaleFlagError;
    const ptrdiff_t whole = blocks ? count / kLanes<Real> : 0;
    if (whole > 0)
        blocks(reinterpret_cast<const Real*>(src), ptrdiff_t{srcDist} * ptrdiff_t{sizeof(Src) / sizeof(Real)},
               reinterpret_cast<Real*>(dst), ptrdiff_t{dstDist} * ptrdiff_t{sizeof(Dst) / sizeof(Real)}, whole, pick);
    for (ptrdiff_t i = whole * kLanes<Real>; i < count; ++i)
        single(src + i * srcDist, dst + i * dstDist, len, flag);
    return StatusOk;
}

} // namespace tvkgen::batch
