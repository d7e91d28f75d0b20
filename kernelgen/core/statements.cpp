#include "core/statements.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace kernelgen {

Graph::Value StatementSet::operand(Graph::Value variable)
{
    const auto known = widened_.find(variable);
    return known != widened_.end() ? known->second : widened_[variable] = g_.widen(variable);
}

Graph::Value StatementSet::end(Graph::Value wide)
{
    const auto known = rounded_.find(wide);
    return known != rounded_.end() ? known->second : rounded_[wide] = g_.narrow(wide);
}

std::vector<Statement> statementsOf(const Graph& g)
{
    const std::vector<bool> live = g.liveNodes();
    std::vector<Statement> statements;
    for (size_t i = 0; i < g.nodes().size(); ++i) {
        if (!live[i] || g.nodes()[i].op != Op::Narrow)
            continue;
        Statement s{static_cast<Graph::Value>(i), {}};
        std::vector<bool> seen(g.nodes().size(), false);
        std::vector<Graph::Value> stack = {g.nodes()[i].a};
        while (!stack.empty()) {
            const Graph::Value v = stack.back();
            stack.pop_back();
            const Node& n = g.nodes()[v];
            if (seen[v] || n.op == Op::Widen || n.op == Op::Constant || n.kind != Kind::F64)
                continue;
            seen[v] = true;
            s.operations.push_back(v);
            for (const Graph::Value operand : {n.a, n.b})
                if (operand >= 0)
                    stack.push_back(operand);
        }
        std::sort(s.operations.begin(), s.operations.end());
        statements.push_back(std::move(s));
    }
    return statements;
}

namespace {

// The copy of one value: a binary32 variable, or the binary64 value of a
// statement still open, with its pending sign.
struct Part {
    Graph::Value value = -1;
    bool negative = false;
    bool open = false;
};

class StatementCopier {
public:
    StatementCopier(Graph& target, const Graph& sub)
        : t_(target), sub_(sub), statements_(target), copy_(sub.nodes().size())
    {
        const std::vector<bool> live = sub.liveNodes();
        uses_.assign(sub.nodes().size(), 0);
        feedsStore_.assign(sub.nodes().size(), false);
        for (size_t i = 0; i < sub.nodes().size(); ++i) {
            if (!live[i])
                continue;
            const Node& n = sub.nodes()[i];
            if (n.a >= 0)
                ++uses_[n.a];
            if (n.b >= 0)
                ++uses_[n.b];
            if (n.op == Op::Store)
                feedsStore_[n.a] = true;
        }
        live_ = live;
    }

    std::map<int, SignedValue> run(const std::map<int, SignedValue>& inputs)
    {
        std::map<int, SignedValue> outputs;
        SectionImport sections(t_, sub_);
        for (size_t i = 0; i < sub_.nodes().size(); ++i) {
            if (!live_[i])
                continue;
            const Node& n = sub_.nodes()[i];
            const SectionImport::Scope scope(sections, n.section);
            if (n.kind != Kind::F64 && n.op != Op::Store)
                throw std::logic_error("a statement block must be built in binary64");
            Part& out = copy_[i];
            const bool zeroA = n.a >= 0 && copy_[n.a].value < 0, zeroB = n.b >= 0 && copy_[n.b].value < 0;
            switch (n.op) {
            case Op::Load: {
                const SignedValue in = inputs.at(n.offset);
                out = {in.value, in.negative, false};
                break;
            }
            case Op::Store:
                if (!zeroA) {
                    const Part v = variable(n.a);
                    outputs[n.offset] = {v.value, v.negative};
                }
                break;
            case Op::Constant: break; // copied where a product uses it
            case Op::Neg: out = {copy_[n.a].value, !copy_[n.a].negative, copy_[n.a].open}; break;
            case Op::Mul: {
                if (zeroA)
                    break;
                const ConstantDef& c = sub_.constants()[sub_.nodes()[n.b].constant];
                const Part a = wideOperand(n.a);
                out = {t_.mul(a.value, t_.constant(c.name, Kind::F64, c.lanes)), a.negative, true};
                break;
            }
            case Op::Add:
            case Op::Sub: {
                const bool minus = n.op == Op::Sub;
                if (zeroA || zeroB) {
                    out = zeroA ? copy_[n.b] : copy_[n.a];
                    if (zeroA && minus)
                        out.negative = !out.negative;
                    break;
                }
                // An output's last sum adds rounded values.
                const bool openSum = !feedsStore_[i] && (staysOpen(n.a) || staysOpen(n.b));
                const Part a = openSum ? wideOperand(n.a) : variable(n.a);
                const Part b = openSum ? wideOperand(n.b) : variable(n.b);
                out.value = signedSum(t_, a.value, a.negative, b.value, minus != b.negative, out.negative);
                out.open = openSum;
                break;
            }
            default: throw std::logic_error("an operation that a statement block does not hold");
            }
        }
        return outputs;
    }

private:
    // An open statement whose value has no other use goes on.
    bool staysOpen(int v) const { return copy_[v].open && uses_[v] == 1; }

    // v as a binary32 variable: an open statement ends here, rounded once.
    Part variable(int v)
    {
        const Part& p = copy_[v];
        if (!p.open)
            return p;
        return {statements_.end(p.value), p.negative, false};
    }

    // v as a binary64 operand of a statement: its open value, or its
    // variable widened exactly.
    Part wideOperand(int v)
    {
        if (staysOpen(v))
            return copy_[v];
        const Part x = variable(v);
        return {statements_.operand(x.value), x.negative, true};
    }

    Graph& t_;
    const Graph& sub_;
    StatementSet statements_;
    std::vector<Part> copy_;
    std::vector<int> uses_;
    std::vector<bool> feedsStore_;
    std::vector<bool> live_;
};

} // namespace

std::map<int, SignedValue> inlineAsStatements(Graph& target, const Graph& sub,
                                              const std::map<int, SignedValue>& inputs, Kind element)
{
    if (element == Kind::F64)
        return inlineGraph(target, sub, inputs);
    if (element != Kind::F32)
        throw std::logic_error("statements are formed in scalar kernels only");
    return StatementCopier(target, sub).run(inputs);
}

} // namespace kernelgen
