#include "core/adjoint.h"

#include <stdexcept>

namespace kernelgen {

namespace {

// A term of an adjoint sum: a value of the adjoint graph and its sign.
struct Term {
    Graph::Value value;
    bool negative;
};

class AdjointBuilder {
public:
    explicit AdjointBuilder(const Graph& g) : g_(g), adjoint_(g.nodes().size()), copied_(g.nodes().size(), -1) {}

    // The operations that carry the adjoint of a value belong to the
    // value's section: the transposes of sections of one shape have one
    // shape again.
    Graph run()
    {
        t_.copySectionsOf(g_);
        const std::vector<bool> live = g_.liveNodes();
        for (size_t i = g_.nodes().size(); i-- > 0;) {
            if (!live[i])
                continue;
            const size_t before = t_.nodes().size();
            visit(static_cast<int>(i));
            for (size_t made = before; made < t_.nodes().size(); ++made)
                t_.placeInSection(static_cast<int>(made), g_.nodes()[i].section);
        }
        return std::move(t_);
    }

private:
    void visit(int v)
    {
        const Node& n = g_.nodes()[v];
        switch (n.op) {
        case Op::Store: adjoint_[n.a].push_back({t_.load(n.kind, n.offset), false}); return;
        case Op::Load: t_.store(sum(v), n.offset); return;
        case Op::Constant:
        case Op::ScaleArg: return; // factors of products, not variables
        case Op::Add:
        case Op::Sub: {
            const Term d = term(v);
            adjoint_[n.a].push_back(d);
            adjoint_[n.b].push_back({d.value, n.op == Op::Sub ? !d.negative : d.negative});
            return;
        }
        case Op::Neg: {
            const Term d = term(v);
            adjoint_[n.a].push_back({d.value, !d.negative});
            return;
        }
        case Op::Mul: {
            const bool bIsFactor = isFactor(n.b);
            if (!bIsFactor && !isFactor(n.a))
                throw std::logic_error("adjoint of a product of two variables");
            const int x = bIsFactor ? n.a : n.b, factor = bIsFactor ? n.b : n.a;
            const Term d = term(v);
            adjoint_[x].push_back({t_.mul(d.value, copy(factor)), d.negative});
            return;
        }
        case Op::Xor: {
            if (!isFactor(n.b))
                throw std::logic_error("adjoint of a sign flip by a variable");
            const Graph::Value mask = copy(n.b);
            adjoint_[n.a].push_back({t_.bitXor(sum(v), mask), false});
            return;
        }
        case Op::Shuffle:
            if (n.pattern != Shuffle::SwapLanes)
                throw std::logic_error("no transpose of this lane pattern");
            adjoint_[n.a].push_back({t_.shuffle(Shuffle::SwapLanes, sum(v)), false});
            return;
        case Op::Widen: adjoint_[n.a].push_back({t_.narrow(sum(v)), false}); return;
        case Op::Narrow: adjoint_[n.a].push_back({t_.widen(sum(v)), false}); return;
        default: throw std::logic_error("no transpose of a half-vector move");
        }
    }

    bool isFactor(int v) const { return g_.nodes()[v].op == Op::Constant || g_.nodes()[v].op == Op::ScaleArg; }

    // The constant or scale of the original, made once in the transpose.
    Graph::Value copy(int v)
    {
        if (copied_[v] >= 0)
            return copied_[v];
        const Node& n = g_.nodes()[v];
        if (n.op == Op::ScaleArg)
            return copied_[v] = t_.scaleArg(n.kind);
        const ConstantDef& c = g_.constants()[n.constant];
        return copied_[v] = c.signMask ? t_.signMask(c.name, c.kind, signs(c)) : t_.constant(c.name, c.kind, c.lanes);
    }

    static std::vector<bool> signs(const ConstantDef& c)
    {
        std::vector<bool> negative;
        for (Exact lane : c.lanes)
            negative.push_back(__builtin_signbit(static_cast<double>(lane)));
        return negative;
    }

    // The adjoint of v as a signed sum of its terms, left to right, with a
    // pending sign: a - b where the signs differ, never a negation.
    Term term(int v)
    {
        const std::vector<Term>& terms = adjoint_[v];
        if (terms.empty())
            return {zero(g_.nodes()[v].kind), false};
        Term acc = terms[0];
        for (size_t i = 1; i < terms.size(); ++i) {
            const Term& b = terms[i];
            if (acc.negative == b.negative)
                acc.value = t_.add(acc.value, b.value);
            else
                acc = {b.negative ? t_.sub(acc.value, b.value) : t_.sub(b.value, acc.value), false};
        }
        return acc;
    }

    // The adjoint of v with its sign applied.
    Graph::Value sum(int v)
    {
        const Term d = term(v);
        if (!d.negative)
            return d.value;
        const Kind kind = t_.kind(d.value);
        if (!isVector(kind))
            return t_.neg(d.value);
        return t_.bitXor(d.value, t_.signMask("kNegateAll", kind, std::vector<bool>(laneCount(kind), true)));
    }

    Graph::Value zero(Kind kind) { return t_.constant("kZero", kind, std::vector<Exact>(laneCount(kind), 0)); }

    const Graph& g_;
    Graph t_;
    std::vector<std::vector<Term>> adjoint_;
    std::vector<Graph::Value> copied_;
};

} // namespace

Graph adjoint(const Graph& g) { return AdjointBuilder(g).run(); }

} // namespace kernelgen
