// Method builders: each is a short function that writes one way of
// computing a DFT as complex arithmetic on Cx values. They know nothing of
// element types, registers or printing.
#pragma once

#include <functional>
#include <vector>

#include "complex_arith.h"

namespace kernelgen {

using Signal = std::vector<Cx>;
using Transform = std::function<Signal(ComplexArith&, const Signal&)>;

// Length 2 and 4 codelets.
Signal dft2(ComplexArith& ar, const Signal& x);
Signal dft4(ComplexArith& ar, const Signal& x);

// The folded form of an odd prime length (3, 5, 7, 11). X[0] is formed
// either as x0 + (a1 + a2 + ...) or as ((x0 + a1) + a2) + ...
enum class DcOrder { SumThenX0, FromX0 };
Signal foldedOdd(ComplexArith& ar, const Signal& x, DcOrder dcOrder);

// The size-8 road of 64fc: rotations by W8 act on the pair differences
// x1 - x5 and x3 - x7 as products with cos(pi/4).
Signal road8(ComplexArith& ar, const Signal& x);

// Cooley-Tukey with n = n2*i1 + i2 and k = k1 + n1*k2: length-n1 transforms
// on the stride-n2 groups, twiddles W_N^(i2*k1) (exponent zero left out),
// length-n2 transforms across the groups.
Signal twiddledJoin(ComplexArith& ar, const Signal& x, int n1, const Transform& first, int n2,
                    const Transform& second);

} // namespace kernelgen
