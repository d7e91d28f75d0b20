// C++20 interface to tvkgen, header only: the C functions of tvkgen.h behind
// spans of the element type, float and double by overload, sizes fixed at
// compile time where the span's extent fixes them (a size out of range is a
// compile error there) and through the size dispatchers otherwise.
//
// A status other than StatusOk is thrown as tvkgen::error, which names the
// C function; the functions of tvkgen::nothrow return the status instead.
// std::complex<T> arrays are passed as they are: the standard lays a
// complex number out as two T, real part first, as Tvk32fc and Tvk64fc.
#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "tvkgen.h"

namespace tvkgen {

// The scale flag: which factor the result is multiplied by (the table is in
// tvkgen.h).
enum class scale : int {
    forward_by_n = ScaleDivForwardByN, // 1/N in forward kernels, Hartley and WHT; 1 in inverse ones
    inverse_by_n = ScaleDivInverseByN, // 1/N in inverse kernels, Hartley and WHT; 1 in forward ones
    by_sqrt_n = ScaleDivBySqrtN,
    none = ScaleNoDivide,
};

// A status other than StatusOk from the C function `function`.
class error : public std::runtime_error {
public:
    error(TvkStatus status, const std::string& function)
        : std::runtime_error(function + " returned status " + std::to_string(status)), status_(status),
          function_(function)
    {
    }
    TvkStatus status() const noexcept { return status_; }
    const std::string& function() const noexcept { return function_; }

private:
    TvkStatus status_;
    std::string function_;
};

// The packed layouts of a real spectrum, cell by cell in tvkgen.h (CCS is
// numpy.fft.rfft's result viewed as interleaved reals).
struct ccs_t {};
struct pack_t {};
struct perm_t {};
inline constexpr ccs_t ccs{};
inline constexpr pack_t pack{};
inline constexpr perm_t perm{};

// Cells of a length-n spectrum in a layout: n + 2 (even n) or n + 1 in CCS,
// n in Pack and Perm.
template <class Layout>
constexpr std::size_t spectrum_cells(std::size_t n)
{
    return std::is_same_v<Layout, ccs_t> ? 2 * (n / 2 + 1) : n;
}

namespace detail {

#define TVKGEN_HPP_SIZES(X, p, t)                                                                             \
    X(p, t, 2) X(p, t, 3) X(p, t, 4) X(p, t, 5) X(p, t, 6) X(p, t, 7) X(p, t, 8) X(p, t, 9) X(p, t, 10)      \
    X(p, t, 11) X(p, t, 12) X(p, t, 13) X(p, t, 14) X(p, t, 15) X(p, t, 16) X(p, t, 17) X(p, t, 18)          \
    X(p, t, 19) X(p, t, 20) X(p, t, 21) X(p, t, 22) X(p, t, 23) X(p, t, 24) X(p, t, 25) X(p, t, 26)          \
    X(p, t, 27) X(p, t, 28) X(p, t, 29) X(p, t, 30) X(p, t, 31) X(p, t, 32) X(p, t, 33) X(p, t, 34)          \
    X(p, t, 35) X(p, t, 36) X(p, t, 37) X(p, t, 38) X(p, t, 39) X(p, t, 40) X(p, t, 41) X(p, t, 42)          \
    X(p, t, 43) X(p, t, 44) X(p, t, 45) X(p, t, 46) X(p, t, 47) X(p, t, 48) X(p, t, 49) X(p, t, 50)          \
    X(p, t, 51) X(p, t, 52) X(p, t, 53) X(p, t, 54) X(p, t, 55) X(p, t, 56) X(p, t, 57) X(p, t, 58)          \
    X(p, t, 59) X(p, t, 60) X(p, t, 61) X(p, t, 62) X(p, t, 63) X(p, t, 64)
#define TVKGEN_HPP_ENTRY(p, t, n) p##_##n##_##t,
// The kernels of a family indexed by size (or order), and its dispatcher.
#define TVKGEN_HPP_FAMILY(p, t)                                                                               \
    {nullptr, nullptr, TVKGEN_HPP_SIZES(TVKGEN_HPP_ENTRY, p, t)}, p##_##t, #p, #t

template <class In, class Out>
struct Family {
    using Kernel = TvkStatus (*)(const In*, Out*, int);
    using Dispatcher = TvkStatus (*)(const In*, Out*, int, int);
    Kernel kernels[65];
    Dispatcher dispatcher;
    const char* name;
    const char* type;

