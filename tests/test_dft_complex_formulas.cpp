// The kernels whose steps are written out here, evaluated in their order
// and precision, must give the kernels' bits exactly under every flag (the
// factor is one last product): sizes 2 to 5, 8, the 64fc cosine sums of 7,
// and the coprime joins 6, 10 (32fc), 12, 15 and 20.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <map>
#include <type_traits>
#include <vector>

#include "complex_kernels.h"
#include "test_support.h"

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

// ---- sizes 2, 4 and 8 --------------------------------------------------------

template <class T>
std::vector<Cx<T>> size2(const std::vector<Cx<T>>& x, bool)
{
    return {x[0] + x[1], x[0] - x[1]};
}

template <class T>
std::vector<Cx<T>> size4(const std::vector<Cx<T>>& x, bool inverse)
{
    const auto a = x[0] + x[2], b = x[0] - x[2], c = x[1] + x[3], d = x[1] - x[3];
    const auto rd = inverse ? plusI(d) : minusI(d);
    return {a + c, b + rd, a - c, b - rd};
}

// 64fc: the road with W8 on the pair differences.
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

// 32fc: 4-point groups in lanes, full complex twiddle products.
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

// ---- the folded form: 3, 5 and 7 ---------------------------------------------

// a[j] = x[j] + x[p-j], b[j] = x[j] - x[p-j]; m[k] from x0 upward and n[k]
// from j = 1 on, in S from exactly widened operands, each rounded to T
// once; X[k] and X[p-k] are m[k] -+ i n[k] in T. The vector codelets of both
// types take S = T and X0 = x0 + (a1 + a2 + ...); the scalar 32fc 3 and 5
// take binary64 statements and X0 = (x0 + a1) + a2.
template <class T, class S>
std::vector<Cx<T>> folded(const std::vector<Cx<T>>& x, bool inverse)
{
    const int p = static_cast<int>(x.size()), h = (p - 1) / 2;
    const auto wide = [](Cx<T> v) { return Cx<S>{v.re, v.im}; };
    const auto round = [](Cx<S> v) { return Cx<T>{static_cast<T>(v.re), static_cast<T>(v.im)}; };
    std::vector<Cx<T>> a(h + 1), b(h + 1), X(p);
    for (int j = 1; j <= h; ++j) {
        a[j] = x[j] + x[p - j];
        b[j] = x[j] - x[p - j];
    }
    Cx<T> sum = std::is_same_v<T, S> ? a[1] : x[0] + a[1];
    for (int j = 2; j <= h; ++j)
        sum = sum + a[j];
    X[0] = std::is_same_v<T, S> ? x[0] + sum : sum;
    for (int k = 1; k <= h; ++k) {
        Cx<S> m = wide(x[0]), n = static_cast<S>(sinOf(p, k)) * wide(b[1]);
        for (int j = 1; j <= h; ++j)
            m = m + static_cast<S>(cosOf(p, j * k)) * wide(a[j]);
        for (int j = 2; j <= h; ++j)
            n = n + static_cast<S>(sinOf(p, j * k)) * wide(b[j]);
        const auto r = inverse ? plusI(round(n)) : minusI(round(n));
        X[k] = round(m) + r;
        X[p - k] = round(m) - r;
    }
    return X;
}

// ---- coprime joins: Good-Thomas maps, no twiddles -----------------------------

template <class T>
using Steps = std::vector<Cx<T>> (*)(const std::vector<Cx<T>>&, bool);

// Group i2 of the first stage (size n1) reads x[(n2*i1 + n1*i2) mod N];
// output k2 of second-stage group k1 lands at the k with k = k1 mod n1,
// k = k2 mod n2.
template <class T, int n1, Steps<T> first, int n2, Steps<T> second>
std::vector<Cx<T>> goodThomas(const std::vector<Cx<T>>& x, bool inverse)
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
        for (int k = k1; k < n; k += n1)
            X[k] = Z[k % n2];
    }
    return X;
}

