/* DCT-IV of length 16 through a plan in the caller's memory. The plan is
 * read-only once made: threads may share it. */
#include <stdio.h>

#include "tvkcore.h"
#include "tvkgen.h"

int main(void)
{
    Tvk64f x[16], y[16];
    TvkgDCT4Plan_64f* plan = NULL;
    uint8_t* memory;
    int32_t bytes = 0;
    int i;
    for (i = 0; i < 16; ++i)
        x[i] = i % 4 == 0 ? 1.0 : 0.0;
    if (tvkgDCT4GetSize_64f(16, &bytes) != StatusOk)
        return 1;
    memory = tvkMalloc((uint32_t)bytes);
    if (tvkgDCT4Init_64f(&plan, 16, memory) != StatusOk || tvkgDCT4_64f(x, y, plan) != StatusOk)
        return 1;
    for (i = 0; i < 4; ++i)
        printf("y[%d] = %8.5f\n", i, y[i]);
    tvkFree(memory);
    return 0;
}
