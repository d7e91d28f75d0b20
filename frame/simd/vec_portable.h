// Portable back end of the vector layer: no intrinsics, every operation
// written out lane by lane on the compiler's generic vector types (GCC and
// clang, any processor). Those live in registers as values; structs of lane
// arrays lived in memory, and GCC's alias walks over thousands of them made
// a kernel compile five times slower.
#pragma once

#include <bit>
#include <cstdint>

namespace tvkgen::simd {

typedef float V4f __attribute__((vector_size(16)));
typedef double V2d __attribute__((vector_size(16)));

TVKG_INLINE V4f load(const float* p) { return V4f{p[0], p[1], p[2], p[3]}; }
// The moves that accept any address copy the lanes' bytes in one memcpy.
// (Lane-by-lane byte loads in a 32fc pair made GCC 12's SLP vectorizer
// miscompile the unaligned twin of size 58; the digests caught it.)
TVKG_INLINE V4f loadu(const float* p)
{
    V4f v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
TVKG_INLINE void store(float* p, V4f v)
{
    p[0] = v[0];
    p[1] = v[1];
    p[2] = v[2];
    p[3] = v[3];
}
TVKG_INLINE void storeu(float* p, V4f v) { std::memcpy(p, &v, sizeof v); }
TVKG_INLINE V4f loadElement(const float* p)
{
    V4f v{0.0f, 0.0f, 0.0f, 0.0f};
    std::memcpy(&v, p, 2 * sizeof(float));
    return v;
}
TVKG_INLINE void storeLowElement(float* p, V4f v) { std::memcpy(p, &v, 2 * sizeof(float)); }
TVKG_INLINE void storeHighElement(float* p, V4f v)
{
    std::memcpy(p, reinterpret_cast<const char*>(&v) + 2 * sizeof(float), 2 * sizeof(float));
}

TVKG_INLINE V2d load(const double* p) { return V2d{p[0], p[1]}; }
TVKG_INLINE void store(double* p, V2d v)
{
    p[0] = v[0];
    p[1] = v[1];
}
TVKG_INLINE V2d loadu(const double* p)
{
    V2d v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
TVKG_INLINE void storeu(double* p, V2d v) { std::memcpy(p, &v, sizeof v); }

TVKG_INLINE V4f add(V4f a, V4f b)
{
    return V4f{a[0] + b[0], a[1] + b[1], a[2] + b[2], a[3] + b[3]};
}
TVKG_INLINE V4f sub(V4f a, V4f b)
{
    return V4f{a[0] - b[0], a[1] - b[1], a[2] - b[2], a[3] - b[3]};
}
TVKG_INLINE V4f mul(V4f a, V4f b)
{
    return V4f{a[0] * b[0], a[1] * b[1], a[2] * b[2], a[3] * b[3]};
}
TVKG_INLINE V2d add(V2d a, V2d b) { return V2d{a[0] + b[0], a[1] + b[1]}; }
TVKG_INLINE V2d sub(V2d a, V2d b) { return V2d{a[0] - b[0], a[1] - b[1]}; }
TVKG_INLINE V2d mul(V2d a, V2d b) { return V2d{a[0] * b[0], a[1] * b[1]}; }

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
    return V4f{xorBits(a[0], b[0]), xorBits(a[1], b[1]), xorBits(a[2], b[2]),
                xorBits(a[3], b[3])};
}
TVKG_INLINE V2d bitXor(V2d a, V2d b) { return V2d{xorBits(a[0], b[0]), xorBits(a[1], b[1])}; }

TVKG_INLINE V2d swapLanes(V2d a) { return V2d{a[1], a[0]}; }
TVKG_INLINE V2d unpackLo(V2d a, V2d b) { return V2d{a[0], b[0]}; }
TVKG_INLINE V2d unpackHi(V2d a, V2d b) { return V2d{a[1], b[1]}; }
TVKG_INLINE double lowHalf(V2d a) { return a[0]; }
TVKG_INLINE double highHalf(V2d a) { return a[1]; }
TVKG_INLINE V2d combine(double low, double high) { return V2d{low, high}; }
TVKG_INLINE float lowHalf(V4f a) { return a[0]; }
TVKG_INLINE float highHalf(V4f a) { return a[1]; }
TVKG_INLINE V4f combine(float low, float high) { return V4f{low, high, 0.0f, 0.0f}; }
TVKG_INLINE V2d toDouble(V4f a) { return V2d{a[0], a[1]}; }
TVKG_INLINE V4f toSingle(V2d a) { return V4f{static_cast<float>(a[0]), static_cast<float>(a[1]), 0.0f, 0.0f}; }

template <int i0, int i1, int i2, int i3>
TVKG_INLINE V4f shuffle(V4f a, V4f b)
{
    return V4f{a[i0], a[i1], b[i2], b[i3]};
}
TVKG_INLINE V4f swapLanes(V4f a) { return V4f{a[1], a[0], a[2], a[3]}; }
TVKG_INLINE V4f unpackLo(V4f a, V4f b) { return V4f{a[0], b[0], a[1], b[1]}; }
TVKG_INLINE V4f unpackHi(V4f a, V4f b) { return V4f{a[2], b[2], a[3], b[3]}; }
TVKG_INLINE V4f moveLowHalves(V4f a, V4f b) { return V4f{a[0], a[1], b[0], b[1]}; }
TVKG_INLINE V4f moveHighHalves(V4f a, V4f b) { return V4f{a[2], a[3], b[2], b[3]}; }

TVKG_INLINE V4f broadcast(float x) { return V4f{x, x, x, x}; }
TVKG_INLINE V2d broadcast(double x) { return V2d{x, x}; }

} // namespace tvkgen::simd
