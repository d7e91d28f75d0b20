// The expression graph of one kernel: typed values (scalar, 128- or 256-bit
// vector, binary32 or binary64) and the operations between them, in the
// order in which a method builder created them. Each operation rounds once,
// in its own type, from its operands alone, so any order that keeps operands
// first gives the same bits: the scheduling pass chooses the printed one.
// The printed text still follows the order of creation (the values' names,
// the scheduler's ties), so a builder makes the operands of one call in
// statements of their own: C++ leaves the order of a call's arguments open,
// and compilers differ. Where two used to be made inside one call, the later
// one comes first, as GCC made them, so the text stayed as it was.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "core/exact.h"

namespace kernelgen {

// The type of a value, which is also the rounding type of the operation
// producing it.
// V2F32: two binary32 numbers in the low lanes of a 128-bit vector, its
// upper lanes zero (two sections of a scalar kernel side by side).
enum class Kind { F32, F64, V4F32, V2F64, V4F64, V8F32, V2F32, V8F64, V16F32 };

int laneCount(Kind kind);
bool isVector(Kind kind);
bool isSingle(Kind kind); // binary32 lanes
// Vectors wider than 128 bits: 256 (the avx2 level) and 512 (avx512).
bool isWide(Kind kind);
// The bytes a value of the kind takes in a register (two binary32 lanes
// fill a 128-bit vector).
int registerBytes(Kind kind);
// A vector of two halves and its half: two numbers in 128 bits, two
// 128-bit vectors in 256, two 256-bit ones in 512.
Kind wideKind(Kind half);
Kind halfKind(Kind wide);

enum class Op {
    Load,              // element `offset` (in numbers) of src
    Store,             // a -> dst at `offset`; produces no value
    LoadElement,       // one 32fc element at `offset` into lanes 0-1, zeros above
    StoreLowElement,   // lanes 0-1 of a -> dst at `offset`
    StoreHighElement,  // lanes 2-3 of a -> dst at `offset`
    Constant,          // a named compiled-in constant
    ScaleArg,          // the kernel's scale factor, chosen by the flag
    Add,
    Sub,
    Mul,
    Xor,               // sign flips of vector lanes by a mask constant
    Neg,               // sign flip of a scalar
    Shuffle,           // a lane pattern of the vector layer (Shuffle below)
    Widen,             // binary32 -> binary64 lanes, exact
    Narrow,            // binary64 -> binary32 lanes, one rounding each
};

// Moves between the arrays and the registers, whole vectors or single
// 32fc elements.
inline bool isLoad(Op op) { return op == Op::Load || op == Op::LoadElement; }
inline bool isStore(Op op) { return op == Op::Store || op == Op::StoreLowElement || op == Op::StoreHighElement; }

// The lane patterns of the vector layer that the kernels use.
enum class Shuffle {
    None,
    SwapLanes,      // (a1, a0) of two binary64 lanes; (a1, a0, a2, a3) of binary32 ones
    UnpackLo,       // (a0, b0, a1, b1)
    UnpackHi,       // (a2, b2, a3, b3)
    MoveLowHalves,  // (a0, a1, b0, b1)
    MoveHighHalves, // (a2, a3, b2, b3)
    EvenLanes,      // (a0, a2, b0, b2): real parts of two complex pairs each
    OddLanes,       // (a1, a3, b1, b3): imaginary parts
    EvenLanesLow,   // (a0, a2, b0, b0): real parts of one pair, the rest from b
    OddLanesLow,    // (a1, a3, b0, b0)
    // Between a vector and its two halves (the paired operations of the
    // pairing pass):
    LowHalf,        // V8F64 -> V4F64, V4F64 -> V2F64, V2F64 -> F64, ...: the low half
    HighHalf,       // the high half
    Combine,        // two halves -> one vector, a below b
    SwapHalves,     // a vector of two halves with its halves exchanged
};

// Where lane `lane` of a shuffle's result of `kind` comes from: lane `lane`
// of operand a (0) or b (1). 256- and 512-bit vectors apply a 128-bit
// pattern to each 128-bit part, as the avx2 and avx512 levels do.
struct LaneSource {
    int operand;
    int lane;
};
LaneSource shuffleSource(Shuffle pattern, Kind kind, int lane);

struct Node {
    Node(Op op, Kind kind, int a = -1, int b = -1) : op(op), kind(kind), a(a), b(b) {}
    Op op;
    Kind kind;
    int a;
    int b;
    int offset = 0;       // Load / Store
    int offset2 = -1;     // Load / Store of a vector of two halves from two places: its high half
    int constant = -1;    // Constant
    Shuffle pattern = Shuffle::None;
    int section = -1;     // index into Graph::sections(), -1 outside any
};

// What a section of a graph is: a step of a method and, where the step
// has groups, rows or blocks, which one (a range of them where vector
// lanes hold several), the partner taken with it, and the length of the
// transform it runs.
struct Section {
    Section() = default;
    Section(std::string step) : step(std::move(step)) {}
    Section(std::string step, std::string unit, int first, int points = 0, int partner = -1, int last = -1)
        : step(std::move(step)), unit(std::move(unit)), first(first), last(last), partner(partner), points(points)
    {
    }

