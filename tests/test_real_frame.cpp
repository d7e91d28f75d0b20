// The call frame of every kernel on real data (forward, inverse, Hartley):
// statuses and their order, untouched arrays on failure, the dispatchers,
// any address, in place, and threads.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "frame_checks.h"
#include "real_kernels.h"

using namespace tvktest;

namespace {

class RealFrameTest : public ::testing::TestWithParam<RealKernel> {
protected:
    const RealKernel& k = GetParam();
    size_t outBytes() const { return k.outCells() * k.realBytes(); }
};

TEST_P(RealFrameTest, BadFlagsAndNullPointersLeaveArraysUntouched)
{
    expectFailedCallsTouchNothing(k, randomInput(k, 1), outBytes());
}

TEST_P(RealFrameTest, DispatcherChecksTheSizeFirstThenRoutesToTheKernel)
{
    const auto dispatch = [this](const void* src, void* dst, int len, int flag) {
        return k.runDispatcher(src, dst, len, flag);
    };
    expectDispatcherRoutesToTheKernel(k, dispatch, randomInput(k, 2), outBytes());
}

TEST_P(RealFrameTest, SameBytesAtEveryAddressAndInPlace)
{
    expectSameBytesAtEveryAddressAndInPlace(k, randomInput(k, 4), outBytes());
}

// Kernels hold no state: threads calling every kernel at once on one input
// get the bytes of a single thread.
TEST(RealThreads, ConcurrentCallsGiveTheBytesOfOneThread)
{
    const std::vector<RealKernel> kernels = allRealKernels();
    const auto runAll = [&](std::vector<std::vector<unsigned char>>& outs) {
        for (size_t i = 0; i < kernels.size(); ++i) {
            const RealKernel& k = kernels[i];
            const auto input = randomInput(k, 6);
            outs[i].assign(k.outCells() * k.realBytes(), 0);
            k.run(input.data(), outs[i].data(), ScaleDivBySqrtN);
        }
    };
    std::vector<std::vector<unsigned char>> serial(kernels.size());
    runAll(serial);
    std::vector<std::vector<std::vector<unsigned char>>> parallel(4, std::vector<std::vector<unsigned char>>(kernels.size()));
    std::vector<std::thread> threads;
    for (auto& outs : parallel)
        threads.emplace_back([&runAll, &outs] { runAll(outs); });
    for (std::thread& t : threads)
        t.join();
    for (const auto& outs : parallel)
        for (size_t i = 0; i < kernels.size(); ++i)
            EXPECT_EQ(outs[i], serial[i]) << kernels[i].name();
}

INSTANTIATE_TEST_SUITE_P(Built, RealFrameTest, ::testing::ValuesIn(allRealKernels()),
                         [](const auto& info) { return realKernelLabel(info.param); });

} // namespace
