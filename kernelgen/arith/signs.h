// The rotation rule that every complex arithmetic shares: a rotation W_n^e
// takes the cheapest form its angle allows. (Pending signs fold into sums
// through signedSum, core/graph.h.)
#pragma once

#include "core/graph.h"

namespace kernelgen {

inline Exact magnitude(Exact x) { return x < 0 ? -x : x; }

// W_n^r with r reduced into 0..n-1.
enum class RotationForm {
    Identity,  // r = 0
    Negate,    // W = -1
    TimesI,    // W = +i
    TimesMinusI,
    OddEighth, // an odd multiple of pi/4: W = |cos(pi/4)| (+-1 +- i)
    General,
};
struct Rotation {
    RotationForm form;
    int r; // the exponent reduced into 0..n-1
};
Rotation classifyRotation(int n, int e);

} // namespace kernelgen