    std::string step;  // "first stage", "spectrum products", ...
    std::string unit;  // "group", "row", "block", "groups", ...; empty for a step of one piece
    int first = -1;    // the index, or the first of a range
    int last = -1;     // the last of a range; -1: first alone
    int partner = -1;  // the group or row taken together with it; -1: none
    int points = 0;    // the length of the transform it runs; 0: none
};

// A section in its graph: inside `parent`, or the pair of sections `pair`
// that a pass runs side by side.
struct SectionNode {
    Section what;
    int parent = -1;
    std::array<int, 2> pair{-1, -1};
};

struct ConstantDef {
    std::string name;
    Kind kind;
    std::vector<Exact> lanes; // one value per lane (sign masks hold -0.0 / 0.0)
    bool signMask = false;
};

// Operation counts of a kernel. Vector operations count once each, whatever
// the lane count; products by the scale factor are counted apart. Loads and
// stores count whole and half-vector moves of the arrays; constants, the
// distinct constants read.
struct OpCounts {
    int addSub = 0;
    int mul = 0;
    int scaleMul = 0;
    int shuffles = 0;
    int signFlips = 0;
    int loads = 0;
    int stores = 0;
    int constants = 0;
    int wide = 0; // binary64 operations of a binary32 kernel: its statements with products
};

class Graph {
public:
    using Value = int;

    Value load(Kind kind, int offset);
    void store(Value v, int offset);
    Value loadElement(int offset);
    void storeElement(Value v, bool highLanes, int offset);
    // A name stands for one value: asking for a known name with another
    // kind or other lanes is an error.
    Value constant(const std::string& name, Kind kind, std::vector<Exact> lanes);
    Value signMask(const std::string& name, Kind kind, std::vector<bool> negativeLanes);
    Value scaleArg(Kind kind);
    Value add(Value a, Value b) { return binary(Op::Add, a, b); }
    Value sub(Value a, Value b) { return binary(Op::Sub, a, b); }
    Value mul(Value a, Value b) { return binary(Op::Mul, a, b); }
    Value bitXor(Value a, Value b) { return binary(Op::Xor, a, b); }
    Value neg(Value a);
    Value shuffle(Shuffle pattern, Value a, Value b = -1);
    // A vector from two halves, and back.
    Value combine(Value low, Value high);
    Value half(Value v, bool high);
    Value loadHalves(Kind half, int lowOffset, int highOffset);
    void storeHalves(Value v, int lowOffset, int highOffset);
    Value widen(Value a);
    Value narrow(Value a);

    // Sections: the steps of a method as it marks them, so that passes can
    // tell independent work of one shape apart and the printer can head
    // their statements with a comment. Nodes made between openSection and
    // closeSection belong to the section; a section opened inside another
    // has it as parent, and deeper ones belong to their parent.
    void openSection(Section what);
    void closeSection();
    // For copies between graphs: a section made apart, inside `parent`
    // (-1: none), entered again by index, and the innermost one open.
    int addSection(Section what, int parent);
    void enterSection(int section) { openSections_.push_back(section); }
    int openedSection() const { return openSections_.empty() ? -1 : openSections_.back(); }
    // For passes that copy a graph: the sections of `from` under the same
    // indices, and a section holding the nodes of sections a and b side by
    // side.
    void copySectionsOf(const Graph& from) { sections_ = from.sections_; }
    int pairSections(int a, int b);
    // How many of the method's sections run side by side in `section`.
    int sectionsHeld(int section) const;
    void placeInSection(Value v, int section) { nodes_[v].section = section; }
    const std::vector<SectionNode>& sections() const { return sections_; }

    Kind kind(Value v) const { return nodes_[v].kind; }
    // A constant whose lanes are all +0.0 (not a sign mask).
    bool isZero(Value v) const;
    const std::vector<Node>& nodes() const { return nodes_; }
    const std::vector<ConstantDef>& constants() const { return constants_; }
    // The order in which the printer emits the live nodes, chosen by the
    // scheduling pass for a target; empty before.
    void setPrintOrder(std::vector<int> order) { printOrder_ = std::move(order); }
    const std::vector<int>& printOrder() const { return printOrder_; }

    // The same graph with every store moved to cellOf(offset), and dropped
    // where that is -1: one computation, stored in another layout.
    Graph remapStores(const std::function<int(int)>& cellOf) const;
    // The same graph with every load reading cellOf(offset) instead: one
    // computation, read from another layout.
    Graph remapLoads(const std::function<int(int)>& cellOf) const;

    // Which nodes reach a store; the printer drops the rest.
    std::vector<bool> liveNodes() const;
    OpCounts countOps() const;
    // Distinct magnitudes of the constants that reach a store, as stored in
    // their element type, with 0 and 1 counted always; sign masks and the
    // scale factor are not among them.
    int storedMagnitudes() const;

private:
    Value push(Node node);
    bool isScale(Value v) const;
    Value binary(Op op, Value a, Value b);
    std::vector<Node> nodes_;
    std::vector<ConstantDef> constants_;
    std::vector<SectionNode> sections_;
    std::vector<int> openSections_; // the section of each open level
    std::vector<int> printOrder_;
};

// a*sign(a) + b*sign(b) as one addition or subtraction and a pending sign:
// how every builder folds a pending negation into the next sum.
Graph::Value signedSum(Graph& g, Graph::Value a, bool negA, Graph::Value b, bool negB, bool& negOut);

// Opens a section for the lifetime of the scope.
class SectionScope {
public:
    SectionScope(Graph& g, Section what) : g_(g) { g_.openSection(std::move(what)); }
    ~SectionScope() { g_.closeSection(); }
    SectionScope(const SectionScope&) = delete;
    SectionScope& operator=(const SectionScope&) = delete;

private:
    Graph& g_;
};

} // namespace kernelgen
