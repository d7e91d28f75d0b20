// The interpreter of roads: the method that builds a road's graph, with the
// partner-pair forms its codelets and joins allow (methods/pairs.h).
#pragma once

#include "methods/pairs.h"
#include "roads/road.h"

namespace kernelgen {

Method methodOf(const Road& road);
// The index map of a join road (Twiddled, Coprime, Interleaved).
JoinMap mapOf(const Road& road);

} // namespace kernelgen
