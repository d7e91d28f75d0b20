// Where a kernel rounds, apart from what it computes. A method builder
// writes its arithmetic once; the kernel's rounding policy decides in which
// type each part of it is formed. By default every operation rounds to the
// element type. The double rule of the scalar binary32 codelets forms a sum
// of products with constants in binary64 and rounds it once when it ends.
#pragma once

#include "core/graph.h"

namespace kernelgen {

class RoundingPolicy {
public:
    static RoundingPolicy elementType() { return RoundingPolicy(false); }
    static RoundingPolicy doubleRule() { return RoundingPolicy(true); }

    // A value entering a sum of products with constants, in the type the
    // sum is formed in.
    Graph::Value enterSum(Graph& g, Graph::Value v) const { return wideSums_ ? g.widen(v) : v; }
    // The finished sum in the element type.
    Graph::Value leaveSum(Graph& g, Graph::Value v) const { return wideSums_ ? g.narrow(v) : v; }

    bool wideSums() const { return wideSums_; }

private:
    explicit RoundingPolicy(bool wideSums) : wideSums_(wideSums) {}
    bool wideSums_;
};

} // namespace kernelgen
