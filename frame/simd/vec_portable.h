// Portable back end of the vector layer: plain lane arrays, no intrinsics.
#pragma once

#include <cstdint>
#include <cstring>

namespace tvkgen::simd {

struct alignas(16) V4f {
    float lane[4];
};
struct alignas(16) V2d {
    double lane[2];
};

TVKG_INLINE V4f load(const float* p)
{
    V4f v;
    std::memcpy(v.lane, p, sizeof v.lane);
    return v;
}
TVKG_INLINE V4f loadu(const float* p) { return load(p); }
TVKG_INLINE void store(float* p, V4f v) { std::memcpy(p, v.lane, sizeof v.lane); }
TVKG_INLINE void storeu(float* p, V4f v) { store(p, v); }
TVKG_INLINE V4f loadLowPair(const float* p) { return V4f{{p[0], p[1], 0.0f, 0.0f}}; }
TVKG_INLINE void storeLowPair(float* p, V4f v)
{
    p[0] = v.lane[0];
    p[1] = v.lane[1];
}
TVKG_INLINE void storeHighPair(float* p, V4f v)
{
    p[0] = v.lane[2];
    p[1] = v.lane[3];
}

TVKG_INLINE V2d load(const double* p)
{
    V2d v;
    std::memcpy(v.lane, p, sizeof v.lane);
    return v;
}
TVKG_INLINE void store(double* p, V2d v) { std::memcpy(p, v.lane, sizeof v.lane); }
TVKG_INLINE V2d loadHalves(const double* p) { return V2d{{p[0], p[1]}}; }
TVKG_INLINE void storeHalves(double* p, V2d v)
{
    p[0] = v.lane[0];
    p[1] = v.lane[1];
}

template <class V, class Op>
TVKG_INLINE V laneWise(V a, V b, Op op)
{
    constexpr int n = sizeof a.lane / sizeof a.lane[0];
    for (int i = 0; i < n; ++i)
        a.lane[i] = op(a.lane[i], b.lane[i]);
    return a;
}

TVKG_INLINE V4f add(V4f a, V4f b) { return laneWise(a, b, [](float x, float y) { return x + y; }); }
TVKG_INLINE V4f sub(V4f a, V4f b) { return laneWise(a, b, [](float x, float y) { return x - y; }); }
TVKG_INLINE V4f mul(V4f a, V4f b) { return laneWise(a, b, [](float x, float y) { return x * y; }); }
TVKG_INLINE V2d add(V2d a, V2d b) { return laneWise(a, b, [](double x, double y) { return x + y; }); }
TVKG_INLINE V2d sub(V2d a, V2d b) { return laneWise(a, b, [](double x, double y) { return x - y; }); }
TVKG_INLINE V2d mul(V2d a, V2d b) { return laneWise(a, b, [](double x, double y) { return x * y; }); }

template <class V>
TVKG_INLINE V bitXorBytes(V a, V b)
{
    unsigned char x[16], y[16];
    std::memcpy(x, &a, 16);
    std::memcpy(y, &b, 16);
    for (int i = 0; i < 16; ++i)
        x[i] ^= y[i];
    std::memcpy(&a, x, 16);
    return a;
}
TVKG_INLINE V4f bitXor(V4f a, V4f b) { return bitXorBytes(a, b); }
TVKG_INLINE V2d bitXor(V2d a, V2d b) { return bitXorBytes(a, b); }

TVKG_INLINE V2d swapLanes(V2d a) { return V2d{{a.lane[1], a.lane[0]}}; }
TVKG_INLINE V2d unpackLo(V2d a, V2d b) { return V2d{{a.lane[0], b.lane[0]}}; }
TVKG_INLINE V2d unpackHi(V2d a, V2d b) { return V2d{{a.lane[1], b.lane[1]}}; }

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
TVKG_INLINE V4f zero4f() { return V4f{{0.0f, 0.0f, 0.0f, 0.0f}}; }

} // namespace tvkgen::simd
