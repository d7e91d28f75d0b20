#include "passes/pairing.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "passes/schedule.h"

namespace kernelgen {

namespace {

bool isLeaf(const Node& n) { return n.op == Op::Constant || n.op == Op::ScaleArg; }

// Operations that act on each half of a vector of two as on one value of
// the half's kind.
bool pairable(const Node& n, const std::vector<Kind>& halves)
{
    if (std::find(halves.begin(), halves.end(), n.kind) == halves.end())
        return false;
    switch (n.op) {
    // Not already two halves from two places, unless those are 128-bit
    // vectors: a pair of such loads (stores) is four 128-bit moves.
    case Op::Load:
    case Op::Store: return n.offset2 < 0 || isVector(halfKind(n.kind));
    case Op::Add:
    case Op::Sub:
    case Op::Mul: return true;
    case Op::Xor: return isVector(n.kind);
    case Op::Neg:
    case Op::Widen:
    case Op::Narrow: return !isVector(n.kind);
    case Op::Shuffle:
        switch (n.pattern) {
        case Shuffle::SwapLanes:
        case Shuffle::UnpackLo:
        case Shuffle::UnpackHi:
        case Shuffle::MoveLowHalves:
        case Shuffle::MoveHighHalves:
        case Shuffle::EvenLanes:
        case Shuffle::OddLanes: return true;
        default: return false;
        }
    default: return false;
    }
}

// The sections of a graph, their operations in order (leaves left out: a
// constant serves every section that names it), and which can be paired;
// with `commute`, a sum's operands match in either order.
struct Sections {
    std::vector<std::vector<int>> nodes;
    std::vector<std::string> shape;  // operations and operands in order, each difference as a sum
    std::vector<std::string> exact;  // the operations alone: with the shape, the section as it is
    std::vector<std::vector<bool>> dependsOn; // [b][a]: b uses a value of a
    std::vector<bool> commuted; // by node: a sum whose shape takes its operands in the other order
};

Sections sectionsOf(const Graph& g, const std::vector<Kind>& halves, bool commute)
{
    const std::vector<bool> live = g.liveNodes();
    const size_t count = g.sections().size();
    Sections s{std::vector<std::vector<int>>(count), std::vector<std::string>(count), std::vector<std::string>(count),
               std::vector<std::vector<bool>>(count, std::vector<bool>(count, false)),
               std::vector<bool>(g.nodes().size(), false)};
    std::vector<int> local(g.nodes().size(), -1);
    std::vector<bool> usable(count, true);
    std::vector<std::set<int>> reaches(g.nodes().size()); // sections each value depends on
    for (size_t i = 0; i < g.nodes().size(); ++i) {
        const Node& n = g.nodes()[i];
        if (!live[i])
            continue;
        for (int operand : {n.a, n.b})
            if (operand >= 0)
                reaches[i].insert(reaches[operand].begin(), reaches[operand].end());
        if (n.section < 0 || isLeaf(n))
            continue;
        const int position = static_cast<int>(s.nodes[n.section].size());
        for (int operand : {n.a, n.b}) {
            if (operand < 0)
                continue;
            // An operation that uses an earlier one of another section
            // directly (the real part of a product reads the imaginary
            // parts) pairs without a cycle: the paired operation's operand
            // is made first.
            // An operand of its own section brought its dependences with it.
            const int from = g.nodes()[operand].section;
            if (from == n.section && local[operand] >= 0)
                continue;
            const bool earlier = from >= 0 && local[operand] >= 0 && local[operand] < position;
            for (int other : reaches[operand])
                if (other != n.section && !(earlier && other == from))
                    s.dependsOn[n.section][other] = true;
        }
        reaches[i].insert(n.section);
        usable[n.section] = usable[n.section] && pairable(n, halves);
        local[i] = position;
        s.nodes[n.section].push_back(static_cast<int>(i));
        // A sum pairs with a difference: a - b is a + (-b) exactly, and
        // b - a is (-a) + b, so a sum's operands can be taken in either
        // order (the real part of a complex product, re*c - im*s, beside
        // the imaginary part, re*s + im*c).
        const bool sum = n.op == Op::Add || n.op == Op::Sub;
        s.exact[n.section] += std::to_string(static_cast<int>(n.op)) + ";";
        std::string& shape = s.shape[n.section];
        shape += std::to_string(static_cast<int>(sum ? Op::Add : n.op)) + ":" +
                 std::to_string(static_cast<int>(n.pattern)) + ":" + std::to_string(static_cast<int>(n.kind));
        std::array<std::string, 2> operands;
        for (int k = 0; k < 2; ++k) {
            const int operand = k == 0 ? n.a : n.b;
            if (operand < 0)
                continue;
            const Node& o = g.nodes()[operand];
            if (o.section == n.section && !isLeaf(o))
                operands[k] = ",L" + std::to_string(local[operand]);
            else if (o.op == Op::ScaleArg)
                operands[k] = ",S";
            else if (o.op == Op::Constant)
                operands[k] = g.constants()[o.constant].signMask ? ",M" : ",C";
            else
                operands[k] = ",E";
        }
        s.commuted[i] = commute && sum && operands[1] < operands[0];
        shape += s.commuted[i] ? operands[1] + operands[0] : operands[0] + operands[1];
        shape += ";";
    }
    for (size_t i = 0; i < count; ++i)
        if (!usable[i] || s.nodes[i].empty())
            s.shape[i].clear();
    return s;
}

// Which section pairs with which: sections of one shape in the order of
// their first operation, two by two, where neither uses the other; those
// with the same operations first, then the rest, sums beside differences.
std::vector<std::pair<int, int>> choosePairs(const Sections& s, const std::set<std::pair<int, int>>& refused)
{
    std::vector<int> order;
    for (size_t i = 0; i < s.nodes.size(); ++i)
        if (!s.shape[i].empty())
            order.push_back(static_cast<int>(i));
    std::sort(order.begin(), order.end(), [&](int a, int b) { return s.nodes[a][0] < s.nodes[b][0]; });
    std::vector<std::pair<int, int>> pairs;
    std::vector<bool> taken(s.nodes.size(), false);
    const auto pairAlike = [&](auto key) {
        std::map<std::string, std::vector<int>> byKey;
        for (int i : order)
            if (!taken[i])
                byKey[key(i)].push_back(i);
        for (const auto& [shape, list] : byKey) {
            for (size_t i = 0; i + 1 < list.size();) {
                const int a = list[i], b = list[i + 1];
                if (!s.dependsOn[b][a] && !s.dependsOn[a][b] && !refused.count({a, b})) {
                    pairs.push_back({a, b});
                    taken[a] = taken[b] = true;
                    i += 2;
                } else {
                    ++i;
                }
            }
        }
    };
    pairAlike([&](int i) { return s.shape[i] + "|" + s.exact[i]; });
    pairAlike([&](int i) { return s.shape[i]; });
    return pairs;
}

struct Cycle {
    std::pair<int, int> sections;
};

// Copies a graph with the chosen sections paired.
class Pairer {
public:
    Pairer(const Graph& g, const Sections& s, const std::vector<std::pair<int, int>>& pairs)
        : g_(g), commuted_(s.commuted), single_(g.nodes().size(), -1), role_(g.nodes().size(), {-1, false})
    {
        out_.copySectionsOf(g);
        for (const auto& [a, b] : pairs) {
            const int section = out_.pairSections(a, b);
            for (size_t k = 0; k < s.nodes[a].size(); ++k) {
                const int id = static_cast<int>(members_.size());
                members_.push_back({s.nodes[a][k], s.nodes[b][k]});
                sectionOf_.push_back({a, b});
                pairedSection_.push_back(section);
                role_[s.nodes[a][k]] = {id, false};
                role_[s.nodes[b][k]] = {id, true};
            }
        }
        value_.assign(members_.size(), -1);
        building_.assign(members_.size(), false);
    }

