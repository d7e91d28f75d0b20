// Operation counts of the generated complex kernels against the budget of
// each size. Where the budget fixes a count, a kernel that exceeds it or
// falls short of it is not the designed kernel, and the check is exact. The
// few sizes whose kernels do better than the budget say why, and are held
// to it as a ceiling.
#include <gtest/gtest.h>

#include <map>
#include <set>

#include "complex_kernels.h"

using namespace tvktest;

namespace {

struct Budget {
    int additions;
    int multiplications;
};

// 64fc: real additions and real multiplications, the N products by the
// scale left out. Codelets 3, 5, 7, 11 are given by vector products with
// the scale included (2h^2 + p), in `multiplications` with additions -1.
const std::map<int, Budget> kBudget64 = {
    {2, {4, 0}}, {4, {16, 0}}, {8, {52, 4}}, {16, {144, 24}}, {32, {376, 88}}, {64, {920, 264}},
    {3, {-1, 5}}, {5, {-1, 13}}, {7, {-1, 25}}, {11, {-1, 61}},
    // Composite sizes: the chains of coprime and twiddled joins.
    {6, {36, 8}}, {9, {80, 40}}, {10, {84, 24}}, {12, {96, 16}}, {14, {148, 72}}, {15, {156, 68}},
    {18, {196, 80}}, {20, {208, 64}}, {21, {264, 136}}, {22, {324, 200}}, {24, {252, 44}}, {25, {352, 224}},
    {26, {412, 164}}, {27, {380, 220}}, {28, {352, 144}}, {30, {372, 136}}, {33, {552, 344}}, {34, {604, 224}},
    {35, {532, 260}}, {36, {464, 160}}, {38, {804, 432}}, {39, {696, 298}}, {40, {516, 148}}, {42, {612, 272}},
    {44, {736, 400}}, {45, {688, 344}}, {46, {1380, 968}}, {48, {624, 136}}, {49, {912, 648}}, {50, {804, 400}},
    {51, {1008, 404}}, {52, {928, 328}}, {54, {868, 440}}, {55, {1052, 676}}, {56, {844, 316}}, {57, {1320, 724}},
    {58, {1452, 840}}, {60, {864, 256}}, {62, {1508, 768}}, {63, {1100, 604}},
};

// 32fc: vector (or, below 6, scalar) additions and subtractions, and
// multiplications with those by the scale included. Only these sizes have
// a budget; the others are held by their 64fc twins' chains.
const std::map<int, Budget> kBudget32 = {
    {2, {4, 4}}, {4, {16, 8}}, {8, {22, 8}}, {16, {38, 20}}, {32, {98, 48}}, {64, {236, 104}},
    {3, {12, 10}}, {5, {32, 26}},
};

// 64fc sizes whose 13-, 23- and 29-point convolutions keep more partner
// pairs open than the budget reckons (through every join of the nested 12,
// 22 and 28, with no halved constants in the inverse stage): the budget is
// their ceiling. They all take fewer additions; 46 meets its multiplication
// budget, the others take fewer multiplications too.
const std::set<int> kBelowBudget64 = {26, 39, 46, 52, 58};

TEST(ComplexKernelCounts, OneScaleProductPerOutputAndTheBudgets)
{
    for (const ComplexKernel& k : builtComplexKernels()) {
        SCOPED_TRACE(kernelLabel(k));
        // One product by the scale per output: a vector per element in 64fc,
        // one per part in the scalar 32fc kernels, and in the 32fc vector
        // kernels at least one per four elements (idle lanes count too).
        if (k.is64() || !k.twins) {
            EXPECT_EQ(k.counts.scaleMul, k.is64() ? k.size : 2 * k.size);
        } else {
            EXPECT_GE(k.counts.scaleMul, k.size / 2);
        }
        const auto& table = k.is64() ? kBudget64 : kBudget32;
        const auto budget = table.find(k.size);
        if (budget == table.end())
            continue;
        if (k.is64() && kBelowBudget64.count(k.size)) {
            EXPECT_LT(2 * k.counts.addSub, budget->second.additions);
            if (k.size == 46) {
                EXPECT_EQ(2 * k.counts.mul, budget->second.multiplications);
            } else {
                EXPECT_LT(2 * k.counts.mul, budget->second.multiplications);
            }
        } else if (k.is64()) {
            if (budget->second.additions < 0) {
                EXPECT_EQ(k.counts.mul + k.counts.scaleMul, budget->second.multiplications);
            } else {
                EXPECT_EQ(2 * k.counts.addSub, budget->second.additions);
                EXPECT_EQ(2 * k.counts.mul, budget->second.multiplications);
            }
        } else {
            EXPECT_EQ(k.counts.scaleMul, k.twins ? k.size / 2 : 2 * k.size);
            EXPECT_EQ(k.counts.addSub, budget->second.additions);
            EXPECT_EQ(k.counts.mul + k.counts.scaleMul, budget->second.multiplications);
        }
    }
}

// Distinct stored magnitudes of the 64fc prime kernels in the convolution
// form, 0 and 1 included, the scale factors not: the spectrum constants
// (D[k] and D[m-k] share theirs), those of the nested size-(p-1) transform,
// and the products of the two where a difference leaves its factor to the
// constant it meets. The budget reckons with halved constants in every
// inverse stage behind a doubled product; 17, 29 and 31 store exactly that
// many. The others store fewer, since their inverse stages take the doubled
// products as pair sums and need no halved copies (13, 23 and the primes
// nesting them), or fold fewer factors into the spectrum constants (19, 37,
// 41, 43, 61): the budget is their ceiling.
const std::map<int, int> kMagnitudes64 = {{13, 18}, {17, 21}, {19, 38}, {23, 48}, {29, 36}, {31, 42}, {37, 54},
                                          {41, 53}, {43, 62}, {47, 122}, {53, 98}, {59, 118}, {61, 78}};
const std::set<int> kExactMagnitudes64 = {17, 29, 31};

TEST(ComplexKernelCounts, StoredMagnitudesOfThePrimes)
{
    for (const ComplexKernel& k : builtComplexKernels())
        if (const auto m = kMagnitudes64.find(k.size); k.is64() && m != kMagnitudes64.end()) {
            if (kExactMagnitudes64.count(k.size)) {
                EXPECT_EQ(k.counts.magnitudes, m->second) << kernelLabel(k);
            } else {
                EXPECT_LT(k.counts.magnitudes, m->second) << kernelLabel(k);
            }
        }
}

// The inverse kernel is the forward one with the signs of its rotations
// changed: every size costs the same in both directions, in both types.
TEST(ComplexKernelCounts, DirectionsCostTheSame)
{
    for (const ComplexKernel& k : builtComplexKernels()) {
        const ComplexKernelCounts other = partner(k).counts;
        EXPECT_EQ(k.counts.addSub, other.addSub) << kernelLabel(k);
        EXPECT_EQ(k.counts.mul, other.mul) << kernelLabel(k);
        EXPECT_EQ(k.counts.magnitudes, other.magnitudes) << kernelLabel(k);
    }
}

} // namespace
