// Operation counts of the kernels on real data (forward, inverse, Hartley)
// against the budget of each size: multiplications by constants (the scale
// left out) and additions with the final negations included.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "dft_real_forward_counts.h"
#include "dft_real_inverse_counts.h"
#include "hartley_counts.h"

namespace {

// A row of any family's table.
struct Counts {
    std::string family, type;
    int size, addSub, mul, scaleMul, wide;
};

template <class Table>
void append(std::vector<Counts>& rows, const char* family, const Table& table)
{
    for (const auto& c : table)
        rows.push_back({family, c.type, c.size, c.addSub, c.mul, c.scaleMul, c.wide});
}

std::vector<Counts> allCounts()
{
    std::vector<Counts> rows;
    append(rows, "forward", kRealForwardCounts);
    append(rows, "inverse", kRealInverseCounts);
    append(rows, "Hartley", kHartleyCounts);
    return rows;
}

// In every family: one product by the scale per output; binary32 kernels
// form their statements with products in binary64 (sizes 2 and 4 have none,
// binary64 kernels no type change); both types run one graph.
TEST(RealCounts, ScaleProductsWideStatementsAndOneGraph)
{
    std::map<std::string, Counts> single;
    for (const Counts& c : allCounts())
        if (c.type == "32f")
            single.emplace(c.family + std::to_string(c.size), c);
    int compared = 0;
    for (const Counts& c : allCounts()) {
        SCOPED_TRACE(c.family + " " + c.type + " size " + std::to_string(c.size));
        EXPECT_EQ(c.scaleMul, c.size);
        if (c.type == "64f" || c.size == 2 || c.size == 4) {
            EXPECT_EQ(c.wide, 0) << "binary64 operations";
        } else {
            EXPECT_GT(c.wide, 0) << "no binary64 statement";
        }
        if (c.type == "64f") {
            const Counts& s = single.at(c.family + std::to_string(c.size));
            EXPECT_EQ(c.addSub, s.addSub);
            EXPECT_EQ(c.mul, s.mul);
            ++compared;
        }
    }
    EXPECT_EQ(compared, 3 * 63);
}

// Sizes whose method fixes the count: plain butterflies, direct folding,
// the even-odd recursion and Cooley-Tukey on the prime powers.
const std::map<int, int> kMultiplications = {{2, 0},   {4, 0},   {3, 2},    {5, 8},    {7, 18},  {11, 50},
                                             {8, 2},   {16, 12}, {32, 44},  {64, 132}, {9, 20},  {25, 112},
                                             {27, 110}, {49, 324}};
const std::map<int, int> kAdditions = {{2, 2}, {4, 7}, {8, 23}, {16, 64}, {32, 168}, {64, 417}};
// 32 and 64 take one negation more than the budget: the output sign that
// one sum of the four-step odd-bin stage leaves.
const std::map<int, int> kExtraNegations = {{32, 1}, {64, 1}};

// The convolution form: the budget's multiplications, and ours. The way
// back runs as the two symmetric parts of one transposed real transform of
// size p-1 whose first stage joins x[r] with x[r + (p-1)/2]; where p-1 is 4
// or 8 times an odd number that costs less than the budget reckons, and
// where the transform of size p-1 nests 29 it costs less again. 19 and 31
// take a little more.
struct Convolution {
    int budget;
    int ours;
};
const std::map<int, Convolution> kConvolution = {
    {13, {41, 38}},   {17, {54, 54}},   {19, {108, 114}}, {23, {242, 242}}, {29, {210, 198}},
    {31, {192, 194}}, {37, {228, 230}}, {41, {242, 226}}, {43, {352, 354}}, {47, {1058, 1058}},
    {53, {456, 406}}, {59, {954, 906}}, {61, {415, 390}},
};

TEST(RealCounts, ForwardMatchesTheBudgets)
{
    for (const RealKernelCounts& c : kRealForwardCounts) {
        SCOPED_TRACE(std::string(c.type) + " size " + std::to_string(c.size));
        if (const auto m = kMultiplications.find(c.size); m != kMultiplications.end()) {
            EXPECT_EQ(c.mul, m->second);
        }
        if (const auto a = kAdditions.find(c.size); a != kAdditions.end()) {
            const auto extra = kExtraNegations.find(c.size);
            EXPECT_EQ(c.addSub, a->second + (extra == kExtraNegations.end() ? 0 : extra->second));
        }
        if (const auto p = kConvolution.find(c.size); p != kConvolution.end()) {
            EXPECT_EQ(c.mul, p->second.ours) << "budget " << p->second.budget;
        }
    }
}

// Multiplications by constants with the doublings, and additions, of the
// budget table, and ours where they differ: the convolution sizes (13, 17,
// 59, 61) carry the forward kernel's own way over the size p-1 transposed;
// 32 and 64 are the transposes of the forward recursion, whose four-step
// stage spends its products in another split (74 + 194 against 72 + 196).
struct Budget {
    int mul, add, ourMul, ourAdd;
};
const std::map<int, Budget> kInverseBudgets = {
    {5, {12, 12, 12, 12}},       {7, {24, 24, 24, 24}},     {8, {8, 20, 8, 20}},          {11, {60, 68, 60, 68}},
    {13, {56, 80, 50, 76}},      {16, {26, 58, 26, 58}},    {17, {68, 116, 70, 116}},     {23, {264, 284, 264, 284}},
    {32, {72, 156, 74, 158}},    {47, {1104, 1260, 1104, 1228}}, {59, {1012, 1340, 964, 1316}},
    {61, {478, 762, 450, 748}},  {64, {196, 400, 194, 398}},
};

TEST(RealCounts, InverseMatchesTheBudgets)
{
    int held = 0;
    for (const RealInverseCounts& c : kRealInverseCounts)
        if (const auto b = kInverseBudgets.find(c.size); b != kInverseBudgets.end()) {
            SCOPED_TRACE(std::string(c.type) + " size " + std::to_string(c.size));
            EXPECT_EQ(c.mul, b->second.ourMul) << "budget " << b->second.mul;
            EXPECT_EQ(c.addSub, b->second.ourAdd) << "budget " << b->second.add;
            ++held;
        }
    EXPECT_EQ(held, 2 * static_cast<int>(kInverseBudgets.size()));
}

// Additions of the budget: the forward core's, less its negations, plus
// the butterflies.
const std::map<int, int> kHartleyAdditions = {{2, 2}, {3, 6}, {4, 8}, {5, 16}, {8, 26}, {16, 72}};

// Multiplications where the budget departs from the forward kernel, and
// ours: we keep the forward core at every size (33, 44 and 55 with the
// inverse family's 11-point block, which costs what direct folding costs).
struct Departure {
    int budget, ours;
};
const std::map<int, Departure> kHartleyDepartures = {
    {13, {44, 38}},   {18, {36, 40}},   {27, {100, 110}}, {31, {194, 194}}, {32, {42, 44}},
    {36, {72, 80}},   {37, {236, 230}}, {45, {162, 172}}, {48, {72, 68}},   {53, {450, 406}},
    {54, {200, 220}}, {62, {388, 388}}, {64, {134, 132}},
};

TEST(RealCounts, HartleyIsTheForwardCoreAndButterflies)
{
    std::map<std::string, int> forwardMul;
    for (const RealKernelCounts& c : kRealForwardCounts)
        forwardMul[c.type + std::to_string(c.size)] = c.mul;
    for (const HartleyCounts& c : kHartleyCounts) {
        SCOPED_TRACE(std::string(c.type) + " size " + std::to_string(c.size));
        EXPECT_EQ(c.mul, forwardMul.at(c.type + std::to_string(c.size))) << "the forward core's products";
        if (const auto a = kHartleyAdditions.find(c.size); a != kHartleyAdditions.end()) {
            EXPECT_EQ(c.addSub, a->second);
        }
        if (const auto d = kHartleyDepartures.find(c.size); d != kHartleyDepartures.end()) {
            EXPECT_EQ(c.mul, d->second.ours) << "budget " << d->second.budget;
        }
    }
}

} // namespace
