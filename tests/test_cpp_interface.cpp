// The C++ interface: every wrapper gives the bytes of its C function, with
// sizes fixed at compile time (the size's kernel) and through the
// dispatchers; statuses become tvkgen::error with the C function's name, or
// come back from tvkgen::nothrow.
#include <gtest/gtest.h>

#include <array>
#include <complex>
#include <vector>

#include "dct4_api.h"
#include "test_support.h"
#include "tvkgen.hpp"

namespace {

// The C function `family` of T's precision ("_32f", "_64fc", ...), from the
// list of exports, called on raw arrays.
template <class T, class... Args>
TvkStatus callC(const std::string& family, bool complex, const void* src, void* dst, Args... args)
{
    constexpr bool is64 = sizeof(T) == 8;
    void* fn = tvktest::exportedFunction(family + (is64 ? "_64f" : "_32f") + (complex ? "c" : ""));
    EXPECT_NE(fn, nullptr) << family;
    return complex ? tvktest::callAs<Tvk32fc, Tvk64fc>(is64, fn, src, dst, args...)
                   : tvktest::callAs<Tvk32f, Tvk64f>(is64, fn, src, dst, args...);
}

template <class T>
bool sameBytes(const std::vector<T>& a, const std::vector<T>& b)
{
    return a.size() == b.size() && tvktest::sameBits(a.data(), b.data(), a.size());
}

// A wrapper called with spans of the fixed extents In and Out (the size's
// kernel) and with vectors (the dispatcher) gives `want`'s bytes both ways.
template <std::size_t In, std::size_t Out, class A, class B, class Wrapper>
void expectBothWays(const std::vector<A>& in, const std::vector<B>& want, Wrapper wrapper)
{
    std::vector<B> fixed(want.size()), dynamic(want.size());
    wrapper(std::span<const A, In>(in.data(), In), std::span<B, Out>(fixed.data(), Out));
    wrapper(in, dynamic);
    EXPECT_TRUE(sameBytes(want, fixed));
    EXPECT_TRUE(sameBytes(want, dynamic));
}

template <class T>
class CppInterface : public ::testing::Test {};
using RealTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(CppInterface, RealTypes);

TYPED_TEST(CppInterface, EveryWrapperGivesTheBytesOfItsCFunction)
{
    using T = TypeParam;
    constexpr std::size_t n = 12;
    const auto x = tvktest::randomReals<T>(2 * n, 1);
    const tvkgen::scale sqrt = tvkgen::scale::by_sqrt_n;

    std::vector<std::complex<T>> z(n), want(n);
    for (std::size_t i = 0; i < n; ++i)
        z[i] = {x[2 * i], x[2 * i + 1]};
    const std::pair<tvkgen::scale, int> scales[] = {{tvkgen::scale::forward_by_n, ScaleDivForwardByN},
                                                    {tvkgen::scale::inverse_by_n, ScaleDivInverseByN},
                                                    {sqrt, ScaleDivBySqrtN},
                                                    {tvkgen::scale::none, ScaleNoDivide}};
    for (bool inverse : {false, true})
        for (const auto& [wrapperScale, flag] : scales) {
            const tvkgen::scale scale = wrapperScale; // clang before 16 captures no structured binding
            callC<T>(inverse ? "tvkgDFTInv_CToC" : "tvkgDFTFwd_CToC", true, z.data(), want.data(), int{n}, flag);
            expectBothWays<n, n>(z, want, [&](const auto& in, auto&& out) {
                inverse ? tvkgen::dft_inverse(in, out, scale) : tvkgen::dft_forward(in, out, scale);
            });
        }

    const std::vector<T> r(x.begin(), x.begin() + n);
    const auto layoutCase = [&](auto layout, const std::string& name) {
        constexpr std::size_t cells = tvkgen::spectrum_cells<decltype(layout)>(n);
        std::vector<T> spectrum(cells), back(n);
        callC<T>("tvkgDFTFwd_RTo" + name, false, r.data(), spectrum.data(), int{n}, ScaleDivBySqrtN);
        expectBothWays<n, cells>(r, spectrum,
                                 [&](const auto& in, auto&& out) { tvkgen::rfft(layout, in, out, sqrt); });
        callC<T>("tvkgDFTInv_" + name + "ToR", false, spectrum.data(), back.data(), int{n}, ScaleDivBySqrtN);
        expectBothWays<cells, n>(spectrum, back,
                                 [&](const auto& in, auto&& out) { tvkgen::irfft(layout, in, out, sqrt); });
    };
    layoutCase(tvkgen::ccs, "CCS");
    layoutCase(tvkgen::pack, "Pack");
    layoutCase(tvkgen::perm, "Perm");
    EXPECT_EQ(tvkgen::spectrum_cells<tvkgen::ccs_t>(7), 8u);
    EXPECT_EQ(tvkgen::spectrum_cells<tvkgen::perm_t>(7), 7u);

    std::vector<T> h(n), w(16), d(16);
    callC<T>("tvkgHartley", false, r.data(), h.data(), int{n}, ScaleDivBySqrtN);
    expectBothWays<n, n>(r, h, [&](const auto& in, auto&& out) { tvkgen::hartley(in, out, sqrt); });
    const std::vector<T> r16(x.begin(), x.begin() + 16);
    callC<T>("tvkgWHT", false, r16.data(), w.data(), 4, ScaleDivBySqrtN, static_cast<std::uint8_t*>(nullptr));
    expectBothWays<16, 16>(r16, w, [&](const auto& in, auto&& out) { tvkgen::wht(in, out, sqrt); });

    typename tvktest::Dct4Api<T>::Plan* plan = nullptr;
    ASSERT_EQ(tvktest::Dct4Api<T>::initAlloc(&plan, 16), StatusOk);
    tvktest::Dct4Api<T>::run(r16.data(), d.data(), plan);
    tvktest::Dct4Api<T>::free(plan);
    std::vector<T> owned(16), lent(16);
    tvkgen::dct4_plan<T>(16)(r16, owned);
    alignas(16) std::uint8_t arena[1 << 12];
    ASSERT_LE(tvkgen::dct4_plan<T>::arena_bytes(16), sizeof arena);
    tvkgen::dct4_plan<T>(16, arena)(r16, lent);
    EXPECT_TRUE(sameBytes(d, owned));
    EXPECT_TRUE(sameBytes(d, lent));
}

// The status a call throws as tvkgen::error with the C function's name,
// StatusOk and no name where it throws none.
using Thrown = std::pair<TvkStatus, std::string>;
template <class Call>
Thrown thrown(Call call)
{
    try {
        call();
    } catch (const tvkgen::error& e) {
        return {e.status(), e.function()};
    }
    return {StatusOk, ""};
}

TEST(CppInterface, StatusesBecomeErrorsOrComeBack)
{
    std::vector<std::complex<double>> x(65), y(65);
    EXPECT_EQ(thrown([&] { tvkgen::dft_forward(x, y, tvkgen::scale::none); }),
              Thrown(StatusSizeError, "tvkgDFTFwd_CToC_64fc"));
    const std::array<double, 8> r{};
    std::array<double, 8> h{};
    const auto three = static_cast<tvkgen::scale>(3);
    EXPECT_EQ(thrown([&] { tvkgen::hartley(r, h, three); }), Thrown(StatusScaleFlagError, "tvkgHartley_8_64f"));
    EXPECT_EQ(thrown([&] { tvkgen::wht(std::vector<float>(8), std::vector<float>(8), three); }),
              Thrown(StatusScaleFlagError, "tvkgWHT_32f"));
    EXPECT_EQ(tvkgen::nothrow::hartley(r, h, three), StatusScaleFlagError);
    EXPECT_EQ(tvkgen::nothrow::wht(std::vector<float>(12), std::vector<float>(12), tvkgen::scale::none),
              StatusSizeError);
    std::vector<float> shortSpectrum(9), out(10);
    EXPECT_EQ(tvkgen::nothrow::irfft(tvkgen::ccs, shortSpectrum, out, tvkgen::scale::none), StatusSizeError);
}

// The C functions build plans of 2^k + 1 (no DCT-IV) and, from 2^29 on,
// of sizes that wrap; the plan class takes only powers of two that fit.
TYPED_TEST(CppInterface, Dct4PlansOfPowersOfTwoUpToTheLongestOnly)
{
    using Plan = tvkgen::dct4_plan<TypeParam>;
    const std::string type = std::is_same_v<TypeParam, float> ? "_32f" : "_64f";
    std::vector<std::uint8_t> arena(1 << 12);
    for (const int len : {-4, 0, 1, 3, 9, 12, 17, 33, 65, 1025, Plan::max_length + 1, 2 * Plan::max_length, 1 << 29,
                          1 << 30}) {
        EXPECT_EQ(thrown([&] { Plan::arena_bytes(len); }), Thrown(StatusSizeError, "tvkgDCT4GetSize" + type)) << len;
        EXPECT_EQ(thrown([&] { Plan lent(len, arena); }), Thrown(StatusSizeError, "tvkgDCT4Init" + type)) << len;
        EXPECT_EQ(thrown([&] { Plan owned(len); }), Thrown(StatusSizeError, "tvkgDCT4InitAlloc" + type)) << len;
    }
    // The longest plan's size has not wrapped: it holds the root's work and more.
    EXPECT_GT(Plan::arena_bytes(Plan::max_length), 2 * sizeof(TypeParam) * Plan::max_length);
    EXPECT_EQ(Plan(2).length(), 2);
}

} // namespace
