#include "arith/split_arith.h"

#include <string>

#include "arith/signs.h"

namespace kernelgen {

SplitArith::SplitArith(Graph& graph, Direction direction, Kind kind, RoundingPolicy rounding)
    : DftArith(graph, direction, rounding), kind_(kind) {}

void SplitArith::enterPart(int which)
{
    const int parent = graph_.openedSection();
    auto parts = parts_.find(parent);
    if (parts == parts_.end()) {
        const int re = graph_.addSection(Section("real parts"), parent);
        parts = parts_.emplace(parent, std::array<int, 2>{re, graph_.addSection(Section("imaginary parts"), parent)}).first;
    }
    graph_.enterSection(parts->second[which]);
}

template <class F>
Cx SplitArith::eachPart(Cx a, F f)
{
    a.re = inPart(0, [&] { return f(a.re, a.negRe); });
    if (a.im >= 0)
        a.im = inPart(1, [&] { return f(a.im, a.negIm); });
    return a;
}

Cx SplitArith::load(int element)
{
    Cx x;
    x.re = inPart(0, [&] { return graph_.load(kind_, 2 * element); });
    x.im = inPart(1, [&] { return graph_.load(kind_, 2 * element + 1); });
    return x;
}

void SplitArith::storeScaled(Cx a, int element, Graph::Value scale)
{
    const Cx out = materialize(a);
    for (int which = 0; which < 2; ++which)
        inPart(which, [&] { graph_.store(graph_.mul(which == 0 ? out.re : out.im, scale), 2 * element + which); });
}

Cx SplitArith::enterSum(Cx a)
{
    return eachPart(a, [&](Graph::Value v, bool) { return rounding_.enterSum(graph_, v); });
}

Cx SplitArith::leaveSum(Cx a)
{
    return eachPart(a, [&](Graph::Value v, bool) { return rounding_.leaveSum(graph_, v); });
}

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
    const Cx r = eachPart(a, [&](Graph::Value v, bool negative) { return part(v, negative); });
    return Cx{r.re, r.im};
}

Cx SplitArith::product(Cx a, Graph::Value c, Graph::Value s)
{
    // Made in the order that pairs each part's products: a times c, then
    // a with its parts exchanged times s.
    const Graph::Value reC = inPart(0, [&] { return graph_.mul(a.re, c); });
    const Graph::Value imS = inPart(0, [&] { return graph_.mul(a.im, s); });
    const Graph::Value re = inPart(0, [&] { return graph_.sub(reC, imS); });
    const Graph::Value imC = inPart(1, [&] { return graph_.mul(a.im, c); });
    const Graph::Value reS = inPart(1, [&] { return graph_.mul(a.re, s); });
    return Cx{re, inPart(1, [&] { return graph_.add(reS, imC); })};
}

Cx SplitArith::add(Cx a, Cx b)
{
    if (isZero(a))
        return b;
    if (isZero(b))
        return a;
    Cx r;
    r.re = inPart(0, [&] { return signedSum(graph_, a.re, a.negRe, b.re, b.negRe, r.negRe); });
    r.im = inPart(1, [&] { return signedSum(graph_, a.im, a.negIm, b.im, b.negIm, r.negIm); });
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
    const Cx r = eachPart(a, [&](Graph::Value v, bool) { return graph_.mul(v, k); });
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
    switch (classifyRotation(n, exponentSign() * e).form) {
    case RotationForm::Identity: return a;
    case RotationForm::Negate: return neg(a);
    case RotationForm::TimesI: return Cx{a.im, a.re, !a.negIm, a.negRe};
    case RotationForm::TimesMinusI: return Cx{a.im, a.re, a.negIm, !a.negRe};
    default: break;
    }
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
    return product(y, a, b);
}

Cx SplitArith::mulComplex(Cx a, Exact re, Exact im, const std::string& name)
{
    if (isZero(a))
        return a;
    const auto uniform = [&](Exact v) { return std::vector<Exact>(laneCount(kind_), magnitude(v)); };
    if (im == 0) {
        const Graph::Value k = graph_.constant(name + "Re", kind_, uniform(re));
        const Cx r = eachPart(a, [&](Graph::Value v, bool) { return graph_.mul(v, k); });
        return re < 0 ? neg(r) : r;
    }
    if (re == 0) {
        // i*im*(x + i*y) = (-im*y, im*x)
        const Graph::Value k = graph_.constant(name + "Im", kind_, uniform(im));
        const Cx ia{a.im, a.re, !a.negIm, a.negRe};
        const Cx r = eachPart(ia, [&](Graph::Value v, bool) { return graph_.mul(v, k); });
        return im < 0 ? neg(r) : r;
    }
    const Graph::Value c = graph_.constant(name + "Re", kind_, std::vector<Exact>(laneCount(kind_), re));
    const Graph::Value s = graph_.constant(name + (direction_ == Direction::Forward ? "ImFwd" : "ImInv"), kind_,
                                           std::vector<Exact>(laneCount(kind_), im));
    a = materialize(a);
    return product(a, c, s);
}

Cx SplitArith::zero()
{
    const Graph::Value z = graph_.constant("kZero", kind_, std::vector<Exact>(laneCount(kind_), 0));
    return Cx{z, z};
}

SplitArith SplitArith::opposite() const
{
    SplitArith other(*this);
    other.direction_ = direction_ == Direction::Forward ? Direction::Inverse : Direction::Forward;
    return other;
}

std::unique_ptr<DftArith> SplitArith::reversed() const { return std::make_unique<SplitArith>(opposite()); }

} // namespace kernelgen
