// Pairing: independent work of one shape side by side in the halves of a
// vector. A kernel does the same operations on many groups of data: the
// stage sections of a chain (the groups of a first stage, the rows of a
// second) are copies of one shape, and so are the real and imaginary parts
// of a scalar complex kernel. Two such sections become one section of
// vectors of two halves, the first in the low half of each and the second
// in the high half: binary64 numbers in the two lanes of a 128-bit vector,
// 128-bit vectors in the halves of a 256-bit one, 256-bit vectors in the
// halves of a 512-bit one. Neither may depend on
// the other, except where an operation reads an earlier one of the other
// section directly (a real part reading an imaginary one): the pair reads
// the earlier pair with its halves swapped. Every element sees the same
// operations in the same order (a difference paired with a sum is the sum
// of the negated operand, b - a is (-a) + b, the same operations in IEEE
// arithmetic), so the results keep their bits. Paired sections have the
// shape of one another, so a second pairing can put four sections side by
// side, and a third eight. The sections matched are the method's own, or those two levels deep
// with the steps below merged into them (whole groups of a join rather than
// their steps one by one); the pass keeps the pairing its cost model rates
// higher.
#pragma once

#include <vector>

#include "core/graph.h"

namespace kernelgen {

// The graph with isomorphic sections whose values are all of the kinds
// `halves` (F32 and F64; V2F64 and V4F32; or V4F64 and V8F32) paired into
// vectors of two of them, where that saves more operations than moving
// halves and spilling beyond `registers` cost; otherwise the graph itself.
Graph pairSections(const Graph& g, const std::vector<Kind>& halves, int registers);

} // namespace kernelgen
