#include "plan_arena.h"

namespace tvkgen::dct4 {

// The remainder is that of the address as a signed number of pointer width,
// as C's % gives it: with 4-byte pointers an address from 2 GiB up leaves a
// negative remainder and the gap grows beyond 64 bytes, which the slack of
// the size rule absorbs.
void arenaStart(uint8_t* arena)
{
    const auto remainder = static_cast<int32_t>(reinterpret_cast<intptr_t>(arena) % 32);
    setArenaCursor(arena, 2 * roundUp32(1) - remainder);
}

Ref arenaAlloc(uint8_t* arena, int32_t bytes)
{
    const int32_t old = arenaCursor(arena);
    setArenaCursor(arena, static_cast<int32_t>(static_cast<uint32_t>(old) + static_cast<uint32_t>(roundUp32(bytes))));
    return old;
}

int32_t arenaRelease(uint8_t* arena, Ref /*block*/, int32_t bytes)
{
    const int32_t rounded = roundUp32(bytes);
    setArenaCursor(arena, static_cast<int32_t>(static_cast<uint32_t>(arenaCursor(arena)) - static_cast<uint32_t>(rounded)));
    return rounded;
}

ListCell* listInit(uint8_t* arena, Ref cell)
{
    auto* head = new (arena + cell) ListCell{kNone, kNone, cell};
    return head;
}

Ref listAppend(ListCell* head, Ref value)
{
    uint8_t* arena = blockOf(head);
    ListCell* last = head;
    while (last->next != kNone)
        last = recordAt<ListCell>(arena, last->next);
    if (last->value == kNone) {
        last->value = value;
        return value;
    }
    const Ref cell = arenaAlloc(arena, kListCellBytes);
    listInit(arena, cell)->value = value;
    last->next = cell;
    return value;
}

Ref listNth(const ListCell* head, int32_t index)
{
    if (index < 0)
        return kNone;
    const uint8_t* arena = blockOf(head);
    const ListCell* cell = head;
    for (int32_t step = 0; step < index; ++step) {
        if (cell->next == kNone)
            return kNone;
        cell = recordAt<ListCell>(arena, cell->next);
    }
    return cell->value;
}

void listFreeCells(ListCell* head)
{
    uint8_t* arena = blockOf(head);
    for (Ref cell = head->next; cell != kNone;) {
        const Ref next = recordAt<ListCell>(arena, cell)->next;
        arenaRelease(arena, cell, kListCellBytes);
        cell = next;
    }
}

} // namespace tvkgen::dct4
