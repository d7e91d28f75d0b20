/*
 * tvkgen_batch: many transforms of one size in one call, each member giving
 * exactly the bytes of the single call of its size (libtvkgen_batch, beside
 * libtvkgen).
 *
 * One entry per family, direction, layout and type, named as the single
 * dispatchers with Batch after tvkg. Arguments: src, the distance from one
 * transform to the next in src,
 * dst, its distance in dst (both in elements of the type), the length,
 * the count of transforms and the scale flag of the single calls.
 *
 * Checks, in this order; the first that fails decides the status and
 * leaves dst untouched:
 *   len outside 2..64                                  StatusSizeError
 *   count < 0                                          StatusSizeError
 *   srcDist or dstDist shorter than one transform      StatusSizeError
 *   src null, then dst null                            StatusNullPointer
 *   flag none of 1, 2, 4, 8                            StatusScaleFlagError
 * A count of 0 then succeeds and touches nothing. Any address works; src
 * equal to dst with equal distances runs in place; other overlaps are not
 * supported.
 *
 * Valid C99 and C++.
 */
#ifndef TVKGEN_BATCH_H
#define TVKGEN_BATCH_H

#include "tvkgen.h"

#ifdef __cplusplus
extern "C" {
#endif

#define TVKG_DECLARE_BATCH(name, t) \
    TVKG_API TvkStatus name(const t* src, int srcDist, t* dst, int dstDist, int len, int count, int flag);

/* Complex transforms: len elements in and out. */
TVKG_DECLARE_BATCH(tvkgBatchDFTFwd_CToC_32fc, Tvk32fc)
TVKG_DECLARE_BATCH(tvkgBatchDFTInv_CToC_32fc, Tvk32fc)
TVKG_DECLARE_BATCH(tvkgBatchDFTFwd_CToC_64fc, Tvk64fc)
TVKG_DECLARE_BATCH(tvkgBatchDFTInv_CToC_64fc, Tvk64fc)

/* Real forward: len numbers in; CCS 2 * (len / 2 + 1) numbers out, Pack
 * and Perm len. */
TVKG_DECLARE_BATCH(tvkgBatchDFTFwd_RToCCS_32f, Tvk32f)
TVKG_DECLARE_BATCH(tvkgBatchDFTFwd_RToPack_32f, Tvk32f)
TVKG_DECLARE_BATCH(tvkgBatchDFTFwd_RToPerm_32f, Tvk32f)
TVKG_DECLARE_BATCH(tvkgBatchDFTFwd_RToCCS_64f, Tvk64f)
TVKG_DECLARE_BATCH(tvkgBatchDFTFwd_RToPack_64f, Tvk64f)
TVKG_DECLARE_BATCH(tvkgBatchDFTFwd_RToPerm_64f, Tvk64f)

/* Real inverse: the forward's extents the other way round. */
TVKG_DECLARE_BATCH(tvkgBatchDFTInv_CCSToR_32f, Tvk32f)
TVKG_DECLARE_BATCH(tvkgBatchDFTInv_PackToR_32f, Tvk32f)
TVKG_DECLARE_BATCH(tvkgBatchDFTInv_PermToR_32f, Tvk32f)
TVKG_DECLARE_BATCH(tvkgBatchDFTInv_CCSToR_64f, Tvk64f)
TVKG_DECLARE_BATCH(tvkgBatchDFTInv_PackToR_64f, Tvk64f)
TVKG_DECLARE_BATCH(tvkgBatchDFTInv_PermToR_64f, Tvk64f)

/* Hartley: len numbers in and out. */
TVKG_DECLARE_BATCH(tvkgBatchHartley_32f, Tvk32f)
TVKG_DECLARE_BATCH(tvkgBatchHartley_64f, Tvk64f)

#undef TVKG_DECLARE_BATCH

/* Walsh-Hadamard: orders 1..13 as tvkgWHT_32f and tvkgWHT_64f, 2^order
 * numbers in and out; the order is tested first, the distances against
 * 2^order. `buffer`, for orders 8..13, is one buffer of the single call's
 * size and rules (tvkgWHTGetBufferSize_*) that the members use one after
 * another; when it is null a batch that needs one allocates it once. */
TVKG_API TvkStatus tvkgBatchWHT_32f(const Tvk32f* src, int srcDist, Tvk32f* dst, int dstDist, int order, int count,
                                    int flag, uint8_t* buffer);
TVKG_API TvkStatus tvkgBatchWHT_64f(const Tvk64f* src, int srcDist, Tvk64f* dst, int dstDist, int order, int count,
                                    int flag, uint8_t* buffer);

#ifdef __cplusplus
}
#endif

#endif
