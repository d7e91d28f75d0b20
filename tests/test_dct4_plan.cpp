// DCT-IV plans: the size contract, the build inside exactly that many bytes,
// alignment of every block, the cursor after Free, the allocation failure
// path, and the table values. The arena and its lists are held to their
// promises through these: every plan's blocks and list cells are walked.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "alloc_probe.h"
#include "dct4_api.h"
#include "plan_arena.h"
#include "plan_build.h"
#include "plan_routines.h"
#include "plan_tables.h"
#include "test_support.h"
#include "tvkcore.h"
#include "tvkgen.h"

namespace {

using namespace tvkgen::dct4;
using tvktest::probe;

template <class Real>
using Api = tvktest::Dct4Api<Real>;

template <class Real>
int32_t sizeOf(int len)
{
    int32_t size = -1;
    return Api<Real>::getSize(len, &size) == StatusOk ? size : -1;
}

// A block of exactly `size` bytes at a chosen remainder modulo 32, with a
// guard region behind it.
struct GuardedBlock : tvktest::OffsetArray<uint8_t> {
    static constexpr uint8_t kFill = 0xA5;
    GuardedBlock(int32_t size, int remainder) : OffsetArray(size, remainder, kFill), mem(get()) {}
    uint8_t* const mem;
};

// Every record of the tree, reached through the children lists.
struct TreeFacts {
    int splits = 0;
    bool aligned = true;
};

void walk(uint8_t* arena, Ref at, TreeFacts& facts)
{
    auto aligned = [&](Ref ref) {
        if (ref != kNone && reinterpret_cast<uintptr_t>(arena + ref) % 32 != 0)
            facts.aligned = false;
    };
    aligned(at);
    const auto* head = recordAt<PlanNode>(arena, at);
    const auto routine = static_cast<NodeRoutine>(head->destroy / 2);
    switch (routine) {
    case NodeRoutine::Source: return;
    case NodeRoutine::Plan: aligned(recordAt<Dct4Plan>(arena, at)->work); break;
    case NodeRoutine::RecombineKernel: aligned(recordAt<RecombineKernel>(arena, at)->table); break;
    case NodeRoutine::TwiddleKernel: aligned(recordAt<TwiddleKernel>(arena, at)->table); break;
    case NodeRoutine::SplitNode:
        ++facts.splits;
        aligned(recordAt<SplitNode>(arena, at)->work);
        break;
    default: break;
    }
    // Every node but a source has its children list right behind the head.
    const Ref children = *reinterpret_cast<const Ref*>(head + 1);
    for (Ref cell = children; cell != kNone; cell = recordAt<ListCell>(arena, cell)->next)
        if (Ref value = recordAt<ListCell>(arena, cell)->value; value != kNone)
            walk(arena, value, facts);
}

// ---- Plans ---------------------------------------------------------------------

template <class Real>
class Dct4Plan : public ::testing::Test {};
using RealTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Dct4Plan, RealTypes);

struct SizeRow {
    int len;
    int32_t size32;
    int32_t size64;
};
// The contract with callers; 0 means StatusSizeError.
constexpr SizeRow kSizeContract[] = {
    {2, 224, 224}, {4, 224, 224}, {8, 224, 224}, {16, 224, 224}, {32, 224, 224}, {64, 1632, 2144},
    {1024, 9312, 17504}, {4096, 52768, 101920}, {65536, 820000, 1606432}, {131072, 2164960, 4262112},
    {1048576, 17303520, 34080736}, {33554432, 687868576, 1358957216}, {1 << 26, 1375733920, 0}, {1 << 27, 0, 0},
    {1 << 28, 0, 0}, {1 << 29, 0, 268438880}, {1 << 30, 536874336, 536874336}, {9, 0, 1280}, {17, 0, 1408},
    {33, 1408, 1664}, {65, 1664, 2176},
};

TEST(Dct4Size, Contract)
{
    for (const SizeRow& row : kSizeContract) {
        EXPECT_EQ(sizeOf<float>(row.len), row.size32 ? row.size32 : -1) << "32f len " << row.len;
        EXPECT_EQ(sizeOf<double>(row.len), row.size64 ? row.size64 : -1) << "64f len " << row.len;
    }
}

TYPED_TEST(Dct4Plan, SizeFollowsThePowerOfTwoRule)
{
    constexpr int32_t e = sizeof(TypeParam);
    for (int32_t n = 64; n <= (1 << 20); n *= 2) {
        // 1120 + 2 N E, and per split level 704 + N E + 32 (s - 1) m / (2s).
        int64_t expected = 1120 + 2 * int64_t{n} * e;
        int32_t r = n / 2 >= 512 ? 32 : n / 2 >= 128 ? 16 : 8;
        for (int32_t m = n / r; m > 64;) {
            const int32_t s = m / 2 >= 512 ? 32 : m / 2 >= 128 ? 16 : 8;
            expected += 704 + int64_t{n} * e + 32 * (s - 1) * (m / (2 * s));
            m /= s;
        }
        EXPECT_EQ(sizeOf<TypeParam>(n), expected) << "len " << n;
    }
}

