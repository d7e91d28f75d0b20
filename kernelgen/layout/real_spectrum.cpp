#include "layout/real_spectrum.h"

namespace kernelgen {

const char* layoutName(RealLayout layout)
{
    switch (layout) {
    case RealLayout::CCS: return "CCS";
    case RealLayout::Pack: return "Pack";
    default: return "Perm";
    }
}

int spectrumCell(RealLayout layout, int n, int k, bool imaginary)
{
    if (layout == RealLayout::CCS)
        return 2 * k + imaginary;
    const bool nyquist = n % 2 == 0 && 2 * k == n;
    if (k == 0 || nyquist) {
        if (imaginary)
            return -1;
        if (k == 0)
            return 0;
        return layout == RealLayout::Pack ? n - 1 : 1;
    }
    // Interior bins: Perm of even n starts them on an even cell.
    const bool shifted = layout == RealLayout::Perm && n % 2 == 0;
    return (shifted ? 2 * k : 2 * k - 1) + imaginary;
}

int spectrumCells(RealLayout layout, int n) { return layout == RealLayout::CCS ? 2 * (n / 2 + 1) : n; }

} // namespace kernelgen
