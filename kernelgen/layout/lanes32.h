// The memory layout of the 32fc vector kernels: four independent complex
// values side by side in the lanes, real and imaginary parts in separate
// vectors, and the moves between that form and interleaved arrays.
#pragma once

#include <array>
#include <vector>

#include "arith/split_arith.h"

namespace kernelgen {

// Index `index` of a set of `count` where it fits in a lane, else -1 (an
// idle lane).
int inLane(int index, int count);

// Elements of src for the four lanes (-1: idle lane, zero): whole vectors
// where they are consecutive from an even element, else one 64-bit move each.
Cx gather(Graph& g, std::array<int, 4> elements);

// x times the scale into the elements of dst for the four lanes (-1: not
// stored), whole vectors where they are consecutive from an even element.
void scatterScaled(SplitArith& ar, Cx x, std::array<int, 4> elements, Graph::Value scale);

// in[set][j], j < count: vectors whose lanes hold the other index 4*set+l.
// Returns out[block][i]: vectors for the other index i, lanes j = 4*block+l,
// by 4x4 transposes.
std::vector<Signal> transposeSets(SplitArith& ar, const std::vector<Signal>& in, int count);

} // namespace kernelgen
