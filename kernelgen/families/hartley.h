// The Hartley transform at sizes 2 to 64: the forward real road of a size
// without its factor, then one butterfly per bin pair that folds the real
// and imaginary parts into H[k] = Re X[k] - Im X[k], then the factor.
#pragma once

#include <vector>

#include "core/kernel.h"
#include "families/real_roads.h"

namespace kernelgen {

FramedKernelFile hartleySizeFile(Precision type, int size);
std::vector<SizeDispatcher> hartleyDispatchers();
CountsTable hartleyCounts();

} // namespace kernelgen
