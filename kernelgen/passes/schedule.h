// The order in which the printer emits a kernel's statements. The builder's
// order follows the method stage by stage and keeps many more values live
// than there are registers; any order that respects the operands computes
// the same bits, so the emission order is free to follow register pressure.
#pragma once

#include <vector>

#include "core/graph.h"

namespace kernelgen {

// The live nodes of `g` in emission order: every node after its operands,
// and every load before the first store, so that `src == dst` stays correct.
std::vector<int> emissionOrder(const Graph& g, int registers);

// The values that go to memory and back when g is emitted in that order:
// each value made while every register holds one costs a store and a load.
int spills(const Graph& g, int registers);

} // namespace kernelgen
