// The plan arena and its lists, and the node layer's teardown of a list.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "plan_arena.h"
#include "plan_nodes.h"
#include "plan_routines.h"

namespace {

using namespace tvkgen::dct4;

// A block at a chosen remainder modulo 32.
struct Block {
    explicit Block(int remainder, size_t bytes = 4096) : storage(bytes + 64)
    {
        auto base = (reinterpret_cast<uintptr_t>(storage.data()) + 31) & ~uintptr_t{31};
        mem = reinterpret_cast<uint8_t*>(base) + remainder;
        arenaStart(mem);
    }
    std::vector<uint8_t> storage;
    uint8_t* mem;
};

// A value source node: its destroy does nothing, its size is released.
Ref newSourceNode(uint8_t* arena)
{
    const Ref at = arenaAlloc(arena, sizeof(HalfPhaseSource));
    auto* node = recordAt<HalfPhaseSource>(arena, at);
    node->head = PlanNode{routineIndex<float>(NodeRoutine::Source), sizeof(HalfPhaseSource),
                          static_cast<int32_t>(ValueRoutine::HalfPhase), at};
    return at;
}

TEST(Dct4Arena, CursorStartsOnTheNextBoundaryWithAGap)
{
    for (int remainder : {0, 1, 7, 31}) {
        Block block(remainder);
        EXPECT_EQ(arenaCursor(block.mem), 64 - remainder) << "remainder " << remainder;
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block.mem + arenaCursor(block.mem)) % 32, 0u);
    }
}

// roundUp32 in wrapping 32-bit arithmetic; allocations of 32-byte steps on
// 32-byte boundaries, and releases that mirror them.
TEST(Dct4Arena, AllocationRoundsAndReleaseMirrors)
{
    EXPECT_EQ(roundUp32(0), 0);
    EXPECT_EQ(roundUp32(12), 32);
    EXPECT_EQ(roundUp32(44), 64);
    EXPECT_EQ(roundUp32(INT32_MAX - 10), INT32_MIN) << "wraps like 32-bit arithmetic";
    EXPECT_EQ(roundUp32(-1), 0);
    EXPECT_EQ(cellBytes(3), 96);
    Block block(5);
    const int32_t start = arenaCursor(block.mem);
    EXPECT_EQ(arenaAlloc(block.mem, 0), start);
    EXPECT_EQ(arenaAlloc(block.mem, 0), start);
    int32_t expected = start;
    for (int32_t bytes : {1, 31, 32, 33}) {
        const Ref at = arenaAlloc(block.mem, bytes);
        EXPECT_EQ(at, expected);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block.mem + at) % 32, 0u);
        expected += bytes <= 32 ? 32 : 64;
        EXPECT_EQ(arenaCursor(block.mem), expected) << bytes << " bytes";
    }
    // Releases are bookkeeping: order and block do not matter, sizes do.
    EXPECT_EQ(arenaRelease(block.mem, kNone, 33), 64);
    EXPECT_EQ(arenaRelease(block.mem, start, 1), 32);
    EXPECT_EQ(arenaRelease(block.mem, kNone, 32), 32);
    EXPECT_EQ(arenaRelease(block.mem, kNone, 31), 32);
    EXPECT_EQ(arenaRelease(block.mem, kNone, 0), 0);
    EXPECT_EQ(arenaCursor(block.mem), start);
}

// An empty head answers kNone and stays empty on a kNone append; the first
// entry goes into the head, later ones get cells of their own.
TEST(Dct4Lists, AppendFillsTheHeadFirstThenAddsCells)
{
    Block block(3);
    ListCell* head = listInit(block.mem, arenaAlloc(block.mem, kListCellBytes));
    const Ref a = newSourceNode(block.mem), b = newSourceNode(block.mem), c = newSourceNode(block.mem);
    const int32_t cursor = arenaCursor(block.mem);
    EXPECT_EQ(listNth(head, 0), kNone);
    EXPECT_EQ(listNth(head, -1), kNone);
    EXPECT_EQ(listAppend(head, kNone), kNone);
    EXPECT_EQ(listNth(head, 0), kNone) << "0 is never an entry";
    EXPECT_EQ(arenaCursor(block.mem), cursor);
    EXPECT_EQ(listAppend(head, a), a);
    EXPECT_EQ(arenaCursor(block.mem), cursor) << "the first entry goes into the head";
    EXPECT_EQ(listAppend(head, b), b);
    EXPECT_EQ(arenaCursor(block.mem), cursor + 32) << "the second entry gets one cell";
    listAppend(head, c);
    EXPECT_EQ(listNth(head, 0), a);
    EXPECT_EQ(listNth(head, 1), b);
    EXPECT_EQ(listNth(head, 2), c);
    EXPECT_EQ(listNth(head, 4), kNone) << "the list ends before that cell";
    EXPECT_EQ(listNth(head, -2), kNone);
}

// Destroying the listed nodes, freeing the cells and releasing the head
// bring the cursor back.
TEST(Dct4Lists, DestroyFreeAndReleaseReturnTheCursor)
{
    Block block(17);
    const int32_t start = arenaCursor(block.mem);
    const Ref headAt = arenaAlloc(block.mem, kListCellBytes);
    ListCell* head = listInit(block.mem, headAt);
    for (int i = 0; i < 3; ++i)
        listAppend(head, newSourceNode(block.mem));
    destroyListedNodes(head);
    listFreeCells(head);
    arenaRelease(block.mem, headAt, kListCellBytes);
    EXPECT_EQ(arenaCursor(block.mem), start);
    destroyListedNodes(nullptr); // a null head is accepted
}

} // namespace
