// Checks that every kernel with a scale flag shares (complex, real data,
// Walsh-Hadamard): the call frame (the failing calls and their order, any
// address and in place, the size dispatcher) and its values against the
// long-double definition. `Kernel` has run(src, dst, flag),
// runDispatcher(src, dst, len, flag), size and its cells, with
// definition(k, input) and scaleOf(k, flag) beside it; arrays are bytes of
// its element type.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <span>
#include <vector>

#include "test_support.h"
#include "tvkgen.h"

namespace tvktest {

// A null pointer outranks a bad flag, also beside a misaligned other
// pointer, and a bad flag is reported at any address; no failing call
// touches src or dst.
template <class Kernel>
void expectFailedCallsTouchNothing(const Kernel& k, const std::vector<unsigned char>& input, size_t outBytes)
{
    OffsetArray<unsigned char> src(input.size(), 0), dst(outBytes, 0, 0xA5);
    src.copyFrom(input.data());
    const auto srcBefore = src.all(), dstBefore = dst.all();
    for (int flag : kBadFlags) {
        EXPECT_EQ(k.run(src.get(), dst.get(), flag), StatusScaleFlagError) << "flag " << flag;
        EXPECT_EQ(k.run(src.get() + 8, dst.get() + 4, flag), StatusScaleFlagError) << "flag " << flag;
        EXPECT_EQ(k.run(nullptr, dst.get(), flag), StatusNullPointer);
        EXPECT_EQ(k.run(src.get(), nullptr, flag), StatusNullPointer);
        EXPECT_EQ(k.run(nullptr, dst.get() + 4, flag), StatusNullPointer);
        for (int offset : {1, 8})
            EXPECT_EQ(k.run(src.get() + offset, nullptr, flag), StatusNullPointer);
    }
    EXPECT_EQ(k.run(nullptr, nullptr, ScaleNoDivide), StatusNullPointer);
    EXPECT_EQ(k.run(nullptr, dst.get(), ScaleNoDivide), StatusNullPointer);
    EXPECT_EQ(dst.all(), dstBefore);
    EXPECT_EQ(src.all(), srcBefore);
}

// Every byte offset of src and dst, and in-place calls, give the bytes of
// the aligned out-of-place call under every flag. Nothing behind the output
// changes: out of place src keeps its bytes, and in place the input cells
// behind the output keep theirs (cells N and N+1 of an inverse CCS array).
template <class Kernel>
void expectSameBytesAtEveryAddressAndInPlace(const Kernel& k, const std::vector<unsigned char>& input,
                                              size_t outBytes)
{
    const size_t inBytes = input.size();
    for (int flag : kGoodFlags) {
        // The arrays as the aligned out-of-place call leaves them, with the
        // guard bytes behind them.
        auto outOfPlace = runKernel(k, input, flag), inPlace = outOfPlace;
        if (inBytes > outBytes)
            inPlace.insert(inPlace.end(), input.begin() + outBytes, input.end());
        outOfPlace.resize(outBytes + 32, 0xC3);
        inPlace.resize(inPlace.size() + 32, 0x3C);
        for (int srcOffset : kOffsets)
            for (int dstOffset : kOffsets) {
                OffsetArray<unsigned char> src(inBytes, srcOffset), dst(outBytes, dstOffset, 0xC3);
                src.copyFrom(input.data());
                ASSERT_EQ(k.run(src.get(), dst.get(), flag), StatusOk);
                EXPECT_EQ(dst.snapshot(32), outOfPlace)
                    << "flag " << flag << ", src +" << srcOffset << ", dst +" << dstOffset;
                EXPECT_EQ(0, std::memcmp(src.get(), input.data(), inBytes)) << "src changed";
            }
        for (int offset : kOffsets) {
            OffsetArray<unsigned char> both(std::max(inBytes, outBytes), offset, 0x3C);
            std::memcpy(both.get(), input.data(), inBytes);
            ASSERT_EQ(k.run(both.get(), both.get(), flag), StatusOk);
            EXPECT_EQ(both.snapshot(32), inPlace) << "flag " << flag << ", in place at +" << offset;
        }
    }
}

// Lengths the size dispatchers refuse.
inline constexpr int kBadLengths[] = {1, 0, -1, 65, INT_MIN, INT_MAX};

// The dispatcher tests the length before anything else, then gives the
// kernel's bytes and statuses.
template <class Kernel>
void expectDispatcherRoutesToTheKernel(const Kernel& k, const std::vector<unsigned char>& input, size_t outBytes,
                                       std::span<const int> badLengths)
{
    std::vector<unsigned char> viaDispatcher(outBytes);
    ASSERT_EQ(k.runDispatcher(input.data(), viaDispatcher.data(), k.size, ScaleDivBySqrtN), StatusOk);
    EXPECT_EQ(viaDispatcher, runKernel(k, input, ScaleDivBySqrtN));
    for (int len : badLengths)
        EXPECT_EQ(k.runDispatcher(nullptr, nullptr, len, 3), StatusSizeError) << "len " << len;
    std::vector<unsigned char> untouched(outBytes, 0x5A), dst = untouched;
    for (int flag : kBadFlags) {
        EXPECT_EQ(k.runDispatcher(input.data(), dst.data(), k.size, flag), StatusScaleFlagError) << "flag " << flag;
        EXPECT_EQ(k.runDispatcher(nullptr, dst.data(), k.size, flag), StatusNullPointer);
        EXPECT_EQ(k.runDispatcher(input.data(), nullptr, k.size, flag), StatusNullPointer);
    }
    EXPECT_EQ(dst, untouched);
}

template <class Kernel>
void expectCallFrame(const Kernel& k)
{
    const size_t outBytes = k.outCells() * k.realBytes();
    expectFailedCallsTouchNothing(k, randomInput(k, 1), outBytes);
    expectDispatcherRoutesToTheKernel(k, randomInput(k, 2), outBytes, kBadLengths);
    expectSameBytesAtEveryAddressAndInPlace(k, randomInput(k, 4), outBytes);
}

// Every output cell of `input` under every flag within `bound` times the
// factor (and half a unit of the last product) of the unscaled definition
// times the factor.
template <class Kernel>
void expectNearTheDefinition(const Kernel& k, const std::vector<unsigned char>& input, double bound)
{
    const auto want = definition(k, input);
    const double halfUnit = k.is64() ? 0x1p-53 : 0x1p-24;
    for (int flag : kGoodFlags) {
        const auto out = runKernel(k, input, flag);
        const double f = scaleOf(k, flag);
        for (int c = 0; c < k.outCells(); ++c)
            EXPECT_NEAR(static_cast<double>(numberAt(k, out.data(), c)), static_cast<double>(want[c] * f),
                        bound * f + std::abs(static_cast<double>(want[c] * f)) * halfUnit)
                << "cell " << c << " flag " << flag;
    }
}

// An input of zeros but a unit in cell `cell`.
template <class Kernel>
std::vector<unsigned char> unitAt(const Kernel& k, int cell)
{
    auto input = filledInput(k, 0);
    setNumber(k, input.data(), cell, 1);
    return input;
}

inline bool isPositiveZero(long double v) { return v == 0 && !std::signbit(v); }

// A unit in cell 0 (an impulse, or R[0] = 1) gives the bare factor in every
// cell the definition makes 1 and +0.0 in every other; zeros give +0.0
// everywhere, also where a graph ends in a negation. `slack`, relative to
// the factor, admits the rounding of chirp products, which sign zeros too.
template <class Kernel>
void expectUnitGivesTheFactor(const Kernel& k, double slack = 0)
{
    const auto want = definition(k, unitAt(k, 0));
    for (int flag : kGoodFlags) {
        const double f = scaleOf(k, flag);
        const auto unit = runKernel(k, unitAt(k, 0), flag), zeros = runKernel(k, filledInput(k, 0), flag);
        for (int c = 0; c < k.outCells(); ++c) {
            const long double got = numberAt(k, unit.data(), c);
            if (slack > 0) {
                EXPECT_NEAR(static_cast<double>(got), want[c] * f, slack * f) << "cell " << c << " flag " << flag;
            } else {
                EXPECT_TRUE(want[c] == 0 ? isPositiveZero(got) : got == f) << "cell " << c << " flag " << flag;
            }
            const long double zero = numberAt(k, zeros.data(), c);
            EXPECT_TRUE(slack > 0 ? zero == 0 : isPositiveZero(zero)) << "cell " << c << " flag " << flag;
        }
    }
}

} // namespace tvktest
