// Prints a digest of every kernel's output bytes on fixed inputs,
// under each flag and at an aligned and a misaligned address. The SSE2 and
// the portable build must print the same lines; CI compares the two.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
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
void fixedInput(bool is64, int count, unsigned char* bytes, unsigned seed)
{
    uint32_t state = 2463534242u + seed;
    for (int i = 0; i < count; ++i) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        const double v = (static_cast<int32_t>(state) / 2147483648.0);
        if (is64)
            std::memcpy(bytes + 8 * i, &v, 8);
        else {
            const float f = static_cast<float>(v);
            std::memcpy(bytes + 4 * i, &f, 4);
        }
    }
}

void printDigest(const std::string& name, uint64_t hash)
{
    std::printf("%s %016llx\n", name.c_str(), static_cast<unsigned long long>(hash));
}

bool digestComplexKernels()
{
    for (const tvktest::ComplexKernel& k : tvktest::builtComplexKernels()) {
        const size_t bytes = 2 * k.size * k.realBytes();
        std::vector<unsigned char> src(bytes + 16), dst(bytes + 16);
        uint64_t hash = 0xcbf29ce484222325ULL;
        for (unsigned seed = 0; seed < 16; ++seed)
            for (int flag : {1, 2, 4, 8})
                for (int offset : {0, 4}) {
                    fixedInput(k.is64(), 2 * k.size, src.data() + offset, seed);
                    if (k.run(src.data() + offset, dst.data() + offset, flag) != StatusOk)
                        return false;
                    hash = fnv1a(dst.data() + offset, bytes, hash);
                }
        printDigest(k.name(), hash);
    }
    return true;
}

// Walsh-Hadamard kernels through their dispatchers, with the kernel's own
// work buffer and with a caller's.
template <class Real, class Dispatcher>
bool digestWhtKernels(const char* type, Dispatcher dispatcher)
{
    alignas(16) static unsigned char work[73728];
    for (int order = 1; order <= 13; ++order) {
        const size_t bytes = (size_t{1} << order) * sizeof(Real);
        std::vector<unsigned char> src(bytes + 16), dst(bytes + 16);
        uint64_t hash = 0xcbf29ce484222325ULL;
        for (unsigned seed = 0; seed < 4; ++seed)
            for (int flag : {1, 2, 4, 8})
                for (int offset : {0, 4}) {
                    fixedInput(sizeof(Real) == 8, 1 << order, src.data() + offset, seed);
                    const auto* in = reinterpret_cast<const Real*>(src.data() + offset);
                    auto* out = reinterpret_cast<Real*>(dst.data() + offset);
                    if (dispatcher(in, out, order, flag, seed % 2 ? work : nullptr) != StatusOk)
                        return false;
                    hash = fnv1a(dst.data() + offset, bytes, hash);
                }
        printDigest("tvkgWHT_" + std::to_string(order) + "_" + type, hash);
    }
    return true;
}

// DCT-IV plans of every power of two: the direct lengths, the column kernel
// lengths, and every length of one and of two split levels.
template <class Real, class Plan, class GetSize, class Init, class Run>
bool digestDct4(const char* type, GetSize getSize, Init init, Run run)
{
    for (int len : {2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384, 32768, 65536, 131072}) {
        int32_t size = 0;
        if (getSize(len, &size) != StatusOk)
            return false;
        std::vector<uint8_t> mem(size);
        Plan* plan = nullptr;
        if (init(&plan, len, mem.data()) != StatusOk)
            return false;
        const size_t bytes = len * sizeof(Real);
        std::vector<unsigned char> src(bytes + 16), dst(bytes + 16);
        uint64_t hash = 0xcbf29ce484222325ULL;
        for (unsigned seed = 0; seed < 2; ++seed)
            for (int offset : {0, static_cast<int>(sizeof(Real))}) {
                fixedInput(sizeof(Real) == 8, len, src.data() + offset, seed);
                if (run(reinterpret_cast<const Real*>(src.data() + offset), reinterpret_cast<Real*>(dst.data() + offset),
                        plan) != StatusOk)
                    return false;
                hash = fnv1a(dst.data() + offset, bytes, hash);
            }
        printDigest("tvkgDCT4_" + std::to_string(len) + "_" + type, hash);
    }
    return true;
}

} // namespace

int main()
{
    const bool ok = digestComplexKernels() && digestWhtKernels<Tvk32f>("32f", tvkgWHT_32f) &&
                    digestWhtKernels<Tvk64f>("64f", tvkgWHT_64f) &&
                    digestDct4<Tvk32f, TvkgDCT4Plan_32f>("32f", tvkgDCT4GetSize_32f, tvkgDCT4Init_32f, tvkgDCT4_32f) &&
                    digestDct4<Tvk64f, TvkgDCT4Plan_64f>("64f", tvkgDCT4GetSize_64f, tvkgDCT4Init_64f, tvkgDCT4_64f);
    return ok ? 0 : 1;
}
