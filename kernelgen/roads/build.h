// The interpreter of roads: the method that builds a road's graph, with the
// partner-pair forms its codelets and joins allow (methods/pairs.h).
#pragma once

#include "methods/pairs.h"
#include "methods/real.h"
#include "roads/road.h"

namespace kernelgen {

Method methodOf(const Road& road);
// The real transform of a road on real data (methods/real.h).
RealTransform realTransformOf(const Road& road);

// The index map of a join road (Twiddled, Coprime, Interleaved).
JoinMap mapOf(const Road& road);

} // namespace kernelgen
