// 64fc complex arithmetic: one complex number per two-lane binary64 vector,
// held in Cx::both.
#pragma once

#include "arith/complex_arith.h"

namespace kernelgen {

class InterleavedArith : public DftArith {
public:
    using DftArith::DftArith;
    Cx load(int element);
    void storeScaled(Cx x, int element, Graph::Value scale);
    Cx add(Cx a, Cx b) override;
    Cx mulReal(Cx a, Trig c) override;
    Cx timesW4(Cx a) override;
    Cx rotate(Cx a, int n, int e) override;
    Cx mulComplex(Cx a, Exact re, Exact im, const std::string& name) override;
    Cx zero() override;
    bool isZero(Cx a) const { return graph_.isZero(a.both); }
    std::unique_ptr<DftArith> reversed() const override;

private:
    static Cx vector(Graph::Value v, bool negRe = false, bool negIm = false) { return Cx{-1, -1, negRe, negIm, v}; }
    Graph::Value materialize(Cx a);
    Cx timesI(Cx a); // by +i in either direction
};

} // namespace kernelgen
