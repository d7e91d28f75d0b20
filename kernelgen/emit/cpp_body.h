// The C++ text of one graph: its statements over the vector layer in the
// order the scheduling pass chose, its constants as correctly rounded
// literals, and the comment that counts its operations.
#pragma once

#include <string>
#include <vector>

#include "core/graph.h"

namespace kernelgen {

const char* cppType(Kind kind);
std::string literal(Kind kind, Exact value);
// The first line of every generated file.
std::string banner(const std::string& invocation);

// How a body reaches its arrays: `in` and `out` hold numbers, which vectors
// reach through the access policy `Access`; or, with `arraysOfValues`,
// vectors indexed directly. Scalars always move by their bytes
// (loadScalar, storeScalar), so any address works.
struct ArrayAccess {
    std::string in;
    std::string out;
    bool arraysOfValues;
};

// The comment of a section: "second stage, row 1 (4-point) with its
// partner 3", after its parent's and a semicolon; "A and B" for a pair.
std::string sectionComment(const Graph& g, int section);

// One statement per live node, in the graph's print order.
std::string printStatements(const Graph& g, const ArrayAccess& arrays, const std::string& indent);

// The live constants of the graphs, each name once: at namespace scope
// (`local` false) or as static locals of a function body.
std::string printConstants(const std::vector<const Graph*>& graphs, bool local, const std::string& indent);

// "12 vector additions, 4 vector multiplications, ..." for a header comment.
std::string countsComment(const Graph& g);

} // namespace kernelgen
