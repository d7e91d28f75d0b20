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
// columns of a radix.
int32_t columnOrder(int32_t radix, int32_t i);

} // namespace tvkgen::dct4
