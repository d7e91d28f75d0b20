// The kernels on real data (forward into a layout, inverse from one,
// Hartley), expanded over the kernels of the build (family, type, size,
// layout) and flags: their call frame, threads, and what they compute.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <numbers>
#include <thread>
#include <vector>

#include "frame_checks.h"
#include "real_kernels.h"

using namespace tvktest;

namespace {

bool isPositiveZero(long double v) { return v == 0 && !std::signbit(v); }

// The unscaled definition in long double through the direct DFT, in the
// kernel's output cells: X into the layout; y the inverse DFT of the
// Hermitian spectrum the layout holds (I[0] and I[N/2] unread); H = Re X -
// Im X. Sums start at +0, so zeros give +0 and a unit in cell 0 gives
// exactly 1 or +0.
std::vector<long double> definition(const RealKernel& k, const std::vector<unsigned char>& input)
{
    const int n = k.size;
    const bool inverse = k.family == RealFamily::Inverse;
    std::vector<std::complex<long double>> z(n);
    if (!inverse)
        for (int i = 0; i < n; ++i)
            z[i] = numberAt(k, input.data(), i);
    else
        for (int b = 0; 2 * b <= n; ++b) {
            const int im = cellOf(k.layout, n, b, true);
            z[b] = {numberAt(k, input.data(), cellOf(k.layout, n, b, false)),
                    im < 0 || b == 0 || 2 * b == n ? 0 : numberAt(k, input.data(), im)};
            z[(n - b) % n] = std::conj(z[b]);
        }
    const auto Z = directDft(z, inverse);
    std::vector<long double> out(k.outCells());
    for (int b = 0; b < n; ++b)
        if (k.family != RealFamily::Forward)
            out[b] = inverse ? Z[b].real() : Z[b].real() - Z[b].imag();
        else if (2 * b <= n)
            for (bool imaginary : {false, true})
                if (const int cell = cellOf(k.layout, n, b, imaginary); cell >= 0)
                    out[cell] = imaginary ? Z[b].imag() : Z[b].real();
    return out;
}

class RealKernelTest : public ::testing::TestWithParam<RealKernel> {
protected:
    const RealKernel& k = GetParam();
    // A few units of the element type times log2 N sqrt N.
    long double bound(int units) const
    {
        const long double eps =
            k.is64() ? std::numeric_limits<double>::epsilon() : std::numeric_limits<float>::epsilon();
        return units * eps * std::log2(k.size + 1.0L) * std::sqrt(k.size + 0.0L);
    }
    std::vector<unsigned char> unitInput() const
    {
        auto input = filledInput(k, 0);
        setNumber(k, input.data(), 0, 1);
        return input;
    }
};

TEST_P(RealKernelTest, CallFrame) { expectCallFrame(k); }

// Kernels hold no state: threads calling every kernel at once on one input
// get the bytes of a single thread.
TEST(RealThreads, ConcurrentCallsGiveTheBytesOfOneThread)
{
    const std::vector<RealKernel> kernels = allRealKernels();
    using Outputs = std::vector<std::vector<unsigned char>>;
    const auto runAll = [&](Outputs& outs) {
        for (const RealKernel& k : kernels)
            outs.push_back(runKernel(k, randomInput(k, 6), ScaleDivBySqrtN));
    };
    Outputs serial;
    runAll(serial);
    std::vector<Outputs> parallel(4);
    std::vector<std::thread> threads;
    for (Outputs& outs : parallel)
        threads.emplace_back([&runAll, &outs] { runAll(outs); });
    for (std::thread& t : threads)
        t.join();
    for (const Outputs& outs : parallel)
        for (size_t i = 0; i < kernels.size(); ++i)
            EXPECT_EQ(outs[i], serial[i]) << kernels[i].name();
}

TEST_P(RealKernelTest, AgreesWithTheDefinition)
{
    for (unsigned seed = 10; seed < 13; ++seed) {
        const auto input = randomInput(k, seed);
        const auto want = definition(k, input);
        for (int flag : kGoodFlags) {
            const auto out = runKernel(k, input, flag);
            const long double f = scaleOf(k, flag);
            for (int c = 0; c < k.outCells(); ++c)
                EXPECT_NEAR(static_cast<double>(numberAt(k, out.data(), c)), static_cast<double>(want[c] * f),
                            static_cast<double>(bound(k.family == RealFamily::Forward ? 8 : 16) * f))
                    << "cell " << c << " flag " << flag << " seed " << seed;
        }
    }
}

// A unit in cell 0 (an impulse, or R[0] = 1) gives the bare stored factor
// in every cell the definition makes 1 and +0.0 in every other (the
// imaginary cells of a forward kernel); zeros give +0.0 everywhere, also
// where a graph ends in a negation.
TEST_P(RealKernelTest, UnitAndZeroInputsGiveTheFactorAndPositiveZeros)
{
    for (int flag : kGoodFlags) {
        const long double f = scaleOf(k, flag);
        const auto want = definition(k, unitInput());
        const auto unit = runKernel(k, unitInput(), flag), zeros = runKernel(k, filledInput(k, 0), flag);
        for (int c = 0; c < k.outCells(); ++c) {
            const long double got = numberAt(k, unit.data(), c);
            EXPECT_TRUE(want[c] == 0 ? isPositiveZero(got) : got == f) << "cell " << c << " flag " << flag;
            EXPECT_TRUE(isPositiveZero(numberAt(k, zeros.data(), c))) << "cell " << c << " flag " << flag;
        }
    }
}

// Flags that pick the same factor give the same bytes: 2 and 8 forward, 1
// and 8 inverse, 1 and 2 in the Hartley kernels.
TEST_P(RealKernelTest, FlagsOfOneFactorGiveOneResult)
{
    const auto input = randomInput(k, 5);
    for (int first : kGoodFlags)
        for (int second : kGoodFlags)
            if (first < second && scaleOf(k, first) == scaleOf(k, second)) {
                EXPECT_EQ(runKernel(k, input, first), runKernel(k, input, second)) << first << ", " << second;
            }
}

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

// Forward then inverse (the Hartley kernel twice) gives the input back
// under every pair of flags whose factors multiply to 1/N.
TEST_P(RealFromSignalTest, RoundTripsUnderEveryFlagPairThatMultipliesTo1OverN)
{
    const RealKernel back = k.family == RealFamily::Forward ? k.sibling(RealFamily::Inverse, k.layout) : k;
    ASSERT_NE(back.fn, nullptr);
    const auto x = randomInput(k, 30);
    int pairs = 0;
    for (int first : kGoodFlags)
        for (int second : kGoodFlags) {
            if (std::abs(scaleOf(k, first) * scaleOf(back, second) * k.size - 1) > 1e-6)
                continue;
            ++pairs;
            const auto out = runKernel(back, runKernel(k, x, first), second);
            for (int n = 0; n < k.size; ++n)
                EXPECT_NEAR(static_cast<double>(numberAt(k, out.data(), n)),
                            static_cast<double>(numberAt(k, x.data(), n)), static_cast<double>(bound(16)))
                    << "x[" << n << "] flags " << first << ", " << second;
        }
    EXPECT_EQ(pairs, 5);
}

// The tests of one size, type and direction across layouts, run from its
// CCS kernel.
using RealLayoutTest = RealKernelTest;

// The layouts are one graph: for one signal every forward layout holds the
// bits of the CCS values, and for one spectrum every reader gives the bytes
// of the CCS reader.
TEST_P(RealLayoutTest, EveryLayoutHoldsTheSameBits)
{
    const bool forward = k.family == RealFamily::Forward;
    const auto input = randomInput(k, 3), output = runKernel(k, input, ScaleDivBySqrtN);
    for (Layout l : {Layout::Pack, Layout::Perm}) {
        const RealKernel other = k.sibling(k.family, l);
        ASSERT_NE(other.fn, nullptr);
        // The CCS spectrum moved into the cells of layout l.
        std::vector<unsigned char> moved(layoutCells(l, k.size) * k.realBytes());
        for (int b = 0; 2 * b <= k.size; ++b)
            for (bool imaginary : {false, true})
                if (const int cell = cellOf(l, k.size, b, imaginary); cell >= 0)
                    std::memcpy(&moved[cell * k.realBytes()],
                                &(forward ? output : input)[cellOf(Layout::CCS, k.size, b, imaginary) * k.realBytes()],
                                k.realBytes());
        if (forward) {
            EXPECT_EQ(runKernel(other, input, ScaleDivBySqrtN), moved) << layoutName(l);
        } else {
            EXPECT_EQ(runKernel(other, moved, ScaleDivBySqrtN), output) << layoutName(l);
        }
    }
}

// CCS cells 1 and (even N) N+1, I[0] and I[N/2], are constants: a forward
// kernel stores +0.0 there whatever its input (NaN, infinity), and an
// inverse kernel never reads them (NaN or infinity give the bytes of +0.0).
TEST_P(RealLayoutTest, CcsEdgeImaginaryCellsAreConstant)
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

INSTANTIATE_TEST_SUITE_P(Built, RealKernelTest, ::testing::ValuesIn(allRealKernels()),
                         [](const auto& info) { return realKernelLabel(info.param); });
INSTANTIATE_TEST_SUITE_P(Built, RealFromSignalTest,
                         ::testing::ValuesIn(kernelsWhere(allRealKernels(),
                                                          [](const RealKernel& k) {
                                                              return k.family != RealFamily::Inverse;
                                                          })),
                         [](const auto& info) { return realKernelLabel(info.param); });
INSTANTIATE_TEST_SUITE_P(Built, RealLayoutTest,
                         ::testing::ValuesIn(kernelsWhere(allRealKernels(),
                                                          [](const RealKernel& k) {
                                                              return k.family != RealFamily::Hartley &&
                                                                     k.layout == Layout::CCS;
                                                          })),
                         [](const auto& info) { return realKernelLabel(info.param); });

} // namespace
