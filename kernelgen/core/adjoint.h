// The adjoint (transpose) of a linear kernel graph: the graph of the map
// which reads where the original writes and writes where it reads. The
// inverse of a real transform is the transposed graph of the forward one
// up to its factors, so the inverse families are built from the forward
// builders through this.
#pragma once

#include "core/graph.h"

namespace kernelgen {

// Each operation of `g` turns into its adjoint, last operation first:
//   store at o      ->  load at o
//   load at o       ->  store at o of the value's adjoint (zero if unused)
//   a + b, a - b    ->  the adjoint goes to a, and to b (negated for -)
//   x * constant    ->  adjoint * the same constant (or the scale)
//   -x, sign masks, lane swaps, widen, narrow -> their own adjoints
// A value used several times sums the adjoints of its uses, in the order
// in which the transpose reaches them (the original's last use first).
// Half-vector moves and the lane patterns of the 32fc layout have no
// adjoint here; such a graph is refused.
Graph adjoint(const Graph& g);

} // namespace kernelgen