    Graph run()
    {
        const std::vector<bool> live = g_.liveNodes();
        for (size_t i = 0; i < g_.nodes().size(); ++i) {
            const Node& n = g_.nodes()[i];
            if (!live[i] || !isStore(n.op))
                continue;
            if (role_[i].id >= 0)
                pair(role_[i].id);
            else if (n.op == Op::Store)
                place(i, [&] { return moved(n, single(n.a)); });
            else
                place(i, [&] { out_.storeElement(single(n.a), n.op == Op::StoreHighElement, n.offset); return -1; });
        }
        return std::move(out_);
    }

private:
    struct Role {
        int id;
        bool high;
    };

    // A copied node keeps its section; the paired operations made for its
    // operands join it, the copies of its operands keep theirs (a load
    // outside every section stays outside).
    template <class Make>
    int place(size_t original, Make make)
    {
        const size_t before = out_.nodes().size();
        const int v = make();
        const int section = g_.nodes()[original].section;
        if (section >= 0)
            for (size_t i = before; i < out_.nodes().size(); ++i)
                if (out_.nodes()[i].section < 0 && !copies_.count(static_cast<int>(i)))
                    out_.placeInSection(static_cast<int>(i), section);
        if (v >= 0)
            copies_.insert(v);
        return v;
    }

