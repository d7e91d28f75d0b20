// The element types of the library's arrays: binary32 or binary64 numbers,
// real or complex. Every family names its types and scales them here.
#pragma once

#include <array>
#include <string>

#include "core/exact.h"
#include "core/graph.h"

namespace kernelgen {

enum class Precision { Single, Double };

// The suffix of the element type in the exported names: 32f, 64f, 32fc, 64fc.
const char* typeSuffix(Precision precision, bool complex);
// The kind of one number.
Kind numberKind(Precision precision);
// The three scale factors of a size-n transform, 1, 1/n and 1/sqrt(n), as
// stored: in binary64 1/sqrt(n) is the quotient 1.0 / sqrt(n) with both
// steps rounded, in binary32 the nearest value.
std::array<Exact, 3> scaleFactors(Precision precision, int n);

} // namespace kernelgen
