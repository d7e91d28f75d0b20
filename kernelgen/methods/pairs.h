// The stages around the spectrum product of a 64fc convolution form work on
// partner pairs: the forward transform leaves the last butterfly of a pair
// (k, m-k) undone, the products combine its half-sum and half-difference
// with the doubled spectrum constants into P[k] + P[m-k] and P[k] - P[m-k],
// and the inverse stage takes these as its first butterfly. A join passes
// pairs through both of its stages (see pairs.cpp).
#pragma once

#include "methods/joins.h"

namespace kernelgen {

// A transform and its two forms beside a spectrum product. `keepsAllPairs`:
// the forward form leaves every partner pair open; `takesAllPairs`: the
// inverse form asks for every partner pair as a sum and difference.
struct Method {
    Transform plain;
    std::function<PairedOutput(DftArith&, const Signal&)> pairedOut;
    std::function<Signal(DftArith&, const PairedInput&)> pairedIn;
    bool keepsAllPairs = false;
    bool takesAllPairs = false;
    Signal operator()(DftArith& ar, const Signal& x) const { return plain(ar, x); }
};

// A codelet given as one function from paired inputs to paired outputs.
Method codeletMethod(std::function<PairedOutput(DftArith&, const PairedInput&)> core, bool takesAllPairs);
// A transform without pair forms: bins in, bins out.
Method plainMethod(Transform plain);
// A join of two stages (coprime or twiddled map) with pairs through both.
Method joinMethod(const JoinMap& map, const Method& first, const Method& second);

} // namespace kernelgen