    std::string kernelName(std::size_t n) const { return std::string(name) + "_" + std::to_string(n) + "_" + type; }
    std::string dispatcherName() const { return std::string(name) + "_" + type; }
};

template <class T>
struct C;
template <>
struct C<float> {
    using type = Tvk32fc;
};
template <>
struct C<double> {
    using type = Tvk64fc;
};
template <class T>
using Elem = std::conditional_t<std::is_same_v<T, float>, Tvk32f, Tvk64f>;

template <class T>
struct Families;

// Every family of one precision, suffix t for reals and tc for complex.
#define TVKGEN_HPP_FAMILIES(T, t, tc)                                                                         \
    template <>                                                                                                \
    struct Families<T> {                                                                                       \
        static constexpr Family<Tvk##tc, Tvk##tc> dftForward{TVKGEN_HPP_FAMILY(tvkgDFTFwd_CToC, tc)};          \
        static constexpr Family<Tvk##tc, Tvk##tc> dftInverse{TVKGEN_HPP_FAMILY(tvkgDFTInv_CToC, tc)};          \
        static constexpr Family<Tvk##t, Tvk##t> toCcs{TVKGEN_HPP_FAMILY(tvkgDFTFwd_RToCCS, t)};                \
        static constexpr Family<Tvk##t, Tvk##t> toPack{TVKGEN_HPP_FAMILY(tvkgDFTFwd_RToPack, t)};              \
        static constexpr Family<Tvk##t, Tvk##t> toPerm{TVKGEN_HPP_FAMILY(tvkgDFTFwd_RToPerm, t)};              \
        static constexpr Family<Tvk##t, Tvk##t> fromCcs{TVKGEN_HPP_FAMILY(tvkgDFTInv_CCSToR, t)};              \
        static constexpr Family<Tvk##t, Tvk##t> fromPack{TVKGEN_HPP_FAMILY(tvkgDFTInv_PackToR, t)};            \
        static constexpr Family<Tvk##t, Tvk##t> fromPerm{TVKGEN_HPP_FAMILY(tvkgDFTInv_PermToR, t)};            \
        static constexpr Family<Tvk##t, Tvk##t> hartley{TVKGEN_HPP_FAMILY(tvkgHartley, t)};                    \
        static constexpr auto whtDispatcher = tvkgWHT_##t;                                                     \
    };
TVKGEN_HPP_FAMILIES(float, 32f, 32fc)
TVKGEN_HPP_FAMILIES(double, 64f, 64fc)

#undef TVKGEN_HPP_FAMILIES
#undef TVKGEN_HPP_FAMILY
#undef TVKGEN_HPP_ENTRY
#undef TVKGEN_HPP_SIZES

template <class T>
const auto& forwardLayout(ccs_t) { return Families<T>::toCcs; }
template <class T>
const auto& forwardLayout(pack_t) { return Families<T>::toPack; }
template <class T>
const auto& forwardLayout(perm_t) { return Families<T>::toPerm; }
template <class T>
const auto& inverseLayout(ccs_t) { return Families<T>::fromCcs; }
template <class T>
const auto& inverseLayout(pack_t) { return Families<T>::fromPack; }
template <class T>
const auto& inverseLayout(perm_t) { return Families<T>::fromPerm; }

template <class T>
auto* cx(const std::complex<T>* p) noexcept
{
    return reinterpret_cast<const typename C<T>::type*>(p);
}
template <class T>
auto* cx(std::complex<T>* p) noexcept
{
    return reinterpret_cast<typename C<T>::type*>(p);
}

template <std::size_t N>
constexpr bool kernelSize = N >= 2 && N <= 64;

// One call: the size's kernel where N is fixed, else the dispatcher.
template <std::size_t N, class In, class Out>
TvkStatus call(const Family<In, Out>& f, const In* in, Out* out, std::size_t n, scale s) noexcept
{
    if constexpr (N != std::dynamic_extent)
        return f.kernels[N](in, out, static_cast<int>(s));
    else
        return f.dispatcher(in, out, n > 64 ? -1 : static_cast<int>(n), static_cast<int>(s));
}

template <std::size_t N, class In, class Out>
void check(TvkStatus status, const Family<In, Out>& f, std::size_t n)
{
    if (status != StatusOk)
        throw error(status, N != std::dynamic_extent ? f.kernelName(n) : f.dispatcherName());
}

template <class T>
const auto& complexFamily(bool inverse)
{
    return inverse ? Families<T>::dftInverse : Families<T>::dftForward;
}

// The complex DFT of either direction, its status returned.
template <bool inverse, class In, class Out>
TvkStatus complexDft(const In& in, Out&& out, scale s) noexcept
{
    const auto i = std::span(in);
    const auto o = std::span(out);
    using T = typename std::remove_cv_t<typename decltype(i)::element_type>::value_type;
    constexpr std::size_t N = decltype(i)::extent;
    static_assert(N == std::dynamic_extent || kernelSize<N>, "complex DFT sizes are 2 to 64");
    if (i.size() != o.size())
        return StatusSizeError;
    return call<N>(complexFamily<T>(inverse), cx(i.data()), cx(o.data()), i.size(), s);
}

} // namespace detail

// ---- Functions returning the status ------------------------------------------
// Arguments are contiguous ranges (spans, arrays, vectors) of float, double
// or their complex numbers; an extent fixed at compile time picks the size's
// kernel, any other the dispatcher.
namespace nothrow {

// Complex DFT of n = in.size() points (2..64); out.size() must equal n.
template <class In, class Out>
TvkStatus dft_forward(const In& in, Out&& out, scale s) noexcept
{
    return detail::complexDft<false>(in, out, s);
}

template <class In, class Out>
TvkStatus dft_inverse(const In& in, Out&& out, scale s) noexcept
{
    return detail::complexDft<true>(in, out, s);
}

// Real DFT of n = in.size() reals into spectrum_cells<Layout>(n) cells of out.
template <class Layout, class In, class Out>
TvkStatus rfft(Layout layout, const In& in, Out&& out, scale s) noexcept
{
    const auto i = std::span(in);
    const auto o = std::span(out);
    using T = std::remove_cv_t<typename decltype(i)::element_type>;
    constexpr std::size_t N = decltype(i)::extent;
    static_assert(N == std::dynamic_extent || detail::kernelSize<N>, "real DFT sizes are 2 to 64");
    if (o.size() < spectrum_cells<Layout>(i.size()))
        return StatusSizeError;
    return detail::call<N>(detail::forwardLayout<T>(layout), i.data(), o.data(), i.size(), s);
}

// The inverse: n = out.size() reals from spectrum_cells<Layout>(n) cells of in.
template <class Layout, class In, class Out>
TvkStatus irfft(Layout layout, const In& in, Out&& out, scale s) noexcept
{
    const auto i = std::span(in);
    const auto o = std::span(out);
    using T = std::remove_cv_t<typename decltype(o)::element_type>;
    constexpr std::size_t N = decltype(o)::extent;
    static_assert(N == std::dynamic_extent || detail::kernelSize<N>, "real DFT sizes are 2 to 64");
    if (i.size() < spectrum_cells<Layout>(o.size()))
        return StatusSizeError;
    return detail::call<N>(detail::inverseLayout<T>(layout), i.data(), o.data(), o.size(), s);
}

// Hartley transform of n = in.size() reals (2..64); out.size() must equal n.
template <class In, class Out>
TvkStatus hartley(const In& in, Out&& out, scale s) noexcept
{
    const auto i = std::span(in);
    const auto o = std::span(out);
    using T = std::remove_cv_t<typename decltype(i)::element_type>;
    constexpr std::size_t N = decltype(i)::extent;
    static_assert(N == std::dynamic_extent || detail::kernelSize<N>, "Hartley sizes are 2 to 64");
    if (i.size() != o.size())
        return StatusSizeError;
    return detail::call<N>(detail::Families<T>::hartley, i.data(), o.data(), i.size(), s);
}

// Walsh-Hadamard of 2^order points (order 1..13): in and out 2^order long;
// `buffer` as in tvkgen.h (null: the kernel's own).
template <class In, class Out>
TvkStatus wht(const In& in, Out&& out, scale s, std::uint8_t* buffer = nullptr) noexcept
{
    const auto i = std::span(in);
    const auto o = std::span(out);
    using T = std::remove_cv_t<typename decltype(i)::element_type>;
    int order = 0;
    while (order < 14 && (std::size_t{1} << order) < i.size())
        ++order;
    if (i.size() != o.size() || (std::size_t{1} << order) != i.size())
        return StatusSizeError;
    return detail::Families<T>::whtDispatcher(i.data(), o.data(), order, static_cast<int>(s), buffer);
}

} // namespace nothrow

// ---- Functions throwing tvkgen::error ------------------------------------------

template <class In, class Out>
void dft_forward(const In& in, Out&& out, scale s)
{
    const auto i = std::span(in);
    using T = typename std::remove_cv_t<typename decltype(i)::element_type>::value_type;
    detail::check<decltype(i)::extent>(detail::complexDft<false>(in, out, s), detail::complexFamily<T>(false), i.size());
}

template <class In, class Out>
void dft_inverse(const In& in, Out&& out, scale s)
{
    const auto i = std::span(in);
    using T = typename std::remove_cv_t<typename decltype(i)::element_type>::value_type;
    detail::check<decltype(i)::extent>(detail::complexDft<true>(in, out, s), detail::complexFamily<T>(true), i.size());
}

template <class Layout, class In, class Out>
void rfft(Layout layout, const In& in, Out&& out, scale s)
{
    const auto i = std::span(in);
    using T = std::remove_cv_t<typename decltype(i)::element_type>;
    detail::check<decltype(i)::extent>(nothrow::rfft(layout, in, out, s), detail::forwardLayout<T>(layout), i.size());
}

template <class Layout, class In, class Out>
void irfft(Layout layout, const In& in, Out&& out, scale s)
{
    const auto o = std::span(out);
    using T = std::remove_cv_t<typename decltype(o)::element_type>;
    detail::check<decltype(o)::extent>(nothrow::irfft(layout, in, out, s), detail::inverseLayout<T>(layout), o.size());
}

template <class In, class Out>
void hartley(const In& in, Out&& out, scale s)
{
    const auto i = std::span(in);
    using T = std::remove_cv_t<typename decltype(i)::element_type>;
    detail::check<decltype(i)::extent>(nothrow::hartley(in, out, s), detail::Families<T>::hartley, i.size());
}

template <class In, class Out>
void wht(const In& in, Out&& out, scale s, std::uint8_t* buffer = nullptr)
{
    const auto i = std::span(in);
    using T = std::remove_cv_t<typename decltype(i)::element_type>;
    const TvkStatus status = nothrow::wht(in, out, s, buffer);
    if (status != StatusOk)
        throw error(status, std::is_same_v<T, float> ? "tvkgWHT_32f" : "tvkgWHT_64f");
}

// A DCT-IV plan of one power-of-two length: in memory the caller lends
// (arena_bytes(len) bytes, 16-byte aligned, kept alive by the caller) or in
// memory of its own, freed with the plan.
template <class T>
class dct4_plan {
    using Plan = std::conditional_t<std::is_same_v<T, float>, TvkgDCT4Plan_32f, TvkgDCT4Plan_64f>;
    static constexpr bool single = std::is_same_v<T, float>;

public:
    // The longest plan: from twice this length on, the library's 32-bit plan
    // size is refused or wraps to a block too small for the plan.
    static constexpr int max_length = single ? 1 << 26 : 1 << 25;

