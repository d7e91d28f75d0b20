#include "arith/interleaved_arith.h"

#include <string>

#include "arith/signs.h"

namespace kernelgen {

Cx InterleavedArith::load(int element) { return vector(graph_.load(Kind::V2F64, 2 * element)); }

void InterleavedArith::storeScaled(Cx x, int element, Graph::Value scale)
{
    graph_.store(graph_.mul(materialize(x), scale), 2 * element);
}

Graph::Value InterleavedArith::materialize(Cx a)
{
    if (!a.negRe && !a.negIm)
        return a.both;
    const char* name = a.negRe && a.negIm ? "kNegateBoth" : a.negRe ? "kNegateLow" : "kNegateHigh";
    return graph_.bitXor(a.both, graph_.signMask(name, Kind::V2F64, {a.negRe, a.negIm}));
}

Cx InterleavedArith::zero() { return vector(graph_.constant("kZero", Kind::V2F64, {0, 0})); }

Cx InterleavedArith::add(Cx a, Cx b)
{
    if (isZero(a))
        return b;
    if (isZero(b))
        return a;
    if (a.negRe != a.negIm)
        a = vector(materialize(a));
    if (b.negRe != b.negIm)
        b = vector(materialize(b));
    bool neg = false;
    const Graph::Value v = signedSum(graph_, a.both, a.negRe, b.both, b.negRe, neg);
    return vector(v, neg, neg);
}

Cx InterleavedArith::mulReal(Cx a, Trig c)
{
    if (isZero(a))
        return a;
    const Exact value = c.value();
    const Exact m = magnitude(value);
    const Graph::Value k = graph_.constant(trigMagnitudeName(c.sine, c.num, c.den), Kind::V2F64, {m, m});
    Cx r = vector(graph_.mul(a.both, k), a.negRe, a.negIm);
    if (value < 0)
        r = neg(r);
    return r;
}

// (re, im) * i = (-im, re): swap the lanes, flip the new low lane.
Cx InterleavedArith::timesI(Cx a)
{
    const bool whole = a.negRe && a.negIm;
    const Graph::Value v = whole ? a.both : materialize(a);
    const Graph::Value swapped = graph_.shuffle(Shuffle::SwapLanes, v);
    return vector(graph_.bitXor(swapped, graph_.signMask("kNegateLow", Kind::V2F64, {true, false})), whole, whole);
}

Cx InterleavedArith::timesW4(Cx a)
{
    if (isZero(a))
        return a;
    return direction_ == Direction::Forward ? neg(timesI(a)) : timesI(a);
}

Cx InterleavedArith::rotate(Cx a, int n, int e)
{
    const Rotation rotation = classifyRotation(n, exponentSign() * e);
    const int r = rotation.r;
    switch (rotation.form) {
    case RotationForm::Identity: return a;
    case RotationForm::Negate: return neg(a);
    case RotationForm::TimesI: return timesI(a);
    case RotationForm::TimesMinusI: return neg(timesI(a));
    default: break;
    }
    const Exact c = cosTurn(r, n);
    const Exact s = sinTurn(r, n);
    if (rotation.form == RotationForm::OddEighth) {
        // W = |c| * (+-1 +- i): one sum of a and i*a, then one product.
        Cx t = add(c < 0 ? neg(a) : a, s < 0 ? neg(timesI(a)) : timesI(a));
        return mulReal(t, Trig{false, 1, 8});
    }
    // a * (c + i*s) = |c|*a*sign(c) + swap(a) * (-s, s)
    const Cx p = mulReal(a, Trig{false, r, n});
    const std::string sinName = trigMagnitudeName(true, r, n) + (s > 0 ? "NegPos" : "PosNeg");
    const Graph::Value pattern = graph_.constant(sinName, Kind::V2F64, {-s, s});
    const Cx q = vector(graph_.mul(graph_.shuffle(Shuffle::SwapLanes, materialize(a)), pattern));
    return add(p, q);
}

Cx InterleavedArith::mulComplex(Cx a, Exact re, Exact im, const std::string& name)
{
    if (isZero(a) || (re == 0 && im == 0))
        return zero();
    Cx p;
    if (re != 0) {
        const Exact m = magnitude(re);
        p = vector(graph_.mul(a.both, graph_.constant(name + "Re", Kind::V2F64, {m, m})), a.negRe, a.negIm);
        if (re < 0)
            p = neg(p);
    }
    if (im == 0)
        return p;
    // swap(a) * (-im, im) = i*im*a
    const Graph::Value pattern =
        graph_.constant(name + "Im" + (im > 0 ? "NegPos" : "PosNeg"), Kind::V2F64, {-im, im});
    const Cx q = vector(graph_.mul(graph_.shuffle(Shuffle::SwapLanes, materialize(a)), pattern));
    return re != 0 ? add(p, q) : q;
}

std::unique_ptr<DftArith> InterleavedArith::reversed() const
{
    return std::make_unique<InterleavedArith>(graph_, direction_ == Direction::Forward ? Direction::Inverse
                                                                                : Direction::Forward);
}

} // namespace kernelgen
