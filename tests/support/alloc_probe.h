// A counting allocator in front of tvkcore's. The one source file of a test
// program that includes this header defines tvkMalloc and tvkFree; the
// program exports them, so the library's calls land here first and pass on
// to tvkcore's. Counts are atomic: threads allocate too.
#pragma once

#include <dlfcn.h>

#include <atomic>
#include <cstdint>
#include <cstring>

#include "tvkcore.h" // their declarations, which export them

namespace tvktest {

struct AllocationProbe {
    std::atomic<bool> failNext{false}; // the next tvkMalloc returns null
    std::atomic<int> mallocs{0}, frees{0};
    std::atomic<uint32_t> lastBytes{0};
    std::atomic<void*> lastBlock{nullptr}, lastFreed{nullptr};
    std::atomic<int32_t> firstWordAtFree{0}; // a plan arena's cursor

    void reset()
    {
        mallocs = frees = 0;
        lastBlock = lastFreed = nullptr;
    }
};
inline AllocationProbe probe;

template <class Fn>
Fn nextDefinition(const char* name)
{
    return reinterpret_cast<Fn>(dlsym(RTLD_NEXT, name));
}

} // namespace tvktest

extern "C" void* tvkMalloc(uint32_t len)
{
    static const auto real = tvktest::nextDefinition<void* (*)(uint32_t)>("tvkMalloc");
    void* block = tvktest::probe.failNext.exchange(false) ? nullptr : real(len);
    tvktest::probe.lastBytes = len;
    tvktest::probe.lastBlock = block;
    ++tvktest::probe.mallocs;
    return block;
}

extern "C" void tvkFree(void* ptr)
{
    static const auto real = tvktest::nextDefinition<void (*)(void*)>("tvkFree");
    if (ptr != nullptr) {
        int32_t word;
        std::memcpy(&word, ptr, sizeof word);
        tvktest::probe.firstWordAtFree = word;
    }
    tvktest::probe.lastFreed = ptr;
    ++tvktest::probe.frees;
    real(ptr);
}
