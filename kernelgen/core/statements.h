// Statements of binary32 kernels formed from the shape of a block. A block
// built apart in binary64 (the adjoint of a forward transform, whose data flow
// backwards so that no builder brackets its sums) is copied into a binary32
// kernel, and its products by constants grouped into statements:
//
//  - a statement is a product by a constant and every sum or product that
//    takes its value as the only use, up to a value used twice or stored;
//    it is evaluated in binary64 from exactly widened binary32 operands and
//    rounded to binary32 once, where it ends;
//  - a sum of binary32 variables without a product is a binary32 sum;
//  - the last operation before a store, if a sum, adds two rounded values:
//    an output is rounded at its last sum, not inside a wider statement.
//
// So a dot product with constants (the cosine sums of direct folding) is
// one statement, and a product that feeds a butterfly is rounded before it.
#pragma once

#include <map>
#include <vector>

#include "core/inline.h"

namespace kernelgen {

// The statements of one binary32 kernel graph, as the builders make them:
// each binary32 variable is widened exactly once for all the statements it
// enters, and each statement ends in one narrowing, made once.
class StatementSet {
public:
    explicit StatementSet(Graph& g) : g_(g) {}
    // A binary32 variable as a binary64 operand: its exact widening.
    Graph::Value operand(Graph::Value variable);
    // The end of the statement whose binary64 result is `wide`: its rounding.
    Graph::Value end(Graph::Value wide);

private:
    Graph& g_;
    std::map<Graph::Value, Graph::Value> widened_;
    std::map<Graph::Value, Graph::Value> rounded_;
};

// A statement as a graph holds it: its one narrowing, and the binary64
// operations that reach it through binary64 operations only (from the
// widenings of its operands and its constants).
struct Statement {
    Graph::Value narrowing;
    std::vector<Graph::Value> operations;
};

// Every statement of g that reaches a store, in the order of the graph.
std::vector<Statement> statementsOf(const Graph& g);

// Copies `sub` into `target` as inlineGraph does, but in the element type
// `element`: for binary64 the copy itself, for binary32 the statements
// above. `sub` holds binary64 loads, stores, sums, negations and products
// by binary64 constants only.
std::map<int, SignedValue> inlineAsStatements(Graph& target, const Graph& sub,
                                              const std::map<int, SignedValue>& inputs, Kind element);

} // namespace kernelgen
