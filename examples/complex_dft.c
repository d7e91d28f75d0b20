/* Complex DFT: the spectrum of one tone, with a size-8 kernel, and back
 * through the size dispatcher. */
#include <math.h>
#include <stdio.h>

#include "tvkgen.h"

int main(void)
{
    const double pi = 3.14159265358979323846;
    Tvk64fc x[8], X[8], y[8];
    int n;
    for (n = 0; n < 8; ++n) { /* the tone of bin 3 */
        x[n].re = cos(2 * pi * 3 * n / 8);
        x[n].im = sin(2 * pi * 3 * n / 8);
    }
    if (tvkgDFTFwd_CToC_8_64fc(x, X, ScaleDivForwardByN) != StatusOk)
        return 1;
    for (n = 0; n < 8; ++n)
        printf("X[%d] = %6.3f %+6.3fi\n", n, X[n].re, X[n].im);
    /* Any size 2..64 by its length; the forward call divided by N already. */
    if (tvkgDFTInv_CToC_64fc(X, y, 8, ScaleDivForwardByN) != StatusOk)
        return 1;
    printf("back: x[1] = %6.3f %+6.3fi\n", y[1].re, y[1].im);
    return 0;
}
