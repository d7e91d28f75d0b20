// The forward real kernels that this build holds, found by their exported
// names, with the layouts' cell maps written out here independently of the
// generator.
#pragma once

#include <dlfcn.h>

#include <cmath>
#include <complex>
#include <ostream>
#include <string>
#include <vector>

#include "dft_real_forward_counts.h"
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

struct RealKernel {
    std::string type; // "32f" or "64f"
    int size;
    Layout layout;
    RealKernelCounts counts;
    void* fn;

    bool is64() const { return type == "64f"; }
    int realBytes() const { return is64() ? 8 : 4; }
    int cells() const { return layoutCells(layout, size); }
    std::string name() const
    {
        return std::string("tvkgDFTFwd_RTo") + layoutName(layout) + "_" + std::to_string(size) + "_" + type;
    }
    std::string dispatcherName() const { return std::string("tvkgDFTFwd_RTo") + layoutName(layout) + "_" + type; }
    TvkStatus run(const void* src, void* dst, int flag) const
    {
        if (is64())
            return reinterpret_cast<TvkStatus (*)(const Tvk64f*, Tvk64f*, int)>(fn)(static_cast<const Tvk64f*>(src),
                                                                                     static_cast<Tvk64f*>(dst), flag);
        return reinterpret_cast<TvkStatus (*)(const Tvk32f*, Tvk32f*, int)>(fn)(static_cast<const Tvk32f*>(src),
                                                                                 static_cast<Tvk32f*>(dst), flag);
    }
    TvkStatus runDispatcher(const void* src, void* dst, int len, int flag) const
    {
        void* d = dlsym(RTLD_DEFAULT, dispatcherName().c_str());
        if (is64())
            return reinterpret_cast<TvkStatus (*)(const Tvk64f*, Tvk64f*, int, int)>(d)(
                static_cast<const Tvk64f*>(src), static_cast<Tvk64f*>(dst), len, flag);
        return reinterpret_cast<TvkStatus (*)(const Tvk32f*, Tvk32f*, int, int)>(d)(
            static_cast<const Tvk32f*>(src), static_cast<Tvk32f*>(dst), len, flag);
    }
};

inline std::vector<RealKernel> builtRealForwardKernels()
{
    std::vector<RealKernel> kernels;
    for (const RealKernelCounts& c : kRealForwardCounts)
        for (Layout l : kLayouts) {
            RealKernel k{c.type, c.size, l, c, nullptr};
            k.fn = dlsym(RTLD_DEFAULT, k.name().c_str());
            kernels.push_back(k);
        }
    return kernels;
}

inline void PrintTo(const RealKernel& k, std::ostream* out) { *out << k.name(); }

inline std::string realKernelLabel(const RealKernel& k)
{
    return std::string(layoutName(k.layout)) + std::to_string(k.size) + "_" + k.type;
}

// The forward factors: 1/N correctly rounded in the element type, 1/sqrt(N)
// as the binary64 quotient 1.0/sqrt(N) in 64f and the nearest binary32 in 32f.
inline double forwardScale(const RealKernel& k, int flag)
{
    if (flag == ScaleDivBySqrtN)
        return k.is64() ? 1.0 / std::sqrt(static_cast<double>(k.size))
                        : static_cast<float>(1.0L / std::sqrt(static_cast<long double>(k.size)));
    if (flag == ScaleDivForwardByN)
        return k.is64() ? 1.0 / k.size : 1.0f / static_cast<float>(k.size);
    return 1.0;
}

// Number i of an array of the kernel's element type.
inline long double numberAt(const RealKernel& k, const void* data, int i)
{
    return k.is64() ? static_cast<const double*>(data)[i] : static_cast<const float*>(data)[i];
}

inline void setNumber(const RealKernel& k, void* data, int i, long double v)
{
    if (k.is64())
        static_cast<double*>(data)[i] = static_cast<double>(v);
    else
        static_cast<float*>(data)[i] = static_cast<float>(v);
}

} // namespace tvktest
