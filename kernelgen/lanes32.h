// The two-level split of the 32fc vector kernels: four independent
// butterflies side by side in the lanes of each vector, real and imaginary
// parts in separate vectors.
#pragma once

#include "methods.h"

namespace kernelgen {

// N = n1*n2 with n = n2*i1 + i2, k = k1 + n1*k2:
//  1. length-n1 transforms over i1 with the lanes holding i2, four at a
//     time (consecutive elements; with n2 = 2 two lanes and two zeros);
//  2. 4x4 transposes, after which the lanes hold k1 and each vector one i2;
//  3. the twiddles W_N^(i2*k1), one full complex product per vector;
//  4. length-n2 transforms over i2, whose vector k2 holds the outputs
//     k1 + n1*k2, stored in natural order after one product by the scale.
void buildLaneSplit(SplitArith& ar, int n1, const Transform& first, int n2, const Transform& second);

} // namespace kernelgen