    int constantOf(const ConstantDef& c, const std::string& name, Kind kind, const std::vector<Exact>& lanes)
    {
        if (!c.signMask)
            return out_.constant(name, kind, lanes);
        std::vector<bool> negative;
        for (Exact l : lanes)
            negative.push_back(__builtin_signbit(static_cast<double>(l)));
        return out_.signMask(name, kind, negative);
    }

    // The original value v as a value of its own kind in the copy.
    int single(int v)
    {
        if (single_[v] >= 0)
            return single_[v];
        const Node& n = g_.nodes()[v];
        if (role_[v].id >= 0)
            return single_[v] = out_.half(pair(role_[v].id), role_[v].high);
        return single_[v] = place(v, [&] {
                   const int b = n.b >= 0 ? single(n.b) : -1;
                   const int a = n.a >= 0 ? single(n.a) : -1;
                   switch (n.op) {
                   case Op::Load: return moved(n, -1);
                   case Op::LoadElement: return out_.loadElement(n.offset);
                   case Op::Constant: {
                       const ConstantDef& c = g_.constants()[n.constant];
                       return constantOf(c, c.name, c.kind, c.lanes);
                   }
                   case Op::ScaleArg: return out_.scaleArg(n.kind);
                   case Op::Add: return out_.add(a, b);
                   case Op::Sub: return out_.sub(a, b);
                   case Op::Mul: return out_.mul(a, b);
                   case Op::Xor: return out_.bitXor(a, b);
                   case Op::Neg: return out_.neg(a);
                   case Op::Widen: return out_.widen(a);
                   case Op::Narrow: return out_.narrow(a);
                   case Op::Shuffle: return out_.shuffle(n.pattern, a, b);
                   default: throw std::logic_error("no copy of this operation in the pairing pass");
                   }
               });
    }

    // Operands x (low half) and y (high half) as one vector of two halves.
    int both(int x, int y)
    {
        if (role_[x].id >= 0 && role_[x].id == role_[y].id && role_[x].high != role_[y].high) {
            return role_[y].high ? pair(role_[x].id) : swapped(role_[x].id);
        }
        const auto known = combined_.find({x, y});
        if (known != combined_.end())
            return known->second;
        const Node& nx = g_.nodes()[x];
        const Node& ny = g_.nodes()[y];
        if (nx.op == Op::Constant && ny.op == Op::Constant) {
            const ConstantDef& cx = g_.constants()[nx.constant];
            const ConstantDef& cy = g_.constants()[ny.constant];
            if (cx.signMask == cy.signMask) {
                std::vector<Exact> lanes = cx.lanes;
                lanes.insert(lanes.end(), cy.lanes.begin(), cy.lanes.end());
                const std::string name = x == y ? cx.name + "Twice" : cx.name + "_" + cy.name.substr(1);
                return combined_[{x, y}] = constantOf(cx, name, wideKind(cx.kind), lanes);
            }
        }
        const int high = single(y);
        return combined_[{x, y}] = out_.combine(single(x), high);
    }

    // The load (value < 0) or the store of `value` that n makes, at its
    // one or two places.
    int moved(const Node& n, int value)
    {
        if (value < 0)
            return n.offset2 >= 0 ? out_.loadHalves(halfKind(n.kind), n.offset, n.offset2) : out_.load(n.kind, n.offset);
        if (n.offset2 >= 0)
            out_.storeHalves(value, n.offset, n.offset2);
        else
            out_.store(value, n.offset);
        return -1;
    }

