/*
 * tvkgen_batch: many transforms of one size in one call, each member giving
 * exactly the bytes of the single call of its size (libtvkgen_batch, beside
 * libtvkgen).
 *
 * Arguments: src, the distance from one transform to the next in src,
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

TVKG_API TvkStatus tvkgBatchDFTFwd_CToC_32fc(const Tvk32fc* src, int srcDist, Tvk32fc* dst, int dstDist, int len,
                                             int count, int flag);
TVKG_API TvkStatus tvkgBatchDFTInv_CToC_32fc(const Tvk32fc* src, int srcDist, Tvk32fc* dst, int dstDist, int len,
                                             int count, int flag);
TVKG_API TvkStatus tvkgBatchDFTFwd_CToC_64fc(const Tvk64fc* src, int srcDist, Tvk64fc* dst, int dstDist, int len,
                                             int count, int flag);
TVKG_API TvkStatus tvkgBatchDFTInv_CToC_64fc(const Tvk64fc* src, int srcDist, Tvk64fc* dst, int dstDist, int len,
                                             int count, int flag);

#ifdef __cplusplus
}
#endif

#endif
