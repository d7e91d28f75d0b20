// Transposes across the lanes of vectors, written once for every vector
// level: over the vector layer's own shuffles by default (sse2, the halves
// of an avx2 register alike, and the portable layer), or over an operations
// type of the caller's, such as a test's counting vector.
#pragma once

#include "vec.h"

namespace tvkgen::simd {

// The vector layer's shuffles, which overload on the vector type.
struct LayerShuffles {
    template <class V>
    static TVKG_INLINE V unpackLo(V a, V b)
    {
        return simd::unpackLo(a, b);
    }
    template <class V>
    static TVKG_INLINE V unpackHi(V a, V b)
    {
        return simd::unpackHi(a, b);
    }
    template <class V>
    static TVKG_INLINE V moveLowHalves(V a, V b)
    {
        return simd::moveLowHalves(a, b);
    }
    template <class V>
    static TVKG_INLINE V moveHighHalves(V a, V b)
    {
        return simd::moveHighHalves(a, b);
    }
};

// Four lanes: lane j of output vector i is lane i of input vector j. The
// outputs may be the inputs.
template <class Ops = LayerShuffles, class V>
TVKG_INLINE void transpose4(V a, V b, V c, V d, V& w, V& x, V& y, V& z)
{
    const V ab01 = Ops::unpackLo(a, b), cd01 = Ops::unpackLo(c, d);
    const V ab23 = Ops::unpackHi(a, b), cd23 = Ops::unpackHi(c, d);
    w = Ops::moveLowHalves(ab01, cd01);
    x = Ops::moveHighHalves(ab01, cd01);
    y = Ops::moveLowHalves(ab23, cd23);
    z = Ops::moveHighHalves(ab23, cd23);
}

// Two lanes: x = (a0, b0), y = (a1, b1). The outputs may be the inputs.
template <class Ops = LayerShuffles, class V>
TVKG_INLINE void transpose2(V a, V b, V& x, V& y)
{
    x = Ops::unpackLo(a, b);
    y = Ops::unpackHi(a, b);
}

} // namespace tvkgen::simd
