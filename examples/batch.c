/* Many transforms in one call: 1000 rows of 24 points through the real
 * forward transform into CCS cells, each row with the bytes its single call
 * gives, then back in place. */
#include <stdio.h>
#include <string.h>

#include "tvkgen_batch.h"

enum { kLen = 24, kRows = 1000, kCells = 2 * (kLen / 2 + 1) };

static Tvk64f rows[kRows][kCells], spectra[kRows][kCells];

int main(void)
{
    Tvk64f single[kCells];
    int r, n;
    for (r = 0; r < kRows; ++r)
        for (n = 0; n < kLen; ++n)
            rows[r][n] = (Tvk64f)((r * 7 + n * 3) % 11) - 5.0;
    if (tvkgBatchDFTFwd_RToCCS_64f(&rows[0][0], kCells, &spectra[0][0], kCells, kLen, kRows, ScaleNoDivide) != StatusOk)
        return 1;
    /* Row 517 as a single call gives the same bytes. */
    if (tvkgDFTFwd_RToCCS_64f(rows[517], single, kLen, ScaleNoDivide) != StatusOk ||
        memcmp(single, spectra[517], sizeof single) != 0)
        return 1;
    if (tvkgBatchDFTInv_CCSToR_64f(&spectra[0][0], kCells, &spectra[0][0], kCells, kLen, kRows,
                                   ScaleDivInverseByN) != StatusOk)
        return 1;
    printf("row 517: X[1] = %.4f%+.4fi; back: %g %g %g (was %g %g %g)\n", single[2], single[3], spectra[517][0],
           spectra[517][1], spectra[517][2], rows[517][0], rows[517][1], rows[517][2]);
    return 0;
}
