// The plan arena and its lists. A DCT-IV plan lives in one caller block: a
// bump allocator carves records (the plan's nodes, list cells, tables and
// work blocks) out of it, and every record refers to another by its 32-bit
// offset from the block's first byte. The arena only hands out and takes
// back bytes; what a record holds is the business of the layers above. Records keep the 32-bit widths of the size rule, so a plan
// fits in exactly the bytes that the size rule promises, and it holds no
// address of its own block.
#pragma once

#include <cstdint>
#include <cstring>
#include <new>

namespace tvkgen::dct4 {

// Offset of a record from the block's first byte. Nothing is ever placed at
// offset 0 (the cursor starts 33 to 64 bytes in), so 0 means "none".
using Ref = int32_t;
constexpr Ref kNone = 0;

// n + 31 with the low five bits cleared, in wrapping 32-bit arithmetic.
constexpr int32_t roundUp32(int32_t n)
{
    return static_cast<int32_t>((static_cast<uint32_t>(n) + 31u) & ~31u);
}

// The cursor, the allocator's whole state, is the block's first 32-bit word:
// the offset of the next free byte. The block may stand at any byte address,
// so the word is moved with memcpy.
inline int32_t arenaCursor(const uint8_t* arena)
{
    int32_t cursor;
    std::memcpy(&cursor, arena, sizeof cursor);
    return cursor;
}

inline void setArenaCursor(uint8_t* arena, int32_t cursor) { std::memcpy(arena, &cursor, sizeof cursor); }

// The first allocation stands on the first 32-byte boundary that leaves room
// for a 32-byte gap: the address with its low five bits cleared, plus
// 2 x roundUp32(1). The cursor word lies in that gap.
void arenaStart(uint8_t* arena);

// Old cursor; the cursor grows by roundUp32(bytes). No bound is checked and
// the memory is not cleared: the size rule is the only protection.
Ref arenaAlloc(uint8_t* arena, int32_t bytes);

// Bookkeeping only: the cursor shrinks by roundUp32(bytes), whichever block
// is named. Returns roundUp32(bytes).
int32_t arenaRelease(uint8_t* arena, Ref block, int32_t bytes);

template <class T>
T* recordAt(uint8_t* arena, Ref ref)
{
    return std::launder(reinterpret_cast<T*>(arena + ref));
}

template <class T>
const T* recordAt(const uint8_t* arena, Ref ref)
{
    return std::launder(reinterpret_cast<const T*>(arena + ref));
}

// Any record finds its block from its own address and the distance back to
// the block's first byte that it holds.
inline uint8_t* blockOf(const void* record, int32_t distance)
{
    return const_cast<uint8_t*>(static_cast<const uint8_t*>(record)) - distance;
}

// ---- Lists ---------------------------------------------------------------

// A list is named by its head cell, which lives as long as its owner, also
// while the list is empty. The first entry goes into the head; later entries
// get cells of their own.
struct ListCell {
    Ref value; // the node, kNone when the cell is empty
    Ref next;  // the following cell, kNone at the tail
    int32_t arena;
};

constexpr int32_t kListCellBytes = sizeof(ListCell);
static_assert(kListCellBytes == 12);

// count x roundUp32(12): the bytes that the size rule counts for cells.
constexpr int32_t cellBytes(int32_t count) { return count * roundUp32(kListCellBytes); }

inline uint8_t* blockOf(const ListCell* cell) { return blockOf(cell, cell->arena); }

// Sets up the cell at `cell` as an empty list head.
ListCell* listInit(uint8_t* arena, Ref cell);

// Appends `value` and returns it; a kNone value leaves an empty list empty.
Ref listAppend(ListCell* head, Ref value);

// The value of cell number `index`, or kNone for a negative index and for a
// list that ends before that cell. The plan only ever asks for index 0.
Ref listNth(const ListCell* head, int32_t index);

// Releases every cell behind the head; the head and its `next` stay as they
// stand.
void listFreeCells(ListCell* head);

// Releases a list head: the last step of a list's life.
inline void listReleaseHead(uint8_t* arena, ListCell* head)
{
    arenaRelease(arena, static_cast<Ref>(reinterpret_cast<uint8_t*>(head) - arena), kListCellBytes);
}

} // namespace tvkgen::dct4
