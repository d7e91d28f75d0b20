#include "complex_arith.h"

#include <cstdlib>
#include <stdexcept>

namespace kernelgen {

namespace {

Exact magnitude(Exact x) { return x < 0 ? -x : x; }

// a*sign(a) + b*sign(b) as one addition or subtraction and a pending sign.
Graph::Value signedSum(Graph& g, Graph::Value a, bool negA, Graph::Value b, bool negB, bool& negOut)
{
    negOut = negA && negB;
    if (negA == negB)
        return g.add(a, b);
    return negB ? g.sub(a, b) : g.sub(b, a);
}

// W_n^e with the exponent reduced into 0..n-1, for the trivial cases.
int reduceExponent(int n, int e) { return ((e % n) + n) % n; }

} // namespace

Cx ComplexArith::mulComplex(Cx, Exact, Exact, const std::string&)
{
    throw std::logic_error("this arithmetic has no spectrum products");
}

Cx ComplexArith::mulPair(Cx, Exact, const std::string&, Cx, Exact, const std::string&)
{
    throw std::logic_error("this arithmetic has no spectrum products in pair form");
}

Cx ComplexArith::zero() { throw std::logic_error("this arithmetic has no zero values"); }

std::unique_ptr<ComplexArith> ComplexArith::reversed() const
{
    throw std::logic_error("this arithmetic has no reversed twin");
}

// ---- PairArith: one complex number per binary64 vector ----------------------

Cx PairArith::load(int element) { return Cx{graph_.load(Kind::V2F64, 2 * element)}; }

void PairArith::storeScaled(Cx x, int element, Graph::Value scale)
{
    graph_.store(graph_.mul(materialize(x), scale), 2 * element);
}

Graph::Value PairArith::materialize(Cx a)
{
    if (!a.negRe && !a.negIm)
        return a.re;
    const char* name = a.negRe && a.negIm ? "kNegateBoth" : a.negRe ? "kNegateLow" : "kNegateHigh";
    return graph_.bitXor(a.re, graph_.signMask(name, Kind::V2F64, {a.negRe, a.negIm}));
}

Cx PairArith::zero() { return Cx{graph_.constant("kZero", Kind::V2F64, {0, 0})}; }

Cx PairArith::add(Cx a, Cx b)
{
    if (isZero(a))
        return b;
    if (isZero(b))
        return a;
    if (a.negRe != a.negIm)
        a = Cx{materialize(a)};
    if (b.negRe != b.negIm)
        b = Cx{materialize(b)};
    bool neg = false;
    const Graph::Value v = signedSum(graph_, a.re, a.negRe, b.re, b.negRe, neg);
    return Cx{v, -1, neg, neg};
}

Cx PairArith::mulReal(Cx a, Trig c)
{
    if (isZero(a))
        return a;
    const Exact value = c.value();
    const Exact m = magnitude(value);
    const Graph::Value k = graph_.constant(trigMagnitudeName(c.sine, c.num, c.den), Kind::V2F64, {m, m});
    Cx r{graph_.mul(a.re, k), -1, a.negRe, a.negIm};
    if (value < 0)
        r = neg(r);
    return r;
}

// (re, im) * i = (-im, re): swap the lanes, flip the new low lane.
Cx PairArith::timesI(Cx a)
{
    const bool whole = a.negRe && a.negIm;
    const Graph::Value v = whole ? a.re : materialize(a);
    const Graph::Value swapped = graph_.shuffle("swapLanes", v);
    return Cx{graph_.bitXor(swapped, graph_.signMask("kNegateLow", Kind::V2F64, {true, false})), -1, whole, whole};
}

Cx PairArith::timesW4(Cx a)
{
    if (isZero(a))
        return a;
    return direction_ == Direction::Forward ? neg(timesI(a)) : timesI(a);
}

Cx PairArith::rotate(Cx a, int n, int e)
{
    const int r = reduceExponent(n, exponentSign() * e);
    if (r == 0)
        return a;
    if (2 * r == n)
        return neg(a);
    if (4 * r == n)
        return timesI(a);
    if (4 * r == 3 * n)
        return neg(timesI(a));
    const Exact c = cosTurn(r, n);
    const Exact s = sinTurn(r, n);
    if ((8 * r) % n == 0) {
        // W = |c| * (+-1 +- i): one sum of a and i*a, then one product.
        Cx t = add(c < 0 ? neg(a) : a, s < 0 ? neg(timesI(a)) : timesI(a));
        return mulReal(t, Trig{false, 1, 8});
    }
    // a * (c + i*s) = |c|*a*sign(c) + swap(a) * (-s, s)
    const Cx p = mulReal(a, Trig{false, r, n});
    const std::string sinName = trigMagnitudeName(true, r, n) + (s > 0 ? "NegPos" : "PosNeg");
    const Graph::Value pattern = graph_.constant(sinName, Kind::V2F64, {-s, s});
    const Cx q{graph_.mul(graph_.shuffle("swapLanes", materialize(a)), pattern)};
    return add(p, q);
}

Cx PairArith::mulComplex(Cx a, Exact re, Exact im, const std::string& name)
{
    return mulPair(a, re, name + "Re", a, im, name + "Im");
}

Cx PairArith::mulPair(Cx a, Exact re, const std::string& reName, Cx b, Exact im, const std::string& imName)
{
    if (isZero(a))
        re = 0;
    if (isZero(b))
        im = 0;
    if (re == 0 && im == 0)
        return zero();
    Cx p;
    if (re != 0) {
        const Exact m = magnitude(re);
        p = Cx{graph_.mul(a.re, graph_.constant(reName, Kind::V2F64, {m, m})), -1, a.negRe, a.negIm};
        if (re < 0)
            p = neg(p);
    }
    if (im == 0)
        return p;
    // swap(b) * (-im, im) = i*im*b
    const Graph::Value pattern =
        graph_.constant(imName + (im > 0 ? "NegPos" : "PosNeg"), Kind::V2F64, {-im, im});
    const Cx q{graph_.mul(graph_.shuffle("swapLanes", materialize(b)), pattern)};
    return re != 0 ? add(p, q) : q;
}

std::unique_ptr<ComplexArith> PairArith::reversed() const
{
    return std::make_unique<PairArith>(graph_, direction_ == Direction::Forward ? Direction::Inverse
                                                                                : Direction::Forward);
}

// ---- SplitArith: real and imaginary parts apart ------------------------------

Graph::Value SplitArith::part(Graph::Value v, bool negative)
{
    if (!negative)
        return v;
    const Kind kind = graph_.kind(v);
    if (!isVector(kind))
        return graph_.neg(v);
    return graph_.bitXor(v, graph_.signMask("kNegateAll", kind, std::vector<bool>(laneCount(kind), true)));
}

Cx SplitArith::materialize(Cx a)
{
    if (isZero(a))
        return Cx{a.re, a.im};
    return Cx{part(a.re, a.negRe), part(a.im, a.negIm)};
}

Cx SplitArith::add(Cx a, Cx b)
{
    if (isZero(a))
        return b;
    if (isZero(b))
        return a;
    Cx r;
    r.re = signedSum(graph_, a.re, a.negRe, b.re, b.negRe, r.negRe);
    r.im = signedSum(graph_, a.im, a.negIm, b.im, b.negIm, r.negIm);
    return r;
}

Cx SplitArith::mulReal(Cx a, Trig c)
{
    if (isZero(a))
        return a;
    const Exact value = c.value();
    const Kind kind = graph_.kind(a.re);
    const Graph::Value k = graph_.constant(trigMagnitudeName(c.sine, c.num, c.den), kind,
                                           std::vector<Exact>(laneCount(kind), magnitude(value)));
    Cx r{graph_.mul(a.re, k), graph_.mul(a.im, k), a.negRe, a.negIm};
    return value < 0 ? neg(r) : r;
}

// -i*(re, im) = (im, -re); +i*(re, im) = (-im, re): only names and signs move.
Cx SplitArith::timesW4(Cx a)
{
    if (direction_ == Direction::Forward)
        return Cx{a.im, a.re, a.negIm, !a.negRe};
    return Cx{a.im, a.re, !a.negIm, a.negRe};
}

Cx SplitArith::rotate(Cx a, int n, int e)
{
    const int r = reduceExponent(n, exponentSign() * e);
    if (r == 0)
        return a;
    if (2 * r == n)
        return neg(a);
    if (4 * r == n) // by +i
        return Cx{a.im, a.re, !a.negIm, a.negRe};
    if (4 * r == 3 * n) // by -i
        return Cx{a.im, a.re, a.negIm, !a.negRe};
    return rotateLanes(a, n, {e, e, e, e}, "kW" + std::to_string(n) + "Pow" + std::to_string(e));
}

Cx SplitArith::rotateLanes(Cx y, int n, std::array<int, 4> exponents, const std::string& name)
{
    std::array<Exact, 4> cosLanes, sinLanes;
    for (int l = 0; l < 4; ++l) {
        cosLanes[l] = cosTurn(exponentSign() * exponents[l], n);
        sinLanes[l] = sinTurn(exponentSign() * exponents[l], n);
    }
    return mulLanes(y, cosLanes, sinLanes, name);
}

Cx SplitArith::mulLanes(Cx y, const std::array<Exact, 4>& cosLanes, const std::array<Exact, 4>& sinLanes,
                        const std::string& name)
{
    if (kind_ != Kind::V4F32)
        throw std::logic_error("lane constants need four-lane vectors");
    if (isZero(y))
        return y;
    const Graph::Value a = graph_.constant(name + "Re", kind_, {cosLanes.begin(), cosLanes.end()});
    const Graph::Value b = graph_.constant(name + (direction_ == Direction::Forward ? "ImFwd" : "ImInv"), kind_,
                                           {sinLanes.begin(), sinLanes.end()});
    y = materialize(y);
    const Graph::Value re = graph_.sub(graph_.mul(y.re, a), graph_.mul(y.im, b));
    const Graph::Value im = graph_.add(graph_.mul(y.re, b), graph_.mul(y.im, a));
    return Cx{re, im};
}

Cx SplitArith::mulComplex(Cx a, Exact re, Exact im, const std::string& name)
{
    if (isZero(a))
        return a;
    const auto uniform = [&](Exact v) { return std::vector<Exact>(laneCount(kind_), magnitude(v)); };
    if (im == 0) {
        const Graph::Value k = graph_.constant(name + "Re", kind_, uniform(re));
        const Cx r{graph_.mul(a.re, k), graph_.mul(a.im, k), a.negRe, a.negIm};
        return re < 0 ? neg(r) : r;
    }
    if (re == 0) {
        // i*im*(x + i*y) = (-im*y, im*x)
        const Graph::Value k = graph_.constant(name + "Im", kind_, uniform(im));
        const Cx r{graph_.mul(a.im, k), graph_.mul(a.re, k), !a.negIm, a.negRe};
        return im < 0 ? neg(r) : r;
    }
    const Graph::Value c = graph_.constant(name + "Re", kind_, std::vector<Exact>(laneCount(kind_), re));
    const Graph::Value s = graph_.constant(name + (direction_ == Direction::Forward ? "ImFwd" : "ImInv"), kind_,
                                           std::vector<Exact>(laneCount(kind_), im));
    a = materialize(a);
    return Cx{graph_.sub(graph_.mul(a.re, c), graph_.mul(a.im, s)), graph_.add(graph_.mul(a.re, s), graph_.mul(a.im, c))};
}

std::unique_ptr<ComplexArith> SplitArith::reversed() const
{
    return std::make_unique<SplitArith>(graph_, direction_ == Direction::Forward ? Direction::Inverse
                                                                                 : Direction::Forward,
                                        kind_, doubleRule_);
}

Cx SplitArith::widen(Cx a)
{
    if (!doubleRule_)
        return a;
    return Cx{graph_.widen(a.re), graph_.widen(a.im), a.negRe, a.negIm};
}

Cx SplitArith::narrow(Cx a)
{
    if (!doubleRule_)
        return a;
    return Cx{graph_.narrow(a.re), graph_.narrow(a.im), a.negRe, a.negIm};
}

} // namespace kernelgen
