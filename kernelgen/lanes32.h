// The two-level split of the 32fc vector kernels: four independent
// butterflies side by side in the lanes of each vector, real and imaginary
// parts in separate vectors.
#pragma once

#include "methods.h"

namespace kernelgen {

// A join N = n1*n2 across the lanes:
//  1. length-n1 transforms, the lanes holding four first-stage groups i2
//     (idle lanes zero); groups of consecutive elements load as whole
//     vectors, others element by element;
//  2. 4x4 transposes, after which the lanes hold four k1 and each vector one
//     i2;
//  3. the join's twiddles, one full complex product per vector;
//  4. length-n2 transforms over i2, each output vector stored after one
//     product by the scale, whole where its four elements are consecutive.
void buildLaneSplit(SplitArith& ar, const JoinMap& map, const Transform& first, const Transform& second);

// The convolution form of the prime p across the lanes of the size-m split
// `map`: the forward split as above on u[q] = x[g^q], the spectrum constants
// one per lane, then its adjoint (inverse second stage, conjugate twiddles,
// transposes back, inverse first stage), which leaves y[r] in the lanes
// where u[r] was loaded, stored to X[g^-r]. x[0] rides in lane 0 of the
// vector holding bin 0.
void buildLaneConvolution(SplitArith& ar, int p, const JoinMap& map, const Transform& first, const Transform& second);

} // namespace kernelgen
