#include "tvkcore.h"

#include <cstdlib>

namespace {
constexpr std::size_t kBlockAlignment = 16;
}

// aligned_alloc wants a size that is a multiple of the alignment; a request
// of 0 bytes still gets a unique block so that callers can free it alike.
void* tvkMalloc(uint32_t len)
{
    std::size_t rounded = (std::size_t{len} + kBlockAlignment - 1) & ~(kBlockAlignment - 1);
    return std::aligned_alloc(kBlockAlignment, rounded == 0 ? kBlockAlignment : rounded);
}

void tvkFree(void* ptr)
{
    std::free(ptr);
}
