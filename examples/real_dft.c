/* Real DFT: one real sequence into each packed layout, and back to real.
 * CCS holds R[0], I[0], R[1], I[1], ... up to bin N/2 (N + 2 cells for even
 * N); Pack and Perm hold N cells, without the imaginary parts that are
 * always zero, Perm with R[N/2] in cell 1. */
#include <stdio.h>

#include "tvkgen.h"

static void print(const char* name, const Tvk32f* cells, int count)
{
    int i;
    printf("%-5s", name);
    for (i = 0; i < count; ++i)
        printf(" %5.1f", cells[i]);
    printf("\n");
}

int main(void)
{
    const Tvk32f x[6] = {1, 2, 3, 4, 5, 6};
    Tvk32f ccs[8], pack[6], perm[6], back[6];
    if (tvkgDFTFwd_RToCCS_6_32f(x, ccs, ScaleNoDivide) != StatusOk ||
        tvkgDFTFwd_RToPack_6_32f(x, pack, ScaleNoDivide) != StatusOk ||
        tvkgDFTFwd_RToPerm_6_32f(x, perm, ScaleNoDivide) != StatusOk)
        return 1;
    print("CCS", ccs, 8);
    print("Pack", pack, 6);
    print("Perm", perm, 6);
    /* Each layout has its own inverse; this one divides by N. */
    if (tvkgDFTInv_PermToR_6_32f(perm, back, ScaleDivInverseByN) != StatusOk)
        return 1;
    print("back", back, 6);
    return 0;
}
