// Scale flags: which of a kernel's three compiled-in constants a flag picks.
#pragma once

#include "tvkgen.h"

namespace tvkgen {

// Each kernel stores its factors in this order.
enum ScaleIndex : int { kScaleOne = 0, kScaleInvN = 1, kScaleInvSqrtN = 2 };

// Which flag divides by N depends on the family: forward and inverse kernels
// each answer to their own flag; self-inverse transforms to both.
enum class ScaleRow { Forward, Inverse, SelfInverse };

// The flag is one whole value, not a bit mask; -1 for anything else.
constexpr int scaleIndex(int flag, ScaleRow row)
{
    switch (flag) {
    case ScaleDivForwardByN:
        return row == ScaleRow::Inverse ? kScaleOne : kScaleInvN;
    case ScaleDivInverseByN:
        return row == ScaleRow::Forward ? kScaleOne : kScaleInvN;
    case ScaleDivBySqrtN:
        return kScaleInvSqrtN;
    case ScaleNoDivide:
        return kScaleOne;
    default:
        return -1;
    }
}

} // namespace tvkgen
