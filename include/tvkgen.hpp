// C++20 interface to tvkgen, header only: the C functions of tvkgen.h behind
// spans of the element type, float and double by overload, sizes fixed at
// compile time where the span's extent fixes them (a size out of range is a
// compile error there) and through the size dispatchers otherwise.
//
// A status other than StatusOk is thrown as tvkgen::error, which names the
// C function; the functions of tvkgen::nothrow return the status instead.
// std::complex<T> arrays are passed as they are: the standard lays a
// complex number out as two T, real part first, as Tvk32fc and Tvk64fc.
// tvkgen::batch runs many rows in one call where tvkgen_batch.h is present.
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

// Every exported function under its group and size, as the list of exports
// gives them: a kernel under its dispatcher and size, every other function
// under itself and 0. The interface calls through these and names them in
// its errors.
template <auto group, int size>
struct Export;
#define TVKG_EXPORT(shape, function, type, size, group) \
    template <>                                          \
    struct Export<&group, size> {                        \
        static constexpr auto fn = &function;            \
        static constexpr const char* name = #function;   \
    };
#include "tvkgen_exports.inc"

// The functions of one precision, named by its complex and real suffixes.
template <class T>
struct Api;
#define TVKG_PRECISION(T, c, r)                                                                                   \
    template <>                                                                                                   \
    struct Api<T> {                                                                                               \
        using Complex = Tvk##c;                                                                                   \
        using Plan = TvkgDCT4Plan_##r;                                                                            \
        static constexpr auto dftForward = tvkgDFTFwd_CToC_##c, dftInverse = tvkgDFTInv_CToC_##c;                 \
        static constexpr auto toCcs = tvkgDFTFwd_RToCCS_##r, toPack = tvkgDFTFwd_RToPack_##r,                     \
                              toPerm = tvkgDFTFwd_RToPerm_##r, fromCcs = tvkgDFTInv_CCSToR_##r,                   \
                              fromPack = tvkgDFTInv_PackToR_##r, fromPerm = tvkgDFTInv_PermToR_##r,               \
                              hartley = tvkgHartley_##r;                                                          \
        static constexpr auto wht = tvkgWHT_##r;                                                                  \
        static constexpr auto dct4GetSize = tvkgDCT4GetSize_##r;                                                  \
        static constexpr auto dct4Init = tvkgDCT4Init_##r;                                                        \
        static constexpr auto dct4InitAlloc = tvkgDCT4InitAlloc_##r;                                              \
        static constexpr auto dct4 = tvkgDCT4_##r;                                                                \
        static constexpr auto dct4Free = tvkgDCT4Free_##r;                                                        \
    };
TVKG_PRECISION(float, 32fc, 32f)
TVKG_PRECISION(double, 64fc, 64f)
#undef TVKG_PRECISION

template <class T>
constexpr auto forward(ccs_t) { return Api<T>::toCcs; }
template <class T>
constexpr auto forward(pack_t) { return Api<T>::toPack; }
template <class T>
constexpr auto forward(perm_t) { return Api<T>::toPerm; }
template <class T>
constexpr auto inverse(ccs_t) { return Api<T>::fromCcs; }
template <class T>
constexpr auto inverse(pack_t) { return Api<T>::fromPack; }
template <class T>
constexpr auto inverse(perm_t) { return Api<T>::fromPerm; }

template <class T>
auto* cx(const std::complex<T>* p) noexcept
{
    return reinterpret_cast<const typename Api<T>::Complex*>(p);
}
template <class T>
auto* cx(std::complex<T>* p) noexcept
{
    return reinterpret_cast<typename Api<T>::Complex*>(p);
}

// A call's status and the C function that gave it, thrown where it is not
// StatusOk.
struct Result {
    TvkStatus status;
    const char* function;
};

inline void raise(Result r)
{
    if (r.status != StatusOk)
        throw error(r.status, r.function);
}

// One transform of n points: the size's kernel where the extent N fixes n,
// else the dispatcher; StatusSizeError, and no call, where the arrays do not
// fit.
template <auto dispatcher, std::size_t N, class In, class Out>
Result transform(const In* in, Out* out, std::size_t n, bool fits, scale s) noexcept
{
    static_assert(N == std::dynamic_extent || (N >= 2 && N <= 64), "transform sizes are 2 to 64");
    constexpr int size = N == std::dynamic_extent ? 0 : static_cast<int>(N);
    using Called = Export<dispatcher, size>;
    if (!fits)
        return {StatusSizeError, Called::name};
    if constexpr (size == 0)
        return {dispatcher(in, out, n > 64 ? -1 : static_cast<int>(n), static_cast<int>(s)), Called::name};
    else
        return {Called::fn(in, out, static_cast<int>(s)), Called::name};
}

