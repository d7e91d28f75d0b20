// Walsh-Hadamard kernels of every order and element type, each with its own
// work buffer and with a caller's: the call frame, the bytes of the
// butterfly network at every flag, the allocations of every call, buffer
// sizes, the work-buffer rules and threads.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "alloc_probe.h"
#include "kernel_checks.h"
#include "test_support.h"
#include "tvkgen.h"

using namespace tvktest;

namespace {

constexpr int kOrders = 13;
constexpr int kFirstBufferedOrder = 8;

// Work-buffer bytes by order 1..13, as published to callers.
constexpr int32_t kBufferBytes32f[kOrders] = {0, 0, 0, 0, 0, 0, 0, 1024, 2048, 4096, 8192, 18432, 34816};
constexpr int32_t kBufferBytes64f[kOrders] = {0, 0, 0, 0, 0, 0, 0, 2048, 4096, 8192, 18432, 34816, 73728};

// Orders out of range.
constexpr int kBadOrders[] = {0, -1, 14, 64, 0x40000000, INT_MIN};

// A caller's buffer for the largest order; the orders without a work
// buffer are handed an address that faults if followed.
alignas(32) unsigned char gCallersBuffer[73728];
void* const kFaultingBuffer = reinterpret_cast<void*>(uintptr_t{8});

// A kernel of order `size` with the buffer it is handed (null: its own).
// Every run checks the allocations of the call: a buffered order given no
// buffer makes one tvkMalloc of the table's size and one tvkFree of that
// 16-byte aligned block when it succeeds; any other call allocates nothing.
struct WhtKernel {
    bool wide;
    int size;
    void* fn;
    void* buffer;

    bool is64() const { return wide; }
    int n() const { return 1 << size; }
    int realBytes() const { return is64() ? 8 : 4; }
    int inCells() const { return n(); }
    int outCells() const { return n(); }
    size_t bytes() const { return n() * realBytes(); }
    bool buffered() const { return size >= kFirstBufferedOrder; }
    int32_t bufferBytes() const { return (is64() ? kBufferBytes64f : kBufferBytes32f)[size - 1]; }
    std::string type() const { return is64() ? "64f" : "32f"; }
    std::string name() const { return listedKernel("tvkgWHT_" + type(), size).name; }

