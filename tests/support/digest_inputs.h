// The inputs, the hash and the file of the kernel digests, shared by the
// digest program (which runs the compiled kernels) and the interpreter's
// test (which runs the generator's graphs), so both hash the same bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <string>

namespace tvktest {

constexpr uint64_t kFnvBasis = 0xcbf29ce484222325ULL;

inline uint64_t fnv1a(const void* data, size_t size, uint64_t hash)
{
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (size_t i = 0; i < size; ++i)
        hash = (hash ^ bytes[i]) * 0x100000001b3ULL;
    return hash;
}

// A hash as the digest file writes it.
inline std::string hexDigest(uint64_t hash)
{
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
    return text;
}

// A digest file's lines "kernel path hash", as hash by "kernel path"; none
// where it cannot be read.
inline std::map<std::string, std::string> readDigests(const std::string& fileName)
{
    std::ifstream file(fileName);
    std::map<std::string, std::string> lines;
    for (std::string kernel, path, hash; file >> kernel >> path >> hash;)
        lines[kernel + " " + path] = hash;
    return lines;
}

// `count` numbers from integer arithmetic alone (xorshift32 from the seed,
// each an integer over 2^31), so that every build sees the same bits; a
// longer run starts with the numbers of a shorter one.
inline void fixedInput(bool is64, size_t count, void* out, unsigned seed)
{
    auto* bytes = static_cast<unsigned char*>(out);
    uint32_t state = 2463534242u + seed;
    for (size_t i = 0; i < count; ++i) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        const double v = static_cast<int32_t>(state) / 2147483648.0;
        const float f = static_cast<float>(v);
        if (is64)
            std::memcpy(bytes + 8 * i, &v, 8);
        else
            std::memcpy(bytes + 4 * i, &f, 4);
    }
}

} // namespace tvktest
