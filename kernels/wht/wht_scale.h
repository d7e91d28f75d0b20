// Scale constants of the Walsh-Hadamard kernels, N = 2^order. The flags that
// divide by N pick 2^-order alike, since the transform has no direction.
#pragma once

#include "scale.h"

namespace tvkgen::wht {

constexpr double powerOfTwo(int exponent)
{
    double p = 1.0;
    for (; exponent < 0; ++exponent)
        p *= 0.5;
    for (; exponent > 0; --exponent)
        p *= 2.0;
    return p;
}

// 1/sqrt(2^n) at odd n is 2^-(n-1)/2 times the constant for n = 1, exactly,
// because scaling by a power of two commutes with rounding.
//   binary64: the quotient 1.0 / sqrt(2.0), both steps rounded. It lies one
//   unit in the last place below the correctly rounded 1/sqrt(2) (...BCD);
//   the quotient is the value callers have always received, so it stays.
//   binary32: 1/sqrt(2) correctly rounded.
template <class Real>
constexpr Real kInvSqrt2 = sizeof(Real) == 8 ? Real(0x1.6A09E667F3BCCp-1) : Real(0x1.6A09E6p-1f);

// Indexed by ScaleIndex: 1, 1/N, 1/sqrt(N). Not inline: internal linkage
// keeps the tables out of the library's symbol table in every build (an
// instrumented build would otherwise export them as unique symbols).
template <class Real, int Order>
constexpr Real kScales[3] = {
    Real(1),
    Real(powerOfTwo(-Order)),
    Order % 2 == 0 ? Real(powerOfTwo(-Order / 2)) : Real(kInvSqrt2<Real> * Real(powerOfTwo(-(Order - 1) / 2))),
};

} // namespace tvkgen::wht