    TvkStatus call(const void* src, void* dst, int flag, void* work) const
    {
        return callAs<Tvk32f, Tvk64f>(is64(), fn, src, dst, flag, static_cast<uint8_t*>(work));
    }
    TvkStatus run(const void* src, void* dst, int flag) const
    {
        probe.reset();
        return expectAllocations(call(src, dst, flag, buffer));
    }
    TvkStatus runDispatcher(const void* src, void* dst, int order, int flag) const
    {
        probe.reset();
        return expectAllocations(callAs<Tvk32f, Tvk64f>(is64(), exportedFunction("tvkgWHT_" + type()), src, dst, order,
                                                        flag, static_cast<uint8_t*>(buffer)));
    }
    TvkStatus expectAllocations(TvkStatus status) const
    {
        const int allocations = status == StatusOk && buffer == nullptr && buffered() ? 1 : 0;
        EXPECT_EQ(probe.mallocs, allocations) << "status " << status;
        EXPECT_EQ(probe.frees, allocations) << "status " << status;
        if (allocations) {
            EXPECT_EQ(probe.lastBytes, static_cast<uint32_t>(bufferBytes()));
            EXPECT_EQ(reinterpret_cast<uintptr_t>(probe.lastBlock.load()) % 16, 0u) << "tvkMalloc's block";
            EXPECT_NE(probe.lastBlock.load(), nullptr);
            EXPECT_EQ(probe.lastFreed.load(), probe.lastBlock.load());
        }
        return status;
    }
};

void PrintTo(const WhtKernel& k, std::ostream* out) { *out << k.name() << (k.buffer ? " with a caller's buffer" : ""); }

std::string label(const WhtKernel& k)
{
    return "Order" + std::to_string(k.size) + "_" + k.type() + (k.buffer ? "_CallersBuffer" : "");
}

// Every order and type, handed no buffer or (callersBuffer) a caller's.
std::vector<WhtKernel> allKernels(std::initializer_list<bool> callersBuffer)
{
    std::vector<WhtKernel> kernels;
    for (bool callers : callersBuffer)
        for (bool is64 : {false, true})
            for (int order = 1; order <= kOrders; ++order) {
                WhtKernel k{is64, order, nullptr, nullptr};
                k.fn = listedKernel("tvkgWHT_" + k.type(), order).fn;
                k.buffer = callers ? (k.buffered() ? gCallersBuffer : kFaultingBuffer) : nullptr;
                kernels.push_back(k);
            }
    return kernels;
}

// 2^-n on the flags that divide by N, both directions' included.
double scaleOf(const WhtKernel& k, int flag)
{
    return scaleFactor(k.is64(), k.n(), flag, flag == ScaleDivForwardByN || flag == ScaleDivInverseByN);
}

// The butterfly network: levels in ascending order, each sum and difference
// rounded to the element type, then one product by the scale. Exactly, it
// is the matrix H[k][j] = (-1)^popcount(k AND j) in natural order.
template <class Real>
std::vector<unsigned char> network(const WhtKernel& k, const std::vector<unsigned char>& input, int flag)
{
    std::vector<Real> x(k.n());
    std::memcpy(x.data(), input.data(), input.size());
    for (int half = 1; half < k.n(); half *= 2)
        for (int i = 0; i < k.n(); ++i)
            if ((i & half) == 0) {
                const Real a = x[i], b = x[i + half];
                x[i] = a + b;
                x[i + half] = a - b;
            }
    for (Real& y : x)
        y *= static_cast<Real>(scaleOf(k, flag));
    std::vector<unsigned char> out(input.size());
    std::memcpy(out.data(), x.data(), out.size());
    return out;
}

std::vector<unsigned char> expectedBytes(const WhtKernel& k, const std::vector<unsigned char>& input, int flag)
{
    return k.is64() ? network<double>(k, input, flag) : network<float>(k, input, flag);
}

// Random numbers of mixed magnitudes, so that the rounding of each sum
// depends on the order of the levels.
std::vector<unsigned char> mixedInput(const WhtKernel& k, unsigned seed)
{
    auto v = randomReals<double>(k.n(), seed);
    for (int i = 0; i < k.n(); ++i)
        v[i] = std::ldexp(v[i], static_cast<int>(i * 7919u % 23u) - 11);
    return bytesOf(k, v);
}

class WhtTest : public ::testing::TestWithParam<WhtKernel> {
protected:
    const WhtKernel& k = GetParam();
};

// The frame's statuses and their order, the dispatcher, every alignment and
// in place; a failed call leaves a caller's buffer alone.
TEST_P(WhtTest, CallFrame)
{
    ASSERT_NE(k.fn, nullptr);
    std::memset(gCallersBuffer, 0x5C, sizeof gCallersBuffer);
    expectFailedCallsTouchNothing(k, mixedInput(k, 7), k.bytes());
    EXPECT_TRUE(std::ranges::all_of(gCallersBuffer, [](unsigned char b) { return b == 0x5C; }))
        << "a failed call used the buffer";
    expectDispatcherRoutesToTheKernel(k, mixedInput(k, 2), k.bytes(), kBadOrders);
    expectSameBytesAtEveryAddressAndInPlace(k, mixedInput(k, 4), k.bytes());
}

TEST_P(WhtTest, NetworkBitForBit)
{
    const auto input = mixedInput(k, 100 + k.size);
    for (int flag : kGoodFlags)
        EXPECT_EQ(runKernel(k, input, flag), expectedBytes(k, input, flag)) << "flag " << flag;
}

INSTANTIATE_TEST_SUITE_P(AllOrders, WhtTest, ::testing::ValuesIn(allKernels({false, true})), ByLabel());

// ---- orders 8 to 13: the work buffer ------------------------------------------------

class WhtBufferedTest : public WhtTest {};

// The buffer is scratch: whatever it held, the bytes are those of the
// kernel's own buffer. A buffer of exactly the table's size is used whole
// (every element, the tail's last included, is written over the NaN
// pattern) and nothing beyond it is touched.
TEST_P(WhtBufferedTest, ExactSizeScratchBufferIsUsedWhole)
{
    const auto input = mixedInput(k, 12), withNull = runKernel(k, input, ScaleDivBySqrtN);
    std::vector<unsigned char> withBuffer(k.bytes());
    for (unsigned char pattern : {0xFF, 0x7F, 0x80}) {
        OffsetArray<unsigned char> work(k.bufferBytes(), 0, pattern);
        const auto before = work.all();
        ASSERT_EQ(k.call(input.data(), withBuffer.data(), ScaleDivBySqrtN, work.get()), StatusOk);
        EXPECT_EQ(withNull, withBuffer) << "buffer filled with " << int(pattern);
        EXPECT_FALSE(work.changedOutside(before, work.bytes())) << "wrote outside the buffer";
        const std::vector<unsigned char> sentinel(k.realBytes(), 0xFF);
        for (size_t at = 0; pattern == 0xFF && at < work.bytes(); at += k.realBytes())
            ASSERT_NE(0, std::memcmp(work.get() + at, sentinel.data(), k.realBytes())) << "byte " << at << " unwritten";
    }
}

// Each block and column is read whole before its place is written, so the
// buffer may be src (which it destroys), dst or both, at no allocation. A
// buffer that overlaps src or dst partly (shifted by whole vectors either
// way) is set aside for one of the kernel's own: the bytes of a separate
// buffer, one tvkMalloc and one tvkFree.
TEST_P(WhtBufferedTest, BufferSharingSrcOrDst)
{
    const auto input = mixedInput(k, 14);
    const auto expected = expectedBytes(k, input, ScaleDivBySqrtN);
    const long bytes = static_cast<long>(k.bytes()), buffer = k.bufferBytes();
    // One arena holds src, dst and the buffer, 16-byte aligned.
    OffsetArray<unsigned char> arena(static_cast<size_t>(4 * bytes + 2 * buffer), 0);
    unsigned char* const src = arena.get() + buffer;
    unsigned char* const dst = src + bytes + buffer;
    auto check = [&](const unsigned char* from, unsigned char* to, unsigned char* work, int allocations,
                     const std::string& what) {
        std::memcpy(src, input.data(), k.bytes());
        probe.reset();
        ASSERT_EQ(k.call(from, to, ScaleDivBySqrtN, work), StatusOk);
        EXPECT_EQ(0, std::memcmp(to, expected.data(), k.bytes())) << what;
        EXPECT_EQ(probe.mallocs, allocations) << what;
        EXPECT_EQ(probe.frees, allocations) << what;
    };
    check(src, dst, src, 0, "buffer is src");
    check(src, dst, dst, 0, "buffer is dst");
    check(src, src, src, 0, "buffer is src and dst");
    for (bool intoSrc : {true, false})
        for (long shift : {-buffer + 16, -bytes / 2, 16L, bytes / 2, bytes - 16})
            check(src, dst, (intoSrc ? src : dst) + shift, 1,
                  std::string(intoSrc ? "into src" : "into dst") + " by " + std::to_string(shift));
}

bool isBuffered(const WhtKernel& k) { return k.buffered(); }

INSTANTIATE_TEST_SUITE_P(Orders8To13, WhtBufferedTest,
                         ::testing::ValuesIn(kernelsWhere(allKernels({false}), isBuffered)), ByLabel());

// Threads running every kernel at once, with buffers of their own or none,
// produce the bytes of a single thread.
TEST(WhtThreads, ConcurrentCallsGiveTheSameBytes)
{
    const auto kernels = allKernels({false});
    EXPECT_TRUE(threadsGiveTheResultOfOne([&](int thread) {
        std::vector<std::vector<unsigned char>> outputs;
        for (int round = 0; round < 20; ++round)
            for (const WhtKernel& k : kernels) {
                std::vector<unsigned char> dst(k.bytes());
                OffsetArray<unsigned char> work(k.bufferBytes(), 0);
                EXPECT_EQ(k.call(mixedInput(k, 200 + k.size).data(), dst.data(), ScaleDivBySqrtN,
                                 thread % 2 ? nullptr : work.get()),
                          StatusOk);
                outputs.push_back(dst);
            }
        return outputs;
    }));
}

// The published sizes of orders 1 to 13; any other order is a size error
// before anything else is looked at, stores no size and allocates nothing.
TEST(WhtOrders, BufferSizesAndOrdersOutOfRange)
{
    probe.reset();
    for (int order = 1; order <= kOrders; ++order) {
        int32_t size = -1;
        EXPECT_EQ(tvkgWHTGetBufferSize_32f(order, &size), StatusOk);
        EXPECT_EQ(size, kBufferBytes32f[order - 1]) << "32f order " << order;
        EXPECT_EQ(tvkgWHTGetBufferSize_64f(order, &size), StatusOk);
        EXPECT_EQ(size, kBufferBytes64f[order - 1]) << "64f order " << order;
    }
    for (int order : kBadOrders) {
        int32_t size = 12345;
        EXPECT_EQ(tvkgWHTGetBufferSize_32f(order, &size), StatusSizeError);
        EXPECT_EQ(tvkgWHTGetBufferSize_64f(order, &size), StatusSizeError);
        EXPECT_EQ(size, 12345);
        EXPECT_EQ(tvkgWHTGetBufferSize_32f(order, nullptr), StatusSizeError);
        EXPECT_EQ(tvkgWHTGetBufferSize_64f(order, nullptr), StatusSizeError);
    }
    EXPECT_EQ(probe.mallocs, 0);
}

} // namespace
