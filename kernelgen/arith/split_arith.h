// 32fc complex arithmetic: real and imaginary parts in separate values,
// four-lane vectors holding four independent butterflies, or scalars.
#pragma once

#include <array>

#include "arith/complex_arith.h"

namespace kernelgen {

class SplitArith : public DftArith {
public:
    // kind: V4F32 (lanes) or F32 (scalar).
    SplitArith(Graph& graph, Direction direction, Kind kind,
               RoundingPolicy rounding = RoundingPolicy::elementType())
        : DftArith(graph, direction, rounding), kind_(kind)
    {
    }
    Cx add(Cx a, Cx b) override;
    Cx mulReal(Cx a, Trig c) override;
    Cx timesW4(Cx a) override;
    Cx rotate(Cx a, int n, int e) override;
    Cx mulComplex(Cx a, Exact re, Exact im, const std::string& name) override;
    Cx zero() override;
    std::unique_ptr<DftArith> reversed() const override;
    // The reversed arithmetic itself, for the builders of the lane split.
    SplitArith opposite() const;

    // Full complex product with a different twiddle W_n^e in each lane:
    // re = a*yr - b*yi, im = b*yr + a*yi, every product rounded first.
    Cx rotateLanes(Cx y, int n, std::array<int, 4> exponents, const std::string& name);
    // The same with any constants a + i*b, one per lane; the imaginary parts
    // are stored under a name of their direction.
    Cx mulLanes(Cx y, const std::array<Exact, 4>& a, const std::array<Exact, 4>& b, const std::string& name);
    // Both parts with their pending signs applied.
    Cx materialize(Cx a);
    // A value known to be zero in every lane (a pruned input): sums with it
    // and products of it fold away, so the zero tail of a chirp transform
    // is never added.
    bool isZero(Cx a) const { return graph_.isZero(a.re) && graph_.isZero(a.im); }

private:
    Graph::Value part(Graph::Value v, bool negative);
    // a (c + i s) for a materialized a and constants c, s: four products and two sums.
    Cx product(Cx a, Graph::Value c, Graph::Value s);
    Kind kind_;
};

} // namespace kernelgen
