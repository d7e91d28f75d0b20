// Life cycle of a DCT-IV plan: the size rule, the build in a caller block,
// the tear-down. Instantiated for float and double.
#pragma once

#include <cstdint>

#include "plan_nodes.h"
#include "tvkgen.h"

namespace tvkgen::dct4 {

// The bytes a plan of `len` needs, by the size rule.
template <class Real>
TvkStatus planSize(int32_t len, int32_t* size);

// Builds the tree in `mem` (any address) and stores the root in *plan.
template <class Real>
TvkStatus planInit(Dct4Plan** plan, int32_t len, uint8_t* mem);

// Destroys the tree; the cursor returns to its start value. The block
// itself stays with the caller.
void planDestroy(Dct4Plan* plan);

} // namespace tvkgen::dct4
