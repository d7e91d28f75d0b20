/* Hartley transform: real in, real out, N cells in natural order. It is its
 * own inverse up to N, so the second call with a division by N gives the
 * input back. */
#include <stdio.h>

#include "tvkgen.h"

int main(void)
{
    const Tvk64f x[5] = {1, 0, 2, 0, 3};
    Tvk64f H[5], back[5];
    int k;
    if (tvkgHartley_5_64f(x, H, ScaleNoDivide) != StatusOk)
        return 1;
    for (k = 0; k < 5; ++k)
        printf("H[%d] = %7.4f\n", k, H[k]);
    if (tvkgHartley_64f(H, back, 5, ScaleDivInverseByN) != StatusOk)
        return 1;
    printf("back: %g %g %g %g %g\n", back[0], back[1], back[2], back[3], back[4]);
    return 0;
}