    // The pair `id` with its halves swapped: a real part beside the
    // imaginary one it reads. A move between the lanes, made where it is
    // used and left outside the paired section.
    int swapped(int id)
    {
        const auto known = swapped_.find(id);
        if (known != swapped_.end())
            return known->second;
        const Kind kind = out_.kind(pair(id));
        const int v = out_.shuffle(isVector(halfKind(kind)) ? Shuffle::SwapHalves : Shuffle::SwapLanes, pair(id));
        gathers_.insert(v);
        return swapped_[id] = v;
    }

    // Which halves of a vector of two halves enter a sum negated.
    struct Halves {
        bool low;
        bool high;
        bool any() const { return low || high; }
        Halves flipped() const { return {!low, !high}; }
    };

    // The sum of a and b, each negated in the halves named: a - b is
    // a + (-b) and b - a is (-a) + b exactly, so a sum, a difference and a
    // difference taken the other way share one operation. Of a + b, a - b
    // and b - a, the form with the fewest sign flips; ties go to the low
    // member's own operation.
    int pairedSum(int a, Halves negA, int b, Halves negB, bool lowIsDifference)
    {
        const int plus = negA.any() + negB.any();
        const int minus = negA.any() + negB.flipped().any();
        const int backwards = negB.any() + negA.flipped().any();
        if (backwards < std::min(plus, minus)) {
            const int left = negated(b, negB);
            return out_.sub(left, negated(a, negA.flipped()));
        }
        if (minus < plus || (minus == plus && lowIsDifference)) {
            const int left = negated(a, negA);
            return out_.sub(left, negated(b, negB.flipped()));
        }
        const int left = negated(a, negA);
        return out_.add(left, negated(b, negB));
    }

    // v with the halves named negated, made once for every pair that takes it.
    int negated(int v, Halves which)
    {
        if (!which.any())
            return v;
        const auto key = std::make_tuple(v, which.low, which.high);
        const auto known = negated_.find(key);
        if (known != negated_.end())
            return known->second;
        return negated_[key] = out_.bitXor(v, halvesMask(halfKind(out_.kind(v)), which));
    }

    // The sign bits of the halves named of a vector of two halves of `half`.
    int halvesMask(Kind half, Halves which)
    {
        const int lanes = laneCount(half);
        std::vector<bool> negative(2 * lanes, which.low);
        std::fill(negative.begin() + lanes, negative.end(), which.high);
        const std::string name = std::string("kNegate") + (!which.low ? "High" : !which.high ? "Low" : "Both") +
                                 (isSingle(half) ? "Single" : "Double") + (lanes > 1 ? "Pairs" : "") +
                                 (isWide(half) ? "Wide" : "");
        return out_.signMask(name, wideKind(half), negative);
    }

    int pair(int id)
    {
        if (value_[id] >= 0)
            return value_[id];
        if (building_[id])
            throw Cycle{sectionOf_[id]};
        building_[id] = true;
        const Node& n = g_.nodes()[members_[id][0]];
        const Node& m = g_.nodes()[members_[id][1]];
        const size_t before = out_.nodes().size();
        // A sum whose shape matched with its operands in the other order
        // takes the high member's operands swapped.
        const bool sum = n.op == Op::Add || n.op == Op::Sub;
        const bool reversed = sum && commuted_[members_[id][0]] != commuted_[members_[id][1]];
        const int b = n.b >= 0 ? both(n.b, reversed ? m.a : m.b) : -1;
        const int a = n.a >= 0 ? both(n.a, reversed ? m.b : m.a) : -1;
        int v = -1;
        switch (n.op) {
        // 256-bit halves move each on its own, at its one or two places:
        // an insert from memory, an extract to it.
        case Op::Load:
            v = isWide(n.kind) ? out_.combine(moved(n, -1), moved(m, -1)) : out_.loadHalves(n.kind, n.offset, m.offset);
            break;
        case Op::Store:
            if (isWide(n.kind)) {
                moved(n, out_.half(a, false));
                moved(m, out_.half(a, true));
            } else {
                out_.storeHalves(a, n.offset, m.offset);
            }
            v = 0;
            break;
        case Op::Add:
        case Op::Sub: {
            const bool highSub = m.op == Op::Sub;
            v = pairedSum(a, {false, reversed && highSub}, b, {n.op == Op::Sub, !reversed && highSub},
                          n.op == Op::Sub);
            break;
        }
        case Op::Mul: v = out_.mul(a, b); break;
        case Op::Xor: v = out_.bitXor(a, b); break;
        case Op::Neg: v = out_.bitXor(a, halvesMask(n.kind, {true, true})); break;
        case Op::Widen: v = out_.widen(a); break;
        case Op::Narrow: v = out_.narrow(a); break;
        case Op::Shuffle: v = out_.shuffle(n.pattern, a, b); break;
        default: throw std::logic_error("no pair of this operation");
        }
        // The operation joins the paired section; the halves it gathers
        // from outside stay outside, so that paired sections can pair again.
        for (size_t i = before; i < out_.nodes().size(); ++i) {
            const Node& made = out_.nodes()[i];
            if (made.kind == wideKind(n.kind) && made.section < 0 && made.pattern != Shuffle::Combine &&
                !gathers_.count(static_cast<int>(i)))
                out_.placeInSection(static_cast<int>(i), pairedSection_[id]);
        }
        building_[id] = false;
        return value_[id] = v;
    }

