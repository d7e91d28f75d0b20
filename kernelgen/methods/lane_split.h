// The two-level split of the 32fc vector kernels: four independent
// butterflies side by side in the lanes of each vector, real and imaginary
// parts in separate vectors.
#pragma once

#include "arith/split_arith.h"
#include "methods/joins.h"

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

// The chirp form of the prime p over the length M = n1*n2 of the twiddled
// split `map`: a[n] = x[n] W^(h n^2) (h = (p+1)/2) on the loaded vectors,
// the forward split with the zero tail a[p..M-1] pruned, the constants B[k]
// one per lane, the adjoint split of which only outputs 0..p-1 are kept,
// the same chirp again, then the scale as a step of its own.
void buildLaneChirp(SplitArith& ar, int p, const JoinMap& map, const Transform& first, const Transform& second);

} // namespace kernelgen
