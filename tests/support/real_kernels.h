// The real-data kernels that this build holds, found in the list of exports
// by their dispatcher and size, with the layouts' cell maps written out here
// independently of the generator.
#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <ostream>
#include <string>
#include <vector>

#include "test_support.h"
#include "tvkgen.h"

namespace tvktest {

enum class Layout { CCS, Pack, Perm };
inline constexpr Layout kLayouts[] = {Layout::CCS, Layout::Pack, Layout::Perm};

inline const char* layoutName(Layout l) { return l == Layout::CCS ? "CCS" : l == Layout::Pack ? "Pack" : "Perm"; }

// Cells a layout of a length-n spectrum holds.
inline int layoutCells(Layout l, int n) { return l == Layout::CCS ? 2 * (n / 2 + 1) : n; }

// The cell of R[k] or I[k], or -1 where the layout leaves it out.
inline int cellOf(Layout l, int n, int k, bool imaginary)
{
    if (l == Layout::CCS)
        return 2 * k + (imaginary ? 1 : 0);
    const bool edge = k == 0 || (n % 2 == 0 && 2 * k == n);
    if (edge) {
        if (imaginary)
            return -1;
        if (k == 0)
            return 0;
        return l == Layout::Pack ? n - 1 : 1;
    }
    const int first = l == Layout::Perm && n % 2 == 0 ? 2 * k : 2 * k - 1;
    return first + (imaginary ? 1 : 0);
}

// CCS cells (R[k] then I[k], k = 0 .. n/2) moved into a layout's cells, and
// back from them, where I[0] and I[N/2], which no kernel reads, are 0.
template <class Ccs, class Cells>
void toLayout(const Ccs& ccs, Layout l, int n, Cells& cells)
{
    for (int b = 0; 2 * b <= n; ++b)
        for (bool imaginary : {false, true})
            if (const int cell = cellOf(l, n, b, imaginary); cell >= 0)
                cells[cell] = ccs[2 * b + imaginary];
}

template <class Cells>
std::vector<long double> fromLayout(const Cells& cells, Layout l, int n)
{
    std::vector<long double> ccs(n + 2);
    for (int b = 0; 2 * b <= n; ++b) {
        ccs[2 * b] = cells[cellOf(l, n, b, false)];
        if (b > 0 && 2 * b < n)
            ccs[2 * b + 1] = cells[cellOf(l, n, b, true)];
    }
    return ccs;
}

// The three families on real data: forward kernels into a layout, inverse
// kernels reading one, and the Hartley transform (N cells both ways).
enum class RealFamily { Forward, Inverse, Hartley };

struct RealKernel {
    RealFamily family;
    std::string type; // "32f" or "64f"
    int size;
    Layout layout; // CCS for Hartley, which has no layout
    void* fn;

    bool is64() const { return type == "64f"; }
    int realBytes() const { return is64() ? 8 : 4; }
    int inCells() const { return family == RealFamily::Inverse ? layoutCells(layout, size) : size; }
    int outCells() const { return family == RealFamily::Forward ? layoutCells(layout, size) : size; }
    std::string familyName() const
    {
        switch (family) {
        case RealFamily::Forward: return std::string("tvkgDFTFwd_RTo") + layoutName(layout);
        case RealFamily::Inverse: return std::string("tvkgDFTInv_") + layoutName(layout) + "ToR";
        default: return "tvkgHartley";
        }
    }
    std::string dispatcherName() const { return familyName() + "_" + type; }
    std::string name() const { return listedKernel(dispatcherName(), size).name; }
    TvkStatus run(const void* src, void* dst, int flag) const
    {
        return callAs<Tvk32f, Tvk64f>(is64(), fn, src, dst, flag);
    }
    TvkStatus runDispatcher(const void* src, void* dst, int len, int flag) const
    {
        return callAs<Tvk32f, Tvk64f>(is64(), exportedFunction(dispatcherName()), src, dst, len, flag);
    }
};

// Every kernel of each family, sizes 2 to 64, both types, every layout
// (Hartley has none); fn is null where the library lacks one.
inline std::vector<RealKernel> allRealKernels()
{
    std::vector<RealKernel> kernels;
    for (RealFamily family : {RealFamily::Forward, RealFamily::Inverse, RealFamily::Hartley})
        for (const char* type : {"32f", "64f"})
            for (int size = 2; size <= 64; ++size)
                for (Layout l : kLayouts)
                    if (family != RealFamily::Hartley || l == Layout::CCS) {
                        RealKernel k{family, type, size, l, nullptr};
                        k.fn = listedKernel(k.dispatcherName(), size).fn;
                        kernels.push_back(k);
                    }
    return kernels;
}

inline void PrintTo(const RealKernel& k, std::ostream* out) { *out << k.name(); }

inline std::string label(const RealKernel& k)
{
    const char* family = k.family == RealFamily::Forward ? "" : k.family == RealFamily::Inverse ? "Inv" : "Hartley";
    return family + std::string(k.family == RealFamily::Hartley ? "" : layoutName(k.layout)) + std::to_string(k.size) +
           "_" + k.type;
}

// The factor a flag picks: each direction divides by N on its own flag,
// the Hartley transform on both.
inline double scaleOf(const RealKernel& k, int flag)
{
    return scaleFactor(k.is64(), k.size, flag,
                       (flag == ScaleDivForwardByN && k.family != RealFamily::Inverse) ||
                           (flag == ScaleDivInverseByN && k.family != RealFamily::Forward));
}

// The unscaled definition in long double through the direct DFT, in the
// kernel's output cells: X into the layout; y the inverse DFT of the
// Hermitian spectrum the layout holds (I[0] and I[N/2] unread); H = Re X -
// Im X. Sums start at +0, so zeros give +0 and a unit in cell 0 gives
// exactly 1 or +0.
inline std::vector<long double> definition(const RealKernel& k, const std::vector<unsigned char>& input)
{
    const int n = k.size;
    const bool inverse = k.family == RealFamily::Inverse;
    const auto x = numbersOf(k, input);
    std::vector<std::complex<long double>> z(n);
    if (!inverse)
        std::copy(x.begin(), x.end(), z.begin());
    else {
        const auto ccs = fromLayout(x, k.layout, n);
        for (int b = 0; 2 * b <= n; ++b)
            z[(n - b) % n] = std::conj(z[b] = {ccs[2 * b], ccs[2 * b + 1]});
    }
    const auto Z = directDft(z, inverse);
    std::vector<long double> out(k.outCells());
    if (k.family == RealFamily::Forward)
        toLayout(reinterpret_cast<const long double*>(Z.data()), k.layout, n, out);
    else
        for (int b = 0; b < n; ++b)
            out[b] = inverse ? Z[b].real() : Z[b].real() - Z[b].imag();
    return out;
}

} // namespace tvktest
