// Statements of binary32 kernels formed from the shape of a block. A block
// built apart in binary64 (a transposed forward transform, whose data flow
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

#include "core/inline.h"

namespace kernelgen {

// Copies `sub` into `target` as inlineGraph does, but in the element type
// `element`: for binary64 the copy itself, for binary32 the statements
// above. `sub` holds binary64 loads, stores, sums, negations and products
// by binary64 constants only.
std::map<int, SignedValue> inlineAsStatements(Graph& target, const Graph& sub,
                                              const std::map<int, SignedValue>& inputs, Kind element);

} // namespace kernelgen
