// Pairing for 256-bit registers. A kernel of 128-bit vectors does
// the same operations on many groups of data: the stage sections of a
// chain (the groups of a first stage, the rows of a second) are copies of
// one shape. Two such sections, neither depending on the other, become one
// section of 256-bit operations, the first in the low half of each register
// and the second in the high half. Every element sees the same operations
// in the same order, so the results keep their bits.
#pragma once

#include "core/graph.h"

namespace kernelgen {

// The graph with isomorphic sections of 128-bit vectors (V2F64, V4F32)
// paired into 256-bit operations (V4F64, V8F32),
// where that saves more operations than moving halves costs; otherwise the
// graph itself.
Graph pairSections(const Graph& g);

} // namespace kernelgen
