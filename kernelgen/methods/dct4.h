// Graphs of the straight-line pieces of the DCT-IV plans. Vector pieces
// read `in` and write `out` as arrays of values of `kind`; the direct
// kernels read src and write dst as scalars.
#pragma once

#include "core/graph.h"

namespace kernelgen {

// in[t + m/2] = v[t]; out[2p], out[2p + 1] = Re, Im of the half-bin
// transform Z[p], m = 2 to 64.
Graph halfBinPiece(Kind kind, int m);
// The twiddles and butterfly of radix s = 2 to 32: in holds Z_c' as
// (Re, Im) pairs, then the group's table pairs (cos, sin); out F[l] for
// l < s/2, then conj(F[s - 1 - l]).
Graph twiddlePiece(Kind kind, int s);
// Rotation and 2r-point recombine, r = 2 to 32: in holds Z_c as (Re, Im),
// then (cos, sin) of each column's angle; out the 2r outputs by q.
Graph recombinePiece(Kind kind, int r);
// The direct kernels of lengths 2, 4, and 8 to 32 (a two-stage plan
// unrolled), scalars of `kind`.
Graph directKernel(Kind kind, int n);

} // namespace kernelgen
