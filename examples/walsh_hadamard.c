/* Walsh-Hadamard transform of 8 points (order 3), and of 1024 points
 * (order 10) with a work buffer of the caller's. */
#include <stdio.h>

#include "tvkcore.h"
#include "tvkgen.h"

int main(void)
{
    const Tvk32f x[8] = {1, 1, 1, 1, -1, -1, -1, -1};
    Tvk32f y[8];
    Tvk32f* long_x;
    uint8_t* buffer;
    int32_t bytes = 0;
    int i;
    if (tvkgWHT_3_32f(x, y, ScaleNoDivide, NULL) != StatusOk)
        return 1;
    for (i = 0; i < 8; ++i)
        printf("%g ", y[i]);
    printf("\n");

    if (tvkgWHTGetBufferSize_32f(10, &bytes) != StatusOk)
        return 1;
    long_x = tvkMalloc((uint32_t)(1024 * sizeof(Tvk32f)));
    buffer = tvkMalloc(bytes > 0 ? (uint32_t)bytes : 1u);
    for (i = 0; i < 1024; ++i)
        long_x[i] = i == 0 ? 1.0f : 0.0f;
    /* In place; an impulse spreads evenly, 1/sqrt(1024) in every cell. */
    if (tvkgWHT_32f(long_x, long_x, 10, ScaleDivBySqrtN, buffer) != StatusOk)
        return 1;
    printf("order 10: cell 0 %g, cell 1023 %g (buffer %d bytes)\n", long_x[0], long_x[1023], (int)bytes);
    tvkFree(buffer);
    tvkFree(long_x);
    return 0;
}
