// The batch entries against the single calls: every member of a batch gets
// the bytes that the single kernel of its size gives it, for every size,
// type, direction and flag, counts past two lane widths with a remainder,
// distances with gaps (left untouched), any address and in place; and the
// checks in their documented order, with dst untouched on failure; calls
// from several threads at once; the C++ calls of tvkgen.hpp. The
// Walsh-Hadamard entries, which take a work buffer, have their own section.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "alloc_probe.h"
#include "test_support.h"
#include "tvkgen.hpp"
#include "tvkgen_batch.h"

using namespace tvktest;

namespace {

using Bytes = std::vector<unsigned char>;
using BatchFn = TvkStatus (*)(const void*, int, void*, int, int, int, int);
using SingleFn = TvkStatus (*)(const void*, void*, int, int);

// A batch entry beside the single dispatcher whose bytes it gives, with the
// extents of one transform in its src and dst, in elements.
struct Entry {
    const char* single;
    void* batch;
    int elementBytes;
    int (*srcExtent)(int len);
    int (*dstExtent)(int len);
    int numberBytes;
    std::string name() const { return std::string(single).substr(4); }
    // Room for either extent: the distance of an in-place batch.
    int extent(int len) const { return std::max(srcExtent(len), dstExtent(len)); }
};

int points(int len) { return len; }
int ccs(int len) { return 2 * (len / 2 + 1); }

#define TVKG_ENTRY(single, type, in, out)                                                                          \
    {"tvkg" #single, reinterpret_cast<void*>(&tvkgBatch##single), sizeof(type), in, out,                         \
     sizeof(type) == 16 || std::string_view(#single).ends_with("64f") ? 8 : 4}
const Entry kEntries[] = {
    TVKG_ENTRY(DFTFwd_CToC_32fc, Tvk32fc, points, points),  TVKG_ENTRY(DFTInv_CToC_32fc, Tvk32fc, points, points),
    TVKG_ENTRY(DFTFwd_CToC_64fc, Tvk64fc, points, points),  TVKG_ENTRY(DFTInv_CToC_64fc, Tvk64fc, points, points),
    TVKG_ENTRY(DFTFwd_RToCCS_32f, Tvk32f, points, ccs),     TVKG_ENTRY(DFTFwd_RToCCS_64f, Tvk64f, points, ccs),
    TVKG_ENTRY(DFTFwd_RToPack_32f, Tvk32f, points, points), TVKG_ENTRY(DFTFwd_RToPack_64f, Tvk64f, points, points),
    TVKG_ENTRY(DFTFwd_RToPerm_32f, Tvk32f, points, points), TVKG_ENTRY(DFTFwd_RToPerm_64f, Tvk64f, points, points),
    TVKG_ENTRY(DFTInv_CCSToR_32f, Tvk32f, ccs, points),     TVKG_ENTRY(DFTInv_CCSToR_64f, Tvk64f, ccs, points),
    TVKG_ENTRY(DFTInv_PackToR_32f, Tvk32f, points, points), TVKG_ENTRY(DFTInv_PackToR_64f, Tvk64f, points, points),
    TVKG_ENTRY(DFTInv_PermToR_32f, Tvk32f, points, points), TVKG_ENTRY(DFTInv_PermToR_64f, Tvk64f, points, points),
    TVKG_ENTRY(Hartley_32f, Tvk32f, points, points),        TVKG_ENTRY(Hartley_64f, Tvk64f, points, points),
};
#undef TVKG_ENTRY

void PrintTo(const Entry& e, std::ostream* out) { *out << e.name(); }

TvkStatus callBatch(const Entry& e, const void* src, int srcDist, void* dst, int dstDist, int len, int count, int flag)
{
    return reinterpret_cast<BatchFn>(e.batch)(src, srcDist, dst, dstDist, len, count, flag);
}

SingleFn singleOf(const Entry& e) { return reinterpret_cast<SingleFn>(exportedFunction(e.single)); }

// `count` transforms `dist` elements apart, random numbers in each member
// and sentinel bytes in the gaps, as bytes.
Bytes members(const Entry& e, int len, int count, int dist, unsigned seed)
{
    Bytes out(static_cast<size_t>(count) * dist * e.elementBytes + 64, 0xA5);
    const int numbers = e.srcExtent(len) * e.elementBytes / e.numberBytes;
    for (int m = 0; m < count; ++m) {
        unsigned char* at = out.data() + static_cast<size_t>(m) * dist * e.elementBytes;
        if (e.numberBytes == 4) {
            const std::vector<float> v = randomReals<float>(numbers, seed + m);
            std::memcpy(at, v.data(), v.size() * sizeof(float));
        } else {
            const std::vector<double> v = randomReals<double>(numbers, seed + m);
            std::memcpy(at, v.data(), v.size() * sizeof(double));
        }
    }
    return out;
}

class Batch : public testing::TestWithParam<Entry> {};

// Counts 0 to past two lane widths of eight, with remainders; distances of
// one extent and with gaps; aligned, element-misaligned and odd addresses;
// out of place and in place.
TEST_P(Batch, EveryMemberGivesTheSingleCallsBytes)
{
    const Entry& e = GetParam();
    const SingleFn single = singleOf(e);
    ASSERT_NE(single, nullptr);
    for (int len = 2; len <= 64; ++len)
        for (int flag : kGoodFlags)
            for (int count : {0, 1, 2, 3, 5, 8, 9, 17, 35})
                for (int gap : {0, 3})
                    for (int offset : {0, 4, 1})
                        for (bool inPlace : {false, true}) {
                            const int dist = e.extent(len) + gap;
                            const Bytes src = members(e, len, count, dist, len * 100 + count);
                            // Each member's expected bytes in its place, the gaps as they were.
                            Bytes expected = inPlace ? src : Bytes(src.size(), 0x5A);
                            for (int m = 0; m < count; ++m) {
                                const size_t at = static_cast<size_t>(m) * dist * e.elementBytes;
                                Bytes one(e.dstExtent(len) * e.elementBytes);
                                ASSERT_EQ(single(src.data() + at, one.data(), len, flag), StatusOk);
                                std::memcpy(expected.data() + at, one.data(), one.size());
                            }
                            OffsetArray<unsigned char> in(src.size(), offset), out(src.size(), offset, 0x5A);
                            in.copyFrom(src.data());
                            unsigned char* dst = inPlace ? in.get() : out.get();
                            ASSERT_EQ(callBatch(e, in.get(), dist, dst, dist, len, count, flag), StatusOk);
                            EXPECT_TRUE(sameBits(dst, expected.data(), expected.size()))
                                << e.name() << " len " << len << " flag " << flag << " count " << count << " gap "
                                << gap << " offset " << offset << (inPlace ? " in place" : "");
                            if (!inPlace) {
                                EXPECT_TRUE(sameBits(in.get(), src.data(), src.size())) << e.name() << " changed src";
                            }
                        }
}

// Different distances in src and dst: each member reaches its own place.
TEST_P(Batch, DistancesOfSrcAndDstAreTheirOwn)
{
    const Entry& e = GetParam();
    const int len = 12, count = 11, srcDist = e.srcExtent(len) + 1, dstDist = e.dstExtent(len) + 8;
    const Bytes src = members(e, len, count, srcDist, 7);
    Bytes dst(static_cast<size_t>(count) * dstDist * e.elementBytes, 0x5A), expected = dst;
    for (int m = 0; m < count; ++m)
        ASSERT_EQ(singleOf(e)(src.data() + m * srcDist * e.elementBytes,
                              expected.data() + m * dstDist * e.elementBytes, len, ScaleDivBySqrtN),
                  StatusOk);
    ASSERT_EQ(callBatch(e, src.data(), srcDist, dst.data(), dstDist, len, count, ScaleDivBySqrtN), StatusOk);
    EXPECT_TRUE(sameBits(dst.data(), expected.data(), dst.size()));
}

// The checks in order: size, count, distances, src, dst, flag; each failure
// leaves dst untouched, and a count of 0 succeeds without touching it.
TEST_P(Batch, ChecksComeInTheirOrderAndLeaveDstUntouched)
{
    const Entry& e = GetParam();
    const int len = 8, count = 3, in = e.srcExtent(len), out = e.dstExtent(len);
    const Bytes src = members(e, len, count, e.extent(len), 1);
    Bytes dst(src.size(), 0x5A);
    const Bytes before = dst;
    const auto status = [&](const void* s, int sd, void* d, int dd, int n, int c, int f) {
        return callBatch(e, s, sd, d, dd, n, c, f);
    };
    for (int bad : {1, 65, 0, -1})
        EXPECT_EQ(status(nullptr, 0, nullptr, 0, bad, -1, 3), StatusSizeError) << bad;
    EXPECT_EQ(status(nullptr, in, nullptr, out, len, -1, 3), StatusSizeError);
    EXPECT_EQ(status(nullptr, in - 1, nullptr, out, len, count, 3), StatusSizeError);
    EXPECT_EQ(status(nullptr, in, nullptr, out - 1, len, count, 3), StatusSizeError);
    EXPECT_EQ(status(nullptr, in, dst.data(), out, len, count, 3), StatusNullPointer);
    EXPECT_EQ(status(src.data(), in, nullptr, out, len, count, 3), StatusNullPointer);
    for (int flag : kBadFlags)
        EXPECT_EQ(status(src.data(), in, dst.data(), out, len, count, flag), StatusScaleFlagError) << flag;
    EXPECT_EQ(status(src.data(), in, dst.data(), out, len, 0, ScaleNoDivide), StatusOk);
    EXPECT_TRUE(dst == before);
}

// The entries hold no state: threads calling one at once, every size, get
// the bytes of a single thread.
TEST_P(Batch, ThreadsAtOnceGetTheBytesOfOneThread)
{
    const Entry& e = GetParam();
    EXPECT_TRUE(threadsGiveTheResultOfOne([&](int) {
        std::vector<Bytes> outputs;
        for (int len = 2; len <= 64; ++len) {
            const Bytes src = members(e, len, 17, e.extent(len), len);
            Bytes& dst = outputs.emplace_back(src.size(), 0x5A);
            EXPECT_EQ(callBatch(e, src.data(), e.extent(len), dst.data(), e.extent(len), len, 17, ScaleDivBySqrtN),
                      StatusOk);
        }
        return outputs;
    }));
}

INSTANTIATE_TEST_SUITE_P(Entries, Batch, testing::ValuesIn(kEntries),
                         [](const testing::TestParamInfo<Entry>& info) { return info.param.name(); });

// The Walsh-Hadamard entries beside their single calls.
template <class Real>
struct Wht;
template <>
struct Wht<float> {
    static constexpr auto batch = tvkgBatchWHT_32f;
    static constexpr auto single = tvkgWHT_32f;
    static constexpr auto bufferSize = tvkgWHTGetBufferSize_32f;
};
template <>
struct Wht<double> {
    static constexpr auto batch = tvkgBatchWHT_64f;
    static constexpr auto single = tvkgWHT_64f;
    static constexpr auto bufferSize = tvkgWHTGetBufferSize_64f;
};

template <class T>
class BatchCpp : public testing::Test {};
using RealTypes = testing::Types<float, double>;
TYPED_TEST_SUITE(BatchCpp, RealTypes);

// Each C++ call gives its C entry's bytes on the same rows, refuses rows
// that do not lie in their blocks, and throws or returns the entry's status
// with its name.
TYPED_TEST(BatchCpp, CallsGiveTheEntriesBytesAndStatuses)
{
    using T = TypeParam;
    const std::string type = std::is_same_v<T, float> ? "_32f" : "_64f";
    constexpr std::size_t len = 12, count = 9, dist = 16;
    const tvkgen::scale sqrt = tvkgen::scale::by_sqrt_n;
    const std::vector<T> x = randomReals<T>(2 * count * dist, 3);
    std::vector<std::complex<T>> z;
    for (std::size_t i = 0; i < x.size(); i += 2)
        z.emplace_back(x[i], x[i + 1]);
    std::vector<T> y(x.size());
    const auto check = [&]<class E>(const std::string& entry, const std::vector<E>& in, std::size_t outLength,
                                    auto call) {
        const auto e = std::ranges::find(kEntries, entry, &Entry::name);
        ASSERT_NE(e, std::end(kEntries)) << entry;
        std::vector<E> want(outLength), got(outLength);
        ASSERT_EQ(callBatch(*e, in.data(), dist, want.data(), dist, len, count, ScaleDivBySqrtN), StatusOk);
        call(tvkgen::rows(in, dist), tvkgen::rows(got, dist));
        EXPECT_TRUE(sameBits(got.data(), want.data(), outLength)) << entry;
    };
    check("DFTFwd_CToC" + type + "c", z, z.size(),
          [&](auto in, auto out) { tvkgen::batch::dft_forward(in, out, len, count, sqrt); });
    check("DFTInv_CToC" + type + "c", z, z.size(),
          [&](auto in, auto out) { tvkgen::batch::dft_inverse(in, out, len, count, sqrt); });
    check("Hartley" + type, x, x.size(), [&](auto in, auto out) { tvkgen::batch::hartley(in, out, len, count, sqrt); });
    const auto layoutCase = [&](auto layout, const std::string& name) {
        // Blocks just long enough: the last row ends the block.
        const std::size_t cells = tvkgen::spectrum_cells<decltype(layout)>(len);
        const std::vector<T> reals(x.begin(), x.begin() + (count - 1) * dist + len);
        const std::vector<T> spectra(x.begin(), x.begin() + (count - 1) * dist + cells);
        check("DFTFwd_RTo" + name + type, reals, spectra.size(),
              [&](auto in, auto out) { tvkgen::batch::rfft(layout, in, out, len, count, sqrt); });
        check("DFTInv_" + name + "ToR" + type, spectra, reals.size(),
              [&](auto in, auto out) { tvkgen::batch::irfft(layout, in, out, len, count, sqrt); });
        // One element short in either block.
        std::vector<T> out(spectra.size() - 1);
        EXPECT_EQ(tvkgen::nothrow::batch::rfft(layout, tvkgen::rows(reals, dist), tvkgen::rows(out, dist), len, count,
                                               sqrt),
                  StatusSizeError);
        const std::span<const T> shortReals(reals.data(), reals.size() - 1);
        EXPECT_EQ(tvkgen::nothrow::batch::rfft(layout, tvkgen::rows(shortReals, dist), tvkgen::rows(y, dist), len,
                                               count, sqrt),
                  StatusSizeError);
    };
    layoutCase(tvkgen::ccs, "CCS");
    layoutCase(tvkgen::pack, "Pack");
    layoutCase(tvkgen::perm, "Perm");
    // Walsh-Hadamard rows of 16 points, with a work buffer the caller may leave out; 12 is no power of two.
    std::vector<T> want(x.size()), got(x.size());
    ASSERT_EQ(Wht<T>::batch(x.data(), dist, want.data(), dist, 4, count, ScaleDivBySqrtN, nullptr), StatusOk);
    tvkgen::batch::wht(tvkgen::rows(x, dist), tvkgen::rows(got, dist), 16, count, sqrt);
    EXPECT_TRUE(sameBits(got.data(), want.data(), got.size()));
    EXPECT_EQ(tvkgen::nothrow::batch::wht(tvkgen::rows(x, dist), tvkgen::rows(y, dist), len, count, sqrt),
              StatusSizeError);

    const auto thrown = [&](std::size_t n, std::size_t c, std::size_t d, tvkgen::scale s) -> std::string {
        try {
            tvkgen::batch::hartley(tvkgen::rows(x, d), tvkgen::rows(y, d), n, c, s);
        } catch (const tvkgen::error& e) {
            return e.function() + " " + std::to_string(e.status());
        }
        return "";
    };
    const std::string name = "tvkgBatchHartley" + type + " ";
    EXPECT_EQ(thrown(len, 2 * count + 1, dist, sqrt), name + std::to_string(StatusSizeError)); // past the block
    EXPECT_EQ(thrown(65, 1, 65, sqrt), name + std::to_string(StatusSizeError));
    EXPECT_EQ(thrown(len, count, len - 1, sqrt), name + std::to_string(StatusSizeError));
    EXPECT_EQ(thrown(len, count, dist, static_cast<tvkgen::scale>(3)), name + std::to_string(StatusScaleFlagError));
    EXPECT_EQ(thrown(len, 0, dist, sqrt), "");
}

// ---- Walsh-Hadamard -----------------------------------------------------------

// Numbers of magnitudes 2^-24 to 2^24, whose sums round differently in
// every other order of association.
template <class Real>
std::vector<Real> mixedMagnitudes(size_t count, unsigned seed)
{
    std::vector<Real> v = randomReals<Real>(count, seed);
    std::mt19937 rng(seed + 1);
    for (Real& x : v)
        x = std::ldexp(x, static_cast<int>(rng() % 49) - 24);
    return v;
}

template <class Real>
class BatchWht : public testing::Test {};
TYPED_TEST_SUITE(BatchWht, RealTypes);

// Every order, flag, count to past two lane widths, distances of one
// transform and with gaps (dst's larger than src's), aligned, misaligned
// and odd addresses, in place, with the caller's buffer and without (one
// allocation per batch).
TYPED_TEST(BatchWht, EveryMemberGivesTheSingleCallsBytes)
{
    using Real = TypeParam;
    for (int order = 1; order <= 13; ++order) {
        const int n = 1 << order;
        int32_t bufferBytes = 0;
        ASSERT_EQ(Wht<Real>::bufferSize(order, &bufferBytes), StatusOk);
        OffsetArray<unsigned char> buffer(bufferBytes, 0);
        for (int flag : kGoodFlags)
            for (int count : {0, 1, 2, 3, 5, 9, 35})
                for (int gap : {0, 3})
                    for (int offset : {0, 4, 1})
                        for (bool inPlace : {false, true})
                            for (bool withBuffer : {false, true}) {
                                const int srcDist = n + gap, dstDist = inPlace ? srcDist : n + 2 * gap;
                                // One number past the last member, which stays as it is.
                                const std::vector<Real> src =
                                    mixedMagnitudes<Real>(size_t(count) * srcDist + 1, order * 100 + count);
                                OffsetArray<Real> in(src.size(), offset),
                                    out(size_t(count) * dstDist + 1, offset, 0x5A);
                                in.copyFrom(src.data());
                                Real* dst = inPlace ? in.get() : out.get();
                                Bytes expected = inPlace ? in.snapshot() : out.snapshot();
                                for (int m = 0; m < count; ++m)
                                    ASSERT_EQ(Wht<Real>::single(src.data() + m * srcDist,
                                                                reinterpret_cast<Real*>(expected.data()) + m * dstDist,
                                                                order, flag, nullptr),
                                              StatusOk);
                                probe.reset();
                                ASSERT_EQ(Wht<Real>::batch(in.get(), srcDist, dst, dstDist, order, count, flag,
                                                           withBuffer ? buffer.get() : nullptr),
                                          StatusOk);
                                // A null buffer is allocated once per batch, where a member needs one, and freed.
                                const int mallocs = !withBuffer && order >= 8 && count > 0;
                                EXPECT_EQ(probe.mallocs, mallocs) << "order " << order << " count " << count;
                                EXPECT_TRUE(!mallocs || probe.lastBytes == uint32_t(buffer.bytes()));
                                EXPECT_EQ(probe.lastFreed, probe.lastBlock);
                                EXPECT_TRUE(sameBits(reinterpret_cast<unsigned char*>(dst), expected.data(),
                                                     expected.size()))
                                    << "order " << order << " flag " << flag << " count " << count << " gap " << gap
                                    << " offset " << offset << (inPlace ? " in place" : "")
                                    << (withBuffer ? " with buffer" : "");
                                if (!inPlace) {
                                    EXPECT_TRUE(sameBits(in.get(), src.data(), src.size())) << "changed src";
                                }
                            }
    }
}

// The checks in order: order, count, distances against 2^order, src, dst,
// flag; each failure leaves dst untouched, and a count of 0 succeeds
// without touching it.
TYPED_TEST(BatchWht, ChecksComeInTheirOrderAndLeaveDstUntouched)
{
    using Real = TypeParam;
    for (int order : {1, 9}) {
        const int n = 1 << order, count = 3;
        const std::vector<Real> src = mixedMagnitudes<Real>(size_t(count) * n, 1);
        std::vector<Real> dst(src.size(), Real(7));
        const std::vector<Real> before = dst;
        const auto status = [](const Real* s, int sd, Real* d, int dd, int o, int c, int f) {
            return Wht<Real>::batch(s, sd, d, dd, o, c, f, nullptr);
        };
        for (int bad : {0, 14, -1})
            EXPECT_EQ(status(nullptr, 0, nullptr, 0, bad, -1, 3), StatusSizeError) << bad;
        EXPECT_EQ(status(nullptr, n, nullptr, n, order, -1, 3), StatusSizeError);
        EXPECT_EQ(status(nullptr, n - 1, nullptr, n, order, count, 3), StatusSizeError);
        EXPECT_EQ(status(nullptr, n, nullptr, n - 1, order, count, 3), StatusSizeError);
        EXPECT_EQ(status(nullptr, n, dst.data(), n, order, count, 3), StatusNullPointer);
        EXPECT_EQ(status(src.data(), n, nullptr, n, order, count, 3), StatusNullPointer);
        for (int flag : kBadFlags)
            EXPECT_EQ(status(src.data(), n, dst.data(), n, order, count, flag), StatusScaleFlagError) << flag;
        EXPECT_EQ(status(src.data(), n, dst.data(), n, order, 0, ScaleNoDivide), StatusOk);
        EXPECT_TRUE(sameBits(dst.data(), before.data(), dst.size())) << "order " << order;
    }
}

} // namespace
