#include "arith/lane_arith.h"

#include <string>
#include <vector>

#include "arith/signs.h"

namespace kernelgen {

Graph::Value LaneArith::constant(const std::string& name, Exact value)
{
    return graph_.constant(name, kind_, std::vector<Exact>(laneCount(kind_), value));
}

Cx LaneArith::add(Cx a, Cx b)
{
    Cx r;
    r.re = signedSum(graph_, a.re, a.negRe, b.re, b.negRe, r.negRe);
    r.im = signedSum(graph_, a.im, a.negIm, b.im, b.negIm, r.negIm);
    return r;
}

Cx LaneArith::mulReal(Cx a, Trig c)
{
    const Exact value = c.value();
    const Graph::Value k = constant(trigMagnitudeName(c.sine, c.num, c.den), magnitude(value));
    Cx r{graph_.mul(a.re, k), graph_.mul(a.im, k), a.negRe, a.negIm};
    return value < 0 ? neg(r) : r;
}

Cx LaneArith::rotate(Cx a, int n, int e)
{
    const Rotation rotation = classifyRotation(n, e);
    const int r = rotation.r;
    switch (rotation.form) {
    case RotationForm::Identity: return a;
    case RotationForm::Negate: return neg(a);
    case RotationForm::TimesI: return timesW4(a);
    case RotationForm::TimesMinusI: return neg(timesW4(a));
    default: break;
    }
    const Exact c = cosTurn(r, n), s = sinTurn(r, n);
    if (rotation.form == RotationForm::OddEighth) {
        const Graph::Value h = constant(trigMagnitudeName(false, 1, 8), magnitude(c));
        bool negRe, negIm;
        const Graph::Value re = signedSum(graph_, a.re, a.negRe ^ (c < 0), a.im, a.negIm ^ (s >= 0), negRe);
        const Graph::Value im = signedSum(graph_, a.re, a.negRe ^ (s < 0), a.im, a.negIm ^ (c < 0), negIm);
        return Cx{graph_.mul(re, h), graph_.mul(im, h), negRe, negIm};
    }
    const Graph::Value kc = constant(trigMagnitudeName(false, r, n), magnitude(c));
    const Graph::Value ks = constant(trigMagnitudeName(true, r, n), magnitude(s));
    return product(a, Cx{kc, ks, c < 0, s < 0});
}

Cx LaneArith::product(Cx a, Cx w)
{
    const Graph::Value rr = graph_.mul(a.re, w.re), ii = graph_.mul(a.im, w.im);
    const Graph::Value ri = graph_.mul(a.re, w.im), ir = graph_.mul(a.im, w.re);
    Cx r;
    r.re = signedSum(graph_, rr, a.negRe ^ w.negRe, ii, !(a.negIm ^ w.negIm), r.negRe);
    r.im = signedSum(graph_, ri, a.negRe ^ w.negIm, ir, a.negIm ^ w.negRe, r.negIm);
    return r;
}

Graph::Value LaneArith::materialize(Graph::Value v, bool negative)
{
    if (!negative)
        return v;
    if (!isVector(kind_))
        return graph_.neg(v);
    return graph_.bitXor(v, graph_.signMask("kNegate", kind_, std::vector<bool>(laneCount(kind_), true)));
}

} // namespace kernelgen
