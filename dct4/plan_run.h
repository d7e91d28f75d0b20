// Running a built plan: the direct kernels of lengths 2 to 32 and the two
// steps of longer plans.
#pragma once

#include <cstdint>

#include "plan_nodes.h"
#include "tvkgen.h"

namespace tvkgen::dct4 {

// The direct kernel of a root kind 1 to 5 (generated).
void runDirect(int32_t kind, const float* src, float* dst);
void runDirect(int32_t kind, const double* src, double* dst);

template <class Real>
TvkStatus runPlan(const Real* src, Real* dst, const Dct4Plan* plan);

} // namespace tvkgen::dct4
