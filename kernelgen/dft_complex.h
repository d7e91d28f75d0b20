// The complex DFT family: which road each size takes, per element type, and
// the assembly of a kernel's graph from it.
#pragma once

#include <string>
#include <vector>

#include "complex_arith.h"
#include "graph.h"

namespace kernelgen {

enum class ComplexType { C32, C64 };

const char* typeSuffix(ComplexType type); // "32fc", "64fc"

struct ComplexKernel {
    ComplexType type;
    int size;
    Direction direction;
    std::string road; // one line describing the method, for the header comment
    bool twins;       // aligned body and unaligned twin, or one scalar body
    Graph graph;
};

// Sizes that have a road in this element type, ascending.
std::vector<int> complexSizes(ComplexType type);

ComplexKernel buildComplexKernel(ComplexType type, int size, Direction direction);

} // namespace kernelgen
