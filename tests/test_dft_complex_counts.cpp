// Operation counts of the generated complex kernels against the budget of
// each size: a kernel that exceeds its budget, or falls short of it, is not
// the designed kernel.
#include <gtest/gtest.h>

#include <map>
#include <string>

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
};

// 32fc: vector (or, below 6, scalar) additions and subtractions, and
// multiplications with those by the scale included.
const std::map<int, Budget> kBudget32 = {
    {2, {4, 4}}, {4, {16, 8}}, {8, {22, 8}}, {16, {38, 20}}, {32, {98, 48}}, {64, {236, 104}},
    {3, {12, 10}}, {5, {32, 26}},
};

TEST(ComplexKernelCounts, MatchTheBudgets)
{
    for (const ComplexKernel& k : builtComplexKernels()) {
        SCOPED_TRACE(kernelLabel(k));
        const auto& table = k.is64() ? kBudget64 : kBudget32;
        const auto budget = table.find(k.size);
        ASSERT_NE(budget, table.end()) << "no budget for this size";
        if (k.is64()) {
            EXPECT_EQ(k.counts.scaleMul, k.size);
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

TEST(ComplexKernelCounts, DirectionsCostTheSame)
{
    std::map<std::string, ComplexKernelCounts> forward;
    for (const ComplexKernel& k : builtComplexKernels())
        if (!k.inverse)
            forward[k.type + std::to_string(k.size)] = k.counts;
    for (const ComplexKernel& k : builtComplexKernels()) {
        if (!k.inverse)
            continue;
        const ComplexKernelCounts& f = forward.at(k.type + std::to_string(k.size));
        EXPECT_EQ(k.counts.addSub, f.addSub) << kernelLabel(k);
        EXPECT_EQ(k.counts.mul, f.mul) << kernelLabel(k);
    }
}

} // namespace
