// What the real families share: the method of every size. The forward
// real DFT runs a size's road; the inverse runs its transpose; the Hartley
// transform runs it and folds the parts. Three road sets differ in the 11-point block only.
#pragma once

#include <string>
#include <vector>

#include "core/element.h"
#include "core/graph.h"
#include "core/rounding.h"
#include "methods/real.h"

namespace kernelgen {

// Forward: direct folding at 11 and in its multiples. Inverse: the
// convolution form over 10 at 11, 22, 33, 44, 55, whose transpose is what
// the inverse kernels run. Hartley: folding at 11 and 22, the convolution
// form in 33, 44 and 55.
enum class RoadSet { Forward, Inverse, Hartley };

// Sizes that have a method, ascending.
std::vector<int> realSizes();

// The real transform of size n in a road set, and its description.
RealTransform realRoad(RoadSet set, int n);
std::string realRoadWords(RoadSet set, int n);

// The road of size n in a set, run by `ar` on n reals loaded from cells
// 0 .. n-1: the half spectrum, before any factor.
Signal runRoadOnLoads(ScalarArith& ar, RoadSet set, int n);

// Rounding of the forward statements: the binary32 statement rule or
// binary64 throughout.
RoundingPolicy forwardRounding(Precision type);

} // namespace kernelgen
