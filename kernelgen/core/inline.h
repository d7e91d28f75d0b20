// Copying one scalar graph into another: a block built and transformed on
// its own (the adjoint of a forward transform) becomes part of a kernel.
#pragma once

#include <map>
#include <vector>

#include "core/graph.h"

namespace kernelgen {

// A value with a pending sign, as the builders hand them on.
struct SignedValue {
    Graph::Value value = -1;
    bool negative = false;
};

// The sections of `sub` as sections of `target`, under the section open
// there, made as a copy first reaches them.
class SectionImport {
public:
    SectionImport(Graph& target, const Graph& sub);

    // Copied operations of sub's `section` (-1: none) go to its import.
    class Scope {
    public:
        Scope(SectionImport& import, int section);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        Graph& target_;
        bool entered_;
    };

private:
    int index(int section);

    Graph& target_;
    const Graph& sub_;
    int parent_;
    std::vector<int> index_;
};

// Copies the live operations of `sub` into `target`: its load at offset o
// reads inputs.at(o), its store at offset o gives the result at o. Pending
// signs pass through as the arithmetics pass them (a negated operand turns a
// sum into a difference), so the copy adds no negation of its own and a
// result may come back negated. An input whose value is -1 is an exact
// zero that drops out of the copy. `sub` holds loads, stores, constants, sums,
// products by constants, negations and type changes only.
std::map<int, SignedValue> inlineGraph(Graph& target, const Graph& sub, const std::map<int, SignedValue>& inputs);

} // namespace kernelgen
