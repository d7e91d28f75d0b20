// Orders of the Walsh-Hadamard family and the pass plans of the large
// orders, which also fix the size of their work buffer.
#pragma once

#include <cstdint>

namespace tvkgen::wht {

constexpr int kMinOrder = 1;
constexpr int kMaxOrder = 13;
// From this order on the data no longer fits the registers and the stack
// frame, and a kernel passes it through a work buffer.
constexpr int kFirstBufferedOrder = 8;

// A large order first transforms blocks of 2^blockOrder consecutive elements
// (the levels 1..blockOrder), then does the remaining levels by column steps.
// Two passes (chunkOrder 0): blocks from src into the buffer, one column
// stage from the buffer to dst. Three passes: chunk by chunk of
// 2^chunkOrder elements, its eight blocks go to the tail region and a
// radix-8 column stage takes them to the chunk's place in the main region;
// a last column stage across the chunks goes to dst.
struct Plan {
    int blockOrder;
    int chunkOrder;
};

// Indexed by order - 8. Up to 8192 bytes of data two passes, above three.
// The uneven block sizes are deliberate: 32f order 8 has blocks of 32 where
// order 9 has 64, 64f order 10 blocks of 128, and 32f order 11 reaches a
// radix-32 last stage rather than going to three passes.
inline constexpr Plan kPlans32f[] = {
    {5, 0}, // order  8: 8 blocks of 32, radix 8
    {6, 0}, // order  9: 8 blocks of 64, radix 8
    {6, 0}, // order 10: 16 blocks of 64, radix 16
    {6, 0}, // order 11: 32 blocks of 64, radix 32
    {6, 9}, // order 12: 8 chunks of 512, blocks of 64, radix 8 then 8
    {6, 9}, // order 13: 16 chunks of 512, blocks of 64, radix 8 then 16
};
inline constexpr Plan kPlans64f[] = {
    {5, 0},  // order  8: 8 blocks of 32, radix 8
    {5, 0},  // order  9: 16 blocks of 32, radix 16
    {7, 0},  // order 10: 8 blocks of 128, radix 8
    {5, 8},  // order 11: 8 chunks of 256, blocks of 32, radix 8 then 8
    {5, 8},  // order 12: 16 chunks of 256, blocks of 32, radix 8 then 16
    {7, 10}, // order 13: 8 chunks of 1024, blocks of 128, radix 8 then 8
};

template <class Real>
constexpr Plan planOf(int order)
{
    static_assert(sizeof(Real) == 4 || sizeof(Real) == 8);
    return (sizeof(Real) == 4 ? kPlans32f : kPlans64f)[order - kFirstBufferedOrder];
}

// Bytes of the work buffer: the data's own size, plus one chunk (the tail
// region) for a three-pass plan; none below the buffered orders.
template <class Real>
constexpr int32_t bufferBytes(int order)
{
    if (order < kFirstBufferedOrder)
        return 0;
    const Plan plan = planOf<Real>(order);
    const int32_t elements = (int32_t{1} << order) + (plan.chunkOrder ? int32_t{1} << plan.chunkOrder : 0);
    return elements * static_cast<int32_t>(sizeof(Real));
}

} // namespace tvkgen::wht
