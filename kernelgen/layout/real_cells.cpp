#include "layout/real_cells.h"

namespace kernelgen {

const char* layoutName(RealLayout layout)
{
    switch (layout) {
    case RealLayout::CCS: return "CCS";
    case RealLayout::Pack: return "Pack";
    default: return "Perm";
    }
}

int binCell(RealLayout layout, int n, int k, bool imaginary)
{
    if (layout == RealLayout::CCS)
        return 2 * k + imaginary;
    const bool lastReal = n % 2 == 0 && 2 * k == n;
    if (k == 0 || lastReal) {
        if (imaginary)
            return -1;
        if (k == 0)
            return 0;
        return layout == RealLayout::Pack ? n - 1 : 1;
    }
    // Bins with both parts: Perm of even n has R[n/2] in cell 1, so they
    // begin one cell later than in Pack.
    const bool shifted = layout == RealLayout::Perm && n % 2 == 0;
    return (shifted ? 2 * k : 2 * k - 1) + imaginary;
}

} // namespace kernelgen