// Refused lengths leave the size and *plan alone; null arguments come first.
TYPED_TEST(Dct4Plan, RefusedLengthsAndNullArguments)
{
    using Plan = typename Api<TypeParam>::Plan;
    std::vector<uint8_t> mem(1 << 16);
    for (int len : {0, 1, 3, 5, 6, 7, 10, 12, 24, 48, 96, 192, 1000, 1536, 3 * 4096, -1, -64, INT32_MIN}) {
        int32_t size = 12345;
        EXPECT_EQ(Api<TypeParam>::getSize(len, &size), StatusSizeError) << "len " << len;
        EXPECT_EQ(size, 12345);
        auto* const sentinel = reinterpret_cast<Plan*>(&mem[1]);
        Plan* plan = sentinel;
        if (len > 0 && len <= 4096) {
            EXPECT_EQ(Api<TypeParam>::init(&plan, len, mem.data()), StatusSizeError) << "len " << len;
        }
        EXPECT_EQ(plan, sentinel) << "*plan keeps its value";
        plan = nullptr;
        EXPECT_EQ(Api<TypeParam>::initAlloc(&plan, len), StatusSizeError);
        EXPECT_EQ(plan, nullptr);
    }
    Plan* plan = nullptr;
    EXPECT_EQ(Api<TypeParam>::init(nullptr, 64, mem.data()), StatusNullPointer);
    EXPECT_EQ(Api<TypeParam>::init(&plan, 64, nullptr), StatusNullPointer);
    EXPECT_EQ(Api<TypeParam>::initAlloc(nullptr, 64), StatusNullPointer);
    probe.reset();
    EXPECT_EQ(Api<TypeParam>::free(nullptr), StatusNullPointer);
    EXPECT_EQ(probe.frees, 0);
}

// Powers of two and the accepted 2^k + 1 lengths, each built in a block of
// exactly its size at an odd address.
std::vector<int> buildLengths(bool single)
{
    std::vector<int> lens;
    for (int n = 2; n <= (1 << 17); n *= 2)
        lens.push_back(n);
    for (int n = single ? 32 : 8; n <= (1 << 17); n *= 2)
        lens.push_back(n + 1);
    return lens;
}

TYPED_TEST(Dct4Plan, BuildFitsItsSizeAlignsEveryBlockAndFreeReturnsTheCursor)
{
    for (int len : buildLengths(sizeof(TypeParam) == 4)) {
        const int32_t size = sizeOf<TypeParam>(len);
        ASSERT_GT(size, 0) << "len " << len;
        for (int remainder : {0, 1, 13}) {
            GuardedBlock block(size, remainder);
            const auto before = block.all();
            typename Api<TypeParam>::Plan* plan = nullptr;
            ASSERT_EQ(Api<TypeParam>::init(&plan, len, block.mem), StatusOk) << "len " << len;
            auto* root = reinterpret_cast<tvkgen::dct4::Dct4Plan*>(plan);
            const int32_t start = 64 - remainder;
            TreeFacts facts;
            walk(block.mem, root->head.arena, facts);
            EXPECT_TRUE(facts.aligned) << "len " << len << " at remainder " << remainder;
            EXPECT_FALSE(block.changedOutside(before, size)) << "len " << len;
            // The rule counts 224 bytes too many in a two-stage plan and
            // 160 more per split level.
            const int32_t slack = root->kind == 6 ? 224 + 160 * facts.splits : 0;
            EXPECT_EQ(arenaCursor(block.mem), size - slack - remainder) << "len " << len;
            planDestroy(root);
            EXPECT_EQ(arenaCursor(block.mem), start) << "len " << len;
        }
    }
}

TEST(Dct4Size, FailedBuildLeavesTheCursorWhereItsReleasesPutIt)
{
    // Length 96 fails in the recombine stage; the root still releases the
    // work block it never got.
    std::vector<uint8_t> mem(4096 + 32);
    uint8_t* block = mem.data() + (32 - reinterpret_cast<uintptr_t>(mem.data()) % 32) % 32;
    TvkgDCT4Plan_32f* plan = nullptr;
    EXPECT_EQ(tvkgDCT4Init_32f(&plan, 96, block), StatusSizeError);
    EXPECT_EQ(arenaCursor(block), -320);
}

