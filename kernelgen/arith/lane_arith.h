// Complex arithmetic of the DCT-IV pieces: real and imaginary parts apart,
// in values of any kind (scalars of the direct kernels, vectors whose lanes
// run along independent columns). Every transform of that family uses the
// positive exponent, +2*pi*i*e/n.
#pragma once

#include "arith/complex_arith.h"

namespace kernelgen {

class LaneArith : public ComplexArith {
public:
    LaneArith(Graph& graph, Kind kind) : ComplexArith(graph, Direction::Inverse), kind_(kind) {}

    Cx add(Cx a, Cx b) override;
    Cx mulReal(Cx a, Trig c) override;
    // +i (re, im) = (-im, re)
    Cx timesW4(Cx a) override { return Cx{a.im, a.re, !a.negIm, a.negRe}; }
    // An odd multiple of pi/4 as sums first, then one product each; other
    // angles as a full product with magnitude constants.
    Cx rotate(Cx a, int n, int e) override;
    // (a.re + i a.im)(w.re + i w.im) with four products, each rounded.
    Cx product(Cx a, Cx w);
    // v with its pending sign applied.
    Graph::Value materialize(Graph::Value v, bool negative);

private:
    Graph::Value constant(const std::string& name, Exact value);
    Kind kind_;
};

} // namespace kernelgen
