// Walsh-Hadamard kernels of every order and element type: bytes of the
// butterfly network at every flag, alignment and buffer; statuses; buffer
// sizes; the work-buffer rules, counted allocations and threads.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "test_support.h"
#include "tvkcore.h"
#include "tvkgen.h"

using namespace tvktest;

// ---- counting allocator -------------------------------------------------------
// Defined in the executable, these interpose the library's calls into
// tvkcore; they count and pass on to the real functions.
namespace {
std::atomic<int> gMallocCalls{0}, gFreeCalls{0};
std::atomic<uint32_t> gLastMallocBytes{0};
std::atomic<void*> gLastMallocBlock{nullptr}, gLastFreed{nullptr};

template <class Fn>
Fn nextDefinition(const char* name)
{
    return reinterpret_cast<Fn>(dlsym(RTLD_NEXT, name));
}
} // namespace

extern "C" void* tvkMalloc(uint32_t len)
{
    static const auto real = nextDefinition<void* (*)(uint32_t)>("tvkMalloc");
    void* block = real(len);
    gLastMallocBytes = len;
    gLastMallocBlock = block;
    ++gMallocCalls;
    return block;
}

extern "C" void tvkFree(void* ptr)
{
    static const auto real = nextDefinition<void (*)(void*)>("tvkFree");
    gLastFreed = ptr;
    ++gFreeCalls;
    real(ptr);
}

namespace {

constexpr int kOrders = 13;
constexpr int kFirstBufferedOrder = 8;

// Work-buffer bytes by order 1..13, as published to callers.
constexpr int32_t kBufferBytes32f[kOrders] = {0, 0, 0, 0, 0, 0, 0, 1024, 2048, 4096, 8192, 18432, 34816};
constexpr int32_t kBufferBytes64f[kOrders] = {0, 0, 0, 0, 0, 0, 0, 2048, 4096, 8192, 18432, 34816, 73728};

struct WhtKernel {
    bool is64;
    int order;
    void* fn;

    int n() const { return 1 << order; }
    size_t realBytes() const { return is64 ? 8 : 4; }
    size_t bytes() const { return n() * realBytes(); }
    bool buffered() const { return order >= kFirstBufferedOrder; }
    int32_t bufferBytes() const { return (is64 ? kBufferBytes64f : kBufferBytes32f)[order - 1]; }
    std::string type() const { return is64 ? "64f" : "32f"; }
    std::string name() const { return "tvkgWHT_" + std::to_string(order) + "_" + type(); }

