/*
 * tvkcore: the memory service of tvkgen. Blocks are at least 16-byte aligned;
 * both calls are safe from several threads at once.
 */
#ifndef TVKCORE_H
#define TVKCORE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define TVKCORE_API __attribute__((visibility("default")))
#else
#define TVKCORE_API
#endif

/* A block of at least `len` bytes, or null when memory is exhausted. */
TVKCORE_API void* tvkMalloc(uint32_t len);

/* Releases a block of tvkMalloc; a null pointer is ignored. */
TVKCORE_API void tvkFree(void* ptr);

#ifdef __cplusplus
}
#endif

#endif /* TVKCORE_H */
