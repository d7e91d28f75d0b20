#include "core/inline.h"

#include <stdexcept>
#include <vector>

namespace kernelgen {

namespace {

bool holdsConstantProduct(const Graph& g, Graph::Value v)
{
    const Node& n = g.nodes()[v];
    if (n.op == Op::Mul)
        return g.nodes()[n.a].op == Op::Constant || g.nodes()[n.b].op == Op::Constant;
    if (n.op == Op::Add || n.op == Op::Sub)
        return holdsConstantProduct(g, n.a) || holdsConstantProduct(g, n.b);
    return n.op == Op::Neg && holdsConstantProduct(g, n.a);
}

// The binary64 sums of widened binary32 values under `wide`, made again in
// binary32 in the same order.
Graph::Value inSingle(Graph& g, Graph::Value wide)
{
    const Node n = g.nodes()[wide];
    switch (n.op) {
    case Op::Widen: return n.a;
    case Op::Add:
    case Op::Sub: {
        const Graph::Value b = inSingle(g, n.b);
        const Graph::Value a = inSingle(g, n.a);
        return n.op == Op::Add ? g.add(a, b) : g.sub(a, b);
    }
    case Op::Neg: return g.neg(inSingle(g, n.a));
    default: throw std::logic_error("a binary64 value without a binary32 form");
    }
}

// A narrowing copied from an adjoint binary32 block. The adjoint of a
// statement's widened operand sums the adjoints of its uses in binary64;
// where that sum holds no product by a constant it is no statement, and is
// made in binary32 as every such sum is (narrowing a lone widened value is
// then the value itself).
Graph::Value narrowOrRebuild(Graph& target, Graph::Value wide)
{
    return holdsConstantProduct(target, wide) ? target.narrow(wide) : inSingle(target, wide);
}

} // namespace

SectionImport::SectionImport(Graph& target, const Graph& sub)
    : target_(target), sub_(sub), parent_(target.openedSection()), index_(sub.sections().size(), -1)
{
}

int SectionImport::index(int section)
{
    if (index_[section] < 0) {
        const SectionNode& s = sub_.sections()[section];
        index_[section] = target_.addSection(s.what, s.parent >= 0 ? index(s.parent) : parent_);
    }
    return index_[section];
}

SectionImport::Scope::Scope(SectionImport& import, int section) : target_(import.target_), entered_(section >= 0)
{
    if (entered_)
        target_.enterSection(import.index(section));
}

SectionImport::Scope::~Scope()
{
    if (entered_)
        target_.closeSection();
}

std::map<int, SignedValue> inlineGraph(Graph& target, const Graph& sub, const std::map<int, SignedValue>& inputs)
{
    const std::vector<bool> live = sub.liveNodes();
    std::vector<SignedValue> copy(sub.nodes().size());
    std::map<int, SignedValue> outputs;
    SectionImport sections(target, sub);
    for (size_t i = 0; i < sub.nodes().size(); ++i) {
        if (!live[i])
            continue;
        const Node& n = sub.nodes()[i];
        const SectionImport::Scope scope(sections, n.section);
        const SignedValue a = n.a >= 0 ? copy[n.a] : SignedValue{}, b = n.b >= 0 ? copy[n.b] : SignedValue{};
        SignedValue& out = copy[i];
        // A missing value is an exact zero: it drops out of sums and
        // products, as a missing part does in the scalar arithmetic.
        const bool zeroA = n.a >= 0 && a.value < 0, zeroB = n.b >= 0 && b.value < 0;
        if (n.op == Op::Add && (zeroA || zeroB)) {
            out = zeroA ? b : a;
            continue;
        }
        if (n.op == Op::Sub && (zeroA || zeroB)) {
            out = zeroA ? SignedValue{b.value, !b.negative} : a;
            continue;
        }
        if (n.op != Op::Store && (zeroA || zeroB))
            continue; // a product, negation or type change of zero
        switch (n.op) {
        case Op::Load: out = inputs.at(n.offset); break;
        case Op::Store: outputs[n.offset] = a; break;
        case Op::Constant: {
            const ConstantDef& c = sub.constants()[n.constant];
            out.value = target.constant(c.name, c.kind, c.lanes);
            break;
        }
        case Op::Add: out.value = signedSum(target, a.value, a.negative, b.value, b.negative, out.negative); break;
        case Op::Sub: out.value = signedSum(target, a.value, a.negative, b.value, !b.negative, out.negative); break;
        case Op::Mul: out = {target.mul(a.value, b.value), a.negative != b.negative}; break;
        case Op::Neg: out = {a.value, !a.negative}; break;
        case Op::Widen: out = {target.widen(a.value), a.negative}; break;
        case Op::Narrow: out = {narrowOrRebuild(target, a.value), a.negative}; break;
        default: throw std::logic_error("an operation that a scalar block does not hold");
        }
    }
    return outputs;
}

} // namespace kernelgen
