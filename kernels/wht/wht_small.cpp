// Walsh-Hadamard kernels of orders 1 to 7: registers and the stack frame only.
#include "wht_kernel.h"

#define TVKG_WHT_SMALL_ORDERS(t) \
    TVKG_WHT_DEFINE(t, 1) TVKG_WHT_DEFINE(t, 2) TVKG_WHT_DEFINE(t, 3) TVKG_WHT_DEFINE(t, 4) TVKG_WHT_DEFINE(t, 5) \
    TVKG_WHT_DEFINE(t, 6) TVKG_WHT_DEFINE(t, 7)

TVKG_WHT_SMALL_ORDERS(32f)
TVKG_WHT_SMALL_ORDERS(64f)
