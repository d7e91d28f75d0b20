/* The public headers compile as strict C99 and link from C. */
#include "tvkcore.h"
#include "tvkgen.h"

#include <stdio.h>

int main(void)
{
    const LibVersion* version = tvkgenGetLibVersion();
    Tvk32fc x[4] = {{1.0f, 0.0f}, {0.0f, 0.0f}, {0.0f, 0.0f}, {0.0f, 0.0f}};
    Tvk32fc X[4];
    TvkStatus status = tvkgDFTFwd_CToC_32fc(x, X, 4, ScaleNoDivide);
    void* block = tvkMalloc(64);
    int ok = version->versionMajor == 6 && status == StatusOk && X[3].re == 1.0f && block != NULL &&
             ((unsigned long)block & 15u) == 0;
    tvkFree(block);
    if (!ok)
        printf("C caller saw a wrong result\n");
    return ok ? 0 : 1;
}
