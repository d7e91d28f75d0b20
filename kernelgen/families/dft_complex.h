// The complex DFT family: which road each size takes in each element type,
// and the kernels, dispatchers and count table that the printer is given.
#pragma once

#include <string>
#include <vector>

#include "core/element.h"
#include "core/kernel.h"

namespace kernelgen {

// Sizes that have a road in this element type, ascending.
std::vector<int> complexSizes(Precision type);
// The words of the road of a size, as its kernels' titles give them.
std::string complexRoadWords(Precision type, int size);

// The forward and inverse kernels of one size and type.
FramedKernelFile complexSizeFile(Precision type, int size);

// The four size dispatchers.
std::vector<SizeDispatcher> complexDispatchers();

// Operation counts of every complex kernel.
CountsTable complexCounts();

} // namespace kernelgen