    TvkStatus run(const void* src, void* dst, int flag, void* buffer = nullptr) const
    {
        auto* b = static_cast<uint8_t*>(buffer);
        if (is64)
            return reinterpret_cast<TvkStatus (*)(const Tvk64f*, Tvk64f*, int, uint8_t*)>(fn)(
                static_cast<const Tvk64f*>(src), static_cast<Tvk64f*>(dst), flag, b);
        return reinterpret_cast<TvkStatus (*)(const Tvk32f*, Tvk32f*, int, uint8_t*)>(fn)(
            static_cast<const Tvk32f*>(src), static_cast<Tvk32f*>(dst), flag, b);
    }
    TvkStatus dispatch(const void* src, void* dst, int order, int flag, void* buffer = nullptr) const
    {
        auto* b = static_cast<uint8_t*>(buffer);
        if (is64)
            return tvkgWHT_64f(static_cast<const Tvk64f*>(src), static_cast<Tvk64f*>(dst), order, flag, b);
        return tvkgWHT_32f(static_cast<const Tvk32f*>(src), static_cast<Tvk32f*>(dst), order, flag, b);
    }
};

void PrintTo(const WhtKernel& k, std::ostream* out) { *out << k.name(); }

std::string orderLabel(const ::testing::TestParamInfo<WhtKernel>& info)
{
    return "Order" + std::to_string(info.param.order) + "_" + info.param.type();
}

std::vector<WhtKernel> allKernels()
{
    std::vector<WhtKernel> kernels;
    for (bool is64 : {false, true})
        for (int order = 1; order <= kOrders; ++order) {
            WhtKernel k{is64, order, nullptr};
            k.fn = dlsym(RTLD_DEFAULT, k.name().c_str());
            kernels.push_back(k);
        }
    return kernels;
}

// Runs f with a value of the kernel's element type, to pick the template.
template <class F>
decltype(auto) withType(const WhtKernel& k, F&& f)
{
    return k.is64 ? f(double{}) : f(float{});
}

// The scale a kernel must hold, derived here: 2^-n for the flags that divide
// by N; at flag 4 the binary64 quotient 1.0 / sqrt(2^n), or in binary32 the
// nearest float to 1/sqrt(2^n).
double expectedScale(const WhtKernel& k, int flag)
{
    if (flag == ScaleNoDivide)
        return 1.0;
    if (flag != ScaleDivBySqrtN)
        return std::ldexp(1.0, -k.order);
    if (k.is64)
        return 1.0 / std::sqrt(static_cast<double>(k.n()));
    return static_cast<float>(1.0L / std::sqrt(static_cast<long double>(k.n())));
}

// The butterfly network: levels in ascending order, each sum and difference
// rounded to the element type, then one product by the scale.
template <class Real>
std::vector<unsigned char> network(const unsigned char* input, int order, Real scale)
{
    const int n = 1 << order;
    std::vector<Real> x(n);
    std::memcpy(x.data(), input, n * sizeof(Real));
    for (int half = 1; half < n; half *= 2)
        for (int i = 0; i < n; ++i)
            if ((i & half) == 0) {
                const Real a = x[i], b = x[i + half];
                x[i] = a + b;
                x[i + half] = a - b;
            }
    std::vector<unsigned char> out(n * sizeof(Real));
    for (int i = 0; i < n; ++i) {
        const Real y = x[i] * scale;
        std::memcpy(out.data() + i * sizeof(Real), &y, sizeof y);
    }
    return out;
}

std::vector<unsigned char> expectedBytes(const WhtKernel& k, const std::vector<unsigned char>& input, int flag)
{
    return withType(k, [&](auto real) {
        return network<decltype(real)>(input.data(), k.order, static_cast<decltype(real)>(expectedScale(k, flag)));
    });
}

// Random numbers of mixed magnitudes, so that the rounding of each sum
// depends on the order of the levels.
std::vector<unsigned char> randomInput(const WhtKernel& k, unsigned seed)
{
    std::vector<unsigned char> bytes(k.bytes());
    withType(k, [&](auto real) {
        using Real = decltype(real);
        auto v = randomReals<Real>(k.n(), seed);
        for (int i = 0; i < k.n(); ++i)
            v[i] = std::ldexp(v[i], static_cast<int>(i * 7919u % 23u) - 11);
        std::memcpy(bytes.data(), v.data(), bytes.size());
    });
    return bytes;
}

// A 16-byte-aligned work buffer of the table's size with a guard region.
struct WorkBuffer {
    static constexpr size_t kGuard = 64;
    std::vector<unsigned char> storage;
    unsigned char* data;
    size_t size;
    WorkBuffer(size_t bytes, unsigned char fill) : storage(bytes + kGuard + 16, fill), size(bytes)
    {
        data = reinterpret_cast<unsigned char*>((reinterpret_cast<uintptr_t>(storage.data()) + 15) & ~uintptr_t{15});
    }
    bool guardIntact(unsigned char fill) const
    {
        for (size_t i = 0; i < kGuard; ++i)
            if (data[size + i] != fill)
                return false;
        return true;
    }
};

class WhtTest : public ::testing::TestWithParam<WhtKernel> {
protected:
    const WhtKernel& k = GetParam();
};

// The network's bytes at every flag, every alignment of src and dst, in
// place, and with the kernel's own or a caller's buffer. src stays unchanged
// and nothing is written past dst.
TEST_P(WhtTest, NetworkBitForBitEverywhere)
{
    ASSERT_NE(k.fn, nullptr);
    const auto input = randomInput(k, 100 + k.order);
    WorkBuffer work(k.bufferBytes(), 0);
    for (int flag : kGoodFlags) {
        const auto expected = expectedBytes(k, input, flag);
        for (void* buffer : {static_cast<void*>(nullptr), static_cast<void*>(work.data)}) {
            for (int srcOffset : kOffsets)
                for (int dstOffset : kOffsets) {
                    OffsetArray<unsigned char> src(k.bytes(), srcOffset), dst(k.bytes(), dstOffset);
                    src.copyFrom(input.data());
                    dst.fillBytes(0xEE);
                    ASSERT_EQ(k.run(src.get(), dst.get(), flag, buffer), StatusOk);
                    const auto out = dst.snapshot(32);
                    ASSERT_TRUE(std::equal(expected.begin(), expected.end(), out.begin()))
                        << "flag " << flag << ", src +" << srcOffset << ", dst +" << dstOffset
                        << (buffer ? ", caller's buffer" : "");
                    EXPECT_TRUE(std::all_of(out.begin() + k.bytes(), out.end(), [](auto b) { return b == 0xEE; }))
                        << "wrote past dst";
                    EXPECT_EQ(0, std::memcmp(src.get(), input.data(), k.bytes())) << "src changed";
                }
            for (int offset : kOffsets) {
                OffsetArray<unsigned char> inPlace(k.bytes(), offset);
                inPlace.copyFrom(input.data());
                ASSERT_EQ(k.run(inPlace.get(), inPlace.get(), flag, buffer), StatusOk);
                EXPECT_EQ(inPlace.snapshot(), expected) << "in place at +" << offset << ", flag " << flag;
            }
        }
    }
}

// Small integers make the transform exact: the result is the matrix
// H[k][j] = (-1)^popcount(k AND j) in natural order, evaluated directly.
TEST_P(WhtTest, NaturalOrderMatrixOnIntegers)
{
    std::vector<int> x(k.n());
    for (int j = 0; j < k.n(); ++j)
        x[j] = static_cast<int>((j * 2654435761u) >> 25) - 64;
    std::vector<unsigned char> src(k.bytes()), dst(k.bytes());
    withType(k, [&](auto real) {
        using Real = decltype(real);
        for (int j = 0; j < k.n(); ++j) {
            const Real v = static_cast<Real>(x[j]);
            std::memcpy(src.data() + j * sizeof(Real), &v, sizeof v);
        }
        EXPECT_EQ(k.run(src.data(), dst.data(), ScaleNoDivide), StatusOk);
        for (int row = 0; row < k.n(); ++row) {
            int64_t sum = 0;
            for (int j = 0; j < k.n(); ++j)
                sum += (std::popcount(static_cast<unsigned>(row & j)) & 1) ? -x[j] : x[j];
            Real got;
            std::memcpy(&got, dst.data() + row * sizeof(Real), sizeof got);
            ASSERT_EQ(got, static_cast<Real>(sum)) << "row " << row;
        }
    });
}

TEST_P(WhtTest, FailuresReportTheirStatusAndTouchNothing)
{
    const auto input = randomInput(k, 7);
    OffsetArray<unsigned char> src(k.bytes(), 0), dst(k.bytes(), 0);
    src.copyFrom(input.data());
    dst.fillBytes(0xA5);
    const auto before = dst.snapshot(32);
    WorkBuffer work(k.bufferBytes(), 0x5C);
    for (void* buffer : {static_cast<void*>(nullptr), static_cast<void*>(work.data)}) {
        for (int flag : kBadFlags) {
            EXPECT_EQ(k.run(src.get(), dst.get(), flag, buffer), StatusScaleFlagError) << "flag " << flag;
            EXPECT_EQ(k.run(nullptr, dst.get(), flag, buffer), StatusNullPointer);
            EXPECT_EQ(k.run(src.get(), nullptr, flag, buffer), StatusNullPointer);
            // A null pointer counts as aligned beside a misaligned other one.
            EXPECT_EQ(k.run(nullptr, dst.get() + 4, flag, buffer), StatusNullPointer);
            EXPECT_EQ(k.run(src.get() + 1, nullptr, flag, buffer), StatusNullPointer);
            EXPECT_EQ(k.run(src.get() + 8, dst.get() + 4, flag, buffer), StatusScaleFlagError);
        }
        EXPECT_EQ(k.run(nullptr, nullptr, ScaleNoDivide, buffer), StatusNullPointer);
    }
    EXPECT_EQ(dst.snapshot(32), before);
    EXPECT_EQ(0, std::memcmp(src.get(), input.data(), k.bytes()));
    EXPECT_TRUE(std::all_of(work.data, work.data + work.size + WorkBuffer::kGuard,
                            [](unsigned char b) { return b == 0x5C; }))
        << "a failed call used the buffer";
}

TEST_P(WhtTest, DispatcherChecksTheOrderThenRunsTheKernel)
{
    const auto input = randomInput(k, 8);
    std::vector<unsigned char> viaKernel(k.bytes()), viaDispatcher(k.bytes());
    ASSERT_EQ(k.run(input.data(), viaKernel.data(), ScaleDivBySqrtN), StatusOk);
    ASSERT_EQ(k.dispatch(input.data(), viaDispatcher.data(), k.order, ScaleDivBySqrtN), StatusOk);
    EXPECT_EQ(viaKernel, viaDispatcher);
    std::vector<unsigned char> untouched(k.bytes(), 0x5A), dst = untouched;
    EXPECT_EQ(k.dispatch(input.data(), dst.data(), k.order, 3), StatusScaleFlagError);
    EXPECT_EQ(k.dispatch(input.data(), nullptr, k.order, 3), StatusNullPointer);
    EXPECT_EQ(k.dispatch(nullptr, dst.data(), k.order, ScaleNoDivide), StatusNullPointer);
    EXPECT_EQ(dst, untouched);
}

INSTANTIATE_TEST_SUITE_P(AllOrders, WhtTest, ::testing::ValuesIn(allKernels()),
                         orderLabel);

// ---- orders 1 to 7: buffer never followed ---------------------------------------

class WhtSmallTest : public WhtTest {};

TEST_P(WhtSmallTest, BufferIsNeverFollowed)
{
    const auto input = randomInput(k, 11);
    std::vector<unsigned char> withNull(k.bytes()), withGarbage(k.bytes());
    gMallocCalls = 0;
    ASSERT_EQ(k.run(input.data(), withNull.data(), ScaleDivBySqrtN, nullptr), StatusOk);
    // An address that faults if followed.
    void* const garbage = reinterpret_cast<void*>(uintptr_t{8});
    ASSERT_EQ(k.run(input.data(), withGarbage.data(), ScaleDivBySqrtN, garbage), StatusOk);
    EXPECT_EQ(withNull, withGarbage);
    EXPECT_EQ(gMallocCalls, 0);
}

std::vector<WhtKernel> kernelsWhere(bool buffered)
{
    std::vector<WhtKernel> kernels;
    for (const WhtKernel& k : allKernels())
        if (k.buffered() == buffered)
            kernels.push_back(k);
    return kernels;
}

INSTANTIATE_TEST_SUITE_P(Orders1To7, WhtSmallTest, ::testing::ValuesIn(kernelsWhere(false)),
                         orderLabel);

// ---- orders 8 to 13: the work buffer ------------------------------------------------

class WhtBufferedTest : public WhtTest {};

// The buffer is scratch: nothing is read before it is written.
TEST_P(WhtBufferedTest, PreviousBufferContentsDoNotMatter)
{
    const auto input = randomInput(k, 12);
    std::vector<unsigned char> withNull(k.bytes()), withNaNs(k.bytes());
    ASSERT_EQ(k.run(input.data(), withNull.data(), ScaleDivBySqrtN, nullptr), StatusOk);
    for (unsigned char pattern : {0xFF, 0x7F, 0x80}) {
        WorkBuffer work(k.bufferBytes(), pattern);
        ASSERT_EQ(k.run(input.data(), withNaNs.data(), ScaleDivBySqrtN, work.data), StatusOk);
        EXPECT_EQ(withNull, withNaNs) << "buffer filled with " << int(pattern);
    }
}

// A buffer of exactly the table's size: nothing beyond it is touched, and
// every element of it, the tail's last included, has been written.
TEST_P(WhtBufferedTest, ExactSizeBufferIsUsedWhole)
{
    const auto input = randomInput(k, 13);
    std::vector<unsigned char> dst(k.bytes());
    WorkBuffer work(k.bufferBytes(), 0xFF);
    ASSERT_EQ(k.run(input.data(), dst.data(), ScaleNoDivide, work.data), StatusOk);
    EXPECT_TRUE(work.guardIntact(0xFF)) << "wrote past the buffer";
    const std::vector<unsigned char> sentinel(k.realBytes(), 0xFF);
    for (size_t at = 0; at < work.size; at += k.realBytes())
        ASSERT_NE(0, std::memcmp(work.data + at, sentinel.data(), k.realBytes())) << "byte " << at << " unwritten";
}

// Each block and column is read whole before its place is written, so the
// buffer may be src (which it destroys) or dst.
TEST_P(WhtBufferedTest, BufferMayBeSrcOrDst)
{
    const auto input = randomInput(k, 14);
    const auto expected = expectedBytes(k, input, ScaleDivBySqrtN);
    WorkBuffer shared(k.bufferBytes(), 0);
    std::memcpy(shared.data, input.data(), k.bytes());
    std::vector<unsigned char> dst(k.bytes());
    ASSERT_EQ(k.run(shared.data, dst.data(), ScaleDivBySqrtN, shared.data), StatusOk);
    EXPECT_EQ(dst, expected) << "buffer is src";
    ASSERT_EQ(k.run(input.data(), shared.data, ScaleDivBySqrtN, shared.data), StatusOk);
    EXPECT_EQ(0, std::memcmp(shared.data, expected.data(), k.bytes())) << "buffer is dst";
    std::memcpy(shared.data, input.data(), k.bytes());
    ASSERT_EQ(k.run(shared.data, shared.data, ScaleDivBySqrtN, shared.data), StatusOk);
    EXPECT_EQ(0, std::memcmp(shared.data, expected.data(), k.bytes())) << "buffer is src and dst";
}

// A null buffer: one tvkMalloc of the table's size and one tvkFree of that
// block, on both paths; a caller's buffer or a failed validation: neither.
TEST_P(WhtBufferedTest, NullBufferAllocatesOnceForTheCall)
{
    const auto input = randomInput(k, 15);
    OffsetArray<unsigned char> dst(k.bytes(), 0), misaligned(k.bytes(), 4);
    for (unsigned char* out : {dst.get(), misaligned.get()}) {
        gMallocCalls = 0;
        gFreeCalls = 0;
        gLastMallocBlock = nullptr;
        ASSERT_EQ(k.run(input.data(), out, ScaleNoDivide, nullptr), StatusOk);
        EXPECT_EQ(gMallocCalls, 1);
        EXPECT_EQ(gFreeCalls, 1);
        EXPECT_EQ(gLastMallocBytes, static_cast<uint32_t>(k.bufferBytes()));
        EXPECT_NE(gLastMallocBlock.load(), nullptr);
        EXPECT_EQ(gLastFreed.load(), gLastMallocBlock.load());
    }
    gMallocCalls = 0;
    gFreeCalls = 0;
    WorkBuffer work(k.bufferBytes(), 0);
    ASSERT_EQ(k.run(input.data(), dst.get(), ScaleNoDivide, work.data), StatusOk);
    EXPECT_EQ(k.run(input.data(), dst.get(), 3, nullptr), StatusScaleFlagError);
    EXPECT_EQ(k.run(input.data(), misaligned.get(), 3, nullptr), StatusScaleFlagError);
    EXPECT_EQ(k.run(nullptr, dst.get(), ScaleNoDivide, nullptr), StatusNullPointer);
    EXPECT_EQ(k.run(input.data(), nullptr, ScaleNoDivide, nullptr), StatusNullPointer);
    EXPECT_EQ(k.dispatch(nullptr, nullptr, 14, ScaleNoDivide, nullptr), StatusSizeError);
    EXPECT_EQ(gMallocCalls, 0);
    EXPECT_EQ(gFreeCalls, 0);
}

// A buffer that overlaps src or dst partly (shifted by whole vectors either
// way) is set aside for a block of the kernel's own: the bytes of a separate
// buffer, one tvkMalloc and one tvkFree; a separate buffer costs none.
TEST_P(WhtBufferedTest, PartlyOverlappingBufferGivesTheBytesOfASeparateOne)
{
    const auto input = randomInput(k, 16);
    std::vector<unsigned char> expected(k.bytes());
    WorkBuffer separate(k.bufferBytes(), 0);
    ASSERT_EQ(k.run(input.data(), expected.data(), ScaleDivBySqrtN, separate.data), StatusOk);
    const long bytes = static_cast<long>(k.bytes()), buffer = k.bufferBytes();
    for (bool intoSrc : {true, false})
        for (long shift : {-buffer + 16, -bytes / 2, 16L, bytes / 2, bytes - 16}) {
            // One arena holds src, dst and the buffer, 16-byte aligned.
            WorkBuffer arena(static_cast<size_t>(4 * bytes + 2 * buffer), 0);
            unsigned char* src = arena.data + buffer;
            unsigned char* dst = src + bytes + buffer;
            std::memcpy(src, input.data(), k.bytes());
            unsigned char* work = (intoSrc ? src : dst) + shift;
            gMallocCalls = 0;
            gFreeCalls = 0;
            ASSERT_EQ(k.run(src, dst, ScaleDivBySqrtN, work), StatusOk);
            EXPECT_EQ(0, std::memcmp(dst, expected.data(), k.bytes()))
                << (intoSrc ? "into src" : "into dst") << " by " << shift;
            EXPECT_EQ(gMallocCalls, 1);
            EXPECT_EQ(gFreeCalls, 1);
        }
}

INSTANTIATE_TEST_SUITE_P(Orders8To13, WhtBufferedTest, ::testing::ValuesIn(kernelsWhere(true)),
                         orderLabel);

// ---- threads -----------------------------------------------------------------------

// Threads running every kernel at once, with buffers of their own or none,
// produce the bytes of a single thread.
TEST(WhtThreads, ConcurrentCallsGiveTheSameBytes)
{
    const auto kernels = allKernels();
    std::vector<std::vector<unsigned char>> inputs, expected;
    for (const WhtKernel& k : kernels) {
        inputs.push_back(randomInput(k, 200 + k.order));
        expected.emplace_back(k.bytes());
        ASSERT_EQ(k.run(inputs.back().data(), expected.back().data(), ScaleDivBySqrtN), StatusOk);
    }
    std::atomic<int> mismatches{0};
    auto worker = [&](int id) {
        const bool ownBuffers = id % 2 == 0;
        for (int round = 0; round < 20; ++round)
            for (size_t i = 0; i < kernels.size(); ++i) {
                const WhtKernel& k = kernels[i];
                std::vector<unsigned char> dst(k.bytes());
                WorkBuffer work(k.bufferBytes(), 0);
                const TvkStatus status =
                    k.run(inputs[i].data(), dst.data(), ScaleDivBySqrtN, ownBuffers ? work.data : nullptr);
                if (status != StatusOk || dst != expected[i])
                    ++mismatches;
            }
    };
    std::vector<std::thread> threads;
    for (int id = 0; id < 4; ++id)
        threads.emplace_back(worker, id);
    for (std::thread& t : threads)
        t.join();
    EXPECT_EQ(mismatches, 0);
}

// ---- scale constants ---------------------------------------------------------

// Bit patterns published for telling orders, seen through an impulse at
// index 0, whose every output is the bare constant. The odd-order 64f
// values at flag 4 end in ...BCC, one unit below 1/sqrt(2) correctly rounded.
struct TellingRow {
    int order;
    uint32_t invSqrt32f, invN32f;
    uint64_t invSqrt64f, invN64f;
};
constexpr TellingRow kTellingRows[] = {
    {1, 0x3F3504F3, 0x3F000000, 0x3FE6A09E667F3BCC, 0x3FE0000000000000},
    {3, 0x3EB504F3, 0x3E000000, 0x3FD6A09E667F3BCC, 0x3FC0000000000000},
    {4, 0x3E800000, 0x3D800000, 0x3FD0000000000000, 0x3FB0000000000000},
    {7, 0x3DB504F3, 0x3C000000, 0x3FB6A09E667F3BCC, 0x3F80000000000000},
    {13, 0x3C3504F3, 0x39000000, 0x3F86A09E667F3BCC, 0x3F20000000000000},
};

template <class Real, class Bits>
void expectImpulseBits(const char* type, int order, int flag, Bits bits)
{
    const std::string name = "tvkgWHT_" + std::to_string(order) + "_" + type;
    using Kernel = TvkStatus (*)(const Real*, Real*, int, uint8_t*);
    const auto kernel = reinterpret_cast<Kernel>(dlsym(RTLD_DEFAULT, name.c_str()));
    ASSERT_NE(kernel, nullptr) << name;
    std::vector<Real> src(size_t{1} << order, 0), dst(src.size());
    src[0] = 1;
    ASSERT_EQ(kernel(src.data(), dst.data(), flag, nullptr), StatusOk);
    for (Real y : dst)
        ASSERT_EQ(std::bit_cast<Bits>(y), bits) << name << " flag " << flag;
}

TEST(WhtScale, TellingRowsBitForBit)
{
    for (const TellingRow& row : kTellingRows)
        for (int flag : kGoodFlags) {
            const bool one = flag == ScaleNoDivide, sqrt = flag == ScaleDivBySqrtN;
            expectImpulseBits<Tvk32f>("32f", row.order, flag,
                                      one ? 0x3F800000u : sqrt ? row.invSqrt32f : row.invN32f);
            expectImpulseBits<Tvk64f>("64f", row.order, flag,
                                      one ? uint64_t{0x3FF0000000000000} : sqrt ? row.invSqrt64f : row.invN64f);
        }
}

// ---- buffer sizes ----------------------------------------------------------------

TEST(WhtBufferSize, TableOfEveryOrder)
{
    for (int order = 1; order <= kOrders; ++order) {
        int32_t size = -1;
        EXPECT_EQ(tvkgWHTGetBufferSize_32f(order, &size), StatusOk);
        EXPECT_EQ(size, kBufferBytes32f[order - 1]) << "32f order " << order;
        size = -1;
        EXPECT_EQ(tvkgWHTGetBufferSize_64f(order, &size), StatusOk);
        EXPECT_EQ(size, kBufferBytes64f[order - 1]) << "64f order " << order;
    }
}

TEST(WhtBufferSize, BadOrderStoresNothing)
{
    for (int order : {0, -1, 14, 64, 0x40000000, std::numeric_limits<int>::min()}) {
        int32_t size = 12345;
        EXPECT_EQ(tvkgWHTGetBufferSize_32f(order, &size), StatusSizeError);
        EXPECT_EQ(tvkgWHTGetBufferSize_64f(order, &size), StatusSizeError);
        EXPECT_EQ(size, 12345);
        EXPECT_EQ(tvkgWHTGetBufferSize_32f(order, nullptr), StatusSizeError);
        EXPECT_EQ(tvkgWHTGetBufferSize_64f(order, nullptr), StatusSizeError);
    }
}

TEST(WhtDispatcher, BadOrderComesFirst)
{
    for (int order : {0, -1, 14, 64, 0x40000000, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(tvkgWHT_32f(nullptr, nullptr, order, 3, nullptr), StatusSizeError) << order;
        EXPECT_EQ(tvkgWHT_64f(nullptr, nullptr, order, 3, nullptr), StatusSizeError) << order;
    }
}

} // namespace
