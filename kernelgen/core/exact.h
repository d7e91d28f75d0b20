// High-precision constants for the generator. Every constant of a kernel is
// computed here in binary128 and rounded once to the kernel's element type,
// so the printed literals are the correctly rounded values.
#pragma once

#include <cstdint>
#include <string>

namespace kernelgen {

using Exact = __float128;

// cos and sin of the angle 2*pi*num/den, reduced to the first octant in
// integer arithmetic first, so that symmetric values are exactly symmetric
// and exact values (0, 1, 1/2) come out exact.
Exact cosTurn(long num, long den);
Exact sinTurn(long num, long den);

Exact sqrtExact(Exact x);

// Correct rounding to the element types.
inline double roundToDouble(Exact x) { return static_cast<double>(x); }
inline float roundToFloat(Exact x) { return static_cast<float>(x); }

// Exact hexadecimal literals (C++17 hex floats).
std::string hexLiteral(double x);
std::string hexLiteral(float x);

// Name of the magnitude of cos or sin of 2*pi*num/den, by its first-octant
// form: |sin(2*pi*2/5)| is cos(pi/10) and is called kCosPiOver10, so that
// equal magnitudes share one name.
std::string trigMagnitudeName(bool sine, long num, long den);

} // namespace kernelgen
