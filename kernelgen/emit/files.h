// The writers of whole generated files, from the descriptions that the
// family tables give (core/kernel.h). Each output is deterministic.
#pragma once

#include <string>
#include <vector>

#include "core/kernel.h"

namespace kernelgen {

// Kernels behind the call frame, their constants and exported entry points.
std::string printFramedKernelFile(const FramedKernelFile& file, const std::string& invocation);

// Size dispatchers over the frame's dense jump.
std::string printDispatchers(const std::vector<SizeDispatcher>& dispatchers, const std::string& invocation);

// A header with the table of operation counts.
std::string printCountsHeader(const CountsTable& table, const std::string& invocation);

// Pieces with their constants inside, and switches over them.
std::string printPieceFile(const PieceFile& file, const std::string& invocation);

} // namespace kernelgen
