#include "passes/lanes.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <stdexcept>
#include <utility>
#include <vector>

namespace kernelgen {

namespace {

Kind elementOf(Kind kind) { return isSingle(kind) ? Kind::F32 : Kind::F64; }

class PerElement {
public:
    explicit PerElement(const Graph& g) : g_(g), lanes_(g.nodes().size()) {}

    Graph run()
    {
        const std::vector<bool> live = g_.liveNodes();
        for (size_t i = 0; i < g_.nodes().size(); ++i)
            if (live[i])
                lanes_[i] = node(g_.nodes()[i]);
        return std::move(out_);
    }

private:
    using Value = Graph::Value;

    Value load(Kind kind, int offset)
    {
        const auto [at, added] = loads_.try_emplace({kind, offset}, -1);
        if (added)
            at->second = out_.load(kind, offset);
        return at->second;
    }

    // A lane of a constant, named by its element type and stored bits, so
    // that equal numbers share one name.
    Value constant(Kind kind, Exact value)
    {
        char name[32];
        if (kind == Kind::F32)
            std::snprintf(name, sizeof name, "kF%08x", std::bit_cast<std::uint32_t>(roundToFloat(value)));
        else
            std::snprintf(name, sizeof name, "kD%016llx",
                          static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(roundToDouble(value))));
        return out_.constant(name, kind, {value});
    }

    // Lane l of a sign flip: a negation where the mask's lane is -0.0.
    std::vector<Value> signFlip(const Node& n)
    {
        const auto isMask = [&](int v) {
            const Node& m = g_.nodes()[v];
            return m.op == Op::Constant && g_.constants()[m.constant].signMask;
        };
        const int mask = isMask(n.b) ? n.b : n.a, value = mask == n.b ? n.a : n.b;
        if (!isMask(mask))
            throw std::logic_error("an xor whose operand is no sign mask");
        const ConstantDef& c = g_.constants()[g_.nodes()[mask].constant];
        std::vector<Value> v;
        for (int l = 0; l < laneCount(n.kind); ++l)
            v.push_back(std::signbit(static_cast<double>(c.lanes[l])) ? out_.neg(lanes_[value][l]) : lanes_[value][l]);
        return v;
    }

    std::vector<Value> node(const Node& n)
    {
        const int lanes = laneCount(n.kind), half = lanes / 2;
        const Kind element = elementOf(n.kind);
        std::vector<Value> v;
        switch (n.op) {
        case Op::Load:
            for (int l = 0; l < lanes; ++l)
                v.push_back(load(element, n.offset2 >= 0 && l >= half ? n.offset2 + l - half : n.offset + l));
            return v;
        case Op::LoadElement:
            return {load(Kind::F32, n.offset), load(Kind::F32, n.offset + 1), constant(Kind::F32, 0),
                    constant(Kind::F32, 0)};
        case Op::Store:
            for (int l = 0; l < lanes; ++l)
                out_.store(lanes_[n.a][l], n.offset2 >= 0 && l >= half ? n.offset2 + l - half : n.offset + l);
            return v;
        case Op::StoreLowElement:
        case Op::StoreHighElement: {
            const int first = n.op == Op::StoreHighElement ? 2 : 0;
            out_.store(lanes_[n.a][first], n.offset);
            out_.store(lanes_[n.a][first + 1], n.offset + 1);
            return v;
        }
        case Op::Constant:
            for (Exact lane : g_.constants()[n.constant].lanes)
                v.push_back(constant(element, lane));
            return v;
        case Op::ScaleArg: {
            const auto [at, added] = scales_.try_emplace(element, -1);
            if (added)
                at->second = out_.scaleArg(element);
            return std::vector<Value>(lanes, at->second);
        }
        case Op::Xor: return signFlip(n);
        case Op::Shuffle:
            for (int l = 0; l < lanes; ++l) {
                const LaneSource from = shuffleSource(n.pattern, n.kind, l);
                v.push_back(lanes_[from.operand == 0 ? n.a : n.b][from.lane]);
            }
            return v;
        case Op::Neg: return {out_.neg(lanes_[n.a][0])};
        case Op::Widen:
        case Op::Narrow:
            for (int l = 0; l < lanes; ++l)
                v.push_back(n.op == Op::Widen ? out_.widen(lanes_[n.a][l]) : out_.narrow(lanes_[n.a][l]));
            return v;
        case Op::Add:
        case Op::Sub:
        case Op::Mul:
            for (int l = 0; l < lanes; ++l) {
                const Value a = lanes_[n.a][l], b = lanes_[n.b][l];
                v.push_back(n.op == Op::Add ? out_.add(a, b) : n.op == Op::Sub ? out_.sub(a, b) : out_.mul(a, b));
            }
            return v;
        }
        throw std::logic_error("an operation the lane pass does not know");
    }

    const Graph& g_;
    Graph out_;
    std::vector<std::vector<Value>> lanes_; // the scalar value of each lane of each node
    std::map<std::pair<Kind, int>, Value> loads_;
    std::map<Kind, Value> scales_;
};

} // namespace

Graph perElement(const Graph& g) { return PerElement(g).run(); }

} // namespace kernelgen
