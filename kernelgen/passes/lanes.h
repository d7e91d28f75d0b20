// The lane pass: a kernel's graph read per element. Every vector operation
// becomes the scalar operations of its lanes, a shuffle becomes a renaming
// of lanes, a sign-mask xor a sign flip of the lanes it flips; conversions
// and every product and sum keep their type and rounding. The result moves
// single numbers at the same offsets, so it gives the graph's bytes, and a
// printer can hold each of its values for several transforms at once, one
// per vector lane.
#pragma once

#include "core/graph.h"

namespace kernelgen {

// The scalar graph of g, in g's order, without sections or print order.
// Each number is loaded once; constants are named by their stored bits.
Graph perElement(const Graph& g);

} // namespace kernelgen
