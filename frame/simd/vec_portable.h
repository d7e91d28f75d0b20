// Portable back end of the vector layer: plain lane arrays, no intrinsics.
// Every operation is written out lane by lane, which keeps the compiler's
// work small in kernels of thousands of operations.
#pragma once

#include <bit>
#include <cstdint>

namespace tvkgen::simd {

struct alignas(16) V4f {
    float lane[4];
};
struct alignas(16) V2d {
    double lane[2];
};

TVKG_INLINE V4f load(const float* p) { return V4f{{p[0], p[1], p[2], p[3]}}; }
// The moves that accept any address copy the lanes' bytes in one memcpy.
// (Lane-by-lane byte loads in a 32fc pair made GCC 12's SLP vectorizer
// miscompile the unaligned twin of size 58; the digests caught it.)
TVKG_INLINE V4f loadu(const float* p)
{
    V4f v;
    std::memcpy(v.lane, p, sizeof v.lane);
    return v;
}
TVKG_INLINE void store(float* p, V4f v)
{
    p[0] = v.lane[0];
    p[1] = v.lane[1];
    p[2] = v.lane[2];
    p[3] = v.lane[3];
}
TVKG_INLINE void storeu(float* p, V4f v) { std::memcpy(p, v.lane, sizeof v.lane); }
TVKG_INLINE V4f loadElement(const float* p)
{
    V4f v{{0.0f, 0.0f, 0.0f, 0.0f}};
    std::memcpy(v.lane, p, 2 * sizeof(float));
    return v;
}
TVKG_INLINE void storeLowElement(float* p, V4f v) { std::memcpy(p, v.lane, 2 * sizeof(float)); }
TVKG_INLINE void storeHighElement(float* p, V4f v) { std::memcpy(p, v.lane + 2, 2 * sizeof(float)); }

TVKG_INLINE V2d load(const double* p) { return V2d{{p[0], p[1]}}; }
TVKG_INLINE void store(double* p, V2d v)
{
    p[0] = v.lane[0];
    p[1] = v.lane[1];
}
TVKG_INLINE V2d loadu(const double* p)
{
    V2d v;
    std::memcpy(v.lane, p, sizeof v.lane);
    return v;
}
TVKG_INLINE void storeu(double* p, V2d v) { std::memcpy(p, v.lane, sizeof v.lane); }

TVKG_INLINE V4f add(V4f a, V4f b)
{
    return V4f{{a.lane[0] + b.lane[0], a.lane[1] + b.lane[1], a.lane[2] + b.lane[2], a.lane[3] + b.lane[3]}};
}
TVKG_INLINE V4f sub(V4f a, V4f b)
{
    return V4f{{a.lane[0] - b.lane[0], a.lane[1] - b.lane[1], a.lane[2] - b.lane[2], a.lane[3] - b.lane[3]}};
}
TVKG_INLINE V4f mul(V4f a, V4f b)
{
    return V4f{{a.lane[0] * b.lane[0], a.lane[1] * b.lane[1], a.lane[2] * b.lane[2], a.lane[3] * b.lane[3]}};
}
TVKG_INLINE V2d add(V2d a, V2d b) { return V2d{{a.lane[0] + b.lane[0], a.lane[1] + b.lane[1]}}; }
TVKG_INLINE V2d sub(V2d a, V2d b) { return V2d{{a.lane[0] - b.lane[0], a.lane[1] - b.lane[1]}}; }
TVKG_INLINE V2d mul(V2d a, V2d b) { return V2d{{a.lane[0] * b.lane[0], a.lane[1] * b.lane[1]}}; }

TVKG_INLINE float xorBits(float a, float b)
{
    return std::bit_cast<float>(std::bit_cast<std::uint32_t>(a) ^ std::bit_cast<std::uint32_t>(b));
}
TVKG_INLINE double xorBits(double a, double b)
{
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(a) ^ std::bit_cast<std::uint64_t>(b));
}
TVKG_INLINE V4f bitXor(V4f a, V4f b)
{
    return V4f{{xorBits(a.lane[0], b.lane[0]), xorBits(a.lane[1], b.lane[1]), xorBits(a.lane[2], b.lane[2]),
                xorBits(a.lane[3], b.lane[3])}};
}
TVKG_INLINE V2d bitXor(V2d a, V2d b) { return V2d{{xorBits(a.lane[0], b.lane[0]), xorBits(a.lane[1], b.lane[1])}}; }

TVKG_INLINE V2d swapLanes(V2d a) { return V2d{{a.lane[1], a.lane[0]}}; }
TVKG_INLINE V2d unpackLo(V2d a, V2d b) { return V2d{{a.lane[0], b.lane[0]}}; }
TVKG_INLINE V2d unpackHi(V2d a, V2d b) { return V2d{{a.lane[1], b.lane[1]}}; }
TVKG_INLINE double lowHalf(V2d a) { return a.lane[0]; }
TVKG_INLINE double highHalf(V2d a) { return a.lane[1]; }
TVKG_INLINE V2d combine(double low, double high) { return V2d{{low, high}}; }
TVKG_INLINE float lowHalf(V4f a) { return a.lane[0]; }
TVKG_INLINE float highHalf(V4f a) { return a.lane[1]; }
TVKG_INLINE V4f combine(float low, float high) { return V4f{{low, high, 0.0f, 0.0f}}; }
TVKG_INLINE V2d toDouble(V4f a) { return V2d{{a.lane[0], a.lane[1]}}; }
TVKG_INLINE V4f toSingle(V2d a) { return V4f{{static_cast<float>(a.lane[0]), static_cast<float>(a.lane[1]), 0.0f, 0.0f}}; }

template <int i0, int i1, int i2, int i3>
TVKG_INLINE V4f shuffle(V4f a, V4f b)
{
    return V4f{{a.lane[i0], a.lane[i1], b.lane[i2], b.lane[i3]}};
}
TVKG_INLINE V4f unpackLo(V4f a, V4f b) { return V4f{{a.lane[0], b.lane[0], a.lane[1], b.lane[1]}}; }
TVKG_INLINE V4f unpackHi(V4f a, V4f b) { return V4f{{a.lane[2], b.lane[2], a.lane[3], b.lane[3]}}; }
TVKG_INLINE V4f moveLowHalves(V4f a, V4f b) { return V4f{{a.lane[0], a.lane[1], b.lane[0], b.lane[1]}}; }
TVKG_INLINE V4f moveHighHalves(V4f a, V4f b) { return V4f{{a.lane[2], a.lane[3], b.lane[2], b.lane[3]}}; }

TVKG_INLINE V4f broadcast(float x) { return V4f{{x, x, x, x}}; }
TVKG_INLINE V2d broadcast(double x) { return V2d{{x, x}}; }

} // namespace tvkgen::simd
