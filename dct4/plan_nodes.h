// The nodes of a DCT-IV plan tree, field by field in their fixed order. All
// fields are 32 bits wide: lists, tables and work blocks are offsets into
// the plan's block, routines are indices into the routine tables. The sizes
// are those that the size rule counts.
#pragma once

#include <cstdint>

#include "plan_arena.h"

namespace tvkgen::dct4 {

// The four leading fields of every node. The routine slots hold indices
// into the routine tables of plan_routines.h rather than addresses, and
// `arena` holds the distance back to the block's first byte, so that any
// node finds its block from its own address.
struct PlanNode {
    int32_t destroy;
    int32_t size;    // bytes requested for the node, released with it
    int32_t prepare; // in a value source: the value routine
    int32_t arena;
};

inline uint8_t* blockOf(const PlanNode* node) { return blockOf(node, node->arena); }

// Root: the object that the caller holds.
struct Dct4Plan {
    PlanNode head;
    Ref children;      // owns every direct child, the rotation source too
    Ref recombineList; // its one entry is the RecombineStage
    Ref columnList;    // its one entry is the ColumnStage
    Ref work;          // N elements; none for the direct kernels
    int32_t kind;      // 1..5 for N = 2..32, 6 for the two-stage plan
    int32_t radix;
    int32_t len;
};

struct RecombineStage {
    PlanNode head;
    Ref children;
    Ref kernelList;
    Ref work;
    int32_t kind; // 1 when the row pairs fill whole vectors
    int32_t radix;
    int32_t len;
    int32_t twiceRadix;
    int32_t halfRows;
    int32_t outLen;
    int32_t mirror;
    int32_t rowStride;
    Ref source;
};

struct RecombineKernel {
    PlanNode head;
    Ref children;
    Ref table; // rotation table, N elements
    int32_t kind; // by radix 1, 2, 4, 8, 16, 32: 1..6
    int32_t radix;
    int32_t len;
    int32_t twiceRadix;
    int32_t blockStride;
    int32_t blockCount;
    int32_t outLen;
    int32_t mirror;
    int32_t rowStride;
    Ref source;
};

struct ColumnStage {
    PlanNode head;
    Ref children;
    Ref kernelList;
    Ref work;
    int32_t kind; // 1 when the columns fill whole vectors
    int32_t subLen;
    int32_t len;
    int32_t mirror;
    int32_t inStride;
    int32_t columns;
    int32_t outLen;
    int32_t rowStride;
};

struct ColumnKernel {
    PlanNode head;
    Ref children;
    Ref splitList;
    Ref work;
    int32_t kind; // length kind of subLen
    int32_t subLen;
    int32_t len;
    int32_t mirror;
    int32_t inStride;
    int32_t blockCount;
    int32_t outLen;
    int32_t rowStride;
};

struct SplitNode {
    PlanNode head;
    Ref children;
    Ref twiddleList;
    Ref subColumnList;
    Ref work; // N elements: the sub-columns of all columns side by side
    int32_t kind;
    int32_t subLen;
    int32_t radix;
    int32_t len;
    int32_t outLen;
    int32_t inStride;
    int32_t workLen;
    int32_t rowStride;
};

struct TwiddleKernel {
    PlanNode head;
    Ref children;
    Ref table;
    int32_t kind; // by radix 2, 4, 8, 16, 32: 1..5
    int32_t radix;
    int32_t len;
    int32_t inRowStride;
    int32_t groupStride;
    int32_t groupCount;
    int32_t outLen;
    int32_t halfLen;
    int32_t lastIndex;
    int32_t outRowStride;
    int32_t subLen;
    Ref source;
};

struct SubColumnKernel {
    PlanNode head;
    Ref children;
    Ref splitList;
    Ref work;
    int32_t kind; // length kind of subLen
    int32_t subLen;
    int32_t len;
    int32_t outLen;
    int32_t groupStride;
    int32_t inStride;
    int32_t radix;
    int32_t workLen;
    int32_t nextRowStride;
    int32_t rowStride;
};

// Value sources: nodes that compute table entries (plan_tables.cpp).
struct RotationSource {
    PlanNode head;
    int32_t rowLength;
    int32_t denominator;
    int32_t rows;
    int32_t radix;
    int32_t rowStride;
};

struct LaneRotationSource {
    PlanNode head;
    int32_t rowLength;
    int32_t blocks;
    Ref inner; // the RotationSource
};

struct HalfPhaseSource {
    PlanNode head;
    int32_t subLen;
    int32_t radix;
};

static_assert(sizeof(Dct4Plan) == 44);
static_assert(sizeof(RecombineStage) == 64);
static_assert(sizeof(RecombineKernel) == 64);
static_assert(sizeof(ColumnStage) == 60);
static_assert(sizeof(ColumnKernel) == 60);
static_assert(sizeof(SplitNode) == 64);
static_assert(sizeof(TwiddleKernel) == 72);
static_assert(sizeof(SubColumnKernel) == 68);
static_assert(sizeof(RotationSource) == 36);
static_assert(sizeof(LaneRotationSource) == 28);
static_assert(sizeof(HalfPhaseSource) == 24);

// Length kinds. The root runs 2..32 directly; column and sub-column kernels
// run 2..64 directly, and 7 means a SplitNode below.
constexpr int32_t kRootTwoStage = 6;
constexpr int32_t kSplitBelow = 7;

int32_t rootLengthKind(int32_t len);
int32_t columnLengthKind(int32_t subLen);

// The radix for n, half of a length; 0 when no row of the rule fits.
int32_t chooseRadix(int32_t n);

// Kind of a RecombineKernel by radix 1..32, of a TwiddleKernel by radix
// 2..32; 0 outside the table.
int32_t recombineKind(int32_t radix);
int32_t twiddleKind(int32_t radix);

// Lanes of a 128-bit vector.
template <class Real>
constexpr int32_t kLanes = 16 / sizeof(Real);

template <class Real>
constexpr bool isLaneMultiple(int32_t n)
{
    return (n & (kLanes<Real> - 1)) == 0;
}

} // namespace tvkgen::dct4
