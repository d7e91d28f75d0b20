// The passes a kernel graph goes through on its way to the printer, for one
// target: pairing of scalar sections into 128-bit lanes where its vectors
// are the processor's own, pairing into 256-bit operations where the target
// has them, then the emission order for its registers. Every pass keeps
// each element's operations and roundings, so the printed kernel gives the
// graph's bits.
#pragma once

#include "core/graph.h"
#include "passes/target.h"

namespace kernelgen {

Graph lower(const Graph& g, const Target& target);

// The batch entries' passes: the graph read per element (passes/lanes.h),
// then the emission order for the target's registers, each register now a
// vector of one number of several transforms.
Graph lowerPerElement(const Graph& g, const Target& target);

} // namespace kernelgen
