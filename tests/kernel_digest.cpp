// Prints a digest of every complex kernel's output bytes on fixed inputs,
// under each flag and at an aligned and a misaligned address. The SSE2 and
// the portable build must print the same lines; CI compares the two.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "complex_kernels.h"

namespace {

uint64_t fnv1a(const unsigned char* data, size_t size, uint64_t hash)
{
    for (size_t i = 0; i < size; ++i)
        hash = (hash ^ data[i]) * 0x100000001b3ULL;
    return hash;
}

// Inputs from integer arithmetic alone, so that every build sees the same bits.
void fixedInput(const tvktest::ComplexKernel& k, unsigned char* bytes, unsigned seed)
{
    uint32_t state = 2463534242u + seed;
    for (int i = 0; i < 2 * k.size; ++i) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        const double v = (static_cast<int32_t>(state) / 2147483648.0);
        if (k.is64())
            std::memcpy(bytes + 8 * i, &v, 8);
        else {
            const float f = static_cast<float>(v);
            std::memcpy(bytes + 4 * i, &f, 4);
        }
    }
}

} // namespace

int main()
{
    for (const tvktest::ComplexKernel& k : tvktest::builtComplexKernels()) {
        const size_t bytes = 2 * k.size * k.realBytes();
        std::vector<unsigned char> src(bytes + 16), dst(bytes + 16);
        uint64_t hash = 0xcbf29ce484222325ULL;
        for (unsigned seed = 0; seed < 16; ++seed)
            for (int flag : {1, 2, 4, 8})
                for (int offset : {0, 4}) {
                    fixedInput(k, src.data() + offset, seed);
                    if (k.run(src.data() + offset, dst.data() + offset, flag) != StatusOk)
                        return 1;
                    hash = fnv1a(dst.data() + offset, bytes, hash);
                }
        std::printf("%s %016llx\n", k.name().c_str(), static_cast<unsigned long long>(hash));
    }
    return 0;
}
