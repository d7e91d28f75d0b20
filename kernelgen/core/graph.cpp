#include "core/graph.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <stdexcept>

namespace kernelgen {

int laneCount(Kind kind)
{
    switch (kind) {
    case Kind::V4F32: return 4;
    case Kind::V2F64: return 2;
    case Kind::V4F64: return 4;
    case Kind::V8F32: return 8;
    case Kind::V2F32: return 2;
    case Kind::V8F64: return 8;
    case Kind::V16F32: return 16;
    default: return 1;
    }
}

bool isVector(Kind kind) { return laneCount(kind) > 1; }
bool isSingle(Kind kind)
{
    return kind == Kind::F32 || kind == Kind::V2F32 || kind == Kind::V4F32 || kind == Kind::V8F32 ||
           kind == Kind::V16F32;
}
int registerBytes(Kind kind) { return kind == Kind::V2F32 ? 16 : laneCount(kind) * (isSingle(kind) ? 4 : 8); }
bool isWide(Kind kind) { return registerBytes(kind) > 16; }

Kind wideKind(Kind half)
{
    switch (half) {
    case Kind::F32: return Kind::V2F32;
    case Kind::F64: return Kind::V2F64;
    case Kind::V2F64: return Kind::V4F64;
    case Kind::V4F32: return Kind::V8F32;
    case Kind::V4F64: return Kind::V8F64;
    case Kind::V8F32: return Kind::V16F32;
    default: throw std::logic_error("no vector of two of this kind");
    }
}

Kind halfKind(Kind wide)
{
    switch (wide) {
    case Kind::V2F32: return Kind::F32;
    case Kind::V2F64: return Kind::F64;
    case Kind::V4F64: return Kind::V2F64;
    case Kind::V8F32: return Kind::V4F32;
    case Kind::V8F64: return Kind::V4F64;
    case Kind::V16F32: return Kind::V8F32;
    default: throw std::logic_error("not a vector of two halves");
    }
}

namespace {

// The lanes of a 128-bit result by where each comes from: i < width is
// lane i of a, the rest lane i - width of b.
std::vector<int> lanePattern(Shuffle pattern, int width)
{
    if (width == 2) {
        switch (pattern) {
        case Shuffle::SwapLanes: return {1, 0};
        case Shuffle::UnpackLo: return {0, 2};
        case Shuffle::UnpackHi: return {1, 3};
        default: break;
        }
    } else {
        switch (pattern) {
        case Shuffle::SwapLanes: return {1, 0, 2, 3};
        case Shuffle::UnpackLo: return {0, 4, 1, 5};
        case Shuffle::UnpackHi: return {2, 6, 3, 7};
        case Shuffle::MoveLowHalves: return {0, 1, 4, 5};
        case Shuffle::MoveHighHalves: return {2, 3, 6, 7};
        case Shuffle::EvenLanes: return {0, 2, 4, 6};
        case Shuffle::OddLanes: return {1, 3, 5, 7};
        case Shuffle::EvenLanesLow: return {0, 2, 4, 4};
        case Shuffle::OddLanesLow: return {1, 3, 4, 4};
        default: break;
        }
    }
    throw std::logic_error("no such lane pattern at this lane width");
}

} // namespace

LaneSource shuffleSource(Shuffle pattern, Kind kind, int lane)
{
    const int lanes = laneCount(kind);
    switch (pattern) {
    case Shuffle::LowHalf: return {0, lane};
    case Shuffle::HighHalf: return {0, lane + lanes};
    case Shuffle::Combine: return {lane < lanes / 2 ? 0 : 1, lane % (lanes / 2)};
    case Shuffle::SwapHalves: return {0, (lane + lanes / 2) % lanes};
    default: break;
    }
    const int width = isSingle(kind) ? 4 : 2, base = lane / width * width;
    const int from = lanePattern(pattern, width).at(lane - base);
    return from < width ? LaneSource{0, base + from} : LaneSource{1, base + from - width};
}

namespace {

// Whether two sets of lanes are stored as the same numbers of `kind` (the
// binary128 values of one constant reached by two routes may differ below
// the last stored bit).
bool sameStoredValues(Kind kind, const std::vector<Exact>& a, const std::vector<Exact>& b)
{
    if (a.size() != b.size())
        return false;
    for (size_t l = 0; l < a.size(); ++l) {
        const bool same = isSingle(kind) ? roundToFloat(a[l]) == roundToFloat(b[l])
                                         : roundToDouble(a[l]) == roundToDouble(b[l]);
        if (!same || std::signbit(static_cast<double>(a[l])) != std::signbit(static_cast<double>(b[l])))
            return false;
    }
    return true;
}

} // namespace

void Graph::openSection(Section what)
{
    constexpr size_t kDepth = 2;
    if (openSections_.size() >= kDepth) {
        openSections_.push_back(openSections_.back());
        return;
    }
    sections_.push_back({std::move(what), openedSection(), {-1, -1}});
    openSections_.push_back(static_cast<int>(sections_.size() - 1));
}

void Graph::closeSection() { openSections_.pop_back(); }

int Graph::addSection(Section what, int parent)
{
    sections_.push_back({std::move(what), parent, {-1, -1}});
    return static_cast<int>(sections_.size() - 1);
}

int Graph::sectionsHeld(int section) const
{
    const SectionNode& s = sections_[section];
    return s.pair[0] < 0 ? 1 : sectionsHeld(s.pair[0]) + sectionsHeld(s.pair[1]);
}

int Graph::pairSections(int a, int b)
{
    sections_.push_back({Section{}, -1, {a, b}});
    return static_cast<int>(sections_.size() - 1);
}

Graph::Value Graph::push(Node node)
{
    node.section = openedSection();
    nodes_.push_back(std::move(node));
    return static_cast<Value>(nodes_.size() - 1);
}

Graph::Value Graph::binary(Op op, Value a, Value b)
{
    if (nodes_[a].kind != nodes_[b].kind)
        throw std::logic_error("operands of different types");
    return push(Node{op, nodes_[a].kind, a, b});
}

Graph::Value Graph::load(Kind kind, int offset)
{
    Node node{Op::Load, kind};
    node.offset = offset;
    return push(node);
}

void Graph::store(Value v, int offset)
{
    Node node{Op::Store, nodes_[v].kind, v};
    node.offset = offset;
    push(node);
}

Graph::Value Graph::loadElement(int offset)
{
    Node node{Op::LoadElement, Kind::V4F32};
    node.offset = offset;
    return push(node);
}

void Graph::storeElement(Value v, bool highLanes, int offset)
{
    Node node{highLanes ? Op::StoreHighElement : Op::StoreLowElement, nodes_[v].kind, v};
    node.offset = offset;
    push(node);
}

Graph::Value Graph::constant(const std::string& name, Kind kind, std::vector<Exact> lanes)
{
    // One node per constant, so that each is loaded once.
    for (size_t i = 0; i < nodes_.size(); ++i) {
        if (nodes_[i].op != Op::Constant)
            continue;
        const ConstantDef& known = constants_[nodes_[i].constant];
        if (known.name != name)
            continue;
        if (known.kind != kind || !sameStoredValues(kind, known.lanes, lanes))
            throw std::logic_error("constant " + name + " reused for another value");
        return static_cast<Value>(i);
    }
    constants_.push_back({name, kind, std::move(lanes)});
    const int index = static_cast<int>(constants_.size() - 1);
    Node node{Op::Constant, kind};
    node.constant = index;
    return push(node);
}

Graph::Value Graph::signMask(const std::string& name, Kind kind, std::vector<bool> negativeLanes)
{
    std::vector<Exact> lanes;
    for (bool negative : negativeLanes)
        lanes.push_back(negative ? -Exact(0) : Exact(0));
    const Value v = constant(name, kind, lanes);
    constants_[nodes_[v].constant].signMask = true;
    return v;
}

bool Graph::isZero(Value v) const
{
    const Node& node = nodes_[v];
    if (node.op != Op::Constant || constants_[node.constant].signMask)
        return false;
    for (Exact lane : constants_[node.constant].lanes)
        if (lane != 0)
            return false;
    return true;
}

Graph::Value Graph::scaleArg(Kind kind) { return push(Node{Op::ScaleArg, kind}); }

Graph::Value Graph::shuffle(Shuffle pattern, Value a, Value b)
{
    const Kind kind = nodes_[a].kind;
    Node node{Op::Shuffle,
              pattern == Shuffle::Combine                                   ? wideKind(kind)
              : pattern == Shuffle::LowHalf || pattern == Shuffle::HighHalf ? halfKind(kind)
                                                                            : kind,
              a, b};
    node.pattern = pattern;
    return push(node);
}

Graph::Value Graph::combine(Value low, Value high) { return shuffle(Shuffle::Combine, low, high); }

Graph::Value Graph::half(Value v, bool high) { return shuffle(high ? Shuffle::HighHalf : Shuffle::LowHalf, v); }

Graph::Value Graph::loadHalves(Kind half, int lowOffset, int highOffset)
{
    Node node{Op::Load, wideKind(half)};
    node.offset = lowOffset;
    node.offset2 = highOffset;
    return push(node);
}

void Graph::storeHalves(Value v, int lowOffset, int highOffset)
{
    Node node{Op::Store, nodes_[v].kind, v};
    node.offset = lowOffset;
    node.offset2 = highOffset;
    push(node);
}

Graph::Value Graph::neg(Value a) { return push(Node{Op::Neg, nodes_[a].kind, a}); }
Graph::Value Graph::widen(Value a)
{
    return push(Node{Op::Widen, nodes_[a].kind == Kind::V2F32 ? Kind::V2F64 : Kind::F64, a});
}

Graph::Value Graph::narrow(Value a)
{
    return push(Node{Op::Narrow, nodes_[a].kind == Kind::V2F64 ? Kind::V2F32 : Kind::F32, a});
}

Graph Graph::remapStores(const std::function<int(int)>& cellOf) const
{
    Graph out;
    out.constants_ = constants_;
    out.sections_ = sections_;
    // Stores are sinks: dropping one moves the indices of later nodes only.
    std::vector<int> index(nodes_.size(), -1);
    for (size_t i = 0; i < nodes_.size(); ++i) {
        Node node = nodes_[i];
        if (node.a >= 0)
            node.a = index[node.a];
        if (node.b >= 0)
            node.b = index[node.b];
        if (isStore(node.op)) {
            node.offset = cellOf(node.offset);
            if (node.offset < 0)
                continue;
        }
        out.nodes_.push_back(node);
        index[i] = static_cast<int>(out.nodes_.size() - 1);
    }
    return out;
}

Graph Graph::remapLoads(const std::function<int(int)>& cellOf) const
{
    Graph out = *this;
    for (Node& node : out.nodes_)
        if (isLoad(node.op))
            node.offset = cellOf(node.offset);
    return out;
}

Graph::Value signedSum(Graph& g, Graph::Value a, bool negA, Graph::Value b, bool negB, bool& negOut)
{
    negOut = negA && negB;
    if (negA == negB)
        return g.add(a, b);
    return negB ? g.sub(a, b) : g.sub(b, a);
}

std::vector<bool> Graph::liveNodes() const
{
    std::vector<bool> live(nodes_.size(), false);
    for (size_t i = nodes_.size(); i-- > 0;) {
        const Node& node = nodes_[i];
        if (isStore(node.op))
            live[i] = true;
        if (!live[i])
            continue;
        if (node.a >= 0)
            live[node.a] = true;
        if (node.b >= 0)
            live[node.b] = true;
    }
    return live;
}

// The scale factor, or the factor widened exactly for a binary64 statement.
bool Graph::isScale(Value v) const
{
    const Node& n = nodes_[v];
    return n.op == Op::ScaleArg || (n.op == Op::Widen && nodes_[n.a].op == Op::ScaleArg) ||
           (n.op == Op::Shuffle && n.pattern == Shuffle::Combine && isScale(n.a));
}

OpCounts Graph::countOps() const
{
    OpCounts counts;
    const std::vector<bool> live = liveNodes();
    bool hasSingle = false;
    for (size_t i = 0; i < nodes_.size(); ++i)
        hasSingle = hasSingle || (live[i] && isSingle(nodes_[i].kind));
    for (size_t i = 0; i < nodes_.size(); ++i) {
        if (!live[i])
            continue;
        const Node& node = nodes_[i];
        counts.wide += node.kind == Kind::F64 && node.op != Op::Constant && hasSingle;
        // A paired operation does the work of every section it holds; a
        // wider operation built as such, of as many 128-bit ones as it holds.
        const int work = node.section >= 0 && sections_[node.section].pair[0] >= 0 ? sectionsHeld(node.section)
                                                                                 : std::max(1, registerBytes(node.kind) / 16);
        switch (node.op) {
        case Op::Add:
        case Op::Sub: counts.addSub += work; break;
        case Op::Mul: (isScale(node.b) ? counts.scaleMul : counts.mul) += work; break;
        case Op::Shuffle: counts.shuffles += node.pattern == Shuffle::SwapLanes ? work : 1; break;
        case Op::Xor:
        case Op::Neg: counts.signFlips += work; break;
        case Op::Constant: ++counts.constants; break;
        default:
            counts.loads += isLoad(node.op) ? work : 0;
            counts.stores += isStore(node.op) ? work : 0;
            break;
        }
    }
    return counts;
}

int Graph::storedMagnitudes() const
{
    std::set<double> magnitudes = {0.0, 1.0};
    const std::vector<bool> live = liveNodes();
    for (size_t i = 0; i < nodes_.size(); ++i) {
        if (!live[i] || nodes_[i].op != Op::Constant)
            continue;
        const ConstantDef& c = constants_[nodes_[i].constant];
        if (c.signMask)
            continue;
        for (Exact lane : c.lanes) {
            const Exact m = lane < 0 ? -lane : lane;
            magnitudes.insert(isSingle(c.kind) ? static_cast<double>(roundToFloat(m)) : roundToDouble(m));
        }
    }
    return static_cast<int>(magnitudes.size());
}

} // namespace kernelgen
