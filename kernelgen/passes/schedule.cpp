#include "passes/schedule.h"

#include <algorithm>
#include <tuple>

namespace kernelgen {

namespace {

// Constants and the scale are read from memory where they are used, so they
// hold no register of their own.
bool holdsRegister(const Node& n) { return !isStore(n.op) && n.op != Op::Constant && n.op != Op::ScaleArg; }

std::vector<int> builderOrder(const std::vector<bool>& live)
{
    std::vector<int> order;
    for (size_t i = 0; i < live.size(); ++i)
        if (live[i])
            order.push_back(static_cast<int>(i));
    return order;
}

// Whether every load of `order` comes before its first store.
bool loadsFirst(const Graph& g, const std::vector<int>& order)
{
    bool stored = false;
    for (int v : order) {
        if (stored && isLoad(g.nodes()[v].op))
            return false;
        stored = stored || isStore(g.nodes()[v].op);
    }
    return true;
}

// How many operands of `n` are `v`.
int usesOf(const Node& n, int v) { return (n.a == v) + (n.b == v); }

// The most values that hold a register at once when `order` is emitted,
// and how many values were made while more than `registers` were held.
struct Pressure {
    int most = 0;
    int beyond = 0;
};

Pressure pressure(const Graph& g, const std::vector<int>& order, int registers)
{
    const std::vector<Node>& nodes = g.nodes();
    std::vector<int> lastUse(nodes.size(), -1);
    for (size_t t = 0; t < order.size(); ++t)
        for (int o : {nodes[order[t]].a, nodes[order[t]].b})
            if (o >= 0)
                lastUse[o] = static_cast<int>(t);
    int liveNow = 0;
    Pressure p;
    std::vector<int> dyingAt(order.size(), 0);
    for (size_t t = 0; t < order.size(); ++t) {
        if (holdsRegister(nodes[order[t]])) {
            ++liveNow;
            ++dyingAt[lastUse[order[t]]];
            p.beyond += liveNow > registers;
        }
        p.most = std::max(p.most, liveNow);
        liveNow -= dyingAt[t];
    }
    return p;
}

// Position of each node in a depth-first post-order walk from the stores, in
// store order: the order in which evaluating one output after another would
// first need it.
std::vector<int> depthFirstPosition(const Graph& g, const std::vector<bool>& live)
{
    const std::vector<Node>& nodes = g.nodes();
    std::vector<int> position(nodes.size(), -1);
    int next = 0;
    std::vector<std::pair<int, bool>> stack; // node, operands already pushed
    for (size_t s = 0; s < nodes.size(); ++s) {
        if (!live[s] || !isStore(nodes[s].op))
            continue;
        stack.push_back({static_cast<int>(s), false});
        while (!stack.empty()) {
            auto [v, expanded] = stack.back();
            stack.pop_back();
            if (position[v] >= 0)
                continue;
            if (expanded) {
                position[v] = next++;
                continue;
            }
            stack.push_back({v, true});
            for (int o : {nodes[v].b, nodes[v].a})
                if (o >= 0 && position[o] < 0)
                    stack.push_back({o, false});
        }
    }
    return position;
}

// Top-down list scheduling: of the nodes whose operands are placed, take the
// one that frees the most registers (operands at their last use, less the
// value it makes); on a tie, the one the depth-first walk needs first, so
// that the work of one output is finished before the next begins. Constants
// count as values here too, which places each just before its first use.
// Stores wait for every load.
std::vector<int> pressureOrder(const Graph& g, const std::vector<bool>& live)
{
    const std::vector<Node>& nodes = g.nodes();
    const std::vector<int> position = depthFirstPosition(g, live);
    std::vector<int> usesLeft(nodes.size(), 0), operandsLeft(nodes.size(), 0);
    std::vector<std::vector<int>> users(nodes.size());
    int loadsLeft = 0;
    for (size_t i = 0; i < nodes.size(); ++i) {
        if (!live[i])
            continue;
        for (int o : {nodes[i].a, nodes[i].b})
            if (o >= 0) {
                ++usesLeft[o];
                ++operandsLeft[i];
                users[o].push_back(static_cast<int>(i));
            }
        loadsLeft += isLoad(nodes[i].op);
    }
    std::vector<int> ready, order;
    for (size_t i = 0; i < nodes.size(); ++i)
        if (live[i] && operandsLeft[i] == 0)
            ready.push_back(static_cast<int>(i));
    while (!ready.empty()) {
        size_t best = ready.size();
        std::tuple<int, int> bestKey;
        for (size_t r = 0; r < ready.size(); ++r) {
            const Node& n = nodes[ready[r]];
            if (isStore(n.op) && loadsLeft > 0)
                continue;
            int freed = n.a >= 0 && usesLeft[n.a] == usesOf(n, n.a);
            freed += n.b >= 0 && n.b != n.a && usesLeft[n.b] == usesOf(n, n.b);
            const std::tuple<int, int> key{freed - !isStore(n.op), -position[ready[r]]};
            if (best == ready.size() || key > bestKey) {
                best = r;
                bestKey = key;
            }
        }
        const int v = ready[best];
        ready.erase(ready.begin() + static_cast<long>(best));
        order.push_back(v);
        loadsLeft -= isLoad(nodes[v].op);
        for (int o : {nodes[v].a, nodes[v].b})
            if (o >= 0)
                --usesLeft[o];
        for (int u : users[v])
            if (--operandsLeft[u] == 0)
                ready.push_back(u);
    }
    return order;
}

} // namespace

std::vector<int> emissionOrder(const Graph& g, int registers)
{
    const std::vector<bool> live = g.liveNodes();
    std::vector<int> order = builderOrder(live);
    // When the builder's order fits the registers, the compiler allocates it
    // well, and reordering only adds register copies; a pass may have made
    // a load after a store, though.
    if (pressure(g, order, registers).most <= registers && loadsFirst(g, order))
        return order;
    return pressureOrder(g, live);
}

int spills(const Graph& g, int registers) { return pressure(g, emissionOrder(g, registers), registers).beyond; }

} // namespace kernelgen
