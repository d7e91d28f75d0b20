#include "core/element.h"

#include <cmath>

namespace kernelgen {

const char* typeSuffix(Precision precision, bool complex)
{
    if (precision == Precision::Single)
        return complex ? "32fc" : "32f";
    return complex ? "64fc" : "64f";
}

Kind numberKind(Precision precision) { return precision == Precision::Single ? Kind::F32 : Kind::F64; }

std::array<Exact, 3> scaleFactors(Precision precision, int n)
{
    if (precision == Precision::Double)
        return {1, 1.0 / n, 1.0 / std::sqrt(static_cast<double>(n))};
    return {1, 1.0f / static_cast<float>(n), roundToFloat(1 / sqrtExact(n))};
}

} // namespace kernelgen
