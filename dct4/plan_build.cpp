// Building and destroying the plan tree. Every allocation of a build has a
// release of the same size in a destroy routine, so that a completed plan
// returns the cursor exactly to its start. A failed build is cleaned up by
// the same routines, which release what the node fields say, allocated or
// not: the cursor then ends off its start, and nothing reads it again.
#include "plan_build.h"

#include <iterator>

#include "plan_routines.h"
#include "plan_tables.h"

namespace tvkgen::dct4 {

int32_t rootLengthKind(int32_t len)
{
    switch (len) {
    case 2: return 1;
    case 4: return 2;
    case 8: return 3;
    case 16: return 4;
    case 32: return 5;
    default: return kRootTwoStage;
    }
}

int32_t columnLengthKind(int32_t subLen)
{
    return subLen == 64 ? 6 : rootLengthKind(subLen) == kRootTwoStage ? kSplitBelow : rootLengthKind(subLen);
}

// The thresholds are part of the design: 12 gives 2, 24 gives 4, 256 gives
// 16 and 4096 gives 32.
int32_t chooseRadix(int32_t n)
{
    struct Row {
        int32_t atLeast, multipleOf, radix;
    };
    static constexpr Row kRows[] = {{512, 32, 32}, {128, 16, 16}, {32, 8, 8}, {16, 4, 4}, {4, 2, 2}};
    for (const Row& row : kRows)
        if (n >= row.atLeast && n % row.multipleOf == 0)
            return row.radix;
    return 0;
}

int32_t recombineKind(int32_t radix)
{
    switch (radix) {
    case 1: return 1;
    case 2: return 2;
    case 4: return 3;
    case 8: return 4;
    case 16: return 5;
    case 32: return 6;
    default: return 0;
    }
}

int32_t twiddleKind(int32_t radix)
{
    const int32_t kind = recombineKind(radix) - 1;
    return kind > 0 ? kind : 0;
}

namespace {

// Sizes in bytes wrap like the size rule's 32-bit sums.
constexpr int32_t wrappingProduct(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

template <class Real>
constexpr int32_t elementBytes(int32_t count)
{
    return wrappingProduct(count, sizeof(Real));
}

// Bytes of a twiddle table per group, by kind 1..5: 32 x (s - 1).
constexpr int32_t kTwiddleGroupBytes[] = {0, 32, 96, 224, 480, 992};

template <class T>
Ref allocNode(uint8_t* arena)
{
    return arenaAlloc(arena, sizeof(T));
}

// Writes the node head over fields cleared to zero.
template <class T, class Real>
T* constructNode(uint8_t* arena, Ref at, NodeRoutine routine, int32_t prepare)
{
    T* node = new (arena + at) T{};
    node->head = PlanNode{routineIndex<Real>(routine), static_cast<int32_t>(sizeof(T)), prepare, at};
    return node;
}

template <class T, class Real>
T* constructNode(uint8_t* arena, Ref at, NodeRoutine routine)
{
    return constructNode<T, Real>(arena, at, routine, routineIndex<Real>(routine));
}

template <class T, class Real>
T* constructSource(uint8_t* arena, Ref at, ValueRoutine value)
{
    return constructNode<T, Real>(arena, at, NodeRoutine::Source, static_cast<int32_t>(value));
}

Ref newList(uint8_t* arena)
{
    const Ref cell = arenaAlloc(arena, kListCellBytes);
    listInit(arena, cell);
    return cell;
}

ListCell* list(uint8_t* arena, Ref head) { return recordAt<ListCell>(arena, head); }

// A child's failure is reported by its parent as a size error.
TvkStatus prepareChild(uint8_t* arena, Ref child)
{
    return prepareNode(recordAt<PlanNode>(arena, child)) == StatusOk ? StatusOk : StatusSizeError;
}

// Tear-down steps shared by the node kinds.
void dropList(uint8_t* arena, Ref head)
{
    listFreeCells(list(arena, head));
    arenaRelease(arena, head, kListCellBytes);
}

void dropChildren(uint8_t* arena, Ref head)
{
    destroyListedNodes(list(arena, head));
    dropList(arena, head);
}

// ---- Dct4Plan ------------------------------------------------------------

template <class Real>
TvkStatus preparePlan(PlanNode* node)
{
    auto* plan = reinterpret_cast<Dct4Plan*>(node);
    uint8_t* arena = blockOf(node);
    plan->kind = rootLengthKind(plan->len);
    if (plan->kind != kRootTwoStage) {
        plan->work = kNone;
        return StatusOk;
    }
    const int32_t n = plan->len;
    plan->radix = chooseRadix(n / 2);
    if (plan->radix == 0)
        return StatusSizeError;
    const int32_t r = plan->radix;

    const Ref stageRef = allocNode<RecombineStage>(arena);
    const Ref sourceRef = allocNode<RotationSource>(arena);
    auto* source = constructSource<RotationSource, Real>(arena, sourceRef, ValueRoutine::Rotation);
    source->rowLength = 2 * r;
    source->denominator = 8 * n;
    source->rows = n / (2 * r);
    source->radix = r;
    source->rowStride = 2 * r;
    listAppend(list(arena, plan->children), sourceRef);

    auto* stage = constructNode<RecombineStage, Real>(arena, stageRef, NodeRoutine::RecombineStage);
    stage->kernelList = newList(arena);
    stage->children = newList(arena);
    stage->radix = r;
    stage->len = n;
    stage->twiceRadix = 2 * r;
    stage->halfRows = n / (2 * r);
    stage->outLen = n;
    stage->mirror = 2 * n - 1;
    stage->rowStride = n / r;
    stage->source = sourceRef;
    listAppend(list(arena, plan->recombineList), listAppend(list(arena, plan->children), stageRef));
    if (prepareChild(arena, stageRef) != StatusOk)
        return StatusSizeError;

    const Ref columnRef = allocNode<ColumnStage>(arena);
    auto* column = constructNode<ColumnStage, Real>(arena, columnRef, NodeRoutine::ColumnStage);
    column->kernelList = newList(arena);
    column->children = newList(arena);
    column->subLen = n / r;
    column->len = n;
    column->mirror = 2 * n - 1;
    column->inStride = 2 * r;
    column->columns = r;
    column->outLen = n;
    column->rowStride = r;
    listAppend(list(arena, plan->columnList), listAppend(list(arena, plan->children), columnRef));
    if (prepareChild(arena, columnRef) != StatusOk)
        return StatusSizeError;

    plan->work = arenaAlloc(arena, elementBytes<Real>(n));
    return StatusOk;
}

template <class Real>
void destroyPlan(PlanNode* node)
{
    auto* plan = reinterpret_cast<Dct4Plan*>(node);
    uint8_t* arena = blockOf(node);
    if (plan->kind >= 1 && plan->kind < kRootTwoStage)
        arenaRelease(arena, plan->work, 0);
    else if (plan->kind == kRootTwoStage)
        arenaRelease(arena, plan->work, elementBytes<Real>(plan->len));
    dropList(arena, plan->recombineList);
    dropList(arena, plan->columnList);
    dropChildren(arena, plan->children);
}

// ---- Recombine stage and kernel --------------------------------------------

template <class Real>
TvkStatus prepareRecombineStage(PlanNode* node)
{
    auto* stage = reinterpret_cast<RecombineStage*>(node);
    uint8_t* arena = blockOf(node);
    stage->kind = isLaneMultiple<Real>(stage->halfRows) ? 1 : 0;
    if (stage->kind == 0)
        return StatusSizeError;
    const int32_t r = stage->radix;
    const int32_t n = stage->len;
    const int32_t lanes = kLanes<Real>;

    const Ref kernelRef = allocNode<RecombineKernel>(arena);
    const Ref sourceRef = allocNode<LaneRotationSource>(arena);
    auto* source = constructSource<LaneRotationSource, Real>(arena, sourceRef, ValueRoutine::LaneRotation);
    source->rowLength = 2 * r;
    source->blocks = n / (2 * r * lanes);
    source->inner = stage->source;
    listAppend(list(arena, stage->children), sourceRef);

    auto* kernel = constructNode<RecombineKernel, Real>(arena, kernelRef, NodeRoutine::RecombineKernel);
    kernel->children = newList(arena);
    kernel->radix = r;
    kernel->len = n;
    kernel->twiceRadix = 2 * r;
    kernel->blockStride = 2 * r * lanes;
    kernel->blockCount = n / (2 * r * lanes);
    kernel->outLen = n;
    kernel->mirror = 2 * n - 1;
    kernel->rowStride = stage->rowStride;
    kernel->source = sourceRef;
    listAppend(list(arena, stage->kernelList), listAppend(list(arena, stage->children), kernelRef));
    if (prepareChild(arena, kernelRef) != StatusOk)
        return StatusSizeError;
    stage->work = kNone;
    return StatusOk;
}

template <class Real>
TvkStatus prepareRecombineKernel(PlanNode* node)
{
    auto* kernel = reinterpret_cast<RecombineKernel*>(node);
    kernel->kind = recombineKind(kernel->radix);
    if (kernel->kind == 0)
        return StatusSizeError;
    kernel->table = arenaAlloc(blockOf(node), wrappingProduct(kernel->blockCount, 1 << (kernel->kind + 4)));
    fillRotationTable<Real>(kernel);
    return StatusOk;
}

void destroyRecombineKernel(PlanNode* node)
{
    auto* kernel = reinterpret_cast<RecombineKernel*>(node);
    uint8_t* arena = blockOf(node);
    if (kernel->kind >= 1 && kernel->kind <= 6)
        arenaRelease(arena, kernel->table, wrappingProduct(kernel->blockCount, 1 << (kernel->kind + 4)));
    dropChildren(arena, kernel->children);
}

// ---- Column stage, column and sub-column kernels -----------------------------

template <class Real>
TvkStatus prepareColumnStage(PlanNode* node)
{
    auto* stage = reinterpret_cast<ColumnStage*>(node);
    uint8_t* arena = blockOf(node);
    stage->kind = isLaneMultiple<Real>(stage->columns) ? 1 : 0;
    if (stage->kind == 0)
        return StatusSizeError;

    const Ref kernelRef = allocNode<ColumnKernel>(arena);
    auto* kernel = constructNode<ColumnKernel, Real>(arena, kernelRef, NodeRoutine::ColumnKernel);
    kernel->splitList = newList(arena);
    kernel->children = newList(arena);
    kernel->subLen = stage->subLen;
    kernel->len = stage->len;
    kernel->mirror = stage->mirror;
    kernel->inStride = stage->inStride;
    kernel->blockCount = stage->columns / kLanes<Real>;
    kernel->outLen = stage->outLen;
    kernel->rowStride = stage->rowStride;
    listAppend(list(arena, stage->kernelList), listAppend(list(arena, stage->children), kernelRef));
    if (prepareChild(arena, kernelRef) != StatusOk)
        return StatusSizeError;
    stage->work = kNone;
    return StatusOk;
}

// Stages share their leading fields: children, kernel list, work, kind.
struct StageLayout {
    PlanNode head;
    Ref children;
    Ref kernelList;
    Ref work;
    int32_t kind;
};

void destroyStage(PlanNode* node)
{
    auto* stage = reinterpret_cast<StageLayout*>(node);
    uint8_t* arena = blockOf(node);
    if (stage->kind == 1)
        arenaRelease(arena, stage->work, 0);
    dropList(arena, stage->kernelList);
    dropChildren(arena, stage->children);
}

// Column and sub-column kernels: a SplitNode below for kind 7, with the
// input stride and row stride of the level that holds it.
template <class Real, class Kernel>
TvkStatus prepareColumnLike(Kernel* kernel, int32_t inStride, int32_t rowStride)
{
    uint8_t* arena = blockOf(&kernel->head);
    kernel->kind = columnLengthKind(kernel->subLen);
    if (kernel->kind == kSplitBelow) {
        const Ref splitRef = allocNode<SplitNode>(arena);
        auto* split = constructNode<SplitNode, Real>(arena, splitRef, NodeRoutine::SplitNode);
        split->twiddleList = newList(arena);
        split->subColumnList = newList(arena);
        split->children = newList(arena);
        split->subLen = kernel->subLen;
        split->len = kernel->len;
        split->outLen = kernel->outLen;
        split->inStride = inStride;
        split->workLen = kernel->len;
        split->rowStride = rowStride;
        listAppend(list(arena, kernel->splitList), listAppend(list(arena, kernel->children), splitRef));
        if (prepareChild(arena, splitRef) != StatusOk)
            return StatusSizeError;
    }
    kernel->work = kNone;
    return StatusOk;
}

template <class Real>
TvkStatus prepareColumnKernel(PlanNode* node)
{
    auto* kernel = reinterpret_cast<ColumnKernel*>(node);
    return prepareColumnLike<Real>(kernel, kernel->inStride, kernel->rowStride);
}

template <class Real>
TvkStatus prepareSubColumnKernel(PlanNode* node)
{
    auto* kernel = reinterpret_cast<SubColumnKernel*>(node);
    return prepareColumnLike<Real>(kernel, kernel->groupStride, kernel->nextRowStride);
}

void destroyColumnLike(PlanNode* node)
{
    auto* kernel = reinterpret_cast<StageLayout*>(node);
    uint8_t* arena = blockOf(node);
    if (kernel->kind >= 1 && kernel->kind <= kSplitBelow)
        arenaRelease(arena, kernel->work, 0);
    dropList(arena, kernel->kernelList);
    dropChildren(arena, kernel->children);
}

// ---- Split node and twiddle kernel -------------------------------------------

template <class Real>
TvkStatus prepareSplit(PlanNode* node)
{
    auto* split = reinterpret_cast<SplitNode*>(node);
    uint8_t* arena = blockOf(node);
    split->kind = 1;
    split->radix = chooseRadix(split->subLen / 2);
    if (split->radix == 0)
        return StatusSizeError;
    const int32_t m = split->subLen;
    const int32_t s = split->radix;
    const int32_t rowStride = split->rowStride;

    const Ref twiddleRef = allocNode<TwiddleKernel>(arena);
    const Ref sourceRef = allocNode<HalfPhaseSource>(arena);
    auto* source = constructSource<HalfPhaseSource, Real>(arena, sourceRef, ValueRoutine::HalfPhase);
    source->subLen = m;
    source->radix = s;
    listAppend(list(arena, split->children), sourceRef);

    auto* twiddle = constructNode<TwiddleKernel, Real>(arena, twiddleRef, NodeRoutine::TwiddleKernel);
    twiddle->children = newList(arena);
    twiddle->radix = s;
    twiddle->len = split->len;
    twiddle->inRowStride = rowStride;
    twiddle->groupStride = 2 * rowStride * s;
    twiddle->groupCount = m / (2 * s);
    twiddle->outLen = split->outLen;
    twiddle->halfLen = m / 2;
    twiddle->lastIndex = m - 1;
    twiddle->outRowStride = rowStride;
    twiddle->subLen = m / s;
    twiddle->source = sourceRef;
    listAppend(list(arena, split->twiddleList), listAppend(list(arena, split->children), twiddleRef));
    if (prepareChild(arena, twiddleRef) != StatusOk)
        return StatusSizeError;

    const Ref subRef = allocNode<SubColumnKernel>(arena);
    auto* sub = constructNode<SubColumnKernel, Real>(arena, subRef, NodeRoutine::SubColumnKernel);
    sub->splitList = newList(arena);
    sub->children = newList(arena);
    sub->subLen = m / s;
    sub->len = split->len;
    sub->outLen = split->outLen;
    sub->groupStride = 2 * rowStride * s;
    sub->inStride = 2 * rowStride;
    sub->radix = s;
    sub->workLen = split->workLen;
    sub->nextRowStride = rowStride * s;
    sub->rowStride = rowStride;
    listAppend(list(arena, split->subColumnList), listAppend(list(arena, split->children), subRef));
    if (prepareChild(arena, subRef) != StatusOk)
        return StatusSizeError;

    split->work = arenaAlloc(arena, elementBytes<Real>(split->workLen));
    return StatusOk;
}

template <class Real>
void destroySplit(PlanNode* node)
{
    auto* split = reinterpret_cast<SplitNode*>(node);
    uint8_t* arena = blockOf(node);
    if (split->kind == 1)
        arenaRelease(arena, split->work, elementBytes<Real>(split->workLen));
    dropList(arena, split->twiddleList);
    dropList(arena, split->subColumnList);
    dropChildren(arena, split->children);
}

template <class Real>
TvkStatus prepareTwiddleKernel(PlanNode* node)
{
    auto* kernel = reinterpret_cast<TwiddleKernel*>(node);
    kernel->kind = twiddleKind(kernel->radix);
    if (kernel->kind == 0)
        return StatusSizeError;
    kernel->table = arenaAlloc(blockOf(node), wrappingProduct(kernel->groupCount, kTwiddleGroupBytes[kernel->kind]));
    fillTwiddleTable<Real>(kernel);
    return StatusOk;
}

void destroyTwiddleKernel(PlanNode* node)
{
    auto* kernel = reinterpret_cast<TwiddleKernel*>(node);
    uint8_t* arena = blockOf(node);
    if (kernel->kind >= 1 && kernel->kind <= 5)
        arenaRelease(arena, kernel->table, wrappingProduct(kernel->groupCount, kTwiddleGroupBytes[kernel->kind]));
    dropChildren(arena, kernel->children);
}

void destroyNothing(PlanNode*) {}

TvkStatus prepareNothing(PlanNode*) { return StatusOk; }

// ---- Routine tables, in the order of NodeRoutine, float then double ---------

using DestroyRoutine = void (*)(PlanNode*);
using PrepareRoutine = TvkStatus (*)(PlanNode*);

constexpr DestroyRoutine kDestroyRoutines[] = {
    destroyNothing,         destroyNothing,
    destroyPlan<float>,     destroyPlan<double>,
    destroyStage,           destroyStage,
    destroyRecombineKernel, destroyRecombineKernel,
    destroyStage,           destroyStage,
    destroyColumnLike,      destroyColumnLike,
    destroyColumnLike,      destroyColumnLike,
    destroySplit<float>,    destroySplit<double>,
    destroyTwiddleKernel,   destroyTwiddleKernel,
};

constexpr PrepareRoutine kPrepareRoutines[] = {
    prepareNothing,                   prepareNothing,
    preparePlan<float>,               preparePlan<double>,
    prepareRecombineStage<float>,     prepareRecombineStage<double>,
    prepareRecombineKernel<float>,    prepareRecombineKernel<double>,
    prepareColumnStage<float>,        prepareColumnStage<double>,
    prepareColumnKernel<float>,       prepareColumnKernel<double>,
    prepareSubColumnKernel<float>,    prepareSubColumnKernel<double>,
    prepareSplit<float>,              prepareSplit<double>,
    prepareTwiddleKernel<float>,      prepareTwiddleKernel<double>,
};

static_assert(std::size(kDestroyRoutines) == 2 * (static_cast<size_t>(NodeRoutine::TwiddleKernel) + 1));
static_assert(std::size(kPrepareRoutines) == std::size(kDestroyRoutines));

} // namespace

void destroyNode(PlanNode* node) { kDestroyRoutines[node->destroy](node); }

TvkStatus prepareNode(PlanNode* node) { return kPrepareRoutines[node->prepare](node); }

void destroyListedNodes(ListCell* head)
{
    if (head == nullptr)
        return;
    uint8_t* arena = blockOf(head);
    for (const ListCell* cell = head;;) {
        if (cell->value != kNone) {
            auto* node = recordAt<PlanNode>(arena, cell->value);
            destroyNode(node);
            arenaRelease(arena, cell->value, node->size); // size is read after destroy
        }
        if (cell->next == kNone)
            break;
        cell = recordAt<ListCell>(arena, cell->next);
    }
}

// ---- Life cycle --------------------------------------------------------------

template <class Real>
TvkStatus planInit(Dct4Plan** plan, int32_t len, uint8_t* mem)
{
    if (plan == nullptr || mem == nullptr)
        return StatusNullPointer;
    arenaStart(mem);
    const Ref rootRef = allocNode<Dct4Plan>(mem);
    auto* root = constructNode<Dct4Plan, Real>(mem, rootRef, NodeRoutine::Plan);
    root->kind = 0;
    root->len = len;
    root->recombineList = newList(mem);
    root->columnList = newList(mem);
    root->children = newList(mem);
    const TvkStatus status = prepareNode(&root->head);
    if (status == StatusOk) {
        *plan = root;
        return StatusOk;
    }
    destroyNode(&root->head);
    arenaRelease(mem, rootRef, sizeof(Dct4Plan));
    return status;
}

void planDestroy(Dct4Plan* plan)
{
    destroyNode(&plan->head);
    arenaRelease(blockOf(&plan->head), plan->head.arena, sizeof(Dct4Plan));
}

template TvkStatus planInit<float>(Dct4Plan**, int32_t, uint8_t*);
template TvkStatus planInit<double>(Dct4Plan**, int32_t, uint8_t*);

} // namespace tvkgen::dct4