    // Lengths other than the powers of two from 2 to max_length throw
    // tvkgen::error with StatusSizeError (the C functions take 2^k + 1 too,
    // and compute no DCT-IV of it).
    explicit dct4_plan(int len) : len_(len), owned_(true)
    {
        checkLength(len, single ? "tvkgDCT4InitAlloc_32f" : "tvkgDCT4InitAlloc_64f");
        if constexpr (single)
            check(tvkgDCT4InitAlloc_32f(&plan_, len), "tvkgDCT4InitAlloc_32f");
        else
            check(tvkgDCT4InitAlloc_64f(&plan_, len), "tvkgDCT4InitAlloc_64f");
    }
    dct4_plan(int len, std::span<std::uint8_t> arena) : len_(len), owned_(false)
    {
        const char* name = single ? "tvkgDCT4Init_32f" : "tvkgDCT4Init_64f";
        checkLength(len, name);
        if (arena.size() < arena_bytes(len))
            throw error(StatusSizeError, name);
        if constexpr (single)
            check(tvkgDCT4Init_32f(&plan_, len, arena.data()), name);
        else
            check(tvkgDCT4Init_64f(&plan_, len, arena.data()), name);
    }
    dct4_plan(const dct4_plan&) = delete;
    dct4_plan& operator=(const dct4_plan&) = delete;
    ~dct4_plan()
    {
        if (!owned_)
            return;
        if constexpr (single)
            tvkgDCT4Free_32f(plan_);
        else
            tvkgDCT4Free_64f(plan_);
    }

