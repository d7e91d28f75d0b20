// The complex kernels that this build holds, found by their exported names,
// with helpers to run either element type through one interface.
#pragma once

#include <dlfcn.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "dft_complex_counts.h"
#include "tvkgen.h"

namespace tvktest {

struct ComplexKernel {
    std::string type; // "32fc" or "64fc"
    int size;
    bool inverse;
    bool twins;
    ComplexKernelCounts counts;
    void* fn;

    bool is64() const { return type == "64fc"; }
    int realBytes() const { return is64() ? 8 : 4; }
    int inCells() const { return 2 * size; }
    std::string name() const
    {
        return std::string(inverse ? "tvkgDFTInv_CToC_" : "tvkgDFTFwd_CToC_") + std::to_string(size) + "_" + type;
    }
    // Runs the kernel on raw arrays of 2*size numbers of the element type.
    TvkStatus run(const void* src, void* dst, int flag) const
    {
        if (is64())
            return reinterpret_cast<TvkStatus (*)(const Tvk64fc*, Tvk64fc*, int)>(fn)(
                static_cast<const Tvk64fc*>(src), static_cast<Tvk64fc*>(dst), flag);
        return reinterpret_cast<TvkStatus (*)(const Tvk32fc*, Tvk32fc*, int)>(fn)(static_cast<const Tvk32fc*>(src),
                                                                                   static_cast<Tvk32fc*>(dst), flag);
    }
};

inline std::vector<ComplexKernel> builtComplexKernels()
{
    std::vector<ComplexKernel> kernels;
    for (const ComplexKernelCounts& c : kComplexKernelCounts) {
        ComplexKernel k{c.type, c.size, c.inverse, c.twins, c, nullptr};
        k.fn = dlsym(RTLD_DEFAULT, k.name().c_str());
        kernels.push_back(k);
    }
    return kernels;
}

// The forward kernels; each names its inverse partner through partner().
inline std::vector<ComplexKernel> builtForwardKernels()
{
    std::vector<ComplexKernel> forward;
    for (const ComplexKernel& k : builtComplexKernels())
        if (!k.inverse)
            forward.push_back(k);
    return forward;
}

inline ComplexKernel partner(const ComplexKernel& k)
{
    ComplexKernel other = k;
    other.inverse = !k.inverse;
    other.fn = dlsym(RTLD_DEFAULT, other.name().c_str());
    for (const ComplexKernelCounts& c : kComplexKernelCounts)
        if (c.type == k.type && c.size == k.size && c.inverse == other.inverse)
            other.counts = c;
    return other;
}

inline std::string kernelLabel(const ComplexKernel& k)
{
    return std::string(k.inverse ? "Inv" : "Fwd") + std::to_string(k.size) + "_" + k.type;
}

inline void PrintTo(const ComplexKernel& k, std::ostream* out) { *out << k.name(); }

// The dispatcher of a kernel's type and direction.
inline TvkStatus runDispatcher(const ComplexKernel& k, const void* src, void* dst, int len, int flag)
{
    if (k.is64())
        return (k.inverse ? tvkgDFTInv_CToC_64fc : tvkgDFTFwd_CToC_64fc)(
            static_cast<const Tvk64fc*>(src), static_cast<Tvk64fc*>(dst), len, flag);
    return (k.inverse ? tvkgDFTInv_CToC_32fc : tvkgDFTFwd_CToC_32fc)(static_cast<const Tvk32fc*>(src),
                                                                     static_cast<Tvk32fc*>(dst), len, flag);
}

// The scale constants a kernel of size n must hold, computed here
// independently: 1/N correctly rounded; 1/sqrt(N) as the binary64 quotient
// 1.0/sqrt(N) in 64fc and as the nearest binary32 in 32fc.
inline double expectedScale(const ComplexKernel& k, int flag)
{
    const bool dividesByN = flag == (k.inverse ? ScaleDivInverseByN : ScaleDivForwardByN);
    if (k.is64()) {
        if (flag == ScaleDivBySqrtN)
            return 1.0 / std::sqrt(static_cast<double>(k.size));
        return dividesByN ? 1.0 / k.size : 1.0;
    }
    if (flag == ScaleDivBySqrtN)
        return static_cast<float>(1.0L / std::sqrt(static_cast<long double>(k.size)));
    return dividesByN ? 1.0f / static_cast<float>(k.size) : 1.0f;
}

// Reads or writes element i of an interleaved array of either type.
inline std::complex<long double> elementAt(const ComplexKernel& k, const void* data, int i)
{
    if (k.is64()) {
        auto* p = static_cast<const double*>(data);
        return {p[2 * i], p[2 * i + 1]};
    }
    auto* p = static_cast<const float*>(data);
    return {p[2 * i], p[2 * i + 1]};
}

inline void setElement(const ComplexKernel& k, void* data, int i, std::complex<long double> v)
{
    if (k.is64()) {
        auto* p = static_cast<double*>(data);
        p[2 * i] = static_cast<double>(v.real());
        p[2 * i + 1] = static_cast<double>(v.imag());
    } else {
        auto* p = static_cast<float*>(data);
        p[2 * i] = static_cast<float>(v.real());
        p[2 * i + 1] = static_cast<float>(v.imag());
    }
}

} // namespace tvktest
