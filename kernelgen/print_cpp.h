// The C++ printer: turns kernel graphs into straight-line code over the
// vector layer, one struct per kernel, with its body written once as a
// template over the load/store policy.
#pragma once

#include <string>

#include "dft_complex.h"

namespace kernelgen {

// Pieces every printer shares: the C++ type of a value kind, a constant as a
// correctly rounded hex literal of its kind, and the generated-file banner.
const char* cppType(Kind kind);
std::string literal(Kind kind, Exact value);
std::string header(const std::string& invocation);
// The expression of an arithmetic node (constant, add, sub, mul, xor, neg,
// shuffle, widen, narrow) over the operand names a and b.
std::string arithmeticExpr(const Graph& g, const Node& n, const std::string& a, const std::string& b);

// Forward and inverse kernels of one size and type, with their exported
// entry points.
std::string printComplexSizeFile(ComplexType type, int size, const std::string& invocation);

// The four complex size dispatchers over the sizes built.
std::string printComplexDispatchFile(const std::string& invocation);

// Operation counts of every complex kernel, as a table for the tests.
std::string printComplexCountsHeader(const std::string& invocation);

} // namespace kernelgen
