// A kernel's graph run on the host, operation by operation, in the
// arithmetic the graph states: each lane of each node is one IEEE operation
// of the node's type (binary32 or binary64), rounded to nearest and never
// fused, as the printed kernel does it at every processor level. The
// generator's tests hold the compiled kernels' digests and every pass to it,
// on any host.
#pragma once

#include <cstddef>
#include <span>

#include "core/graph.h"

namespace kernelgen {

// Runs g on the numbers of src and writes the stores into dst, as the
// printed body does: offsets count numbers of each move's element type,
// constants are their lanes correctly rounded to their type, and every lane
// of the scale argument is `scale` rounded to its type. A move outside the
// arrays throws; src and dst are apart (a graph may load after a store in
// its own order).
void interpret(const Graph& g, std::span<const std::byte> src, std::span<std::byte> dst, double scale);

} // namespace kernelgen