    // Bytes of a plan of length len in a lent arena.
    static std::size_t arena_bytes(int len)
    {
        checkLength(len, single ? "tvkgDCT4GetSize_32f" : "tvkgDCT4GetSize_64f");
        std::int32_t bytes = 0;
        if constexpr (single)
            check(tvkgDCT4GetSize_32f(len, &bytes), "tvkgDCT4GetSize_32f");
        else
            check(tvkgDCT4GetSize_64f(len, &bytes), "tvkgDCT4GetSize_64f");
        return static_cast<std::size_t>(bytes);
    }

    int length() const noexcept { return len_; }

    // The transform of in into out, both length() long.
    TvkStatus run(std::span<const T> in, std::span<T> out) const noexcept
    {
        if (in.size() != static_cast<std::size_t>(len_) || out.size() != static_cast<std::size_t>(len_))
            return StatusSizeError;
        if constexpr (single)
            return tvkgDCT4_32f(in.data(), out.data(), plan_);
        else
            return tvkgDCT4_64f(in.data(), out.data(), plan_);
    }
    void operator()(std::span<const T> in, std::span<T> out) const
    {
        check(run(in, out), single ? "tvkgDCT4_32f" : "tvkgDCT4_64f");
    }

private:
    static void check(TvkStatus status, const char* function)
    {
        if (status != StatusOk)
            throw error(status, function);
    }
    static void checkLength(int len, const char* function)
    {
        if (len < 2 || len > max_length || (len & (len - 1)) != 0)
            throw error(StatusSizeError, function);
    }

    Plan* plan_ = nullptr;
    int len_;
    bool owned_;
};

} // namespace tvkgen