    const Graph& g_;
    const std::vector<bool>& commuted_;
    Graph out_;
    std::vector<int> single_;
    std::vector<Role> role_;
    std::vector<std::array<int, 2>> members_;
    std::vector<std::pair<int, int>> sectionOf_;
    std::vector<int> pairedSection_;
    std::vector<int> value_;
    std::vector<bool> building_;
    std::map<std::pair<int, int>, int> combined_;
    std::map<int, int> swapped_;
    std::map<std::tuple<int, bool, bool>, int> negated_;
    std::set<int> gathers_;
    std::set<int> copies_;
};

bool arithmetic(const Node& n)
{
    switch (n.op) {
    case Op::Add:
    case Op::Sub:
    case Op::Mul:
    case Op::Xor:
    case Op::Neg: return true;
    case Op::Shuffle: return n.pattern != Shuffle::Combine && n.pattern != Shuffle::LowHalf && n.pattern != Shuffle::HighHalf;
    default: return false;
    }
}

// The live operations of g that compute.
int arithmeticCount(const Graph& g)
{
    const std::vector<bool> live = g.liveNodes();
    int count = 0;
    for (size_t i = 0; i < g.nodes().size(); ++i)
        count += live[i] && arithmetic(g.nodes()[i]);
    return count;
}

// What a move between the halves of a `wide` vector costs: one operation;
// two between the 256-bit halves of a 512-bit vector, which take the one
// shuffle port that 512-bit arithmetic shares on AVX-512 processors.
// Counted as one, 64fc 53, 56 and 64 paired with 19 to 34 more shuffles
// per call and ran slower; counted as two, 64fc 52 (a third fewer
// arithmetic operations, as many shuffles) and 55 pair, and 53, 56 and 64
// stay at 256 bits.
int moveCost(Kind wide) { return registerBytes(wide) == 64 ? 2 : 1; }

// Operations the pairing saves against the moves between halves it adds:
// a half moved from or to memory costs nothing (an insert from memory is a
// load, an extract to memory a store), between registers moveCost, and the
// low half is the register itself. Each paired section's own
// balance charges it the moves into the vectors it uses first and out of
// the vectors it makes.
struct Saving {
    int total = 0;
    std::map<int, int> bySection; // the paired sections of this pass
};

Saving saving(const Graph& g, const Graph& paired)
{
    const std::vector<bool> live = paired.liveNodes();
    const size_t count = paired.nodes().size();
    std::vector<bool> onlyStored(count, true);
    std::vector<int> firstUser(count, -1);
    for (size_t i = 0; i < count; ++i) {
        const Node& n = paired.nodes()[i];
        for (int operand : {n.a, n.b})
            if (live[i] && operand >= 0) {
                onlyStored[operand] = onlyStored[operand] && n.op == Op::Store;
                if (firstUser[operand] < 0)
                    firstUser[operand] = static_cast<int>(i);
            }
    }
    Saving s;
    const auto charge = [&](int node, int amount) {
        const int section = node < 0 ? -1 : paired.nodes()[node].section;
        if (section >= static_cast<int>(g.sections().size()))
            s.bySection[section] += amount;
    };
    s.total = arithmeticCount(g) - arithmeticCount(paired);
    for (size_t i = 0; i < count; ++i) {
        const Node& n = paired.nodes()[i];
        if (!live[i])
            continue;
        if (arithmetic(n))
            charge(static_cast<int>(i), 1);
        if (n.op != Op::Shuffle)
            continue;
        if (n.pattern == Shuffle::Combine) {
            const Op high = paired.nodes()[n.b].op;
            if (high != Op::Load && high != Op::Constant) {
                s.total -= moveCost(n.kind);
                charge(firstUser[i], -moveCost(n.kind));
            }
        }
        if (n.pattern == Shuffle::HighHalf && !onlyStored[i]) {
            s.total -= moveCost(paired.nodes()[n.a].kind);
            charge(n.a, -moveCost(paired.nodes()[n.a].kind));
        }
    }
    return s;
}

struct Pairing {
    Graph graph;
    int saving = 0;
};

Pairing bestPairing(const Graph& g, const Sections& s, int registers)
{
    std::set<std::pair<int, int>> refused;
    // Pairs that cost more moves than they save are refused one at a time,
    // the worst first; the best whole is kept. A whole that would spill
    // more values beyond the registers than the graph does is charged a
    // store and a load for each.
    Pairing best{g, 0};
    int spilledBefore = -1;
    for (;;) {
        const std::vector<std::pair<int, int>> pairs = choosePairs(s, refused);
        if (pairs.empty())
            return best;
        try {
            Graph paired = Pairer(g, s, pairs).run();
            const Saving saved = saving(g, paired);
            int worst = -1;
            for (const auto& [section, balance] : saved.bySection)
                if (balance <= 0 && (worst < 0 || balance < saved.bySection.at(worst)))
                    worst = section;
            if (worst >= 0) {
                const std::array<int, 2> members = paired.sections()[worst].pair;
                refused.insert({members[0], members[1]});
            }
            if (saved.total > best.saving) {
                if (spilledBefore < 0)
                    spilledBefore = spills(g, registers);
                const int total = saved.total - 2 * std::max(0, spills(paired, registers) - spilledBefore);
                if (total > best.saving)
                    best = {std::move(paired), total};
            }
            if (worst < 0)
                return best;
        } catch (const Cycle& cycle) {
            refused.insert(cycle.sections);
        }
    }
}

// The graph with each section nested deeper than `levels` merged into its
// ancestor at that depth: at two levels, the first-stage groups of a join
// inside the transposed road of an inverse kernel take the steps of the
// convolution forms they run (spectrum products, inner transforms) into
// themselves; at one, the groups of a 32fc stage take their real and
// imaginary parts back. `moved` says whether any operation changed section.
Graph mergedBelow(const Graph& g, size_t levels, bool& moved)
{
    Graph out = g;
    moved = false;
    for (size_t i = 0; i < g.nodes().size(); ++i) {
        std::vector<int> chain; // the node's section and its ancestors, innermost first
        for (int s = g.nodes()[i].section; s >= 0; s = g.sections()[s].parent)
            chain.push_back(s);
        if (chain.size() > levels) {
            out.placeInSection(static_cast<int>(i), chain[chain.size() - levels]);
            moved = true;
        }
    }
    return out;
}

} // namespace

Graph pairSections(const Graph& g, const std::vector<Kind>& halves, int registers)
{
    // Besides the strict match over the method's sections: sums taken in
    // either order, which match more sections (but new pairs can take
    // partners from pairs that saved more), and both matches over the
    // sections merged two levels deep, where whole groups pair instead of
    // their steps one by one with moves between, and one level deep, where
    // 32fc groups pair with each other rather than their real parts with
    // their imaginary ones. The whole that the cost model rates highest is
    // kept, the first on a tie. A search whose sections are those of one
    // already made would find the same whole: it is left out.
    Pairing best{g, 0};
    const auto search = [&](const Graph& from) {
        const Sections strict = sectionsOf(from, halves, false);
        Pairing other = bestPairing(from, strict, registers);
        if (other.saving > best.saving)
            best = std::move(other);
        const Sections commuting = sectionsOf(from, halves, true);
        if (commuting.shape == strict.shape)
            return;
        other = bestPairing(from, commuting, registers);
        if (other.saving > best.saving)
            best = std::move(other);
    };
    search(g);
    for (size_t levels : {2, 1}) {
        bool moved = false;
        const Graph merged = mergedBelow(g, levels, moved);
        if (moved)
            search(merged);
    }
    return std::move(best.graph);
}

} // namespace kernelgen
