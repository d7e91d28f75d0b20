// The codelets: straight transforms of lengths 2, 4, 8 and the folded odd
// primes, each with the partner-pair forms its butterflies allow.
#pragma once

#include "methods/signal.h"

namespace kernelgen {

// Length 2 and 4 codelets.
Signal dft2(ComplexArith& ar, const Signal& x);
Signal dft4(ComplexArith& ar, const Signal& x);
// Length 4, taking the pair (1, 3) as given and leaving X[1], X[3] open.
PairedOutput dft4Pairs(ComplexArith& ar, const PairedInput& x);

// The folded form of an odd prime length (3, 5, 7, 11), every pair
// (j, p-j) taken as given, X[k] and X[p-k] left open. X[0] is formed either
// as x0 + (a1 + a2 + ...) or as ((x0 + a1) + a2) + ... The sums of products
// with the constants go through the arithmetic's enterSum and leaveSum.
enum class DcOrder { SumThenX0, FromX0 };
PairedOutput foldedOddPairs(ComplexArith& ar, const PairedInput& x, DcOrder dcOrder);

// The size-8 road of 64fc: rotations by W8 act on the pair differences
// x1 - x5 and x3 - x7 as products with cos(pi/4).
Signal road8(ComplexArith& ar, const Signal& x);
// The same taking the pair (2, 6) as given, all its output pairs open.
PairedOutput road8Pairs(ComplexArith& ar, const PairedInput& x);

} // namespace kernelgen
