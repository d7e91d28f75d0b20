#include "arith/signs.h"

namespace kernelgen {

Rotation classifyRotation(int n, int e)
{
    const int r = ((e % n) + n) % n;
    if (r == 0)
        return {RotationForm::Identity, r};
    if (2 * r == n)
        return {RotationForm::Negate, r};
    if (4 * r == n)
        return {RotationForm::TimesI, r};
    if (4 * r == 3 * n)
        return {RotationForm::TimesMinusI, r};
    if ((8 * r) % n == 0)
        return {RotationForm::OddEighth, r};
    return {RotationForm::General, r};
}

} // namespace kernelgen