template <class Span>
using Element = std::remove_cv_t<typename Span::element_type>;

template <bool inverse, class In, class Out>
Result dft(const In& in, Out&& out, scale s) noexcept
{
    const auto i = std::span(in);
    const auto o = std::span(out);
    using T = typename Element<decltype(i)>::value_type;
    constexpr auto dispatcher = inverse ? Api<T>::dftInverse : Api<T>::dftForward;
    return transform<dispatcher, decltype(i)::extent>(cx(i.data()), cx(o.data()), i.size(), i.size() == o.size(), s);
}

template <class Layout, class In, class Out>
Result rfft(Layout, const In& in, Out&& out, scale s) noexcept
{
    const auto i = std::span(in);
    const auto o = std::span(out);
    return transform<forward<Element<decltype(i)>>(Layout{}), decltype(i)::extent>(
        i.data(), o.data(), i.size(), o.size() >= spectrum_cells<Layout>(i.size()), s);
}

template <class Layout, class In, class Out>
Result irfft(Layout, const In& in, Out&& out, scale s) noexcept
{
    const auto i = std::span(in);
    const auto o = std::span(out);
    return transform<inverse<Element<decltype(o)>>(Layout{}), decltype(o)::extent>(
        i.data(), o.data(), o.size(), i.size() >= spectrum_cells<Layout>(o.size()), s);
}

template <class In, class Out>
Result hartley(const In& in, Out&& out, scale s) noexcept
{
    const auto i = std::span(in);
    const auto o = std::span(out);
    return transform<Api<Element<decltype(i)>>::hartley, decltype(i)::extent>(i.data(), o.data(), i.size(),
                                                                     i.size() == o.size(), s);
}

// The order of a Walsh-Hadamard transform of n points; -1, which the C
// checks refuse, where n is no power of two.
inline int whtOrder(std::size_t n) noexcept
{
    int order = 0;
    while (order < 14 && (std::size_t{1} << order) < n)
        ++order;
    return (std::size_t{1} << order) == n ? order : -1;
}

template <class In, class Out>
Result wht(const In& in, Out&& out, scale s, std::uint8_t* buffer) noexcept
{
    const auto i = std::span(in);
    const auto o = std::span(out);
    constexpr auto dispatcher = Api<Element<decltype(i)>>::wht;
    const char* name = Export<dispatcher, 0>::name;
    if (i.size() != o.size())
        return {StatusSizeError, name};
    return {dispatcher(i.data(), o.data(), whtOrder(i.size()), static_cast<int>(s), buffer), name};
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
    return detail::dft<false>(in, out, s).status;
}

template <class In, class Out>
TvkStatus dft_inverse(const In& in, Out&& out, scale s) noexcept
{
    return detail::dft<true>(in, out, s).status;
}

// Real DFT of n = in.size() reals into spectrum_cells<Layout>(n) cells of out.
template <class Layout, class In, class Out>
TvkStatus rfft(Layout layout, const In& in, Out&& out, scale s) noexcept
{
    return detail::rfft(layout, in, out, s).status;
}

// The inverse: n = out.size() reals from spectrum_cells<Layout>(n) cells of in.
template <class Layout, class In, class Out>
TvkStatus irfft(Layout layout, const In& in, Out&& out, scale s) noexcept
{
    return detail::irfft(layout, in, out, s).status;
}

// Hartley transform of n = in.size() reals (2..64); out.size() must equal n.
template <class In, class Out>
TvkStatus hartley(const In& in, Out&& out, scale s) noexcept
{
    return detail::hartley(in, out, s).status;
}

// Walsh-Hadamard of 2^order points (order 1..13): in and out 2^order long;
// `buffer` as in tvkgen.h (null: the kernel's own).
template <class In, class Out>
TvkStatus wht(const In& in, Out&& out, scale s, std::uint8_t* buffer = nullptr) noexcept
{
    return detail::wht(in, out, s, buffer).status;
}

} // namespace nothrow

// ---- Functions throwing tvkgen::error ------------------------------------------

