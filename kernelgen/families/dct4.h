// The DCT-IV family: the straight-line pieces its plans run, in both
// element types.
#pragma once

#include "core/kernel.h"

namespace kernelgen {

// Half-bin DFTs, twiddle butterflies and recombine kernels over vectors.
// `avx2`: the level that also runs the binary64 pieces over 256-bit
// vectors, two neighbouring lane blocks at once; every lane sees the
// operations of the 128-bit piece in the same order.
PieceFile dct4Pieces(bool avx2);

// The direct kernels of lengths 2 to 32 and their switch by root kind.
PieceFile dct4Direct();

} // namespace kernelgen
