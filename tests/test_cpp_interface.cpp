// The C++ interface: every family through the wrapper gives the bytes of
// the C call, with sizes fixed at compile time and through the dispatchers;
// statuses become tvkgen::error with the C function's name, or come back
// from tvkgen::nothrow.
#include <gtest/gtest.h>

#include <array>
#include <complex>
#include <cstring>
#include <vector>

#include "test_support.h"
#include "tvkgen.hpp"

namespace {

template <class T>
std::vector<std::complex<T>> randomComplex(std::size_t n, unsigned seed)
{
    const auto v = tvktest::randomReals<T>(2 * n, seed);
    std::vector<std::complex<T>> c(n);
    for (std::size_t i = 0; i < n; ++i)
        c[i] = {v[2 * i], v[2 * i + 1]};
    return c;
}

template <class T>
bool sameBytes(const std::vector<T>& a, const std::vector<T>& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

TEST(CppInterface, ComplexDftAtFixedAndRunTimeSizes)
{
    const auto x = randomComplex<double>(12, 1);
    std::vector<std::complex<double>> viaC(12), fixed(12), dynamic(12);
    ASSERT_EQ(tvkgDFTFwd_CToC_12_64fc(reinterpret_cast<const Tvk64fc*>(x.data()), reinterpret_cast<Tvk64fc*>(viaC.data()),
                                      ScaleDivBySqrtN),
              StatusOk);
    tvkgen::dft_forward(std::span<const std::complex<double>, 12>(x.data(), 12),
                        std::span<std::complex<double>, 12>(fixed.data(), 12), tvkgen::scale::by_sqrt_n);
    tvkgen::dft_forward(x, dynamic, tvkgen::scale::by_sqrt_n);
    EXPECT_TRUE(sameBytes(viaC, fixed));
    EXPECT_TRUE(sameBytes(viaC, dynamic));

    const auto y = randomComplex<float>(7, 2);
    std::vector<std::complex<float>> inverseC(7), inverse(7);
    ASSERT_EQ(tvkgDFTInv_CToC_7_32fc(reinterpret_cast<const Tvk32fc*>(y.data()), reinterpret_cast<Tvk32fc*>(inverseC.data()),
                                     ScaleDivInverseByN),
              StatusOk);
    tvkgen::dft_inverse(y, inverse, tvkgen::scale::inverse_by_n);
    EXPECT_TRUE(sameBytes(inverseC, inverse));
}

TEST(CppInterface, RealLayoutsAndBack)
{
    const auto x = tvktest::randomReals<float>(10, 3);
    std::vector<float> ccsC(12), ccs(12), packC(10), pack(10), backC(10), back(10);
    ASSERT_EQ(tvkgDFTFwd_RToCCS_10_32f(x.data(), ccsC.data(), ScaleNoDivide), StatusOk);
    ASSERT_EQ(tvkgDFTFwd_RToPack_10_32f(x.data(), packC.data(), ScaleNoDivide), StatusOk);
    std::array<float, 10> fixedInput;
    std::copy(x.begin(), x.end(), fixedInput.begin());
    tvkgen::rfft(tvkgen::ccs, fixedInput, ccs, tvkgen::scale::none);
    tvkgen::rfft(tvkgen::pack, x, pack, tvkgen::scale::none);
    EXPECT_TRUE(sameBytes(ccsC, ccs));
    EXPECT_TRUE(sameBytes(packC, pack));
    ASSERT_EQ(tvkgDFTInv_PermToR_10_32f(packC.data(), backC.data(), ScaleDivInverseByN), StatusOk);
    tvkgen::irfft(tvkgen::perm, packC, back, tvkgen::scale::inverse_by_n);
    EXPECT_TRUE(sameBytes(backC, back));
    EXPECT_EQ(tvkgen::spectrum_cells<tvkgen::ccs_t>(7), 8u);
    EXPECT_EQ(tvkgen::spectrum_cells<tvkgen::perm_t>(7), 7u);
}

TEST(CppInterface, HartleyWalshHadamardAndDct4)
{
    const auto x = tvktest::randomReals<double>(16, 4);
    std::vector<double> c(16), w(16);
    ASSERT_EQ(tvkgHartley_16_64f(x.data(), c.data(), ScaleDivForwardByN), StatusOk);
    tvkgen::hartley(std::span<const double, 16>(x.data(), 16), std::span<double, 16>(w.data(), 16),
                    tvkgen::scale::forward_by_n);
    EXPECT_TRUE(sameBytes(c, w));

    ASSERT_EQ(tvkgWHT_4_64f(x.data(), c.data(), ScaleDivBySqrtN, nullptr), StatusOk);
    tvkgen::wht(x, w, tvkgen::scale::by_sqrt_n);
    EXPECT_TRUE(sameBytes(c, w));

    TvkgDCT4Plan_64f* plan = nullptr;
    ASSERT_EQ(tvkgDCT4InitAlloc_64f(&plan, 16), StatusOk);
    ASSERT_EQ(tvkgDCT4_64f(x.data(), c.data(), plan), StatusOk);
    tvkgDCT4Free_64f(plan);
    const tvkgen::dct4_plan<double> owned(16);
    owned(x, w);
    EXPECT_TRUE(sameBytes(c, w));
    std::vector<std::uint8_t> arenaBytes(tvkgen::dct4_plan<double>::arena_bytes(16) + 16);
    auto* aligned = reinterpret_cast<std::uint8_t*>((reinterpret_cast<std::uintptr_t>(arenaBytes.data()) + 15) & ~std::uintptr_t{15});
    const tvkgen::dct4_plan<double> lent(16, std::span<std::uint8_t>(aligned, tvkgen::dct4_plan<double>::arena_bytes(16)));
    std::vector<double> v(16);
    lent(x, v);
    EXPECT_TRUE(sameBytes(c, v));
}

TEST(CppInterface, StatusesBecomeErrorsOrComeBack)
{
    std::vector<std::complex<double>> x(65), y(65);
    try {
        tvkgen::dft_forward(x, y, tvkgen::scale::none);
        FAIL() << "no error for 65 points";
    } catch (const tvkgen::error& e) {
        EXPECT_EQ(e.status(), StatusSizeError);
        EXPECT_EQ(e.function(), "tvkgDFTFwd_CToC_64fc");
    }
    const std::array<double, 8> r{};
    std::array<double, 8> h{};
    try {
        tvkgen::hartley(r, h, static_cast<tvkgen::scale>(3));
        FAIL() << "no error for flag 3";
    } catch (const tvkgen::error& e) {
        EXPECT_EQ(e.status(), StatusScaleFlagError);
        EXPECT_EQ(e.function(), "tvkgHartley_8_64f");
    }
    EXPECT_EQ(tvkgen::nothrow::hartley(r, h, static_cast<tvkgen::scale>(3)), StatusScaleFlagError);
    EXPECT_EQ(tvkgen::nothrow::wht(std::vector<float>(12), std::vector<float>(12), tvkgen::scale::none), StatusSizeError);
    std::vector<float> shortSpectrum(9), out(10);
    EXPECT_EQ(tvkgen::nothrow::irfft(tvkgen::ccs, shortSpectrum, out, tvkgen::scale::none), StatusSizeError);
}

// The status a call throws as tvkgen::error, StatusOk where it throws none.
template <class Call>
TvkStatus thrownStatus(Call call)
{
    try {
        call();
    } catch (const tvkgen::error& e) {
        return e.status();
    }
    return StatusOk;
}

template <class T>
class CppDct4Lengths : public ::testing::Test {};
using RealTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(CppDct4Lengths, RealTypes);

// The C functions build plans of 2^k + 1 (no DCT-IV) and, from 2^29 on,
// of sizes that wrap; the plan class takes only powers of two that fit.
TYPED_TEST(CppDct4Lengths, OnlyPowersOfTwoUpToTheLongest)
{
    using Plan = tvkgen::dct4_plan<TypeParam>;
    std::vector<std::uint8_t> arena(1 << 12);
    for (const int len : {-4, 0, 1, 3, 9, 12, 17, 33, 65, 1025, Plan::max_length + 1, 2 * Plan::max_length, 1 << 29,
                          1 << 30}) {
        EXPECT_EQ(thrownStatus([&] { Plan::arena_bytes(len); }), StatusSizeError) << len;
        EXPECT_EQ(thrownStatus([&] { Plan lent(len, arena); }), StatusSizeError) << len;
        EXPECT_EQ(thrownStatus([&] { Plan owned(len); }), StatusSizeError) << len;
    }
    // The longest plan's size has not wrapped: it holds the root's work and more.
    EXPECT_GT(Plan::arena_bytes(Plan::max_length), 2 * sizeof(TypeParam) * Plan::max_length);
    EXPECT_EQ(Plan(2).length(), 2);
}

} // namespace
