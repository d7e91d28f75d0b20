// The complex DFT family: which road each size takes in each element type,
// and the kernels, dispatchers and count table that the printer is given.
#pragma once

#include <vector>

#include "core/kernel.h"

namespace kernelgen {

enum class ComplexType { C32, C64 };

// Sizes that have a road in this element type, ascending.
std::vector<int> complexSizes(ComplexType type);

// The forward and inverse kernels of one size and type.
FramedKernelFile complexSizeFile(ComplexType type, int size);

// The four size dispatchers.
std::vector<SizeDispatcher> complexDispatchers();

// Operation counts of every complex kernel.
CountsTable complexCounts();

} // namespace kernelgen
