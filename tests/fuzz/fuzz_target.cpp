// The libFuzzer entry: every input is one call, and a failed check aborts.
#include <cstdio>
#include <cstdlib>

#include "call_surface.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string problem = tvkfuzz::checkOneCall(data, size);
    if (!problem.empty()) {
        std::fprintf(stderr, "%s\n", problem.c_str());
        std::abort();
    }
    return 0;
}
