// The real DFT families: forward kernels into CCS, Pack and Perm, and the
// inverse kernels reading them back, in both element types.
#pragma once

#include <vector>

#include "core/kernel.h"
#include "families/real_roads.h"

namespace kernelgen {

// The CCS, Pack and Perm kernels of one size and type, forward or inverse.
FramedKernelFile realForwardSizeFile(Precision type, int size);
FramedKernelFile realInverseSizeFile(Precision type, int size);

// The six size dispatchers of each direction.
std::vector<SizeDispatcher> realForwardDispatchers();
std::vector<SizeDispatcher> realInverseDispatchers();

// Operation counts of every kernel, one row per size and type (the layouts
// share the arithmetic).
CountsTable realForwardCounts();
CountsTable realInverseCounts();

} // namespace kernelgen
