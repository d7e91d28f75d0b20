// The complex kernels that this build holds, found in the list of exports
// by their dispatcher and size, with helpers to run either element type
// through one interface.
#pragma once

#include <complex>
#include <ostream>
#include <string>
#include <vector>

#include "dft_complex_counts.h"
#include "test_support.h"
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
    int outCells() const { return 2 * size; }
    std::string dispatcherName() const { return (inverse ? "tvkgDFTInv_CToC_" : "tvkgDFTFwd_CToC_") + type; }
    std::string name() const { return listedKernel(dispatcherName(), size).name; }
    TvkStatus run(const void* src, void* dst, int flag) const
    {
        return callAs<Tvk32fc, Tvk64fc>(is64(), fn, src, dst, flag);
    }
    TvkStatus runDispatcher(const void* src, void* dst, int len, int flag) const
    {
        return callAs<Tvk32fc, Tvk64fc>(is64(), exportedFunction(dispatcherName()), src, dst, len, flag);
    }
};

inline ComplexKernel complexKernel(const ComplexKernelCounts& c)
{
    ComplexKernel k{c.type, c.size, c.inverse, c.twins, c, nullptr};
    k.fn = listedKernel(k.dispatcherName(), k.size).fn;
    return k;
}

inline std::vector<ComplexKernel> builtComplexKernels()
{
    std::vector<ComplexKernel> kernels;
    for (const ComplexKernelCounts& c : kComplexKernelCounts)
        kernels.push_back(complexKernel(c));
    return kernels;
}

// The kernel of the same type and size in the other direction.
inline ComplexKernel partner(const ComplexKernel& k)
{
    for (const ComplexKernelCounts& c : kComplexKernelCounts)
        if (c.type == k.type && c.size == k.size && c.inverse != k.inverse)
            return complexKernel(c);
    return {};
}

inline std::string label(const ComplexKernel& k)
{
    return std::string(k.inverse ? "Inv" : "Fwd") + std::to_string(k.size) + "_" + k.type;
}

inline void PrintTo(const ComplexKernel& k, std::ostream* out) { *out << k.name(); }

// The factor a flag picks: each direction divides by N on its own flag.
inline double scaleOf(const ComplexKernel& k, int flag)
{
    return scaleFactor(k.is64(), k.size, flag, flag == (k.inverse ? ScaleDivInverseByN : ScaleDivForwardByN));
}

// The unscaled definition in long double, in the kernel's output cells
// (real and imaginary parts interleaved, as in the input).
inline std::vector<long double> definition(const ComplexKernel& k, const std::vector<unsigned char>& input)
{
    const auto cells = numbersOf(k, input);
    std::vector<std::complex<long double>> x(k.size);
    for (int i = 0; i < k.size; ++i)
        x[i] = {cells[2 * i], cells[2 * i + 1]};
    std::vector<long double> out;
    for (const auto& X : directDft(x, k.inverse))
        out.insert(out.end(), {X.real(), X.imag()});
    return out;
}

} // namespace tvktest
