#include "arith/scalar_arith.h"

#include <stdexcept>
#include <string>

#include "arith/signs.h"

namespace kernelgen {

ScalarArith::ScalarArith(Graph& graph, Direction direction, Kind element, RoundingPolicy rounding)
    : ScalarArith(graph, direction, element, rounding, std::make_shared<Statements>(graph))
{
}

ScalarArith::ScalarArith(Graph& graph, Direction direction, Kind element, RoundingPolicy rounding,
                         std::shared_ptr<Statements> statements)
    : DftArith(graph, direction, rounding), element_(element), s_(std::move(statements))
{
    if (isVector(element))
        throw std::logic_error("scalar arithmetic on a vector kind");
}

std::unique_ptr<ScalarArith> ScalarArith::onGraph(Graph& graph) const
{
    return std::make_unique<ScalarArith>(graph, direction_, element_, rounding_);
}

std::unique_ptr<DftArith> ScalarArith::reversed() const
{
    const Direction other = direction_ == Direction::Forward ? Direction::Inverse : Direction::Forward;
    return std::unique_ptr<DftArith>(new ScalarArith(graph_, other, element_, rounding_, s_));
}

Cx ScalarArith::mulComplex(Cx a, Exact re, Exact im, const std::string& name)
{
    // Inside a sum the products stay open; alone they are a statement.
    const bool alone = !(a.re >= 0 && inStatement(a.re)) && !(a.im >= 0 && inStatement(a.im));
    const Cx wide = enterSum(a);
    Cx sum; // parts missing: exact zeros
    if (re != 0) {
        Cx p = wide;
        if (p.re >= 0)
            p.re = partProduct(p.re, magnitude(re), name + "Re");
        if (p.im >= 0)
            p.im = partProduct(p.im, magnitude(re), name + "Re");
        sum = re < 0 ? neg(p) : p;
    }
    if (im != 0) {
        // i im (x + i y) = (-im y, im x)
        Cx q = timesW4(wide);
        if (direction_ == Direction::Forward)
            q = neg(q); // timesW4 is -i forward
        if (q.re >= 0)
            q.re = partProduct(q.re, magnitude(im), name + "Im");
        if (q.im >= 0)
            q.im = partProduct(q.im, magnitude(im), name + "Im");
        sum = add(sum, im < 0 ? neg(q) : q);
    }
    return alone ? leaveSum(sum) : sum;
}

Graph::Value ScalarArith::variable(Graph::Value v)
{
    if (graph_.kind(v) == element_)
        return v;
    if (!s_->finished.count(v))
        throw std::logic_error("a statement's value used before the statement ends");
    return s_->set.end(v);
}

Graph::Value ScalarArith::operand(Graph::Value v)
{
    if (!wideRule() || inStatement(v))
        return v;
    return s_->set.operand(variable(v));
}

Graph::Value ScalarArith::finish(Graph::Value v)
{
    if (wideRule())
        s_->finished.insert(v);
    return v;
}

Graph::Value ScalarArith::constant(Exact magnitude, const std::string& name)
{
    return graph_.constant(name, Kind::F64, {magnitude});
}

Graph::Value ScalarArith::partSum(Graph::Value a, bool negA, Graph::Value b, bool negB, bool& negOut)
{
    const bool wide = inStatement(a) || inStatement(b);
    const Graph::Value y = wide ? operand(b) : variable(b);
    const Graph::Value x = wide ? operand(a) : variable(a);
    return signedSum(graph_, x, negA, y, negB, negOut);
}

// A product of v with a binary64 constant: inside an open statement, or as a
// statement of its own.
Graph::Value ScalarArith::partProduct(Graph::Value v, Exact magnitude, const std::string& name)
{
    const bool alone = !inStatement(v);
    const Graph::Value k = constant(magnitude, name);
    const Graph::Value p = graph_.mul(operand(v), k);
    return alone ? finish(p) : p;
}

Cx ScalarArith::add(Cx a, Cx b)
{
    Cx r;
    const auto sumOfParts = [&](Graph::Value x, bool negX, Graph::Value y, bool negY, bool& negOut) {
        if (x < 0) {
            negOut = negY;
            return y;
        }
        if (y < 0) {
            negOut = negX;
            return x;
        }
        return partSum(x, negX, y, negY, negOut);
    };
    r.re = sumOfParts(a.re, a.negRe, b.re, b.negRe, r.negRe);
    r.im = sumOfParts(a.im, a.negIm, b.im, b.negIm, r.negIm);
    return r;
}

Cx ScalarArith::mulReal(Cx a, Trig c)
{
    const Exact value = c.value();
    const std::string name = trigMagnitudeName(c.sine, c.num, c.den);
    Cx r = a;
    if (a.re >= 0)
        r.re = partProduct(a.re, magnitude(value), name);
    if (a.im >= 0)
        r.im = partProduct(a.im, magnitude(value), name);
    return value < 0 ? neg(r) : r;
}

Cx ScalarArith::timesW4(Cx a)
{
    if (direction_ == Direction::Forward) // -i (re, im) = (im, -re)
        return Cx{a.im, a.re, a.negIm, !a.negRe};
    return Cx{a.im, a.re, !a.negIm, a.negRe}; // +i (re, im) = (-im, re)
}

Cx ScalarArith::rotate(Cx a, int n, int e)
{
    const Rotation rotation = classifyRotation(n, exponentSign() * e);
    switch (rotation.form) {
    case RotationForm::Identity: return a;
    case RotationForm::Negate: return neg(a);
    case RotationForm::TimesI: return Cx{a.im, a.re, !a.negIm, a.negRe};
    case RotationForm::TimesMinusI: return Cx{a.im, a.re, a.negIm, !a.negRe};
    default: break;
    }
    const Trig c{false, rotation.r, n}, s{true, rotation.r, n};
    // a * (c + i s) = (c re - s im) + i (s re + c im)
    if (rotation.form == RotationForm::OddEighth) {
        const bool cNeg = c.value() < 0, sNeg = s.value() < 0;
        const Cx p = mulReal(a, Trig{false, 1, 8});
        return add(Cx{p.re, p.re, p.negRe != cNeg, p.negRe != sNeg}, Cx{p.im, p.im, p.negIm == sNeg, p.negIm != cNeg});
    }
    const Cx wide = enterSum(a);
    // The products carry the constants' signs as pending signs.
    const Cx cA = mulReal(wide, c), sA = mulReal(wide, s);
    return leaveSum(add(Cx{cA.re, sA.re, cA.negRe, sA.negRe}, Cx{sA.im, cA.im, !sA.negIm, cA.negIm}));
}

Cx ScalarArith::enterSum(Cx a)
{
    if (a.re >= 0)
        a.re = operand(a.re);
    if (a.im >= 0)
        a.im = operand(a.im);
    return a;
}

Cx ScalarArith::leaveSum(Cx a)
{
    if (a.re >= 0 && inStatement(a.re))
        finish(a.re);
    if (a.im >= 0 && inStatement(a.im))
        finish(a.im);
    return a;
}

Graph::Value ScalarArith::scale()
{
    if (s_->scale < 0)
        s_->scale = graph_.scaleArg(element_);
    return s_->scale;
}

Graph::Value ScalarArith::wideScale()
{
    return s_->set.operand(scale());
}

void ScalarArith::storeOutput(Graph::Value v, bool negative, int cell)
{
    if (v < 0)
        throw std::logic_error("an output without a value");
    // A finished binary64 statement takes the factor and the negation in.
    const bool wide = graph_.kind(v) != element_;
    const Kind kind = wide ? Kind::F64 : element_;
    Graph::Value out = graph_.mul(v, wide ? wideScale() : scale());
    if (negative)
        out = graph_.sub(graph_.constant(wide ? "kZeroDouble" : "kZero", kind, {0}), out);
    graph_.store(wide ? s_->set.end(out) : out, cell);
}

void ScalarArith::storeZero(int cell) { graph_.store(graph_.constant("kZero", element_, {0}), cell); }

} // namespace kernelgen
