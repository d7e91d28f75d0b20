// The DCT-IV family: the straight-line pieces its plans run, in both
// element types.
#pragma once

#include "core/kernel.h"

namespace kernelgen {

// Half-bin DFTs, twiddle butterflies and recombine kernels over 128-bit
// vectors of both types, and the binary64 pieces again over 256-bit vectors
// for targets that have them (two neighbouring lane blocks at once; every
// lane sees the operations of the 128-bit piece in the same order).
PieceFile dct4Pieces();

// The direct kernels of lengths 2 to 32 and their switch by root kind.
PieceFile dct4Direct();

} // namespace kernelgen
