// In-register transforms of 8 to 128 consecutive elements, the factorisation
// of the small orders. transformBlock<Ops, n> runs levels 1..n on the
// 2^n / L vectors of v, natural layout in and out (vector m holds elements
// mL..mL+L-1), without scaling: the small kernels scale on the way out, and
// the large orders use the same blocks for their first pass.
//
// Shuffles appear only in the transpositions; every level is one addition
// and one subtraction of whole vectors per butterfly.
#pragma once

#include "simd/lanes.h"
#include "wht_vector.h"

namespace tvkgen::wht {

// ---- four lanes --------------------------------------------------------------

// Tile of 16: levels 1 and 2 across the transposed tile, levels 3 and 4
// across the natural one.
template <class Ops>
TVKG_INLINE void tileOf16(typename Ops::V* v)
{
    simd::transpose4<Ops>(v[0], v[1], v[2], v[3], v[0], v[1], v[2], v[3]);
    column<Ops, 4, 1>(v);
    simd::transpose4<Ops>(v[0], v[1], v[2], v[3], v[0], v[1], v[2], v[3]);
    column<Ops, 4, 1>(v);
}

// Group of 32, steps a to c: after transposing the even and the odd vectors,
// t[v] holds g[v], g[8+v], g[16+v], g[24+v], so that levels 1 to 3 run
// across vectors; the transposition back restores the natural layout.
template <class Ops>
TVKG_INLINE void groupOf32Levels1To3(typename Ops::V* v)
{
    typename Ops::V t[8];
    simd::transpose4<Ops>(v[0], v[2], v[4], v[6], t[0], t[1], t[2], t[3]);
    simd::transpose4<Ops>(v[1], v[3], v[5], v[7], t[4], t[5], t[6], t[7]);
    column<Ops, 4, 1>(t);
    column<Ops, 4, 1>(t + 4);
    unrolled<4>([&](auto i) TVKG_LAMBDA_INLINE { column<Ops, 2, 4>(t + i); });
    simd::transpose4<Ops>(t[0], t[1], t[2], t[3], v[0], v[2], v[4], v[6]);
    simd::transpose4<Ops>(t[4], t[5], t[6], t[7], v[1], v[3], v[5], v[7]);
}

// Step d: levels 4 and 5 across the even and across the odd vectors.
template <class Ops>
TVKG_INLINE void groupOf32(typename Ops::V* v)
{
    groupOf32Levels1To3<Ops>(v);
    column<Ops, 4, 2>(v);
    column<Ops, 4, 2>(v + 1);
}

// ---- two lanes ---------------------------------------------------------------

// Quad: levels 1 and 2 of (a, b), (c, d), each after a 2x2 transposition.
template <class Ops>
TVKG_INLINE void quad(typename Ops::V& ab, typename Ops::V& cd)
{
    typename Ops::V ac, bd;
    simd::transpose2<Ops>(ab, cd, ac, bd);
    butterfly<Ops>(ac, bd);
    simd::transpose2<Ops>(ac, bd, ab, cd);
    butterfly<Ops>(ab, cd);
}

// ---- blocks by order -----------------------------------------------------------

template <class Ops, int Order>
TVKG_INLINE void transformBlock(typename Ops::V* v)
{
    static_assert(Order >= 3 && Order <= 7);
    if constexpr (Ops::kLanes == 4) {
        static_assert(Order >= 4, "order 3 of four lanes is scalar");
        if constexpr (Order == 4) {
            tileOf16<Ops>(v);
        } else if constexpr (Order == 5) {
            groupOf32<Ops>(v);
        } else if constexpr (Order == 6) {
            groupOf32<Ops>(v);
            groupOf32<Ops>(v + 8);
            unrolled<8>([&](auto m) TVKG_LAMBDA_INLINE { column<Ops, 2, 8>(v + m); });
        } else {
            // Levels 4 to 7 as one radix-16 step over the even and over the
            // odd vectors, rather than finishing each group first.
            unrolled<4>([&](auto g) TVKG_LAMBDA_INLINE { groupOf32Levels1To3<Ops>(v + 8 * g); });
            column<Ops, 16, 2>(v);
            column<Ops, 16, 2>(v + 1);
        }
    } else {
        if constexpr (Order <= 5) {
            // Quads, then levels 3..Order across the even and the odd vectors.
            constexpr int vectors = (1 << Order) / 2;
            unrolled<vectors / 2>([&](auto q) TVKG_LAMBDA_INLINE { quad<Ops>(v[2 * q], v[2 * q + 1]); });
            column<Ops, vectors / 2, 2>(v);
            column<Ops, vectors / 2, 2>(v + 1);
        } else {
            // Four blocks of order - 2, then the last two levels across them.
            constexpr int quarter = (1 << Order) / 8;
            unrolled<4>([&](auto b) TVKG_LAMBDA_INLINE { transformBlock<Ops, Order - 2>(v + b * quarter); });
            unrolled<quarter>([&](auto m) TVKG_LAMBDA_INLINE { column<Ops, 4, quarter>(v + m); });
        }
    }
}

} // namespace tvkgen::wht
