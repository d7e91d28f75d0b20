// Inputs for the kernels on real data, as bytes of the element type.
#pragma once

#include <cstring>
#include <vector>

#include "real_kernels.h"
#include "test_support.h"

namespace tvktest {

// Random numbers in (-1, 1) in every input cell of the kernel.
inline std::vector<unsigned char> randomInput(const RealKernel& k, unsigned seed)
{
    std::vector<unsigned char> bytes(k.inCells() * k.realBytes());
    if (k.is64()) {
        const auto v = randomReals<double>(k.inCells(), seed);
        std::memcpy(bytes.data(), v.data(), bytes.size());
    } else {
        const auto v = randomReals<float>(k.inCells(), seed);
        std::memcpy(bytes.data(), v.data(), bytes.size());
    }
    return bytes;
}

inline std::vector<unsigned char> filledInput(const RealKernel& k, long double value)
{
    std::vector<unsigned char> bytes(k.inCells() * k.realBytes());
    for (int i = 0; i < k.inCells(); ++i)
        setNumber(k, bytes.data(), i, value);
    return bytes;
}

// The output cells of an out-of-place call on 16-byte aligned arrays.
inline std::vector<unsigned char> runKernel(const RealKernel& k, const std::vector<unsigned char>& input, int flag)
{
    OffsetArray<unsigned char> src(input.size(), 0), dst(k.outCells() * k.realBytes(), 0);
    src.copyFrom(input.data());
    if (k.run(src.get(), dst.get(), flag) != StatusOk)
        return {};
    return dst.snapshot();
}

} // namespace tvktest