template <class In, class Out>
void dft_forward(const In& in, Out&& out, scale s)
{
    detail::raise(detail::dft<false>(in, out, s));
}

template <class In, class Out>
void dft_inverse(const In& in, Out&& out, scale s)
{
    detail::raise(detail::dft<true>(in, out, s));
}

template <class Layout, class In, class Out>
void rfft(Layout layout, const In& in, Out&& out, scale s)
{
    detail::raise(detail::rfft(layout, in, out, s));
}

template <class Layout, class In, class Out>
void irfft(Layout layout, const In& in, Out&& out, scale s)
{
    detail::raise(detail::irfft(layout, in, out, s));
}

template <class In, class Out>
void hartley(const In& in, Out&& out, scale s)
{
    detail::raise(detail::hartley(in, out, s));
}

template <class In, class Out>
void wht(const In& in, Out&& out, scale s, std::uint8_t* buffer = nullptr)
{
    detail::raise(detail::wht(in, out, s, buffer));
}

// A DCT-IV plan of one power-of-two length: in memory the caller lends
// (arena_bytes(len) bytes, 16-byte aligned, kept alive by the caller) or in
// memory of its own, freed with the plan.
template <class T>
class dct4_plan {
    using Api = detail::Api<T>;

public:
    // The longest plan: from twice this length on, the library's 32-bit plan
    // size is refused or wraps to a block too small for the plan.
    static constexpr int max_length = std::is_same_v<T, float> ? 1 << 26 : 1 << 25;

    // Lengths other than the powers of two from 2 to max_length throw
    // tvkgen::error with StatusSizeError (the C functions take 2^k + 1 too,
    // and compute no DCT-IV of it).
    explicit dct4_plan(int len) : len_(len), owned_(true)
    {
        checkLength<Api::dct4InitAlloc>(len);
        check<Api::dct4InitAlloc>(Api::dct4InitAlloc(&plan_, len));
    }
    dct4_plan(int len, std::span<std::uint8_t> arena) : len_(len), owned_(false)
    {
        checkLength<Api::dct4Init>(len);
        check<Api::dct4Init>(arena.size() < arena_bytes(len) ? StatusSizeError
                                                             : Api::dct4Init(&plan_, len, arena.data()));
    }
    dct4_plan(const dct4_plan&) = delete;
    dct4_plan& operator=(const dct4_plan&) = delete;
    ~dct4_plan()
    {
        if (owned_)
            Api::dct4Free(plan_);
    }

    // Bytes of a plan of length len in a lent arena.
    static std::size_t arena_bytes(int len)
    {
        checkLength<Api::dct4GetSize>(len);
        std::int32_t bytes = 0;
        check<Api::dct4GetSize>(Api::dct4GetSize(len, &bytes));
        return static_cast<std::size_t>(bytes);
    }

    int length() const noexcept { return len_; }

    // The transform of in into out, both length() long.
    TvkStatus run(std::span<const T> in, std::span<T> out) const noexcept
    {
        if (in.size() != static_cast<std::size_t>(len_) || out.size() != static_cast<std::size_t>(len_))
            return StatusSizeError;
        return Api::dct4(in.data(), out.data(), plan_);
    }
    void operator()(std::span<const T> in, std::span<T> out) const { check<Api::dct4>(run(in, out)); }

private:
    template <auto function>
    static void check(TvkStatus status)
    {
        detail::raise({status, detail::Export<function, 0>::name});
    }
    template <auto function>
    static void checkLength(int len)
    {
        if (len < 2 || len > max_length || (len & (len - 1)) != 0)
            check<function>(StatusSizeError);
    }

    typename Api::Plan* plan_ = nullptr;
    int len_;
    bool owned_;
};

} // namespace tvkgen

// ---- Many transforms of one size in one call --------------------------------------
// The entries of libtvkgen_batch, where its header is installed; a program
// that calls none of them links without that library.
#if __has_include("tvkgen_batch.h")
#include "tvkgen_batch.h"

