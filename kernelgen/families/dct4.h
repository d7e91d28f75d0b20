// The DCT-IV family: the straight-line pieces its plans run, in both
// element types.
#pragma once

#include "core/kernel.h"

namespace kernelgen {

// Half-bin DFTs, twiddle butterflies and recombine kernels over vectors.
PieceFile dct4Pieces();

// The direct kernels of lengths 2 to 32 and their switch by root kind.
PieceFile dct4Direct();

} // namespace kernelgen
