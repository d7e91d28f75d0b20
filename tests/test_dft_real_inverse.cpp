// What the inverse real kernels compute, expanded over the kernels of the
// build (type, size, layout) and flags: the definition, round trips with
// the forward kernels, the readers' agreement, the cells never read, and
// sizes 2, 3, 4 and 8 (and the binary32 direct folding of 5 and 7) bit for
// bit.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <numbers>
#include <vector>

#include "dft_real_inverse_counts.h"
#include "real_inputs.h"

using namespace tvktest;

namespace {

class RealInverseTest : public ::testing::TestWithParam<RealKernel> {
protected:
    const RealKernel& k = GetParam();
    long double eps() const
    {
        return k.is64() ? std::numeric_limits<double>::epsilon() : std::numeric_limits<float>::epsilon();
    }
    long double spectrum(const std::vector<unsigned char>& cells, int bin, bool imaginary) const
    {
        const int cell = cellOf(k.layout, k.size, bin, imaginary);
        return cell < 0 ? 0 : numberAt(k, cells.data(), cell);
    }
};

// y[n] = R[0] + (-1)^n R[N/2] + 2 sum (R[k] cos - I[k] sin), times the
// factor; I[0] and I[N/2] are not read.
TEST_P(RealInverseTest, AgreesWithTheDefinition)
{
    const long double pi = std::numbers::pi_v<long double>;
    for (unsigned seed = 0; seed < 3; ++seed) {
        const auto input = randomInput(k, 20 + seed);
        for (int flag : kGoodFlags) {
            const auto out = runKernel(k, input, flag);
            ASSERT_FALSE(out.empty());
            const long double f = scaleOf(k, flag);
            const long double bound = 16 * eps() * std::log2(k.size + 1.0L) * std::sqrt(k.size + 0.0L) * f;
            for (int n = 0; n < k.size; ++n) {
                long double y = spectrum(input, 0, false);
                if (k.size % 2 == 0)
                    y += (n % 2 ? -1 : 1) * spectrum(input, k.size / 2, false);
                for (int b = 1; 2 * b < k.size; ++b) {
                    const long double angle = 2 * pi * ((static_cast<long long>(n) * b) % k.size) / k.size;
                    y += 2 * (spectrum(input, b, false) * std::cos(angle) - spectrum(input, b, true) * std::sin(angle));
                }
                EXPECT_NEAR(static_cast<double>(numberAt(k, out.data(), n)), static_cast<double>(y * f),
                            static_cast<double>(bound))
                    << "y[" << n << "] flag " << flag;
            }
        }
    }
}

// Forward then inverse gives the input back under the three flag pairs
// whose factors multiply to 1/N.
TEST_P(RealInverseTest, RoundTripsWithTheForwardKernel)
{
    const RealKernel forward = k.sibling(RealFamily::Forward, k.layout);
    ASSERT_NE(forward.fn, nullptr);
    const auto x = randomInput(forward, 30);
    const long double bound = 16 * eps() * std::log2(k.size + 1.0L) * std::sqrt(k.size + 0.0L);
    for (const auto& [forwardFlag, inverseFlag] :
         {std::pair{ScaleNoDivide, ScaleDivInverseByN}, std::pair{ScaleDivForwardByN, ScaleNoDivide},
          std::pair{ScaleDivBySqrtN, ScaleDivBySqrtN}}) {
        const auto back = runKernel(k, runKernel(forward, x, forwardFlag), inverseFlag);
        for (int n = 0; n < k.size; ++n)
            EXPECT_NEAR(static_cast<double>(numberAt(k, back.data(), n)), static_cast<double>(numberAt(k, x.data(), n)),
                        static_cast<double>(bound))
                << "x[" << n << "] flags " << forwardFlag << ", " << inverseFlag;
    }
}

// Flags 1 and 8 both give the bare sum; flag 2 multiplies by the stored 1/N.
TEST_P(RealInverseTest, FlagsPickTheirFactors)
{
    const auto input = randomInput(k, 31);
    EXPECT_EQ(runKernel(k, input, ScaleDivForwardByN), runKernel(k, input, ScaleNoDivide));
    auto dc = filledInput(k, 0);
    setNumber(k, dc.data(), 0, 1);
    const auto out = runKernel(k, dc, ScaleDivInverseByN);
    const long double stored = k.is64() ? 1.0 / k.size : 1.0f / static_cast<float>(k.size);
    for (int n = 0; n < k.size; ++n)
        EXPECT_EQ(numberAt(k, out.data(), n), stored) << "y[" << n << "]";
}

// Sizes from 3 on, where bin 1 is not the last bin (at size 2 it is real).
using RealInverseBinOneTest = RealInverseTest;

// R[0] = 0 and I[1] = 1 alone, a spectrum no real sequence has, still gives
// a real sequence: -2 sin(2 pi n / N) times the factor.
TEST_P(RealInverseBinOneTest, ImaginaryPartOfBinOneAlone)
{
    auto input = filledInput(k, 0);
    setNumber(k, input.data(), cellOf(k.layout, k.size, 1, true), 1);
    const long double pi = std::numbers::pi_v<long double>;
    for (int flag : kGoodFlags) {
        const auto out = runKernel(k, input, flag);
        const long double f = scaleOf(k, flag);
        for (int n = 0; n < k.size; ++n)
            EXPECT_NEAR(static_cast<double>(numberAt(k, out.data(), n)),
                        static_cast<double>(-2 * std::sin(2 * pi * n / k.size) * f),
                        static_cast<double>(8 * eps() * std::log2(k.size + 1.0L) * f))
                << "y[" << n << "] flag " << flag;
    }
}

// The tests of one size and type across readers, run from its CCS kernel.
using RealInverseSizeTest = RealInverseTest;

// The three readers share one graph: for one spectrum they give the same
// bytes at every size.
TEST_P(RealInverseSizeTest, ReadersAgreeInBytes)
{
    const auto ccsInput = randomInput(k, 32);
    const auto reference = runKernel(k, ccsInput, ScaleDivBySqrtN);
    for (Layout l : {Layout::Pack, Layout::Perm}) {
        const RealKernel reader = k.sibling(RealFamily::Inverse, l);
        ASSERT_NE(reader.fn, nullptr);
        std::vector<unsigned char> cells(reader.inCells() * k.realBytes());
        for (int b = 0; 2 * b <= k.size; ++b)
            for (bool imaginary : {false, true}) {
                const int to = cellOf(l, k.size, b, imaginary);
                if (to >= 0)
                    setNumber(k, cells.data(), to, numberAt(k, ccsInput.data(), cellOf(Layout::CCS, k.size, b, imaginary)));
            }
        EXPECT_EQ(runKernel(reader, cells, ScaleDivBySqrtN), reference) << layoutName(l);
    }
}

// CCS cells 1 and (even N) N+1 are never read: NaN or infinity there gives
// the bytes of zeros.
TEST_P(RealInverseSizeTest, IgnoredCcsCellsHaveNoEffect)
{
    auto input = randomInput(k, 33);
    setNumber(k, input.data(), 1, 0);
    if (k.size % 2 == 0)
        setNumber(k, input.data(), k.size + 1, 0);
    const auto reference = runKernel(k, input, ScaleNoDivide);
    for (long double junk : {std::numeric_limits<long double>::quiet_NaN(), std::numeric_limits<long double>::infinity()}) {
        setNumber(k, input.data(), 1, junk);
        if (k.size % 2 == 0)
            setNumber(k, input.data(), k.size + 1, -junk);
        EXPECT_EQ(runKernel(k, input, ScaleNoDivide), reference) << static_cast<double>(junk);
    }
}

// ---- Sizes 2, 3, 4, 8, and 5 and 7 in binary32, bit for bit -------------
// Every interior cell doubled first in the element type; binary64 kernels
// round every operation to binary64; binary32 kernels evaluate a statement
// with a constant product in binary64 from exact operands and round it once,
// and the last sum before an output and the factor in binary32.

template <class T>
std::vector<T> inverseFormula(int n, const std::vector<T>& cells, T f)
{
    using W = double;
    const auto R = [&](int k) { return cells[2 * k]; };
    const auto r = [&](int k) { return T(2) * cells[2 * k]; };
    const auto i = [&](int k) { return T(2) * cells[2 * k + 1]; };
    const auto product = [](double c, T v) { return static_cast<T>(c * W(v)); };
    std::vector<T> y(n);
    switch (n) {
    case 2:
        y = {R(0) + R(1), R(0) - R(1)};
        break;
    case 3: {
        const T a = r(1);
        const T w = static_cast<T>(W(R(0)) - 0.5 * W(a)), v = product(0.8660254037844386, i(1));
        y = {a + R(0), w - v, w + v};
        break;
    }
    case 4: {
        const T p = R(0) + R(2), q = R(0) - R(2), a = r(1), b = i(1);
        y = {p + a, q - b, p - a, q + b};
        break;
    }
    case 8: {
        const double c = 0.7071067811865476;
        const T p = R(0) + R(4), q = R(0) - R(4);
        const T A = p + r(2), B = p - r(2), C = q + i(2), D = q - i(2);
        const T E = r(1) + r(3), F = r(1) - r(3), G = i(1) + i(3), H = i(1) - i(3);
        const T u = product(c, F), v = product(c, G);
        const T s = u + v, t = u - v;
        y = {A + E, D + t, B - H, C - s, A - E, D - t, B + H, C + s};
        break;
    }
    default: { // direct folding: A[m] and B[m] each one binary64 statement
        const long double pi = std::numbers::pi_v<long double>;
        for (int m = 1; 2 * m < n; ++m) {
            W A = R(0), B = 0;
            for (int k = 1; 2 * k < n; ++k) {
                const long double angle = 2 * pi * (m * k % n) / n;
                A += static_cast<double>(std::cos(angle)) * W(r(k));
                B += static_cast<double>(std::sin(angle)) * W(i(k));
            }
            y[m] = static_cast<T>(A) - static_cast<T>(B);
            y[n - m] = static_cast<T>(A) + static_cast<T>(B);
        }
        break; // y[0], a binary32 sum in an open order, is not pinned here
    }
    }
    for (T& v : y)
        v *= f;
    return y;
}

template <class T>
void expectInverseFormula(const RealKernel& k)
{
    for (int flag : kGoodFlags) {
        const T f = static_cast<T>(scaleOf(k, flag));
        for (unsigned seed = 0; seed < 20; ++seed) {
            const std::vector<T> ccs = randomReals<T>(k.size + 2, 500 + seed, T(-4), T(4));
            std::vector<T> cells(k.inCells());
            for (int b = 0; 2 * b <= k.size; ++b)
                for (bool imaginary : {false, true})
                    if (const int to = cellOf(k.layout, k.size, b, imaginary); to >= 0)
                        cells[to] = ccs[2 * b + imaginary];
            const std::vector<T> want = inverseFormula<T>(k.size, ccs, f);
            std::vector<T> got(k.size);
            ASSERT_EQ(k.run(cells.data(), got.data(), flag), StatusOk);
            const bool folding = k.size == 5 || k.size == 7;
            for (int n = folding ? 1 : 0; n < k.size; ++n)
                EXPECT_EQ(0, std::memcmp(&got[n], &want[n], sizeof(T)))
                    << "y[" << n << "] flag " << flag << " seed " << seed << ": " << got[n] << " vs " << want[n];
        }
    }
}

class RealInverseFormulaTest : public ::testing::TestWithParam<RealKernel> {};

TEST_P(RealInverseFormulaTest, BitForBit)
{
    const RealKernel& k = GetParam();
    if (k.is64())
        expectInverseFormula<double>(k);
    else
        expectInverseFormula<float>(k);
}

// ---- Counts ---------------------------------------------------------------

// Multiplications by constants with the doublings, and additions, of the
// budget table, and ours where they differ: the convolution sizes (13, 17,
// 59, 61) carry the forward kernel's own way over the size p-1 transposed;
// 32 and 64 are the transposes of the forward recursion, whose four-step
// stage spends its products in another split (74 + 194 against 72 + 196).
struct Budget {
    int mul, add, ourMul, ourAdd;
};
const std::map<int, Budget> kBudgets = {
    {5, {12, 12, 12, 12}},       {7, {24, 24, 24, 24}},     {8, {8, 20, 8, 20}},          {11, {60, 68, 60, 68}},
    {13, {56, 80, 50, 76}},      {16, {26, 58, 26, 58}},    {17, {68, 116, 70, 116}},     {23, {264, 284, 264, 284}},
    {32, {72, 156, 74, 158}},    {47, {1104, 1260, 1104, 1228}}, {59, {1012, 1340, 964, 1316}},
    {61, {478, 762, 450, 748}},  {64, {196, 400, 194, 398}},
};

TEST(RealInverseCounts, MatchTheBudgets)
{
    int held = 0;
    for (const RealInverseCounts& c : kRealInverseCounts) {
        SCOPED_TRACE(std::string(c.type) + " size " + std::to_string(c.size));
        EXPECT_EQ(c.scaleMul, c.size) << "one product by the scale per output";
        const bool single = std::string(c.type) == "32f";
        if (!single || c.size == 2 || c.size == 4) {
            EXPECT_EQ(c.wide, 0) << "binary64 operations";
        } else {
            EXPECT_GT(c.wide, 0) << "no binary64 statement";
        }
        const auto b = kBudgets.find(c.size);
        if (b == kBudgets.end())
            continue;
        EXPECT_EQ(c.mul, b->second.ourMul) << "budget " << b->second.mul;
        EXPECT_EQ(c.addSub, b->second.ourAdd) << "budget " << b->second.add;
        ++held;
    }
    EXPECT_EQ(held, 2 * static_cast<int>(kBudgets.size()));
}

std::vector<RealKernel> inverseKernels() { return builtRealKernels(RealFamily::Inverse); }

// Sizes whose steps are written out: all of 2, 3, 4 and 8, and the binary32
// direct folding of 5 and 7.
bool writtenOut(const RealKernel& k)
{
    return k.size == 2 || k.size == 3 || k.size == 4 || k.size == 8 || (!k.is64() && (k.size == 5 || k.size == 7));
}

INSTANTIATE_TEST_SUITE_P(Built, RealInverseTest, ::testing::ValuesIn(inverseKernels()),
                         [](const auto& info) { return realKernelLabel(info.param); });
INSTANTIATE_TEST_SUITE_P(Built, RealInverseBinOneTest,
                         ::testing::ValuesIn(kernelsWhere(inverseKernels(), [](const RealKernel& k) { return k.size >= 3; })),
                         [](const auto& info) { return realKernelLabel(info.param); });
INSTANTIATE_TEST_SUITE_P(Built, RealInverseSizeTest,
                         ::testing::ValuesIn(kernelsWhere(inverseKernels(),
                                                          [](const RealKernel& k) { return k.layout == Layout::CCS; })),
                         [](const auto& info) { return realKernelLabel(info.param); });
INSTANTIATE_TEST_SUITE_P(WrittenOut, RealInverseFormulaTest, ::testing::ValuesIn(kernelsWhere(inverseKernels(), writtenOut)),
                         [](const auto& info) { return realKernelLabel(info.param); });

} // namespace
