// The forward real kernels of sizes 2, 3, 4, 5 and 8, and in binary32 the
// direct folding of 7 and 11, bit for bit against their formulas,
// evaluated here in the written order and precision: every operation of
// binary64 kernels in binary64; in binary32 kernels a
// statement with a product by a (binary64) constant in binary64 from
// exactly widened operands, rounded once when its result is stored, the
// factor and the final 0 - v belonging to an output's last statement.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>
#include <type_traits>
#include <vector>

#include "real_kernels.h"
#include "test_support.h"

using namespace tvktest;

namespace {

// R[k] and I[k], k = 0 .. n/2, as the kernel must store them.
template <class T>
struct Spectrum {
    std::vector<T> re, im;
};

// A statement that ends in an output: the value v of the statement's type
// times the factor, negated as 0 - v where the graph yields -I, rounded to
// T once.
template <class T, class S>
T output(S v, T f, bool negate)
{
    const S scaled = v * static_cast<S>(f);
    return static_cast<T>(negate ? S(0) - scaled : scaled);
}

template <class T>
Spectrum<T> formula(int n, const std::vector<T>& x, T f)
{
    using W = double; // statements with a constant product, in both types
    Spectrum<T> X{std::vector<T>(n / 2 + 1, T(0)), std::vector<T>(n / 2 + 1, T(0))};
    switch (n) {
    case 2:
        X.re[0] = (x[0] + x[1]) * f;
        X.re[1] = (x[0] - x[1]) * f;
        break;
    case 4: {
        const T a = x[0] + x[2], b = x[0] - x[2], c = x[1] + x[3], d = x[1] - x[3];
        X.re[0] = (a + c) * f;
        X.re[2] = (a - c) * f;
        X.re[1] = b * f;
        X.im[1] = T(0) - d * f;
        break;
    }
    case 3: {
        const T a = x[1] + x[2], b = x[1] - x[2];
        X.re[0] = (x[0] + a) * f;
        X.re[1] = output<T, W>(W(x[0]) - 0.5 * W(a), f, false);
        X.im[1] = output<T, W>(0.8660254037844386 * W(b), f, true);
        break;
    }
    case 5: {
        const T a1 = x[1] + x[4], a2 = x[2] + x[3], b1 = x[1] - x[4], b2 = x[2] - x[3];
        const double c1 = 0.30901699437494745, c2 = 0.8090169943749475;
        const double s1 = 0.9510565162951535, s2 = 0.5877852522924731;
        X.re[0] = (x[0] + (a1 + a2)) * f;
        X.re[1] = output<T, W>((W(x[0]) + c1 * W(a1)) - c2 * W(a2), f, false);
        X.re[2] = output<T, W>((W(x[0]) - c2 * W(a1)) + c1 * W(a2), f, false);
        X.im[1] = output<T, W>(s1 * W(b1) + s2 * W(b2), f, true);
        X.im[2] = output<T, W>(s2 * W(b1) - s1 * W(b2), f, true);
        break;
    }
    case 7:
    case 11: {
        // Direct folding, run for binary32 only, where each output is one
        // binary64 statement (x[0] and the products, then the factor and
        // the 0 - v) rounded once, so that the order of its sums, which is
        // free, shows only through that one rounding. a[j], b[j] and the
        // zero bin are binary32.
        const int h = (n - 1) / 2;
        std::vector<T> a(h + 1), b(h + 1);
        T zero = T(0);
        for (int j = 1; j <= h; ++j) {
            a[j] = x[j] + x[n - j];
            b[j] = x[j] - x[n - j];
            zero = j == 1 ? a[1] : zero + a[j];
        }
        X.re[0] = (x[0] + zero) * f;
        const long double pi = std::numbers::pi_v<long double>;
        for (int k = 1; k <= h; ++k) {
            W re = W(x[0]), im = 0;
            for (int j = 1; j <= h; ++j) {
                const long double angle = 2 * pi * (j * k % n) / n;
                re += static_cast<W>(std::cos(angle)) * W(a[j]);
                im += static_cast<W>(std::sin(angle)) * W(b[j]);
            }
            X.re[k] = output<T, W>(re, f, false);
            X.im[k] = output<T, W>(im, f, true);
        }
        break;
    }
    case 8: {
        const double c = 0.7071067811865476;
        T a[4], b[4];
        for (int i = 0; i < 4; ++i) {
            a[i] = x[i] + x[i + 4];
            b[i] = x[i] - x[i + 4];
        }
        const T e = a[0] + a[2], g = a[1] + a[3];
        X.re[0] = (e + g) * f;
        X.re[4] = (e - g) * f;
        X.re[2] = (a[0] - a[2]) * f;
        X.im[2] = T(0) - (a[1] - a[3]) * f;
        // Products alone, each rounded to T; the sums after them in T.
        const T p = static_cast<T>(c * W(b[1])), q = static_cast<T>(c * W(b[3]));
        const T u = p - q, v = p + q;
        X.re[1] = (b[0] + u) * f;
        X.re[3] = (b[0] - u) * f;
        X.im[1] = T(0) - (b[2] + v) * f;
        X.im[3] = T(0) - (v - b[2]) * f;
        break;
    }
    }
    return X;
}

template <class T>
std::vector<T> run(const RealKernel& k, const std::vector<T>& x, int flag)
{
    std::vector<T> out(k.outCells());
    EXPECT_EQ(k.run(x.data(), out.data(), flag), StatusOk);
    return out;
}

template <class T>
void expectFormula(const RealKernel& k)
{
    for (int flag : kGoodFlags) {
        const T f = static_cast<T>(scaleOf(k, flag));
        for (unsigned seed = 0; seed < 20; ++seed) {
            const std::vector<T> x = randomReals<T>(k.size, 300 + seed, T(-4), T(4));
            const Spectrum<T> want = formula<T>(k.size, x, f);
            const std::vector<T> got = run(k, x, flag);
            for (int b = 0; 2 * b <= k.size; ++b)
                for (bool imaginary : {false, true}) {
                    const int cell = cellOf(k.layout, k.size, b, imaginary);
                    if (cell < 0)
                        continue;
                    const T expected = imaginary ? want.im[b] : want.re[b];
                    EXPECT_EQ(0, std::memcmp(&got[cell], &expected, sizeof(T)))
                        << (imaginary ? "I[" : "R[") << b << "] flag " << flag << " seed " << seed << ": "
                        << got[cell] << " vs " << expected;
                }
        }
    }
}

class RealFormulaTest : public ::testing::TestWithParam<RealKernel> {};

TEST_P(RealFormulaTest, BitForBit)
{
    const RealKernel& k = GetParam();
    if (k.is64())
        expectFormula<double>(k);
    else
        expectFormula<float>(k);
}

bool writtenOut(const RealKernel& k)
{
    return k.size == 2 || k.size == 3 || k.size == 4 || k.size == 5 || k.size == 8 ||
           (!k.is64() && (k.size == 7 || k.size == 11));
}

INSTANTIATE_TEST_SUITE_P(WrittenOut, RealFormulaTest,
                         ::testing::ValuesIn(kernelsWhere(builtRealForwardKernels(), writtenOut)),
                         [](const auto& info) { return realKernelLabel(info.param); });

// The test tells the binary32 statement rule from plain binary32
// arithmetic: on some inputs size 5 evaluated all in binary32 (products
// and sums rounded one by one) gives other bits than the kernel.
TEST(RealFormula, Size5TellsTheStatementRuleFromPlainBinary32)
{
    const RealKernel* k5 = nullptr;
    const std::vector<RealKernel> kernels = builtRealForwardKernels();
    for (const RealKernel& k : kernels)
        if (k.size == 5 && !k.is64() && k.layout == Layout::CCS)
            k5 = &k;
    ASSERT_NE(k5, nullptr);
    int differing = 0;
    for (unsigned seed = 0; seed < 50; ++seed) {
        const std::vector<float> x = randomReals<float>(5, 400 + seed, -4.0f, 4.0f);
        const std::vector<float> got = run(*k5, x, ScaleNoDivide);
        const float a1 = x[1] + x[4], a2 = x[2] + x[3];
        const float plain = (x[0] + 0.309017f * a1) - 0.809017f * a2;
        differing += std::memcmp(&got[2], &plain, sizeof plain) != 0;
    }
    EXPECT_GT(differing, 0);
}

} // namespace
