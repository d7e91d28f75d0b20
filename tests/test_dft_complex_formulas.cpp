// The written-out formulas of the small and size-8 kernels, evaluated here
// in their order and precision, must give the kernels' bits exactly.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <utility>
#include <vector>

#include "test_support.h"
#include "tvkgen.h"

using namespace tvktest;

namespace {

template <class T>
struct Cx {
    T re, im;
};
template <class T> Cx<T> operator+(Cx<T> a, Cx<T> b) { return {a.re + b.re, a.im + b.im}; }
template <class T> Cx<T> operator-(Cx<T> a, Cx<T> b) { return {a.re - b.re, a.im - b.im}; }
template <class T> Cx<T> operator*(T c, Cx<T> a) { return {c * a.re, c * a.im}; }
// Products by -i (forward) or +i (inverse): exact.
template <class T> Cx<T> minusI(Cx<T> a) { return {a.im, -a.re}; }
template <class T> Cx<T> plusI(Cx<T> a) { return {-a.im, a.re}; }

template <class T>
std::vector<Cx<T>> randomSignal(int n, unsigned seed)
{
    const auto v = randomReals<T>(2 * n, seed);
    std::vector<Cx<T>> x(n);
    for (int i = 0; i < n; ++i)
        x[i] = {v[2 * i], v[2 * i + 1]};
    return x;
}

template <class T>
void expectBits(const std::vector<Cx<T>>& got, const std::vector<Cx<T>>& want)
{
    ASSERT_EQ(got.size(), want.size());
    for (size_t k = 0; k < got.size(); ++k) {
        EXPECT_TRUE(sameBits(&got[k].re, &want[k].re, 1)) << "re of bin " << k << ": " << got[k].re << " vs " << want[k].re;
        EXPECT_TRUE(sameBits(&got[k].im, &want[k].im, 1)) << "im of bin " << k << ": " << got[k].im << " vs " << want[k].im;
    }
}

template <class T>
std::vector<Cx<T>> scaled(std::vector<Cx<T>> X, T s)
{
    for (auto& v : X)
        v = s * v;
    return X;
}

// 1/sqrt(n) as the kernels hold it: the binary64 quotient 1.0/sqrt(n), or
// the binary32 nearest to 1/sqrt(n).
template <class T>
T sqrtScale(int n)
{
    if constexpr (sizeof(T) == sizeof(double))
        return 1.0 / std::sqrt(static_cast<double>(n));
    else
        return static_cast<float>(1 / std::sqrt(static_cast<long double>(n)));
}

using Kernel32 = TvkStatus (*)(const Tvk32fc*, Tvk32fc*, int);
using Kernel64 = TvkStatus (*)(const Tvk64fc*, Tvk64fc*, int);

std::vector<Cx<float>> run(Kernel32 kernel, const std::vector<Cx<float>>& x, int flag)
{
    std::vector<Cx<float>> X(x.size());
    EXPECT_EQ(kernel(reinterpret_cast<const Tvk32fc*>(x.data()), reinterpret_cast<Tvk32fc*>(X.data()), flag), StatusOk);
    return X;
}

std::vector<Cx<double>> run(Kernel64 kernel, const std::vector<Cx<double>>& x, int flag)
{
    std::vector<Cx<double>> X(x.size());
    EXPECT_EQ(kernel(reinterpret_cast<const Tvk64fc*>(x.data()), reinterpret_cast<Tvk64fc*>(X.data()), flag), StatusOk);
    return X;
}

// ---- size 8, 64fc: the road with W8 on the pair differences -------------------

std::vector<Cx<double>> size8Road64(const std::vector<Cx<double>>& x, bool inverse)
{
    const double c = 0.7071067811865476;
    const auto s0 = x[0] + x[4], d0 = x[0] - x[4], s1 = x[1] + x[5], s2 = x[2] + x[6], d2 = x[2] - x[6],
               s3 = x[3] + x[7];
    const auto w1 = c * (x[1] - x[5]), w3 = c * (x[3] - x[7]);
    const auto e = s0 + s2, f = s0 - s2, g = s1 + s3, h = s1 - s3, p = w1 - w3, q = w1 + w3;
    const auto A = d0 + p, B = d0 - p, t = d2 + q, u = q - d2;
    auto rot = [inverse](Cx<double> v) { return inverse ? plusI(v) : minusI(v); };
    return {e + g, A + rot(t), f + rot(h), B + rot(u), e - g, B - rot(u), f - rot(h), A - rot(t)};
}

TEST(WrittenFormulas, Size8Of64fc)
{
    for (unsigned seed = 0; seed < 50; ++seed) {
        const auto x = randomSignal<double>(8, seed);
        expectBits(run(tvkgDFTFwd_CToC_8_64fc, x, ScaleDivBySqrtN), scaled(size8Road64(x, false), 1.0 / std::sqrt(8.0)));
        expectBits(run(tvkgDFTInv_CToC_8_64fc, x, ScaleDivInverseByN), scaled(size8Road64(x, true), 0.125));
    }
}

// ---- size 8, 32fc: 4-point groups in lanes, full complex twiddle products ----

std::vector<Cx<float>> size8Lanes32(const std::vector<Cx<float>>& x, bool inverse)
{
    const float c = 0.70710677f;
    const float a[4] = {1, c, 0, -c};
    const float b[4] = {0, inverse ? c : -c, inverse ? 1.0f : -1.0f, inverse ? c : -c};
    auto rot = [inverse](Cx<float> v) { return inverse ? plusI(v) : minusI(v); };
    Cx<float> Y[2][4];
    for (int g = 0; g < 2; ++g) {
        const auto P = x[g] + x[g + 4], M = x[g] - x[g + 4], Q = x[g + 2] + x[g + 6], N = x[g + 2] - x[g + 6];
        Y[g][0] = P + Q;
        Y[g][2] = P - Q;
        Y[g][1] = M + rot(N);
        Y[g][3] = M - rot(N);
    }
    std::vector<Cx<float>> X(8);
    for (int k = 0; k < 4; ++k) {
        const Cx<float> y = Y[1][k];
        const Cx<float> z{a[k] * y.re - b[k] * y.im, b[k] * y.re + a[k] * y.im};
        X[k] = Y[0][k] + z;
        X[k + 4] = Y[0][k] - z;
    }
    return X;
}

TEST(WrittenFormulas, Size8Of32fc)
{
    for (unsigned seed = 0; seed < 50; ++seed) {
        const auto x = randomSignal<float>(8, seed);
        expectBits(run(tvkgDFTFwd_CToC_8_32fc, x, ScaleDivBySqrtN), scaled(size8Lanes32(x, false), 0.35355338f));
        expectBits(run(tvkgDFTInv_CToC_8_32fc, x, ScaleNoDivide), size8Lanes32(x, true));
    }
}

// ---- sizes 2 and 4 ------------------------------------------------------------

template <class T>
std::vector<Cx<T>> size4(const std::vector<Cx<T>>& x, bool inverse)
{
    const auto a = x[0] + x[2], b = x[0] - x[2], c = x[1] + x[3], d = x[1] - x[3];
    const auto rd = inverse ? plusI(d) : minusI(d);
    return {a + c, b + rd, a - c, b - rd};
}

// Both directions and both types: size 2 with each flag, size 4 under one.
template <class T, class Kernel>
void expectSizes2And4(const Kernel (&k2)[2], const Kernel (&k4)[2])
{
    for (unsigned seed = 0; seed < 50; ++seed)
        for (int inverse = 0; inverse < 2; ++inverse) {
            SCOPED_TRACE(testing::Message() << (inverse ? "inverse" : "forward") << " seed " << seed);
            const auto x2 = randomSignal<T>(2, seed), x4 = randomSignal<T>(4, seed);
            for (const auto& [flag, s] : {std::pair<int, T>{ScaleNoDivide, 1}, {ScaleDivBySqrtN, sqrtScale<T>(2)}})
                expectBits(run(k2[inverse], x2, flag), scaled<T>({x2[0] + x2[1], x2[0] - x2[1]}, s));
            const int divides = inverse ? ScaleDivInverseByN : ScaleDivForwardByN;
            expectBits(run(k4[inverse], x4, divides), scaled(size4(x4, inverse), T(0.25)));
        }
}

TEST(WrittenFormulas, Sizes2And4)
{
    expectSizes2And4<float>({tvkgDFTFwd_CToC_2_32fc, tvkgDFTInv_CToC_2_32fc},
                            {tvkgDFTFwd_CToC_4_32fc, tvkgDFTInv_CToC_4_32fc});
    expectSizes2And4<double>({tvkgDFTFwd_CToC_2_64fc, tvkgDFTInv_CToC_2_64fc},
                             {tvkgDFTFwd_CToC_4_64fc, tvkgDFTInv_CToC_4_64fc});
}

// ---- sizes 3 and 5: the folded form ------------------------------------------
// 64fc: X0 = x0 + (a1 + a2), m and n in binary64 (foldedPlain).
// 32fc: X0 = (x0 + a1) + a2 in binary32; m[k] and n[k] accumulated in
// binary64 from widened operands and binary64 constants, rounded once.

const double kCos[6][3] = {{}, {}, {}, {1, -0.5}, {}, {1, 0.30901699437494745, -0.8090169943749475}};
const double kSin[6][3] = {{}, {}, {}, {0, 0.8660254037844386}, {}, {0, 0.9510565162951535, 0.5877852522924731}};

// cos and sin of 2*pi*j/p by index j mod p: the written constants of 3 and
// 5; for 7 the binary64 nearest to the long-double value.
double trigOf(int p, int j, bool sine)
{
    j %= p;
    if (p == 7) {
        const long double angle = 2 * 3.141592653589793238462643383279502884L * j / p;
        return static_cast<double>(sine ? std::sin(angle) : std::cos(angle));
    }
    const double(&table)[6][3] = sine ? kSin : kCos;
    return j <= p / 2 ? table[p][j] : (sine ? -1 : 1) * table[p][p - j];
}
double cosOf(int p, int j) { return trigOf(p, j, false); }
double sinOf(int p, int j) { return trigOf(p, j, true); }

// The vector codelets of both types (all but the scalar 32fc 3 and 5) form
// X0 = x0 + (a1 + a2 + ...), m[k] from x0 upward, n[k] from j = 1 on, and
// every sum and product in the element type.
template <class T>
std::vector<Cx<T>> foldedPlain(const std::vector<Cx<T>>& x, bool inverse)
{
    const int p = static_cast<int>(x.size()), h = (p - 1) / 2;
    std::vector<Cx<T>> a(h + 1), b(h + 1), X(p);
    for (int j = 1; j <= h; ++j) {
        a[j] = x[j] + x[p - j];
        b[j] = x[j] - x[p - j];
    }
    Cx<T> sum = a[1];
    for (int j = 2; j <= h; ++j)
        sum = sum + a[j];
    X[0] = x[0] + sum;
    for (int k = 1; k <= h; ++k) {
        Cx<T> m = x[0];
        for (int j = 1; j <= h; ++j)
            m = m + static_cast<T>(cosOf(p, j * k)) * a[j];
        Cx<T> n = static_cast<T>(sinOf(p, k)) * b[1];
        for (int j = 2; j <= h; ++j)
            n = n + static_cast<T>(sinOf(p, j * k)) * b[j];
        const auto r = inverse ? plusI(n) : minusI(n);
        X[k] = m + r;
        X[p - k] = m - r;
    }
    return X;
}

std::vector<Cx<float>> folded32(const std::vector<Cx<float>>& x, bool inverse)
{
    const int p = static_cast<int>(x.size()), h = (p - 1) / 2;
    std::vector<Cx<float>> a(h + 1), b(h + 1), X(p);
    for (int j = 1; j <= h; ++j) {
        a[j] = x[j] + x[p - j];
        b[j] = x[j] - x[p - j];
    }
    X[0] = x[0];
    for (int j = 1; j <= h; ++j)
        X[0] = X[0] + a[j];
    auto wide = [](Cx<float> v) { return Cx<double>{v.re, v.im}; };
    for (int k = 1; k <= h; ++k) {
        Cx<double> m = wide(x[0]);
        for (int j = 1; j <= h; ++j)
            m = m + cosOf(p, j * k) * wide(a[j]);
        Cx<double> n = sinOf(p, k) * wide(b[1]);
        for (int j = 2; j <= h; ++j)
            n = n + sinOf(p, j * k) * wide(b[j]);
        const Cx<float> mf{static_cast<float>(m.re), static_cast<float>(m.im)};
        const Cx<float> nf{static_cast<float>(n.re), static_cast<float>(n.im)};
        const auto r = inverse ? plusI(nf) : minusI(nf);
        X[k] = mf + r;
        X[p - k] = mf - r;
    }
    return X;
}

TEST(WrittenFormulas, FoldedSizes3And5)
{
    const Kernel64 k64[2][2] = {{tvkgDFTFwd_CToC_3_64fc, tvkgDFTInv_CToC_3_64fc}, {tvkgDFTFwd_CToC_5_64fc, tvkgDFTInv_CToC_5_64fc}};
    const Kernel32 k32[2][2] = {{tvkgDFTFwd_CToC_3_32fc, tvkgDFTInv_CToC_3_32fc}, {tvkgDFTFwd_CToC_5_32fc, tvkgDFTInv_CToC_5_32fc}};
    for (int which = 0; which < 2; ++which) {
        const int p = which == 0 ? 3 : 5;
        for (unsigned seed = 0; seed < 100; ++seed)
            for (int inverse = 0; inverse < 2; ++inverse) {
                SCOPED_TRACE(testing::Message() << "size " << p << (inverse ? " inverse" : " forward"));
                const auto xd = randomSignal<double>(p, seed);
                expectBits(run(k64[which][inverse], xd, ScaleNoDivide), foldedPlain(xd, inverse));
                const auto xf = randomSignal<float>(p, seed);
                expectBits(run(k32[which][inverse], xf, ScaleDivBySqrtN),
                           scaled(folded32(xf, inverse), sqrtScale<float>(p)));
            }
    }
}

// In 64fc the folded length 7 keeps the written order in X0 and in its
// cosine sums (X0 = x0 + ((a1 + a2) + a3), m[k] from x0 upward); the order
// of its sine sums is open. With x[j] = x[7-j] every b[j] is zero, so
// X[k] = X[7-k] = m[k] whatever that order.
TEST(WrittenFormulas, Size7Of64fcCosineSums)
{
    const Kernel64 kernels[2] = {tvkgDFTFwd_CToC_7_64fc, tvkgDFTInv_CToC_7_64fc};
    for (unsigned seed = 0; seed < 100; ++seed) {
        auto x = randomSignal<double>(7, seed);
        for (int j = 1; j <= 3; ++j)
            x[7 - j] = x[j];
        for (int inverse = 0; inverse < 2; ++inverse)
            expectBits(run(kernels[inverse], x, ScaleNoDivide), foldedPlain(x, inverse));
    }
}

// ---- coprime joins: Good-Thomas maps, no twiddles -----------------------------

template <class T>
std::vector<Cx<T>> size2(const std::vector<Cx<T>>& x, bool)
{
    return {x[0] + x[1], x[0] - x[1]};
}

template <class T>
using Stage = std::vector<Cx<T>> (*)(const std::vector<Cx<T>>&, bool);

// Group i2 of the first stage reads x[(n2*i1 + n1*i2) mod N]; output k2 of
// second-stage group k1 lands at the k with k = k1 mod n1, k = k2 mod n2.
template <class T>
std::vector<Cx<T>> goodThomas(const std::vector<Cx<T>>& x, int n1, Stage<T> first, int n2, Stage<T> second,
                              bool inverse)
{
    const int n = n1 * n2;
    std::vector<std::vector<Cx<T>>> Y(n2);
    for (int i2 = 0; i2 < n2; ++i2) {
        std::vector<Cx<T>> group(n1);
        for (int i1 = 0; i1 < n1; ++i1)
            group[i1] = x[(n2 * i1 + n1 * i2) % n];
        Y[i2] = first(group, inverse);
    }
    std::vector<Cx<T>> X(n);
    for (int k1 = 0; k1 < n1; ++k1) {
        std::vector<Cx<T>> row(n2);
        for (int i2 = 0; i2 < n2; ++i2)
            row[i2] = Y[i2][k1];
        const auto Z = second(row, inverse);
        for (int k = 0; k < n; ++k)
            if (k % n1 == k1)
                X[k] = Z[k % n2];
    }
    return X;
}

template <class T, class Kernel>
void expectGoodThomas(Kernel forward, Kernel inverse, int n1, Stage<T> first, int n2, Stage<T> second)
{
    SCOPED_TRACE(testing::Message() << n1 << " then " << n2);
    for (unsigned seed = 0; seed < 20; ++seed) {
        const auto x = randomSignal<T>(n1 * n2, seed);
        expectBits(run(forward, x, ScaleNoDivide), goodThomas<T>(x, n1, first, n2, second, false));
        expectBits(run(inverse, x, ScaleNoDivide), goodThomas<T>(x, n1, first, n2, second, true));
    }
}

TEST(WrittenFormulas, CoprimeJoins)
{
    expectGoodThomas<double>(tvkgDFTFwd_CToC_6_64fc, tvkgDFTInv_CToC_6_64fc, 2, size2, 3, foldedPlain);
    expectGoodThomas<double>(tvkgDFTFwd_CToC_12_64fc, tvkgDFTInv_CToC_12_64fc, 3, foldedPlain, 4, size4);
    expectGoodThomas<double>(tvkgDFTFwd_CToC_15_64fc, tvkgDFTInv_CToC_15_64fc, 5, foldedPlain, 3, foldedPlain);
    expectGoodThomas<double>(tvkgDFTFwd_CToC_20_64fc, tvkgDFTInv_CToC_20_64fc, 5, foldedPlain, 4, size4);
    // 32fc takes the stages of 12 and 20 the other way round.
    expectGoodThomas<float>(tvkgDFTFwd_CToC_6_32fc, tvkgDFTInv_CToC_6_32fc, 2, size2, 3, foldedPlain);
    expectGoodThomas<float>(tvkgDFTFwd_CToC_12_32fc, tvkgDFTInv_CToC_12_32fc, 4, size4, 3, foldedPlain);
    expectGoodThomas<float>(tvkgDFTFwd_CToC_15_32fc, tvkgDFTInv_CToC_15_32fc, 5, foldedPlain, 3, foldedPlain);
    expectGoodThomas<float>(tvkgDFTFwd_CToC_20_32fc, tvkgDFTInv_CToC_20_32fc, 4, size4, 5, foldedPlain);
}

// Size 10 in 32fc: the two 5-point groups read 0, 2, 4, 6, 8 and 5, 7, 9, 1, 3
// (wrap-around), and no twiddle stands between the stages.
TEST(WrittenFormulas, Size10LoadOrder)
{
    const int groups[2][5] = {{0, 2, 4, 6, 8}, {5, 7, 9, 1, 3}};
    for (unsigned seed = 0; seed < 50; ++seed)
        for (bool inverse : {false, true}) {
            const auto x = randomSignal<float>(10, seed);
            std::vector<Cx<float>> Y[2];
            for (int g = 0; g < 2; ++g) {
                std::vector<Cx<float>> group;
                for (int n : groups[g])
                    group.push_back(x[n]);
                Y[g] = foldedPlain(group, inverse);
            }
            std::vector<Cx<float>> X(10);
            for (int k1 = 0; k1 < 5; ++k1) {
                // k = k1 mod 5 and k = 0 or 1 mod 2
                const int even = k1 % 2 == 0 ? k1 : k1 + 5;
                X[even] = Y[0][k1] + Y[1][k1];
                X[(even + 5) % 10] = Y[0][k1] - Y[1][k1];
            }
            expectBits(run(inverse ? tvkgDFTInv_CToC_10_32fc : tvkgDFTFwd_CToC_10_32fc, x, ScaleNoDivide), X);
        }
}

// In 32fc size 3 the product with sin(2*pi/3) is rounded after the product
// in binary64, not by a binary32 constant: inputs whose binary32 evaluation
// differs must give the binary64 answer.
TEST(WrittenFormulas, Size3Of32fcRoundsAfterTheWideProduct)
{
    int differing = 0;
    for (unsigned seed = 0; seed < 200; ++seed) {
        const auto x = randomSignal<float>(3, seed);
        const auto X = run(tvkgDFTFwd_CToC_3_32fc, x, ScaleNoDivide);
        const float u = x[1].re - x[2].re;
        const float narrowProduct = 0.8660254f * u;
        const float wideProduct = static_cast<float>(0.8660254037844386 * static_cast<double>(u));
        differing += narrowProduct != wideProduct;
        // X1.im = m.im - n.re with n.re the rounded binary64 product.
        const float mIm = static_cast<float>(static_cast<double>(x[0].im) - 0.5 * static_cast<double>(x[1].im + x[2].im));
        EXPECT_EQ(X[1].im, mIm - wideProduct);
    }
    EXPECT_GT(differing, 0) << "no input told the two roundings apart";
}

} // namespace
