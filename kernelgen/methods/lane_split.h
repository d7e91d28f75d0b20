// The two-level split of the 32fc vector kernels: four independent
// butterflies side by side in the lanes of each vector, real and imaginary
// parts in separate vectors.
#pragma once

#include "arith/split_arith.h"
#include "methods/convolution.h"
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

// A form that multiplies a spectrum (the convolution or chirp form of a
// prime) across the lanes of the split `map` of its transform: the forward
// split as above on the inputs x[source(e)], with the chirp on the loaded
// vectors, the constants one per lane, then its adjoint (inverse second
// stage, conjugate twiddles, transposes back, inverse first stage), which
// leaves output r in the lanes where input r was loaded, stored to
// X[target(r)] after the chirp again. x[0] of the convolution form rides in
// lane 0 of the vector holding bin 0. The chirp form's zero tail is pruned,
// and its scale is a step of its own.
void buildLaneForm(SplitArith& ar, const JoinMap& map, const Transform& first, const Transform& second,
                   const SpectrumForm& form);

} // namespace kernelgen
