// Checks of the call frame that every kernel on complex or real data shares:
// the failing calls and their order, and the size dispatcher. `Kernel` has
// run(src, dst, flag) and size; arrays are bytes of its element type.
#pragma once

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <vector>

#include "test_support.h"
#include "tvkgen.h"

namespace tvktest {

// A null pointer outranks a bad flag, also beside a misaligned other
// pointer; no failing call touches src or dst.
template <class Kernel>
void expectFailedCallsTouchNothing(const Kernel& k, const std::vector<unsigned char>& input, size_t outBytes)
{
    OffsetArray<unsigned char> src(input.size(), 0), dst(outBytes, 0);
    src.copyFrom(input.data());
    dst.fillBytes(0xA5);
    const auto dstBefore = dst.snapshot(32);
    for (int flag : kBadFlags) {
        EXPECT_EQ(k.run(src.get(), dst.get(), flag), StatusScaleFlagError) << "flag " << flag;
        EXPECT_EQ(k.run(nullptr, dst.get(), flag), StatusNullPointer);
        EXPECT_EQ(k.run(src.get(), nullptr, flag), StatusNullPointer);
        EXPECT_EQ(k.run(nullptr, dst.get() + 4, flag), StatusNullPointer);
        EXPECT_EQ(k.run(src.get() + 8, nullptr, flag), StatusNullPointer);
    }
    EXPECT_EQ(k.run(nullptr, nullptr, ScaleNoDivide), StatusNullPointer);
    EXPECT_EQ(k.run(nullptr, dst.get(), ScaleNoDivide), StatusNullPointer);
    EXPECT_EQ(dst.snapshot(32), dstBefore);
    EXPECT_EQ(0, std::memcmp(src.get(), input.data(), input.size()));
}

// The dispatcher tests the length before anything else, then gives the
// kernel's bytes and statuses. `dispatch` is called as (src, dst, len, flag).
template <class Kernel, class Dispatch>
void expectDispatcherRoutesToTheKernel(const Kernel& k, Dispatch dispatch, const std::vector<unsigned char>& input,
                                       size_t outBytes)
{
    std::vector<unsigned char> viaKernel(outBytes), viaDispatcher(outBytes);
    ASSERT_EQ(k.run(input.data(), viaKernel.data(), ScaleDivBySqrtN), StatusOk);
    ASSERT_EQ(dispatch(input.data(), viaDispatcher.data(), k.size, ScaleDivBySqrtN), StatusOk);
    EXPECT_EQ(viaKernel, viaDispatcher);
    for (int len : {1, 0, -1, 65, INT_MIN, INT_MAX})
        EXPECT_EQ(dispatch(nullptr, nullptr, len, 3), StatusSizeError) << "len " << len;
    std::vector<unsigned char> untouched(outBytes, 0x5A), dst = untouched;
    EXPECT_EQ(dispatch(input.data(), dst.data(), k.size, 3), StatusScaleFlagError);
    EXPECT_EQ(dispatch(nullptr, dst.data(), k.size, 3), StatusNullPointer);
    EXPECT_EQ(dst, untouched);
}

} // namespace tvktest
