// The kernels on real data (forward into a layout, inverse from one,
// Hartley), expanded over the kernels of the build (family, type, size,
// layout) and flags: their call frame, threads, and what they compute.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "kernel_checks.h"
#include "real_kernels.h"

using namespace tvktest;
using ::testing::ValuesIn;

namespace {

class RealKernelTest : public ::testing::TestWithParam<RealKernel> {
protected:
    const RealKernel& k = GetParam();
    // A few units of the element type times log2 N sqrt N, but no more than
    // a fixed bound per type and family (forward, inverse, Hartley), which
    // binds from about N = 8 on.
    double bound() const
    {
        const bool is64 = k.is64();
        const long double eps = is64 ? std::numeric_limits<double>::epsilon() : std::numeric_limits<float>::epsilon();
        const double most64[] = {1e-14, 4e-14, 2e-14}, most32[] = {3e-6, 1e-5, 5e-6};
        const int units = k.family == RealFamily::Forward ? 8 : 16;
        return std::min<double>(units * eps * std::log2(k.size + 1.0L) * std::sqrt(k.size + 0.0L),
                                (is64 ? most64 : most32)[static_cast<int>(k.family)]);
    }
};

TEST_P(RealKernelTest, CallFrame) { expectCallFrame(k); }

// Kernels hold no state: threads calling every kernel at once on one input
// get the bytes of a single thread.
TEST(RealThreads, ConcurrentCallsGiveTheBytesOfOneThread)
{
    const std::vector<RealKernel> kernels = allRealKernels();
    EXPECT_TRUE(threadsGiveTheResultOfOne([&](int) {
        std::vector<std::vector<unsigned char>> outputs;
        for (const RealKernel& k : kernels)
            outputs.push_back(runKernel(k, randomInput(k, 6), ScaleDivBySqrtN));
        return outputs;
    }));
}

TEST_P(RealKernelTest, AgreesWithTheDefinition)
{
    for (unsigned seed = 10; seed < 16; ++seed)
        expectNearTheDefinition(k, randomInput(k, seed), bound());
}

TEST_P(RealKernelTest, UnitAndZeroInputsGiveTheFactorAndPositiveZeros) { expectUnitGivesTheFactor(k); }

// The kernels that read a signal: forward and Hartley.
using RealFromSignalTest = RealKernelTest;

// A constant gives N c times the factor in cell 0, rounded once: the zero
// bin takes no inexact constant.
TEST_P(RealFromSignalTest, ConstantGivesNTimesTheFactorInCellZero)
{
    for (int flag : kGoodFlags) {
        const double f = scaleOf(k, flag);
        const long double want = k.is64() ? k.size * f : k.size * static_cast<float>(f);
        EXPECT_EQ(numberAt(k, runKernel(k, filledInput(k, 1), flag).data(), 0), want) << "flag " << flag;
    }
}

// The forward and inverse CCS kernels.
using RealCcsTest = RealKernelTest;

// CCS cells 1 and (even N) N+1, I[0] and I[N/2], are constants: a forward
// kernel stores +0.0 there whatever its input (NaN, infinity), and an
// inverse kernel never reads them (NaN or infinity give the bytes of +0.0).
TEST_P(RealCcsTest, CcsEdgeImaginaryCellsAreConstant)
{
    const bool forward = k.family == RealFamily::Forward;
    const std::vector<int> edges = k.size % 2 ? std::vector<int>{1} : std::vector<int>{1, k.size + 1};
    std::vector<unsigned char> zeroEdges;
    for (long double value : {0.0L, std::numeric_limits<long double>::quiet_NaN(),
                              std::numeric_limits<long double>::infinity(), -1.0L}) {
        auto input = forward ? filledInput(k, value) : randomInput(k, 33);
        for (int cell : edges)
            if (!forward)
                setNumber(k, input.data(), cell, value);
        const auto out = runKernel(k, input, ScaleNoDivide);
        if (zeroEdges.empty())
            zeroEdges = out; // the first value is 0
        for (int cell : edges)
            EXPECT_TRUE(forward ? isPositiveZero(numberAt(k, out.data(), cell)) : out == zeroEdges)
                << "cell " << cell << " holding " << static_cast<double>(value);
    }
}

bool readsASignal(const RealKernel& k) { return k.family != RealFamily::Inverse; }
bool isCcsDft(const RealKernel& k) { return k.family != RealFamily::Hartley && k.layout == Layout::CCS; }

INSTANTIATE_TEST_SUITE_P(Built, RealKernelTest, ValuesIn(allRealKernels()), ByLabel());
INSTANTIATE_TEST_SUITE_P(Built, RealFromSignalTest, ValuesIn(kernelsWhere(allRealKernels(), readsASignal)), ByLabel());
INSTANTIATE_TEST_SUITE_P(Built, RealCcsTest, ValuesIn(kernelsWhere(allRealKernels(), isCcsDft)), ByLabel());

} // namespace
