// The size rule: the bytes that a plan of a length needs, found by walking
// the decisions of the build without building. The numbers are a contract
// with callers, kept as they stand: sums wrap in 32 bits and only a sum that
// comes out negative is refused; the rule counts a few stage nodes and cells
// twice, so a build uses a little less than it says.
#include "plan_build.h"

namespace tvkgen::dct4 {

namespace {

// Bytes the rule adds for the fixed parts of the tree.
constexpr int32_t kDirectPlanBytes = 224;         // start gap, root, three list heads
constexpr int32_t kRecombineOverhead = 96;
constexpr int32_t kRecombineNodes = 256;
constexpr int32_t kDirectColumnBytes = 128;
constexpr int32_t kSplitColumnOverhead = 192;
constexpr int32_t kColumnStageBytes = 192;
constexpr int32_t kRootBytes = 384 + 64;
constexpr int32_t kTwiddleOverhead = 128;
constexpr int32_t kDirectSubColumnBytes = 160;
constexpr int32_t kSplitSubColumnOverhead = 224;
constexpr int32_t kSplitNodeBytes = 352;

constexpr int32_t sum(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

constexpr int32_t product(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

constexpr int32_t shiftLeft(int32_t a, int32_t bits)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) << bits);
}

constexpr int32_t kRefused = -1;

// Bytes below a SplitNode of sub-length m, or kRefused.
template <class Real>
int32_t splitBytes(int32_t len, int32_t m)
{
    const int32_t s = chooseRadix(m / 2);
    if (s == 0)
        return kRefused;
    const int32_t table = roundUp32(product(product(m / (2 * s), 32), s - 1));
    if (sum(table, kTwiddleOverhead) < 0)
        return kRefused;
    int32_t below = kDirectSubColumnBytes;
    if (columnLengthKind(m / s) == kSplitBelow) {
        const int32_t deeper = splitBytes<Real>(len, m / s);
        if (deeper < 0)
            return kRefused;
        below = sum(deeper, kSplitSubColumnOverhead);
        if (below < 0)
            return kRefused;
    }
    const int32_t total = sum(sum(sum(sum(table, kTwiddleOverhead), below), roundUp32(product(len, sizeof(Real)))),
                              kSplitNodeBytes);
    return total < 0 ? kRefused : total;
}

} // namespace

template <class Real>
TvkStatus planSize(int32_t len, int32_t* size)
{
    if (rootLengthKind(len) != kRootTwoStage) {
        *size = kDirectPlanBytes;
        return StatusOk;
    }
    const int32_t r = chooseRadix(len / 2);
    if (r == 0 || !isLaneMultiple<Real>(len / (2 * r)) || recombineKind(r) == 0 || !isLaneMultiple<Real>(r))
        return StatusSizeError;

    const int32_t table = roundUp32(shiftLeft(len / (2 * r) / kLanes<Real>, recombineKind(r) + 4));
    if (sum(table, kRecombineOverhead) < 0)
        return StatusSizeError;
    const int32_t recombine = sum(sum(table, kRecombineOverhead), kRecombineNodes);
    if (recombine < 0)
        return StatusSizeError;

    int32_t column = kDirectColumnBytes;
    if (columnLengthKind(len / r) == kSplitBelow) {
        const int32_t split = splitBytes<Real>(len, len / r);
        if (split < 0)
            return StatusSizeError;
        column = sum(split, kSplitColumnOverhead);
        if (column < 0)
            return StatusSizeError;
    }
    const int32_t columnPart = sum(column, kColumnStageBytes);
    if (columnPart < 0)
        return StatusSizeError;

    const int32_t total = sum(sum(sum(recombine, columnPart), roundUp32(product(len, sizeof(Real)))), kRootBytes);
    if (total < 0)
        return StatusSizeError;
    *size = total;
    return StatusOk;
}

template TvkStatus planSize<float>(int32_t, int32_t*);
template TvkStatus planSize<double>(int32_t, int32_t*);

} // namespace tvkgen::dct4
