// Complex arithmetic over the graph, as the method builders see it. A
// builder writes a transform once in terms of Cx values; the element type's
// arithmetic decides what a complex sum or product becomes:
//
//   InterleavedArith     64fc: one complex number per two-lane binary64 vector
//                 (interleaved_arith.h)
//   SplitArith    32fc: real and imaginary parts in separate values, either
//                 four-lane vectors holding four independent butterflies or
//                 scalars (sizes 2 to 5, with the double rule) (split_arith.h)
//   LaneArith     DCT-IV pieces: parts apart in values of any kind, with
//                 the positive exponent throughout (lane_arith.h)
//
// The three arithmetics of the DFT kernels share DftArith below, which adds
// what convolution forms need.
//   ScalarArith   real families: parts apart in scalars, a missing part an
//                 exact zero, and the binary32 statement rule (scalar_arith.h)
//
// The direction lives here too: builders speak of W_n^e and of W4, and the
// arithmetic turns them into exp(-2*pi*i*e/n) forward, exp(+...) inverse.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "core/graph.h"
#include "core/rounding.h"

namespace kernelgen {

enum class Direction { Forward, Inverse };

// A complex value. Its parts may carry a pending sign (negRe, negIm) that
// the next addition absorbs by turning into a subtraction, so negations by
// -1 and by +-i cost nothing. The interleaved arithmetic holds both parts
// in one vector, `both`, its parts' values left empty.
struct Cx {
    Graph::Value re = -1;
    Graph::Value im = -1;
    bool negRe = false;
    bool negIm = false;
    Graph::Value both = -1;
};

// A signal of complex values: a transform's input or output.
using Signal = std::vector<Cx>;

// A real constant of the form cos(2*pi*num/den) or sin(2*pi*num/den).
struct Trig {
    bool sine;
    long num;
    long den;
    Exact value() const { return sine ? sinTurn(num, den) : cosTurn(num, den); }
};

class ComplexArith {
public:
    ComplexArith(Graph& graph, Direction direction, RoundingPolicy rounding = RoundingPolicy::elementType())
        : graph_(graph), direction_(direction), rounding_(rounding)
    {
    }
    virtual ~ComplexArith() = default;

    Graph& graph() { return graph_; }
    Direction direction() const { return direction_; }

    virtual Cx add(Cx a, Cx b) = 0;
    Cx sub(Cx a, Cx b) { return add(a, neg(b)); }
    static Cx neg(Cx a)
    {
        a.negRe = !a.negRe;
        a.negIm = !a.negIm;
        return a;
    }
    // Product with a real constant; its sign becomes a pending sign, so only
    // magnitudes are stored.
    virtual Cx mulReal(Cx a, Trig c) = 0;
    // Product with W4: -i forward, +i inverse. No multiplication.
    virtual Cx timesW4(Cx a) = 0;
    // Product with W_n^e, by the cheapest form its angle allows.
    virtual Cx rotate(Cx a, int n, int e) = 0;
    // A sum of products with constants starts from values given to
    // enterSum and ends with leaveSum, which the rounding policy turns into
    // the type changes it asks for (none by default).
    virtual Cx enterSum(Cx a);
    virtual Cx leaveSum(Cx a);

    // Sign of the exponent: -1 forward, +1 inverse.
    int exponentSign() const { return direction_ == Direction::Forward ? -1 : 1; }

protected:
    Graph& graph_;
    Direction direction_;
    RoundingPolicy rounding_;
};

// The arithmetic of the DFT kernels (InterleavedArith, SplitArith, ScalarArith),
// whose transforms hold convolution forms: products with complex constants,
// known zeros, and the same arithmetic in the opposite direction.
class DftArith : public ComplexArith {
public:
    using ComplexArith::ComplexArith;
    // Product with the complex constant re + i*im (a spectrum constant),
    // stored under `name`; a zero part costs nothing.
    virtual Cx mulComplex(Cx a, Exact re, Exact im, const std::string& name) = 0;
    // A value known to be zero, which sums and products fold away.
    virtual Cx zero() = 0;
    // The same arithmetic on the same graph with the opposite direction
    // (the inverse stage of a convolution form).
    virtual std::unique_ptr<DftArith> reversed() const = 0;
};

} // namespace kernelgen
