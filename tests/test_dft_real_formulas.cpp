// The kernels on real data whose steps are written out here, bit for bit:
// forward 2, 3, 4, 5, 8 (and in binary32 the direct folding of 7 and 11),
// inverse 2, 3, 4, 8 (in binary32 also the folding of 5 and 7), Hartley 2
// to 5 and 8. Binary64 kernels round every operation to binary64. Binary32
// kernels evaluate a statement with a product by a (binary64) constant in
// binary64 from exactly widened operands and round it once when it is
// stored; the other sums, and the factor, are binary32.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "real_kernels.h"
#include "test_support.h"

using namespace tvktest;

namespace {

using W = double; // the type of statements with a constant product

// A forward statement that ends in an output: v times the factor, negated
// as 0 - v where the graph yields -I, rounded to T once.
template <class T>
T output(W v, T f, bool negate)
{
    const W scaled = v * W(f);
    return static_cast<T>(negate ? 0 - scaled : scaled);
}

// The CCS cells: R[k] and I[k], k = 0 .. n/2.
template <class T>
std::vector<T> forwardSteps(int n, const std::vector<T>& x, T f)
{
    std::vector<T> X(n + 2, T(0));
    const auto re = [&X](int k) -> T& { return X[2 * k]; };
    const auto im = [&X](int k) -> T& { return X[2 * k + 1]; };
    switch (n) {
    case 2:
        re(0) = (x[0] + x[1]) * f;
        re(1) = (x[0] - x[1]) * f;
        break;
    case 4: {
        const T a = x[0] + x[2], b = x[0] - x[2], c = x[1] + x[3], d = x[1] - x[3];
        re(0) = (a + c) * f;
        re(2) = (a - c) * f;
        re(1) = b * f;
        im(1) = T(0) - d * f;
        break;
    }
    case 8: {
        T a[4], b[4];
        for (int i = 0; i < 4; ++i) {
            a[i] = x[i] + x[i + 4];
            b[i] = x[i] - x[i + 4];
        }
        const T e = a[0] + a[2], g = a[1] + a[3];
        re(0) = (e + g) * f;
        re(4) = (e - g) * f;
        re(2) = (a[0] - a[2]) * f;
        im(2) = T(0) - (a[1] - a[3]) * f;
        // Products alone, each rounded to T; the sums after them in T.
        const T p = static_cast<T>(cosOf(8, 1) * W(b[1])), q = static_cast<T>(cosOf(8, 1) * W(b[3]));
        const T u = p - q, v = p + q;
        re(1) = (b[0] + u) * f;
        re(3) = (b[0] - u) * f;
        im(1) = T(0) - (b[2] + v) * f;
        im(3) = T(0) - (v - b[2]) * f;
        break;
    }
    default: {
        // Direct folding (3 and 5, and 7 and 11 in binary32): each output
        // one statement (x[0] and the products, then the factor and the
        // 0 - v) rounded once, so that the order of its sums, which is free
        // from 7 on, shows only through that rounding. a[j], b[j] and the
        // zero bin are of type T.
        const int h = (n - 1) / 2;
        std::vector<T> a(h + 1), b(h + 1);
        T zero = T(0);
        for (int j = 1; j <= h; ++j) {
            a[j] = x[j] + x[n - j];
            b[j] = x[j] - x[n - j];
            zero = j == 1 ? a[1] : zero + a[j];
        }
        re(0) = (x[0] + zero) * f;
        for (int k = 1; k <= h; ++k) {
            W m = W(x[0]), t = 0;
            for (int j = 1; j <= h; ++j) {
                m += cosOf(n, j * k) * W(a[j]);
                t += sinOf(n, j * k) * W(b[j]);
            }
            re(k) = output<T>(m, f, false);
            im(k) = output<T>(t, f, true);
        }
        break;
    }
    }
    return X;
}

// y from the CCS cells: every interior cell doubled first in T; the last
// sum before an output and the factor in T. Folding from 5 on leaves y[0],
// a binary32 sum in an open order, unpinned (left out of the result).
template <class T>
std::vector<std::optional<T>> inverseSteps(int n, const std::vector<T>& cells, T f)
{
    const auto R = [&](int k) { return cells[2 * k]; };
    const auto r = [&](int k) { return T(2) * cells[2 * k]; };
    const auto i = [&](int k) { return T(2) * cells[2 * k + 1]; };
    const auto product = [](double c, T v) { return static_cast<T>(c * W(v)); };
    std::vector<std::optional<T>> y(n);
    switch (n) {
    case 2: y = {R(0) + R(1), R(0) - R(1)}; break;
    case 4: {
        const T p = R(0) + R(2), q = R(0) - R(2), a = r(1), b = i(1);
        y = {p + a, q - b, p - a, q + b};
        break;
    }
    case 8: {
        const T p = R(0) + R(4), q = R(0) - R(4);
        const T A = p + r(2), B = p - r(2), C = q + i(2), D = q - i(2);
        const T E = r(1) + r(3), F = r(1) - r(3), G = i(1) + i(3), H = i(1) - i(3);
        const T u = product(cosOf(8, 1), F), v = product(cosOf(8, 1), G), s = u + v, t = u - v;
        y = {A + E, D + t, B - H, C - s, A - E, D - t, B + H, C + s};
        break;
    }
    default: // direct folding: A[m] and B[m] each one statement
        if (n == 3)
            y[0] = r(1) + R(0);
        for (int m = 1; 2 * m < n; ++m) {
            W A = R(0), B = 0;
            for (int k = 1; 2 * k < n; ++k) {
                A += cosOf(n, m * k) * W(r(k));
                B += sinOf(n, m * k) * W(i(k));
            }
            y[m] = static_cast<T>(A) - static_cast<T>(B);
            y[n - m] = static_cast<T>(A) + static_cast<T>(B);
        }
    }
    for (auto& v : y)
        if (v)
            *v *= f;
    return y;
}

// A kernel's input and the output cells its written steps pin.
template <class T>
struct Steps {
    std::vector<T> input;
    std::vector<std::optional<T>> out;
};

template <class T>
Steps<T> writtenSteps(const RealKernel& k, unsigned seed, T f)
{
    const int n = k.size;
    Steps<T> s{std::vector<T>(k.inCells()), std::vector<std::optional<T>>(k.outCells())};
    if (k.family == RealFamily::Inverse) {
        const std::vector<T> ccs = randomReals<T>(n + 2, 500 + seed, T(-4), T(4));
        toLayout(ccs, k.layout, n, s.input);
        s.out = inverseSteps<T>(n, ccs, f);
        return s;
    }
    s.input = randomReals<T>(n, (k.family == RealFamily::Forward ? 300 : 600) + seed, T(-4), T(4));
    if (k.family == RealFamily::Forward) {
        toLayout(forwardSteps<T>(n, s.input, f), k.layout, n, s.out);
        return s;
    }
    // Hartley: the forward steps without factor or negation give the parts
    // P = R[k] and Q = -I[k], each rounded; H[k] = P + Q and H[N-k] = P - Q
    // in T, then the factor.
    const std::vector<T> X = forwardSteps<T>(n, s.input, T(1));
    for (int b = 0; 2 * b <= n; ++b) {
        const bool edge = b == 0 || 2 * b == n;
        s.out[b] = (edge ? X[2 * b] : X[2 * b] - X[2 * b + 1]) * f;
        if (!edge)
            s.out[n - b] = (X[2 * b] + X[2 * b + 1]) * f;
    }
    return s;
}

template <class T>
void expectWrittenSteps(const RealKernel& k)
{
    for (int flag : kGoodFlags)
        for (unsigned seed = 0; seed < 20; ++seed) {
            const Steps<T> s = writtenSteps<T>(k, seed, static_cast<T>(scaleOf(k, flag)));
            std::vector<T> got(k.outCells());
            ASSERT_EQ(k.run(s.input.data(), got.data(), flag), StatusOk);
            for (int c = 0; c < k.outCells(); ++c)
                if (s.out[c]) {
                    EXPECT_EQ(0, std::memcmp(&got[c], &*s.out[c], sizeof(T)))
                        << "cell " << c << " flag " << flag << " seed " << seed << ": " << got[c] << " vs "
                        << *s.out[c];
                }
        }
}

class RealWrittenStepsTest : public ::testing::TestWithParam<RealKernel> {};

TEST_P(RealWrittenStepsTest, BitForBit)
{
    const RealKernel& k = GetParam();
    if (k.is64())
        expectWrittenSteps<double>(k);
    else
        expectWrittenSteps<float>(k);
}

// The steps tell their rounding points from the nearest other ones: on
// some inputs forward size 5 in plain binary32 (products and sums rounded
// one by one) gives other bits than the kernel, and so does a Hartley
// butterfly on unrounded parts.
TEST(RealWrittenSteps, Size5RoundingPointsShowInTheBits)
{
    const RealKernel forward = realKernel(RealFamily::Forward, "32f", 5, Layout::CCS);
    const RealKernel hartley = realKernel(RealFamily::Hartley, "32f", 5, Layout::CCS);
    int plainDiffers = 0, unroundedDiffers = 0;
    for (unsigned seed = 0; seed < 50; ++seed) {
        const std::vector<float> x = randomReals<float>(5, 400 + seed, -4.0f, 4.0f);
        std::vector<float> X(6), H(5);
        ASSERT_EQ(forward.run(x.data(), X.data(), ScaleNoDivide), StatusOk);
        ASSERT_EQ(hartley.run(x.data(), H.data(), ScaleNoDivide), StatusOk);
        const float a1 = x[1] + x[4], a2 = x[2] + x[3], b1 = x[1] - x[4], b2 = x[2] - x[3];
        plainDiffers += X[2] != (x[0] + 0.309017f * a1) - 0.809017f * a2;
        const W p = (W(x[0]) + cosOf(5, 1) * a1) + cosOf(5, 2) * a2, q = sinOf(5, 1) * b1 + sinOf(5, 2) * b2;
        unroundedDiffers += H[1] != static_cast<float>(p + q);
    }
    EXPECT_GT(plainDiffers, 0);
    EXPECT_GT(unroundedDiffers, 0);
}

// Sizes written out, by family: in binary64, and in binary32.
const std::map<RealFamily, std::set<int>> kWritten64 = {{RealFamily::Forward, {2, 3, 4, 5, 8}},
                                                        {RealFamily::Inverse, {2, 3, 4, 8}},
                                                        {RealFamily::Hartley, {2, 3, 4, 5, 8}}};
const std::map<RealFamily, std::set<int>> kWritten32 = {{RealFamily::Forward, {2, 3, 4, 5, 7, 8, 11}},
                                                        {RealFamily::Inverse, {2, 3, 4, 5, 7, 8}},
                                                        {RealFamily::Hartley, {2, 3, 4, 5, 8}}};

bool isWrittenOut(const RealKernel& k) { return (k.is64() ? kWritten64 : kWritten32).at(k.family).count(k.size) > 0; }

INSTANTIATE_TEST_SUITE_P(WrittenOut, RealWrittenStepsTest,
                         ::testing::ValuesIn(kernelsWhere(allRealKernels(), isWrittenOut)), ByLabel());

} // namespace