namespace tvkgen {

// The rows of a batch: the whole block they lie in, and the distance in
// elements from the start of one row to the start of the next.
template <class E>
struct rows_view {
    std::span<E> block;
    std::size_t dist;
};

template <class Range>
auto rows(Range&& block, std::size_t dist)
{
    const auto s = std::span(block);
    return rows_view<typename decltype(s)::element_type>{s, dist};
}

namespace detail {

// An entry and its name, for the errors.
template <class F>
struct Named {
    F fn;
    const char* name;
};

template <class T>
struct BatchApi;
#define TVKG_BATCH(member, function) static constexpr Named<decltype(&function)> member{&function, #function};
#define TVKG_BATCH_PRECISION(T, c, r)                                                                             \
    template <>                                                                                                   \
    struct BatchApi<T> {                                                                                          \
        TVKG_BATCH(dftForward, tvkgBatchDFTFwd_CToC_##c) TVKG_BATCH(dftInverse, tvkgBatchDFTInv_CToC_##c)         \
        TVKG_BATCH(toCcs, tvkgBatchDFTFwd_RToCCS_##r) TVKG_BATCH(toPack, tvkgBatchDFTFwd_RToPack_##r)             \
        TVKG_BATCH(toPerm, tvkgBatchDFTFwd_RToPerm_##r) TVKG_BATCH(fromCcs, tvkgBatchDFTInv_CCSToR_##r)           \
        TVKG_BATCH(fromPack, tvkgBatchDFTInv_PackToR_##r) TVKG_BATCH(fromPerm, tvkgBatchDFTInv_PermToR_##r)       \
        TVKG_BATCH(hartley, tvkgBatchHartley_##r) TVKG_BATCH(wht, tvkgBatchWHT_##r)                               \
    };
TVKG_BATCH_PRECISION(float, 32fc, 32f)
TVKG_BATCH_PRECISION(double, 64fc, 64f)
#undef TVKG_BATCH_PRECISION
#undef TVKG_BATCH

template <class T, bool inverse, class Layout>
constexpr auto batchReal(Layout)
{
    using B = BatchApi<T>;
    if constexpr (std::is_same_v<Layout, ccs_t>)
        return inverse ? B::fromCcs : B::toCcs;
    else if constexpr (std::is_same_v<Layout, pack_t>)
        return inverse ? B::fromPack : B::toPack;
    else
        return inverse ? B::fromPerm : B::toPerm;
}

// The rows' first element as the C function takes it.
template <class E>
auto* first(rows_view<E> r) noexcept
{
    if constexpr (requires { cx(r.block.data()); })
        return cx(r.block.data());
    else
        return r.block.data();
}

// Whether `count` rows of `extent` elements lie in the block.
template <class E>
bool covers(rows_view<E> r, std::size_t extent, std::size_t count) noexcept
{
    const std::size_t step = r.dist > 0 ? r.dist : 1;
    return count == 0 || (r.block.size() >= extent && count - 1 <= (r.block.size() - extent) / step);
}

// The C function's int, or -1 (which its checks refuse) where the value has none.
inline int narrow(std::size_t v) noexcept { return v > 0x7fffffff ? -1 : static_cast<int>(v); }

// One batch call; StatusSizeError, and no call, where the rows do not lie
// in their blocks.
template <class F, class In, class Out, class... Buffer>
Result batch(Named<F> entry, rows_view<In> in, std::size_t inExtent, rows_view<Out> out, std::size_t outExtent,
             int size, std::size_t count, scale s, Buffer... buffer) noexcept
{
    if (!covers(in, inExtent, count) || !covers(out, outExtent, count))
        return {StatusSizeError, entry.name};
    return {entry.fn(first(in), narrow(in.dist), first(out), narrow(out.dist), size, narrow(count),
                     static_cast<int>(s), buffer...),
            entry.name};
}

template <bool inverse, class In, class Out>
Result dftBatch(rows_view<In> in, rows_view<Out> out, std::size_t len, std::size_t count, scale s) noexcept
{
    using B = BatchApi<typename std::remove_cv_t<In>::value_type>;
    return batch(inverse ? B::dftInverse : B::dftForward, in, len, out, len, narrow(len), count, s);
}

template <class Layout, class In, class Out>
Result rfftBatch(rows_view<In> in, rows_view<Out> out, std::size_t len, std::size_t count, scale s) noexcept
{
    const auto entry = batchReal<std::remove_cv_t<In>, false>(Layout{});
    return batch(entry, in, len, out, spectrum_cells<Layout>(len), narrow(len), count, s);
}

template <class Layout, class In, class Out>
Result irfftBatch(rows_view<In> in, rows_view<Out> out, std::size_t len, std::size_t count, scale s) noexcept
{
    const auto entry = batchReal<Out, true>(Layout{});
    return batch(entry, in, spectrum_cells<Layout>(len), out, len, narrow(len), count, s);
}

template <class In, class Out>
Result hartleyBatch(rows_view<In> in, rows_view<Out> out, std::size_t len, std::size_t count, scale s) noexcept
{
    return batch(BatchApi<std::remove_cv_t<In>>::hartley, in, len, out, len, narrow(len), count, s);
}

template <class In, class Out>
Result whtBatch(rows_view<In> in, rows_view<Out> out, std::size_t len, std::size_t count, scale s,
                std::uint8_t* buffer) noexcept
{
    return batch(BatchApi<std::remove_cv_t<In>>::wht, in, len, out, len, whtOrder(len), count, s, buffer);
}

} // namespace detail

// `count` transforms of `len` points, row m of `in` into row m of `out`,
// each row giving the bytes of the single call of the same name; the rows
// must lie in their blocks ((count - 1) * dist + the row's extent elements),
// else StatusSizeError. The same rows in and out run in place. Statuses
// come back from tvkgen::nothrow::batch and are thrown from tvkgen::batch.
namespace nothrow::batch {

template <class In, class Out>
TvkStatus dft_forward(rows_view<In> in, rows_view<Out> out, std::size_t len, std::size_t count, scale s) noexcept
{
    return detail::dftBatch<false>(in, out, len, count, s).status;
}

template <class In, class Out>
TvkStatus dft_inverse(rows_view<In> in, rows_view<Out> out, std::size_t len, std::size_t count, scale s) noexcept
{
    return detail::dftBatch<true>(in, out, len, count, s).status;
}

// Rows of len reals into rows of spectrum_cells<Layout>(len) cells.
template <class Layout, class In, class Out>
TvkStatus rfft(Layout, rows_view<In> in, rows_view<Out> out, std::size_t len, std::size_t count, scale s) noexcept
{
    return detail::rfftBatch<Layout>(in, out, len, count, s).status;
}

template <class Layout, class In, class Out>
TvkStatus irfft(Layout, rows_view<In> in, rows_view<Out> out, std::size_t len, std::size_t count, scale s) noexcept
{
    return detail::irfftBatch<Layout>(in, out, len, count, s).status;
}

template <class In, class Out>
TvkStatus hartley(rows_view<In> in, rows_view<Out> out, std::size_t len, std::size_t count, scale s) noexcept
{
    return detail::hartleyBatch(in, out, len, count, s).status;
}

// Walsh-Hadamard of rows of len = 2^order points (order 1..13); `buffer` as
// in tvkgen_batch.h, one for every row (null: allocated once where needed).
template <class In, class Out>
TvkStatus wht(rows_view<In> in, rows_view<Out> out, std::size_t len, std::size_t count, scale s,
              std::uint8_t* buffer = nullptr) noexcept
{
    return detail::whtBatch(in, out, len, count, s, buffer).status;
}

} // namespace nothrow::batch

namespace batch {

template <class In, class Out>
void dft_forward(rows_view<In> in, rows_view<Out> out, std::size_t len, std::size_t count, scale s)
{
    detail::raise(detail::dftBatch<false>(in, out, len, count, s));
}

template <class In, class Out>
void dft_inverse(rows_view<In> in, rows_view<Out> out, std::size_t len, std::size_t count, scale s)
{
    detail::raise(detail::dftBatch<true>(in, out, len, count, s));
}

template <class Layout, class In, class Out>
void rfft(Layout, rows_view<In> in, rows_view<Out> out, std::size_t len, std::size_t count, scale s)
{
    detail::raise(detail::rfftBatch<Layout>(in, out, len, count, s));
}

template <class Layout, class In, class Out>
void irfft(Layout, rows_view<In> in, rows_view<Out> out, std::size_t len, std::size_t count, scale s)
{
    detail::raise(detail::irfftBatch<Layout>(in, out, len, count, s));
}

template <class In, class Out>
void hartley(rows_view<In> in, rows_view<Out> out, std::size_t len, std::size_t count, scale s)
{
    detail::raise(detail::hartleyBatch(in, out, len, count, s));
}

template <class In, class Out>
void wht(rows_view<In> in, rows_view<Out> out, std::size_t len, std::size_t count, scale s,
         std::uint8_t* buffer = nullptr)
{
    detail::raise(detail::whtBatch(in, out, len, count, s, buffer));
}

} // namespace batch

} // namespace tvkgen

#endif
