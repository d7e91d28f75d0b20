// Straight-line pieces of the DCT-IV plans.
#pragma once

#include <string>

namespace kernelgen {

// Header of inline vector pieces for both element types: half-bin DFTs,
// twiddle butterflies and recombine kernels.
std::string printDct4PiecesHeader(const std::string& invocation);

// The direct kernels of lengths 2 to 32 and their dispatch by root kind.
std::string printDct4DirectFile(const std::string& invocation);

} // namespace kernelgen
