// The forward real DFT family: the method of every size, and the kernels
// of its three layouts in both element types.
#pragma once

#include <vector>

#include "core/kernel.h"

namespace kernelgen {

enum class RealType { R32, R64 };

// Sizes that have a method, ascending.
std::vector<int> realSizes();

// The CCS, Pack and Perm kernels of one size and type; no kernels for a
// size without a method.
FramedKernelFile realForwardSizeFile(RealType type, int size);

// The six size dispatchers.
std::vector<SizeDispatcher> realForwardDispatchers();

// Operation counts of every forward real kernel, one row per size and type
// (the layouts share the arithmetic).
CountsTable realForwardCounts();

} // namespace kernelgen