TYPED_TEST(Dct4Plan, InitAllocAndFreeUseOneBlock)
{
    for (int len : {16, 64, 4096}) {
        typename Api<TypeParam>::Plan* plan = nullptr;
        ASSERT_EQ(Api<TypeParam>::initAlloc(&plan, len), StatusOk);
        uint8_t* block = blockOf(&reinterpret_cast<tvkgen::dct4::Dct4Plan*>(plan)->head);
        const int32_t start = 64 - static_cast<int32_t>(reinterpret_cast<uintptr_t>(block) % 32);
        probe.reset();
        EXPECT_EQ(Api<TypeParam>::free(plan), StatusOk);
        EXPECT_EQ(probe.frees, 1);
        EXPECT_EQ(probe.lastFreed, block);
        EXPECT_EQ(probe.firstWordAtFree, start) << "Free brings the cursor back, len " << len;
    }
    // An exhausted allocator: a null pointer, and the null block is freed.
    typename Api<TypeParam>::Plan* plan = nullptr;
    probe.failNext = true;
    probe.reset();
    EXPECT_EQ(Api<TypeParam>::initAlloc(&plan, 1024), StatusNullPointer);
    EXPECT_EQ(plan, nullptr);
    EXPECT_EQ(probe.frees, 1);
    EXPECT_EQ(probe.lastFreed, nullptr);
}

// ---- Tables --------------------------------------------------------------------

// Column order of the rotation table for radix 32, as the design fixes it.
constexpr int kOrder32[32] = {0, 31, 16, 15, 4, 27, 20, 11, 8, 23, 24, 7, 12, 19, 28, 3,
                              1, 30, 17, 14, 5, 26, 21, 10, 9, 22, 25, 6, 13, 18, 29, 2};

// Every rotation entry against theta(p, c) = pi (2p + 1)(2c + 1) / (4N) in
// long double, in block, column-order, cos-then-sin, lane order. In binary32
// the quotient n / (8N) is rounded to float before the cosine, which is
// taken in double: the cosines match that rule bit for bit. With N = 4097
// the quotient is inexact, so the rule shows.
TYPED_TEST(Dct4Plan, RotationTableLayoutAndValues)
{
    for (int len : {64, 4096, 4097}) {
        GuardedBlock block(sizeOf<TypeParam>(len), 0);
        typename Api<TypeParam>::Plan* plan = nullptr;
        ASSERT_EQ(Api<TypeParam>::init(&plan, len, block.mem), StatusOk);
        // The first kernel of the first recombine stage.
        const auto first = [&block](Ref list) { return listNth(recordAt<ListCell>(block.mem, list), 0); };
        const auto* stage = recordAt<RecombineStage>(
            block.mem, first(reinterpret_cast<tvkgen::dct4::Dct4Plan*>(plan)->recombineList));
        const auto* kernel = recordAt<RecombineKernel>(block.mem, first(stage->kernelList));
        const TypeParam* table = recordAt<TypeParam>(block.mem, kernel->table);
        const int r = kernel->radix;
        const int lanes = 16 / sizeof(TypeParam);
        const long double tolerance = sizeof(TypeParam) == 4 ? 2e-7L : 4e-16L;
        int differsFromDouble = 0;
        for (int b = 0; b < kernel->blockCount; ++b)
            for (int i = 0; i < r; ++i) {
                const int c = r == 32 ? kOrder32[i] : (i % 2 ? r - 1 - i / 2 : i / 2);
                for (int l = 0; l < lanes; ++l) {
                    const int p = lanes * b + l;
                    const long double theta = 3.141592653589793238462643L * (2 * p + 1) * (2 * c + 1) / (4.0L * len);
                    const TypeParam* entry = table + (b * r + i) * 2 * lanes + l;
                    ASSERT_NEAR(entry[0], std::cos(theta), tolerance) << "len " << len << " p " << p << " c " << c;
                    ASSERT_NEAR(entry[lanes], std::sin(theta), tolerance) << "len " << len << " p " << p << " c " << c;
                    if constexpr (sizeof(TypeParam) == 4) {
                        const int n = 2 * (2 * p + 1) * (2 * c + 1);
                        const float x = static_cast<float>(n) / static_cast<float>(8 * len);
                        const float cosine = static_cast<float>(std::cos(static_cast<double>(x) * 3.141592653589793));
                        ASSERT_EQ(entry[0], cosine) << "len " << len << " p " << p << " c " << c;
                        const double exact = static_cast<double>(n) / (8.0 * len) * 3.141592653589793;
                        differsFromDouble += cosine != static_cast<float>(std::cos(exact));
                    }
                }
            }
        if (sizeof(TypeParam) == 4 && len == 4097) {
            EXPECT_GT(differsFromDouble, 0) << "the rule must be visible in the table";
        }
    }
}

} // namespace
