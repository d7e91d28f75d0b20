// Table fills of the rotation and twiddle kernels, and the trig routines
// they use.
#pragma once

#include "plan_nodes.h"

namespace tvkgen::dct4 {

// x times pi through the double-precision cos and sin; the binary32 forms
// widen x first and round the result to float.
float cosPi32(float x);
float sinPi32(float x);
double cosPi64(double x);
double sinPi64(double x);

// Fill the kernel's table from its value source.
template <class Real>
void fillRotationTable(RecombineKernel* kernel);
template <class Real>
void fillTwiddleTable(TwiddleKernel* kernel);

// The order in which the rotation table and the recombine kernel take the
// columns of a radix: c and r - 1 - c on even and odd places. For radix 32
// the even places follow the input order of the 64-point output kernel.
inline constexpr int32_t kColumnOrder32[32] = {0, 31, 16, 15, 4,  27, 20, 11, 8,  23, 24, 7,  12, 19, 28, 3,
                                               1, 30, 17, 14, 5,  26, 21, 10, 9,  22, 25, 6,  13, 18, 29, 2};

constexpr int32_t columnOrder(int32_t radix, int32_t i)
{
    if (radix == 32)
        return kColumnOrder32[i];
    return (i & 1) ? radix - 1 - i / 2 : i / 2;
}

} // namespace tvkgen::dct4
