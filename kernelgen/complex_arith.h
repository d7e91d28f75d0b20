// Complex arithmetic over the graph, as the method builders see it. A
// builder writes a transform once in terms of Cx values; the element type's
// arithmetic decides what a complex sum or product becomes:
//
//   PairArith     64fc: one complex number per two-lane binary64 vector
//   SplitArith    32fc: real and imaginary parts in separate values, either
//                 four-lane vectors holding four independent butterflies or
//                 scalars (sizes 2 to 5, with the double rule)
//
// The direction lives here too: builders speak of W_n^e and of W4, and the
// arithmetic turns them into exp(-2*pi*i*e/n) forward, exp(+...) inverse.
#pragma once

#include <array>
#include <memory>
#include <string>

#include "graph.h"

namespace kernelgen {

enum class Direction { Forward, Inverse };

// A complex value. Its parts may carry a pending sign (negRe, negIm) that
// the next addition absorbs by turning into a subtraction, so negations by
// -1 and by +-i cost nothing. PairArith keeps the vector in `re`.
struct Cx {
    Graph::Value re = -1;
    Graph::Value im = -1;
    bool negRe = false;
    bool negIm = false;
};

// A real constant of the form cos(2*pi*num/den) or sin(2*pi*num/den).
struct Trig {
    bool sine;
    long num;
    long den;
    Exact value() const { return sine ? sinTurn(num, den) : cosTurn(num, den); }
};

class ComplexArith {
public:
    ComplexArith(Graph& graph, Direction direction) : graph_(graph), direction_(direction) {}
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
    // Product with the complex constant re + i*im (a spectrum constant),
    // stored under `name`; a zero part costs nothing. Only the arithmetics
    // of the DFT kernels, which hold convolution forms, have it.
    virtual Cx mulComplex(Cx a, Exact re, Exact im, const std::string& name);
    // re*a + i*im*b with the constants stored under their names (a spectrum
    // product in pair form); 64fc only.
    virtual Cx mulPair(Cx a, Exact re, const std::string& reName, Cx b, Exact im, const std::string& imName);
    // A value known to be zero, which sums and products fold away (the empty
    // halves of a rotated pair); 64fc only.
    virtual Cx zero();
    // The same arithmetic on the same graph with the opposite direction
    // (the inverse stage of a convolution form); DFT kernels only.
    virtual std::unique_ptr<ComplexArith> reversed() const;
    // The double rule of the scalar binary32 codelets: sums of products
    // with constants are formed in binary64 between widen and narrow.
    virtual Cx widen(Cx a) { return a; }
    virtual Cx narrow(Cx a) { return a; }

    // Sign of the exponent: -1 forward, +1 inverse.
    int exponentSign() const { return direction_ == Direction::Forward ? -1 : 1; }

protected:
    Graph& graph_;
    Direction direction_;
};

class PairArith : public ComplexArith {
public:
    using ComplexArith::ComplexArith;
    Cx load(int element);
    void storeScaled(Cx x, int element, Graph::Value scale);
    Cx add(Cx a, Cx b) override;
    Cx mulReal(Cx a, Trig c) override;
    Cx timesW4(Cx a) override;
    Cx rotate(Cx a, int n, int e) override;
    Cx mulComplex(Cx a, Exact re, Exact im, const std::string& name) override;
    Cx mulPair(Cx a, Exact re, const std::string& reName, Cx b, Exact im, const std::string& imName) override;
    Cx zero() override;
    bool isZero(Cx a) const { return graph_.isZero(a.re); }
    std::unique_ptr<ComplexArith> reversed() const override;

private:
    Graph::Value materialize(Cx a);
    Cx timesI(Cx a); // by +i in either direction
};

class SplitArith : public ComplexArith {
public:
    // kind: V4F32 (lanes) or F32 (scalar). doubleRule: widen/narrow are real.
    SplitArith(Graph& graph, Direction direction, Kind kind, bool doubleRule = false)
        : ComplexArith(graph, direction), kind_(kind), doubleRule_(doubleRule)
    {
    }
    Cx add(Cx a, Cx b) override;
    Cx mulReal(Cx a, Trig c) override;
    Cx timesW4(Cx a) override;
    Cx rotate(Cx a, int n, int e) override;
    Cx mulComplex(Cx a, Exact re, Exact im, const std::string& name) override;
    std::unique_ptr<ComplexArith> reversed() const override;
    Cx widen(Cx a) override;
    Cx narrow(Cx a) override;

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
    Graph::Value combine(Graph::Value a, bool negA, Graph::Value b, bool negB, bool& negOut);
    Kind kind_;
    bool doubleRule_;
};

} // namespace kernelgen
