// Execution of a two-stage plan: the column step fills the root's work
// matrix with the half-bin DFTs of the input's columns (directly, or through
// split levels), the recombine step rotates each row pair and turns it into
// 2r outputs. Every kernel takes L neighbouring columns or row pairs as the
// lanes of one vector; the straight-line arithmetic is generated
// (dct4_pieces.h), the loops and addressing are here, all from the integer
// fields of the nodes.
#include "plan_run.h"

#include <algorithm>
#include <type_traits>

#include "dct4_pieces.h"
#include "simd/lanes.h"
#include "plan_tables.h"

namespace tvkgen::dct4 {

namespace {

using namespace simd;

// Vector type and moves of an element type. The caller's arrays are moved
// without any alignment assumption, the plan's blocks with aligned moves.
template <class Real>
struct Lanes;

template <>
struct Lanes<float> {
    using V = V4f;
    static TVKG_INLINE V loadAny(const float* p) { return loadu(p); }
    static TVKG_INLINE void storeAny(float* p, V v) { storeu(p, v); }
    static TVKG_INLINE V reverse(V v) { return shuffle<3, 2, 1, 0>(v, v); }
    // Rows in, columns out.
    static TVKG_INLINE void transpose(V* v) { transpose4(v[0], v[1], v[2], v[3], v[0], v[1], v[2], v[3]); }
};

template <>
struct Lanes<double> {
    using V = V2d;
    static TVKG_INLINE V loadAny(const double* p) { return loadu(p); }
    static TVKG_INLINE void storeAny(double* p, V v) { storeu(p, v); }
    static TVKG_INLINE V reverse(V v) { return swapLanes(v); }
    static TVKG_INLINE void transpose(V* v) { transpose2(v[0], v[1], v[0], v[1]); }
};

template <int n>
using Size = std::integral_constant<int, n>;

// Runs a piece on each lane block of a group: in[j] to out[j]. At the avx2
// level two neighbouring binary64 blocks go through the 256-bit piece
// together; each lane still sees the same operations in the same order.
template <class Real, int nIn, int nOut, class V, class Piece>
TVKG_INLINE void runBlocks(int32_t blocks, const V (*in)[nIn], V (*out)[nOut], Piece piece)
{
    int32_t j = 0;
#ifdef TVKGEN_DCT4_PAIRED_BLOCKS
    if constexpr (std::is_same_v<Real, double>)
        for (; j + 1 < blocks; j += 2) {
            V4d wideIn[nIn], wideOut[nOut];
            for (int i = 0; i < nIn; ++i)
                wideIn[i] = combine(in[j][i], in[j + 1][i]);
            piece(wideIn, wideOut);
            for (int k = 0; k < nOut; ++k) {
                out[j][k] = lowHalf(wideOut[k]);
                out[j + 1][k] = highHalf(wideOut[k]);
            }
        }
#endif
    for (; j < blocks; ++j)
        piece(in[j], out[j]);
}

// Neighbouring lane blocks that every pass takes together. The strided
// moves of the column and recombine steps reach a new cache line at each
// step; sixteen vectors make four whole 64-byte lines, used while they are
// at hand instead of being fetched again for every block. Four lines a step
// beat two at the lengths past the level-2 cache (2^16 binary64: a tenth
// faster) and cost little below; the stack holds the group's vectors.
constexpr int32_t kGroupBlocks = 16;

// The input as the kernels see it. Sample t of a column that starts at
// `read` is xe[read + stride t]; the half-sample mirror xe[n] = x[-1 - n] is
// read from the top down as x[mirror - read - stride (len + t)], with
// stride x len = 2N at every level. A split level's sub-column c' starts
// 2R c' further on in the input but stands R c' further on in the matrix.
template <class Real>
struct Input {
    const Real* x;
    int32_t mirror;
};

// Half-bin DFT of length n of `blocks` neighbouring groups of L columns
// read from `read`, into rows 2p (real parts) and 2p + 1 (imaginary parts)
// of a matrix with `rowStride`, from column `start`.
template <class Real, int n>
void halfBinBlocks(Input<Real> in, int32_t read, int32_t stride, int32_t blocks, Real* out, int32_t start,
                   int32_t rowStride)
{
    using L = Lanes<Real>;
    constexpr int lanes = kLanes<Real>;
    typename L::V v[kGroupBlocks][n], z[kGroupBlocks][n];
    for (int t = 0; t < n / 2; ++t)
        for (int32_t j = 0; j < blocks; ++j) {
            const int32_t at = read + lanes * j;
            v[j][n / 2 + t] = L::loadAny(in.x + at + stride * t);
            v[j][n / 2 - 1 - t] = L::reverse(L::loadAny(in.x + in.mirror - at - stride * (n - 1 - t) - (lanes - 1)));
        }
    runBlocks<Real>(blocks, v, z, [](const auto* in, auto* out) { pieces::halfBinDft(Size<n>{}, in, out); });
    for (int k = 0; k < n; ++k)
        for (int32_t j = 0; j < blocks; ++j)
            store(out + k * rowStride + start + lanes * j, z[j][k]);
}

template <class Real>
void runSplit(const SplitNode* split, Input<Real> in, int32_t read, int32_t start, int32_t blocks, Real* out,
              uint8_t* arena);

// Neighbouring column or sub-column blocks by the length kind:
// straight-line for 2 to 64, a split level for longer ones.
template <class Real>
void columnBlocks(int32_t kind, Ref splitList, Input<Real> in, int32_t read, int32_t stride, int32_t blocks,
                  Real* out, int32_t start, int32_t rowStride, uint8_t* arena)
{
    switch (kind) {
    case 1: halfBinBlocks<Real, 2>(in, read, stride, blocks, out, start, rowStride); return;
    case 2: halfBinBlocks<Real, 4>(in, read, stride, blocks, out, start, rowStride); return;
    case 3: halfBinBlocks<Real, 8>(in, read, stride, blocks, out, start, rowStride); return;
    case 4: halfBinBlocks<Real, 16>(in, read, stride, blocks, out, start, rowStride); return;
    case 5: halfBinBlocks<Real, 32>(in, read, stride, blocks, out, start, rowStride); return;
    case 6: halfBinBlocks<Real, 64>(in, read, stride, blocks, out, start, rowStride); return;
    case 7: {
        const Ref split = listNth(recordAt<ListCell>(arena, splitList), 0);
        runSplit<Real>(recordAt<SplitNode>(arena, split), in, read, start, blocks, out, arena);
        return;
    }
    }
}

// One group g of the twiddle step for `blocks` x L columns from `start`:
// the s sub-column values of row pair g, their twiddles, the s-point
// butterfly, and the s results at rows g + m' l and, mirrored,
// m' - 1 - g + m' l.
template <class Real, int s>
void twiddleBlocks(const TwiddleKernel* k, const Real* table, const Real* work, int32_t start, int32_t blocks,
                   Real* out)
{
    using V = typename Lanes<Real>::V;
    constexpr int lanes = kLanes<Real>;
    constexpr int pairs = s <= 8 ? s - 1 : 3 * (s / 4) + s / 4 - 1;
    const int32_t half = k->groupStride / 2;
    const Real* sectionTwo = table + k->groupCount * 3 * (s / 4) * 2 * lanes;
    for (int32_t g = 0; g < k->groupCount; ++g) {
        V v[kGroupBlocks][2 * s + 2 * pairs], f[kGroupBlocks][2 * s];
        const Real* row = work + g * k->groupStride + start;
        for (int c = 0; c < s; ++c)
            for (int32_t j = 0; j < blocks; ++j) {
                v[j][2 * c] = load(row + c * k->inRowStride + lanes * j);
                v[j][2 * c + 1] = load(row + half + c * k->inRowStride + lanes * j);
            }
        for (int32_t j = 0; j < blocks; ++j) {
            if constexpr (s <= 8) {
                for (int i = 0; i < 2 * pairs; ++i)
                    v[j][2 * s + i] = load(table + (g * pairs * 2 + i) * lanes);
            } else {
                constexpr int first = 3 * (s / 4);
                for (int i = 0; i < 2 * first; ++i)
                    v[j][2 * s + i] = load(table + (g * first * 2 + i) * lanes);
                for (int i = 0; i < 2 * (pairs - first); ++i)
                    v[j][2 * s + 2 * first + i] = load(sectionTwo + (g * (pairs - first) * 2 + i) * lanes);
            }
        }
        runBlocks<Real>(blocks, v, f, [](const auto* in, auto* out) { pieces::twiddleButterfly(Size<s>{}, in, out); });
        const int32_t rowPair = 2 * k->outRowStride;
        for (int l = 0; l < s / 2; ++l)
            for (int32_t j = 0; j < blocks; ++j) {
                Real* direct = out + (g + k->subLen * l) * rowPair + start + lanes * j;
                store(direct, f[j][2 * l]);
                store(direct + k->outRowStride, f[j][2 * l + 1]);
                Real* mirrored = out + (k->subLen - 1 - g + k->subLen * l) * rowPair + start + lanes * j;
                store(mirrored, f[j][s + 2 * l]);
                store(mirrored + k->outRowStride, f[j][s + 2 * l + 1]);
            }
    }
}

// A split level for `blocks` x L columns from `start`: the s sub-columns
// into the node's work, then the twiddle step into the caller's matrix.
template <class Real>
void runSplit(const SplitNode* split, Input<Real> in, int32_t read, int32_t start, int32_t blocks, Real* out,
              uint8_t* arena)
{
    if (split->kind != 1)
        return;
    Real* work = recordAt<Real>(arena, split->work);
    const auto* sub = recordAt<SubColumnKernel>(arena, listNth(recordAt<ListCell>(arena, split->subColumnList), 0));
    for (int32_t c = 0; c < sub->radix; ++c)
        columnBlocks<Real>(sub->kind, sub->splitList, in, read + c * sub->inStride, sub->groupStride, blocks, work,
                           start + c * sub->rowStride, sub->nextRowStride, arena);

    const auto* twiddle = recordAt<TwiddleKernel>(arena, listNth(recordAt<ListCell>(arena, split->twiddleList), 0));
    const Real* table = recordAt<Real>(arena, twiddle->table);
    switch (twiddle->kind) {
    case 1: twiddleBlocks<Real, 2>(twiddle, table, work, start, blocks, out); return;
    case 2: twiddleBlocks<Real, 4>(twiddle, table, work, start, blocks, out); return;
    case 3: twiddleBlocks<Real, 8>(twiddle, table, work, start, blocks, out); return;
    case 4: twiddleBlocks<Real, 16>(twiddle, table, work, start, blocks, out); return;
    case 5: twiddleBlocks<Real, 32>(twiddle, table, work, start, blocks, out); return;
    }
}

template <class Real>
void runColumnKernel(const ColumnKernel* k, const Real* src, Real* work, uint8_t* arena)
{
    const Input<Real> in{src, k->mirror};
    for (int32_t block = 0; block < k->blockCount; block += kGroupBlocks) {
        const int32_t start = block * kLanes<Real>;
        const int32_t blocks = std::min(kGroupBlocks, k->blockCount - block);
        columnBlocks<Real>(k->kind, k->splitList, in, start, k->inStride, blocks, work, start, k->rowStride, arena);
    }
}

// The inputs of the recombine piece for one block of L row pairs: its
// columns in the work block transposed into vectors over the row pairs,
// then the block's table entries.
template <class Real, int r>
TVKG_INLINE void recombineInputs(const Real* block, const Real* rotation, typename Lanes<Real>::V* v)
{
    using L = Lanes<Real>;
    using V = typename L::V;
    constexpr int lanes = kLanes<Real>;
    static_assert(r % lanes == 0, "columns are transposed in L x L tiles");
    for (int part = 0; part < 2; ++part)
        for (int c0 = 0; c0 < r; c0 += lanes) {
            V tile[lanes];
            for (int l = 0; l < lanes; ++l)
                tile[l] = load(block + (2 * l + part) * r + c0);
            L::transpose(tile);
            for (int c = 0; c < lanes; ++c)
                v[2 * (c0 + c) + part] = tile[c];
        }
    // Unrolled, each table entry goes to a fixed place: through the column
    // order's computed indices, radix 32 ran at half speed.
#pragma GCC unroll 32
    for (int i = 0; i < r; ++i) {
        const int c = columnOrder(r, i);
        v[2 * r + 2 * c] = load(rotation + 2 * i * lanes);
        v[2 * r + 2 * c + 1] = load(rotation + (2 * i + 1) * lanes);
    }
}

// Row pairs L b .. L b + L - 1 as lanes, their 2r outputs written to `dst`,
// the odd ones from the top down. The outputs of neighbouring blocks are
// neighbours in `dst`, so a group of blocks is stored together.
template <class Real, int r>
void runRecombine(const RecombineKernel* k, const Real* work, Real* dst, uint8_t* arena)
{
    using L = Lanes<Real>;
    using V = typename L::V;
    constexpr int lanes = kLanes<Real>;
    const Real* table = recordAt<Real>(arena, k->table);
    for (int32_t group = 0; group < k->blockCount; group += kGroupBlocks) {
        const int32_t blocks = std::min(kGroupBlocks, k->blockCount - group);
        V y[kGroupBlocks][2 * r];
        for (int32_t j = 0; j < blocks; j += 2) {
            const int32_t pair = std::min(2, blocks - j);
            V v[2][4 * r];
            for (int32_t b = 0; b < pair; ++b)
                recombineInputs<Real, r>(work + (group + j + b) * k->blockStride,
                                         table + (group + j + b) * 2 * r * lanes, v[b]);
            runBlocks<Real>(pair, v, y + j, [](const auto* in, auto* out) { pieces::recombine(Size<r>{}, in, out); });
        }
        const int32_t first = group * lanes;
        for (int q = 0; q < 2 * r; q += 2)
            for (int32_t j = 0; j < blocks; ++j)
                L::storeAny(dst + (q / 2) * k->rowStride + first + lanes * j, y[j][q]);
        for (int q = 1; q < 2 * r; q += 2)
            for (int32_t j = 0; j < blocks; ++j)
                L::storeAny(dst + k->mirror - (2 * r - (q + 1) / 2) * k->rowStride - first - lanes * j - (lanes - 1),
                            L::reverse(y[j][q]));
    }
}

template <class Real>
void runRecombineKernel(const RecombineKernel* k, const Real* work, Real* dst, uint8_t* arena)
{
    switch (k->kind) {
    case 2:
        if constexpr (kLanes<Real> <= 2)
            runRecombine<Real, 2>(k, work, dst, arena);
        return;
    case 3: runRecombine<Real, 4>(k, work, dst, arena); return;
    case 4: runRecombine<Real, 8>(k, work, dst, arena); return;
    case 5: runRecombine<Real, 16>(k, work, dst, arena); return;
    case 6: runRecombine<Real, 32>(k, work, dst, arena); return;
    }
}

template <class Node>
const Node* firstEntry(uint8_t* arena, Ref list)
{
    return recordAt<Node>(arena, listNth(recordAt<ListCell>(arena, list), 0));
}

} // namespace

template <class Real>
TvkStatus runPlan(const Real* src, Real* dst, const Dct4Plan* plan)
{
    if (plan == nullptr || src == nullptr || dst == nullptr)
        return StatusNullPointer;
    if (plan->kind >= 1 && plan->kind <= 5) {
        runDirect(plan->kind, src, dst);
        return StatusOk;
    }
    if (plan->kind != kRootTwoStage)
        return StatusBadArgument;
    // The work blocks are the only part of a plan that a run writes.
    uint8_t* arena = blockOf(&plan->head);
    Real* work = recordAt<Real>(arena, plan->work);
    const auto* columns = firstEntry<ColumnStage>(arena, plan->columnList);
    if (columns->kind == 1)
        runColumnKernel(firstEntry<ColumnKernel>(arena, columns->kernelList), src, work, arena);
    const auto* recombine = firstEntry<RecombineStage>(arena, plan->recombineList);
    if (recombine->kind == 1)
        runRecombineKernel(firstEntry<RecombineKernel>(arena, recombine->kernelList), work, dst, arena);
    return StatusOk;
}

template TvkStatus runPlan<float>(const float*, float*, const Dct4Plan*);
template TvkStatus runPlan<double>(const double*, double*, const Dct4Plan*);

} // namespace tvkgen::dct4
