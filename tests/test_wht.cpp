// Walsh-Hadamard kernels of every order and element type: bytes of the
// butterfly network at every flag, alignment and buffer, with the
// allocations of each call counted; statuses; buffer sizes; the work-buffer
// rules; threads; the scale constants.
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
    std::string name() const { return listedKernel("tvkgWHT_" + type(), order).name; }

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
            k.fn = listedKernel("tvkgWHT_" + k.type(), order).fn;
            kernels.push_back(k);
        }
    return kernels;
}

std::vector<WhtKernel> kernelsWhere(bool buffered)
{
    std::vector<WhtKernel> kernels;
    for (const WhtKernel& k : allKernels())
        if (k.buffered() == buffered)
            kernels.push_back(k);
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

void resetAllocationCounts()
{
    gMallocCalls = 0;
    gFreeCalls = 0;
    gLastMallocBlock = nullptr;
}

// The network's bytes at every flag, every alignment of src and dst, in
// place, and with the kernel's own or a caller's buffer. src stays unchanged
// and nothing is written past dst. A buffered order given no buffer makes
// one tvkMalloc of the table's size and one tvkFree of that block; a
// caller's buffer costs none. The orders without a work buffer are handed
// an address that faults if followed, and allocate nothing.
TEST_P(WhtTest, NetworkBitForBitEverywhere)
{
    ASSERT_NE(k.fn, nullptr);
    const auto input = randomInput(k, 100 + k.order);
    WorkBuffer work(k.bufferBytes(), 0);
    void* const callersBuffer = k.buffered() ? static_cast<void*>(work.data) : reinterpret_cast<void*>(uintptr_t{8});
    auto run = [&](const unsigned char* src, unsigned char* dst, int flag, void* buffer) {
        resetAllocationCounts();
        ASSERT_EQ(k.run(src, dst, flag, buffer), StatusOk);
        const int allocations = buffer == nullptr && k.buffered() ? 1 : 0;
        EXPECT_EQ(gMallocCalls, allocations);
        EXPECT_EQ(gFreeCalls, allocations);
        if (allocations) {
            EXPECT_EQ(gLastMallocBytes, static_cast<uint32_t>(k.bufferBytes()));
            EXPECT_NE(gLastMallocBlock.load(), nullptr);
            EXPECT_EQ(gLastFreed.load(), gLastMallocBlock.load());
        }
    };
    for (int flag : kGoodFlags) {
        const auto expected = expectedBytes(k, input, flag);
        for (void* buffer : {static_cast<void*>(nullptr), callersBuffer}) {
            for (int srcOffset : kOffsets)
                for (int dstOffset : kOffsets) {
                    OffsetArray<unsigned char> src(k.bytes(), srcOffset), dst(k.bytes(), dstOffset);
                    src.copyFrom(input.data());
                    dst.fillBytes(0xEE);
                    run(src.get(), dst.get(), flag, buffer);
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
                run(inPlace.get(), inPlace.get(), flag, buffer);
                EXPECT_EQ(inPlace.snapshot(), expected) << "in place at +" << offset << ", flag " << flag;
            }
        }
    }
}

// Small integers make the transform exact: the result is the matrix
// H[k][j] = (-1)^popcount(k AND j) in natural order, evaluated directly.
TEST_P(WhtTest, NaturalOrderMatrixOnIntegers)
{
    std::vector<unsigned char> src(k.bytes()), dst(k.bytes());
    withType(k, [&](auto real) {
        using Real = decltype(real);
        std::vector<int> x(k.n());
        for (int j = 0; j < k.n(); ++j) {
            x[j] = static_cast<int>((j * 2654435761u) >> 25) - 64;
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

// Null pointers come before the flag, a null pointer counts as aligned
// beside a misaligned other one, and a failed call touches neither dst nor
// the buffer and allocates nothing. The dispatcher gives the kernel's
// statuses and bytes at a valid order.
TEST_P(WhtTest, FailuresReportTheirStatusAndTouchNothing)
{
    const auto input = randomInput(k, 7);
    OffsetArray<unsigned char> src(k.bytes(), 0), dst(k.bytes(), 0);
    src.copyFrom(input.data());
    dst.fillBytes(0xA5);
    const auto before = dst.snapshot(32);
    WorkBuffer work(k.bufferBytes(), 0x5C);
    resetAllocationCounts();
    for (void* buffer : {static_cast<void*>(nullptr), static_cast<void*>(work.data)}) {
        for (int flag : kBadFlags) {
            EXPECT_EQ(k.run(src.get(), dst.get(), flag, buffer), StatusScaleFlagError) << "flag " << flag;
            EXPECT_EQ(k.run(nullptr, dst.get(), flag, buffer), StatusNullPointer);
            EXPECT_EQ(k.run(src.get(), nullptr, flag, buffer), StatusNullPointer);
            EXPECT_EQ(k.run(nullptr, dst.get() + 4, flag, buffer), StatusNullPointer);
            EXPECT_EQ(k.run(src.get() + 1, nullptr, flag, buffer), StatusNullPointer);
            EXPECT_EQ(k.run(src.get() + 8, dst.get() + 4, flag, buffer), StatusScaleFlagError);
            EXPECT_EQ(k.dispatch(src.get(), dst.get(), k.order, flag, buffer), StatusScaleFlagError);
            EXPECT_EQ(k.dispatch(src.get(), nullptr, k.order, flag, buffer), StatusNullPointer);
        }
        EXPECT_EQ(k.run(nullptr, nullptr, ScaleNoDivide, buffer), StatusNullPointer);
        EXPECT_EQ(k.dispatch(nullptr, dst.get(), k.order, ScaleNoDivide, buffer), StatusNullPointer);
    }
    EXPECT_EQ(gMallocCalls, 0);
    EXPECT_EQ(gFreeCalls, 0);
    EXPECT_EQ(dst.snapshot(32), before);
    EXPECT_EQ(0, std::memcmp(src.get(), input.data(), k.bytes()));
    EXPECT_TRUE(std::all_of(work.data, work.data + work.size + WorkBuffer::kGuard,
                            [](unsigned char b) { return b == 0x5C; }))
        << "a failed call used the buffer";

    std::vector<unsigned char> viaKernel(k.bytes()), viaDispatcher(k.bytes());
    ASSERT_EQ(k.run(input.data(), viaKernel.data(), ScaleDivBySqrtN), StatusOk);
    ASSERT_EQ(k.dispatch(input.data(), viaDispatcher.data(), k.order, ScaleDivBySqrtN), StatusOk);
    EXPECT_EQ(viaKernel, viaDispatcher);
}

INSTANTIATE_TEST_SUITE_P(AllOrders, WhtTest, ::testing::ValuesIn(allKernels()), orderLabel);

// ---- orders 8 to 13: the work buffer ------------------------------------------------

class WhtBufferedTest : public WhtTest {};

// The buffer is scratch: whatever it held, the bytes are those of the
// kernel's own buffer. A buffer of exactly the table's size is used whole
// (every element, the tail's last included, is written over the NaN
// pattern) and nothing beyond it is touched.
TEST_P(WhtBufferedTest, ExactSizeScratchBufferIsUsedWhole)
{
    const auto input = randomInput(k, 12);
    std::vector<unsigned char> withNull(k.bytes()), withBuffer(k.bytes());
    ASSERT_EQ(k.run(input.data(), withNull.data(), ScaleDivBySqrtN, nullptr), StatusOk);
    for (unsigned char pattern : {0xFF, 0x7F, 0x80}) {
        WorkBuffer work(k.bufferBytes(), pattern);
        ASSERT_EQ(k.run(input.data(), withBuffer.data(), ScaleDivBySqrtN, work.data), StatusOk);
        EXPECT_EQ(withNull, withBuffer) << "buffer filled with " << int(pattern);
        EXPECT_TRUE(work.guardIntact(pattern)) << "wrote past the buffer";
        const std::vector<unsigned char> sentinel(k.realBytes(), 0xFF);
        for (size_t at = 0; pattern == 0xFF && at < work.size; at += k.realBytes())
            ASSERT_NE(0, std::memcmp(work.data + at, sentinel.data(), k.realBytes())) << "byte " << at << " unwritten";
    }
}

// Each block and column is read whole before its place is written, so the
// buffer may be src (which it destroys), dst or both, at no allocation. A
// buffer that overlaps src or dst partly (shifted by whole vectors either
// way) is set aside for one of the kernel's own: the bytes of a separate
// buffer, one tvkMalloc and one tvkFree.
TEST_P(WhtBufferedTest, BufferSharingSrcOrDst)
{
    const auto input = randomInput(k, 14);
    const auto expected = expectedBytes(k, input, ScaleDivBySqrtN);
    const long bytes = static_cast<long>(k.bytes()), buffer = k.bufferBytes();
    // One arena holds src, dst and the buffer, 16-byte aligned.
    WorkBuffer arena(static_cast<size_t>(4 * bytes + 2 * buffer), 0);
    unsigned char* const src = arena.data + buffer;
    unsigned char* const dst = src + bytes + buffer;
    auto check = [&](const unsigned char* from, unsigned char* to, unsigned char* work, int allocations,
                     const std::string& what) {
        std::memcpy(src, input.data(), k.bytes());
        resetAllocationCounts();
        ASSERT_EQ(k.run(from, to, ScaleDivBySqrtN, work), StatusOk);
        EXPECT_EQ(0, std::memcmp(to, expected.data(), k.bytes())) << what;
        EXPECT_EQ(gMallocCalls, allocations) << what;
        EXPECT_EQ(gFreeCalls, allocations) << what;
    };
    check(src, dst, src, 0, "buffer is src");
    check(src, dst, dst, 0, "buffer is dst");
    check(src, src, src, 0, "buffer is src and dst");
    for (bool intoSrc : {true, false})
        for (long shift : {-buffer + 16, -bytes / 2, 16L, bytes / 2, bytes - 16})
            check(src, dst, (intoSrc ? src : dst) + shift, 1,
                  std::string(intoSrc ? "into src" : "into dst") + " by " + std::to_string(shift));
}

INSTANTIATE_TEST_SUITE_P(Orders8To13, WhtBufferedTest, ::testing::ValuesIn(kernelsWhere(true)), orderLabel);

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
        for (int round = 0; round < 20; ++round)
            for (size_t i = 0; i < kernels.size(); ++i) {
                const WhtKernel& k = kernels[i];
                std::vector<unsigned char> dst(k.bytes());
                WorkBuffer work(k.bufferBytes(), 0);
                if (k.run(inputs[i].data(), dst.data(), ScaleDivBySqrtN, id % 2 ? nullptr : work.data) != StatusOk ||
                    dst != expected[i])
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

// ---- orders and buffer sizes ---------------------------------------------------------

// The published sizes of orders 1 to 13; any other order is a size error
// before anything else is looked at, stores no size and allocates nothing.
TEST(WhtOrders, BufferSizesAndOrdersOutOfRange)
{
    resetAllocationCounts();
    for (int order = 1; order <= kOrders; ++order) {
        int32_t size = -1;
        EXPECT_EQ(tvkgWHTGetBufferSize_32f(order, &size), StatusOk);
        EXPECT_EQ(size, kBufferBytes32f[order - 1]) << "32f order " << order;
        EXPECT_EQ(tvkgWHTGetBufferSize_64f(order, &size), StatusOk);
        EXPECT_EQ(size, kBufferBytes64f[order - 1]) << "64f order " << order;
    }
    for (int order : {0, -1, 14, 64, 0x40000000, std::numeric_limits<int>::min()}) {
        int32_t size = 12345;
        EXPECT_EQ(tvkgWHTGetBufferSize_32f(order, &size), StatusSizeError);
        EXPECT_EQ(tvkgWHTGetBufferSize_64f(order, &size), StatusSizeError);
        EXPECT_EQ(size, 12345);
        EXPECT_EQ(tvkgWHTGetBufferSize_32f(order, nullptr), StatusSizeError);
        EXPECT_EQ(tvkgWHTGetBufferSize_64f(order, nullptr), StatusSizeError);
        EXPECT_EQ(tvkgWHT_32f(nullptr, nullptr, order, 3, nullptr), StatusSizeError) << order;
        EXPECT_EQ(tvkgWHT_64f(nullptr, nullptr, order, ScaleNoDivide, nullptr), StatusSizeError) << order;
    }
    EXPECT_EQ(gMallocCalls, 0);
}

} // namespace