// ---- the table ----------------------------------------------------------------

// Steps of one kernel size; `mirrored` inputs (x[j] = x[N-j]) make every b[j]
// zero, so that X[k] = X[N-k] = m[k] whatever the open order of the sine sums.
template <class T>
struct Written {
    Steps<T> steps;
    bool mirrored = false;
};

template <class T>
using Table = std::map<int, Written<T>>;

constexpr Steps<float> fold32 = folded<float, float>;
constexpr Steps<double> fold64 = folded<double, double>;

// 32fc takes the stages of 12 and 20 the other way round; its 10 reads the
// 5-point groups 0, 2, 4, 6, 8 and 5, 7, 9, 1, 3 (wrap-around).
const Table<float> kWritten32 = {
    {2, {size2<float>}}, {3, {folded<float, double>}}, {4, {size4<float>}}, {5, {folded<float, double>}},
    {6, {goodThomas<float, 2, size2<float>, 3, fold32>}}, {8, {size8Lanes32}},
    {10, {goodThomas<float, 5, fold32, 2, size2<float>>}}, {12, {goodThomas<float, 4, size4<float>, 3, fold32>}},
    {15, {goodThomas<float, 5, fold32, 3, fold32>}}, {20, {goodThomas<float, 4, size4<float>, 5, fold32>}},
};
const Table<double> kWritten64 = {
    {2, {size2<double>}}, {3, {fold64}}, {4, {size4<double>}}, {5, {fold64}},
    {6, {goodThomas<double, 2, size2<double>, 3, fold64>}}, {7, {fold64, true}}, {8, {size8Road64}},
    {12, {goodThomas<double, 3, fold64, 4, size4<double>>}}, {15, {goodThomas<double, 5, fold64, 3, fold64>}},
    {20, {goodThomas<double, 5, fold64, 4, size4<double>>}},
};

template <class T>
void expectWrittenSteps(const ComplexKernel& k, const Written<T>& written)
{
    for (int flag : kGoodFlags)
        for (unsigned seed = 0; seed < 50; ++seed) {
            SCOPED_TRACE(testing::Message() << "flag " << flag << " seed " << seed);
            std::vector<Cx<T>> x(k.size);
            std::memcpy(x.data(), randomReals<T>(2 * k.size, seed).data(), sizeof(Cx<T>) * k.size);
            if (written.mirrored)
                for (int j = 1; 2 * j < k.size; ++j)
                    x[k.size - j] = x[j];
            std::vector<Cx<T>> got(k.size);
            ASSERT_EQ(k.run(x.data(), got.data(), flag), StatusOk);
            auto want = written.steps(x, k.inverse);
            for (int i = 0; i < k.size; ++i) {
                want[i] = static_cast<T>(scaleOf(k, flag)) * want[i];
                EXPECT_TRUE(sameBits(&got[i], &want[i], 1)) << "X[" << i << "]: " << got[i].re << ", " << got[i].im
                                                            << " vs " << want[i].re << ", " << want[i].im;
            }
        }
}

class ComplexWrittenStepsTest : public ::testing::TestWithParam<ComplexKernel> {};

TEST_P(ComplexWrittenStepsTest, BitForBit)
{
    const ComplexKernel& k = GetParam();
    if (k.is64())
        expectWrittenSteps<double>(k, kWritten64.at(k.size));
    else
        expectWrittenSteps<float>(k, kWritten32.at(k.size));
}

bool isWrittenOut(const ComplexKernel& k)
{
    return (k.is64() ? kWritten64.count(k.size) : kWritten32.count(k.size)) > 0;
}

INSTANTIATE_TEST_SUITE_P(WrittenOut, ComplexWrittenStepsTest,
                         ::testing::ValuesIn(kernelsWhere(builtComplexKernels(), isWrittenOut)), ByLabel());

} // namespace
