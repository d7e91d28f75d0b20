// Walsh-Hadamard batch entries. Orders up to kLastLaneOrder run whole blocks
// of transforms in the lanes, where a single transform fills few vectors and
// spends its time on shuffles; the larger orders, whose single kernel is
// already vector code across its own points, run member by member through
// it, as does every remainder.
//
// A lane gets its transform's bytes because every single kernel, whatever
// its factorisation, runs the levels of each element in ascending order,
// each butterfly as a + b and a - b of the lower and the upper place, and
// multiplies by the scale last; the lanes run the same butterflies
// (wht_vector.h's column step) and the same scale constants.
#include <array>
#include <cstdint>
#include <utility>

#include "batch_frame.h"
#include "tvkcore.h"
#include "tvkgen_batch.h"
#include "wht_plans.h"
#include "wht_scale.h"
#include "wht_vector.h"

namespace tvkgen::batch {
namespace {

// The last order whose blocks beat the single kernel (bench_batch's wht
// rows): its 128-bit vectors lose to eight or four lanes through order 7,
// to lanes of their own width only while a transform fills few registers.
constexpr int kLastLaneOrder = TVKGEN_BATCH_BITS > 128 ? 7 : 4;

// The butterfly's operations on a block's vectors.
template <class RealType>
struct LaneOps {
    using Real = RealType;
    using V = VectorOf<Real>;
    static TVKG_INLINE V add(V a, V b) { return simd::add(a, b); }
    static TVKG_INLINE V sub(V a, V b) { return simd::sub(a, b); }
};

// Numbers per row that loadColumns and storeColumns move.
template <class Real>
constexpr int kRow = 16 / sizeof(Real);

// One block of kLanes transforms of order Order: v[j] holds number j of
// every transform of the block.
template <class Real, int Order>
struct LaneKernel {
    static constexpr const Real* kScale = wht::kScales<Real, Order>;

    static TVKG_INLINE void body(const Real* src, ptrdiff_t srcDist, Real* dst, ptrdiff_t dstDist, const Real* scale)
    {
        using V = VectorOf<Real>;
        constexpr int n = 1 << Order, row = kRow<Real>;
        V v[n];
        if constexpr (n < row) {
            wht::unrolled<n>([&](auto j) TVKG_LAMBDA_INLINE { v[j] = gather(src + j, srcDist); });
        } else {
            wht::unrolled<n / row>([&](auto r) TVKG_LAMBDA_INLINE {
                V c[row];
                loadColumns(src + r * row, srcDist, c);
                wht::unrolled<row>([&](auto k) TVKG_LAMBDA_INLINE { v[r * row + k] = c[k]; });
            });
        }
        wht::column<LaneOps<Real>, n, 1>(v);
        const V s = splat(*scale);
        wht::unrolled<n>([&](auto j) TVKG_LAMBDA_INLINE { v[j] = mul(v[j], s); });
        if constexpr (n < row) {
            wht::unrolled<n>([&](auto j) TVKG_LAMBDA_INLINE { scatter(dst + j, dstDist, v[j]); });
        } else {
            wht::unrolled<n / row>([&](auto r) TVKG_LAMBDA_INLINE {
                V* c = v + r * row;
                if constexpr (row == 4)
                    storeColumns(dst + r * row, dstDist, c[0], c[1], c[2], c[3]);
                else
                    storeColumns(dst + r * row, dstDist, c[0], c[1]);
            });
        }
    }
};

// The blocks of orders 1..kLastLaneOrder; none at a level without batch
// lanes.
template <class Real, int... I>
constexpr auto laneBlocks(std::integer_sequence<int, I...>)
{
#if TVKGEN_BATCH_LANES
    return std::array<BlocksFn<Real>, sizeof...(I)>{&runBlocks<LaneKernel<Real, I + 1>, Real>...};
#else
    return std::array<BlocksFn<Real>, sizeof...(I)>{};
#endif
}

template <class Real>
constexpr auto kLaneBlocks = laneBlocks<Real>(std::make_integer_sequence<int, kLastLaneOrder>{});

template <class Real>
using SingleFn = TvkStatus (*)(const Real*, Real*, int, int, uint8_t*);

// The checks of runBatch after the order test, then the lanes and the single
// calls; unlike runBatch's, these single calls take the work buffer, one for
// all members (a null one is allocated once per batch, only when a member
// needs it).
template <class Real>
TvkStatus runWht(SingleFn<Real> single, const Real* src, int srcDist, Real* dst, int dstDist, int order, int count,
                 int flag, uint8_t* buffer)
{
    if (order < wht::kMinOrder || order > wht::kMaxOrder)
        return StatusSizeError;
    const int n = 1 << order;
    if (count < 0 || srcDist < n || dstDist < n)
        return StatusSizeError;
    if (src == nullptr || dst == nullptr)
        return StatusNullPointer;
    const int pick = scaleIndex(flag, ScaleRow::SelfInverse);
    if (pick < 0)
        return StatusScaleFlagError;
    const BlocksFn<Real> blocks = order <= kLastLaneOrder ? kLaneBlocks<Real>[order - 1] : nullptr;
    const ptrdiff_t whole = blocks ? count / kLanes<Real> : 0;
    if (whole > 0)
        blocks(src, srcDist, dst, dstDist, whole, pick);
    const ptrdiff_t first = whole * kLanes<Real>;
    uint8_t* const own = buffer == nullptr && order >= wht::kFirstBufferedOrder && first < count
                             ? static_cast<uint8_t*>(tvkMalloc(static_cast<uint32_t>(wht::bufferBytes<Real>(order))))
                             : nullptr;
    for (ptrdiff_t i = first; i < count; ++i)
        single(src + i * srcDist, dst + i * dstDist, order, flag, own ? own : buffer);
    tvkFree(own);
    return StatusOk;
}

} // namespace
} // namespace tvkgen::batch

TvkStatus tvkgBatchWHT_32f(const Tvk32f* src, int srcDist, Tvk32f* dst, int dstDist, int order, int count, int flag,
                           uint8_t* buffer)
{
    return tvkgen::batch::runWht<Tvk32f>(tvkgWHT_32f, src, srcDist, dst, dstDist, order, count, flag, buffer);
}

TvkStatus tvkgBatchWHT_64f(const Tvk64f* src, int srcDist, Tvk64f* dst, int dstDist, int order, int count, int flag,
                           uint8_t* buffer)
{
    return tvkgen::batch::runWht<Tvk64f>(tvkgWHT_64f, src, srcDist, dst, dstDist, order, count, flag, buffer);
}
