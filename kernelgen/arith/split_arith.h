// 32fc complex arithmetic: real and imaginary parts in separate values,
// four-lane vectors holding four independent butterflies, or scalars. The
// real parts' operations are made in one section and the imaginary parts'
// in another (inPart below).
#pragma once

#include <array>
#include <map>
#include <type_traits>

#include "arith/complex_arith.h"

namespace kernelgen {

class SplitArith : public DftArith {
public:
    // kind: V4F32 (lanes) or F32 (scalar).
    SplitArith(Graph& graph, Direction direction, Kind kind,
               RoundingPolicy rounding = RoundingPolicy::elementType());
    Cx add(Cx a, Cx b) override;
    Cx mulReal(Cx a, Trig c) override;
    Cx timesW4(Cx a) override;
    Cx rotate(Cx a, int n, int e) override;
    Cx mulComplex(Cx a, Exact re, Exact im, const std::string& name) override;
    Cx zero() override;
    Cx enterSum(Cx a) override;
    Cx leaveSum(Cx a) override;
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

    // What `make` makes, made in the section of part `which` (0 real,
    // 1 imaginary) inside the section now open: the real parts' operations
    // and the imaginary parts' form two sections of one shape, which the
    // pairing pass can run side by side in the halves of one vector.
    template <class Make>
    auto inPart(int which, Make make)
    {
        enterPart(which);
        if constexpr (std::is_void_v<decltype(make())>) {
            make();
            graph_.closeSection();
        } else {
            const auto v = make();
            graph_.closeSection();
            return v;
        }
    }

    // Scalar kernels: element `element` of src (its parts at 2 * element
    // and 2 * element + 1), and a times the scale factor into element
    // `element` of dst.
    Cx load(int element);
    void storeScaled(Cx a, int element, Graph::Value scale);

private:
    Graph::Value part(Graph::Value v, bool negative);
    // Enters the section of part `which` inside the section now open.
    void enterPart(int which);
    // f applied to each part of a present, in its part's section; the
    // pending signs kept.
    template <class F>
    Cx eachPart(Cx a, F f);
    // a (c + i s) for a materialized a and constants c, s: four products and two sums.
    Cx product(Cx a, Graph::Value c, Graph::Value s);
    Kind kind_;
    // The sections of the real and imaginary parts, by the section they are made in.
    std::map<int, std::array<int, 2>> parts_;
};

} // namespace kernelgen
