// Complex arithmetic of the real families: real and imaginary parts in
// separate scalars of the element type. A part that is -1 is an exact zero
// that no operation touches, so a method run on real input (all imaginary
// parts missing) computes only what real data needs.
//
// The statement rule of binary32 kernels (with RoundingPolicy::doubleRule):
// a statement is one result. One without a product by a constant is
// evaluated in binary32. One with such a product (a product alone, a
// rotation output c*p - s*q, a sum of products between enterSum and
// leaveSum) is evaluated in binary64 from exactly widened operands and
// rounded to binary32 once, when its result is next used as a variable. An
// output's last statement takes the factor and the negation in with it, so
// that the store is its only rounding. Binary64 kernels round every
// operation to binary64.
#pragma once

#include <memory>
#include <set>
#include <string>

#include "arith/complex_arith.h"
#include "core/statements.h"

namespace kernelgen {

class ScalarArith : public DftArith {
public:
    ScalarArith(Graph& graph, Direction direction, Kind element, RoundingPolicy rounding);

    Cx add(Cx a, Cx b) override;
    // A product alone: one statement per part.
    Cx mulReal(Cx a, Trig c) override;
    Cx timesW4(Cx a) override;
    // A general rotation is 4 products and 2 sums, each output part one
    // statement; an odd multiple of pi/4 takes its 2 products first, each a
    // statement, then binary32 sums.
    Cx rotate(Cx a, int n, int e) override;
    Cx zero() override { return Cx{}; }
    // a (re + i im) with binary64 constants: 4 products and 2 sums, each
    // output part one statement (or part of the open one a is in); a
    // missing or zero part costs nothing.
    Cx mulComplex(Cx a, Exact re, Exact im, const std::string& name) override;
    // The opposite direction on the same graph, sharing the statements.
    std::unique_ptr<DftArith> reversed() const override;
    Cx enterSum(Cx a) override;
    Cx leaveSum(Cx a) override;

    // v as a variable of the element type: a finished statement is
    // rounded, once.
    Graph::Value variable(Graph::Value v);
    // The same arithmetic on a graph of its own (a block to transform apart).
    std::unique_ptr<ScalarArith> onGraph(Graph& graph) const;
    Kind element() const { return element_; }

    // Output: v (negated as 0 - v after the factor where `negative`) times
    // the factor into `cell` of dst.
    void storeOutput(Graph::Value v, bool negative, int cell);
    // The constant +0.0 into `cell`, not computed.
    void storeZero(int cell);

private:
    // The statements of the graph and which of them have ended, shared by
    // the arithmetics of both directions on one graph.
    struct Statements {
        explicit Statements(Graph& g) : set(g) {}
        StatementSet set;
        std::set<Graph::Value> finished;
        Graph::Value scale = -1;
    };
    ScalarArith(Graph& graph, Direction direction, Kind element, RoundingPolicy rounding,
                std::shared_ptr<Statements> statements);

    bool wideRule() const { return element_ == Kind::F32 && rounding_.wideSums(); }
    bool inStatement(Graph::Value v) const { return graph_.kind(v) != element_ && !s_->finished.count(v); }
    // v as an operand of a statement with products: widened exactly.
    Graph::Value operand(Graph::Value v);
    Graph::Value finish(Graph::Value v);
    Graph::Value constant(Exact magnitude, const std::string& name);
    Graph::Value partSum(Graph::Value a, bool negA, Graph::Value b, bool negB, bool& negOut);
    Graph::Value partProduct(Graph::Value v, Exact magnitude, const std::string& name);
    Graph::Value scale();
    Graph::Value wideScale();

    Kind element_;
    std::shared_ptr<Statements> s_;
};

} // namespace kernelgen
