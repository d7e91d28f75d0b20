// The routine slots of plan nodes. A slot holds an index into one of the
// tables below, in place of a routine address, so that a node keeps its
// 32-bit field. Each node kind has a routine per element type: the index is
// 2 x kind + 1 for binary64.
#pragma once

#include <cstdint>

#include "plan_nodes.h"
#include "tvkgen.h"

namespace tvkgen::dct4 {

enum class NodeRoutine : int32_t {
    Source, // value sources own nothing and build nothing
    Plan,
    RecombineStage,
    RecombineKernel,
    ColumnStage,
    ColumnKernel,
    SubColumnKernel,
    SplitNode,
    TwiddleKernel,
};

template <class Real>
constexpr int32_t routineIndex(NodeRoutine routine)
{
    return 2 * static_cast<int32_t>(routine) + (sizeof(Real) == 8 ? 1 : 0);
}

// Gives back what the node owns, but not the node itself.
void destroyNode(PlanNode* node);

// Destroys every node of the list and releases its bytes (not the cells);
// a null head is accepted. The node layer's own teardown: the arena only
// releases bytes.
void destroyListedNodes(ListCell* head);

// Builds what lies under the node.
TvkStatus prepareNode(PlanNode* node);

// The value routines of the sources, in their `prepare` slot.
enum class ValueRoutine : int32_t { Rotation, LaneRotation, HalfPhase };

// One table entry: RotationSource (p, j), LaneRotationSource (block, lane, j),
// HalfPhaseSource (i, lane); unused trailing arguments are ignored.
template <class Real>
Real sourceValue(const PlanNode* source, int32_t a, int32_t b, int32_t c = 0);

} // namespace tvkgen::dct4
