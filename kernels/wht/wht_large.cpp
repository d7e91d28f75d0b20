// Walsh-Hadamard kernels of orders 8 to 13: two or three passes through the
// work buffer.
#include "wht_kernel.h"

#define TVKG_WHT_LARGE_ORDERS(t) \
    TVKG_WHT_DEFINE(t, 8) TVKG_WHT_DEFINE(t, 9) TVKG_WHT_DEFINE(t, 10) TVKG_WHT_DEFINE(t, 11) TVKG_WHT_DEFINE(t, 12) \
    TVKG_WHT_DEFINE(t, 13)

TVKG_WHT_LARGE_ORDERS(32f)
TVKG_WHT_LARGE_ORDERS(64f)
