// Running DCT-IV plans: results against long-double oracles at every power
// of two from 2 to 2^17, the inverse property, bit-identical repeated,
// in-place and misaligned runs, statuses, the work matrix of length 64, the
// accepted odd lengths, and threads.
#include <gtest/gtest.h>

#ifdef TVKGEN_TEST_FFTWL
#include <fftw3.h>
#endif

#include <cmath>
#include <cstring>
#include <vector>

#include "plan_nodes.h"
#include "test_support.h"
#include "dct4_api.h"
#include "tvkgen.h"

namespace {

template <class Real>
using Api = tvktest::Dct4Api<Real>;

// A plan in a block of its own.
template <class Real>
struct OwnedPlan {
    explicit OwnedPlan(int len)
    {
        int32_t size = 0;
        EXPECT_EQ(Api<Real>::getSize(len, &size), StatusOk) << "len " << len;
        mem.resize(size);
        EXPECT_EQ(Api<Real>::init(&plan, len, mem.data()), StatusOk) << "len " << len;
    }
    std::vector<Real> operator()(const std::vector<Real>& x) const
    {
        std::vector<Real> y(x.size());
        EXPECT_EQ(Api<Real>::run(x.data(), y.data(), plan), StatusOk);
        return y;
    }
    std::vector<uint8_t> mem;
    typename Api<Real>::Plan* plan = nullptr;
};

// Longest length the direct sum checks; longer ones need FFTW's long-double
// REDFT11, when it is installed.
constexpr int kLongestDirect = 4096;

// y[k] = sum x[n] cos(pi/N (n + 1/2)(k + 1/2)) in long double. The direct sum
// takes its cosines from a table over the 8N values of (2n + 1)(2k + 1);
// REDFT11 gives twice the sum. Empty when neither is at hand.
std::vector<long double> oracle(const std::vector<long double>& x)
{
    const int n = static_cast<int>(x.size());
    std::vector<long double> y(n);
    if (n <= kLongestDirect) {
        const long double pi = 3.141592653589793238462643383279502884L;
        std::vector<long double> cosine(8 * n);
        for (int m = 0; m < 8 * n; ++m)
            cosine[m] = std::cos(pi * m / (4.0L * n));
        for (int k = 0; k < n; ++k)
            for (int i = 0; i < n; ++i)
                y[k] += x[i] * cosine[(int64_t(2 * i + 1) * (2 * k + 1)) % (8 * n)];
        return y;
    }
#ifdef TVKGEN_TEST_FFTWL
    std::vector<long double> in(x);
    fftwl_plan p = fftwl_plan_r2r_1d(n, in.data(), y.data(), FFTW_REDFT11, FFTW_ESTIMATE);
    fftwl_execute(p);
    fftwl_destroy_plan(p);
    for (long double& v : y)
        v /= 2;
    return y;
#else
    return {};
#endif
}

template <class Real>
class Dct4Run : public ::testing::Test {};
using RealTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Dct4Run, RealTypes);

// Every power of two from 2 to 2^17, each plan built once. Inputs uniform
// in -1..1; the error bound grows like sqrt(N) log2(N) units of the element
// type, which holds 1e-6 at N = 64 and 2e-5 at 4096 in binary32 with room
// to spare. Run twice, a plan gives N/2 times the input. Repeated, in-place
// and element-misaligned runs give the same bytes, and an out-of-place run
// leaves src alone.
TYPED_TEST(Dct4Run, EveryPowerOfTwo)
{
    const double eps = std::numeric_limits<TypeParam>::epsilon();
    for (int n = 2; n <= (1 << 17); n *= 2) {
        const OwnedPlan<TypeParam> plan(n);
        const std::vector<TypeParam> x = tvktest::randomReals<TypeParam>(n, 17 + n);
        const std::vector<TypeParam> y = plan(x);
        const std::vector<long double> exact = oracle(std::vector<long double>(x.begin(), x.end()));
        if (!exact.empty()) { // else beyond the direct sum, and no long-double FFTW in this build
            long double worst = 0;
            for (int k = 0; k < n; ++k)
                worst = std::max(worst, std::fabs(y[k] - exact[k]));
            const double bound = 2 * eps * std::sqrt(double(n)) * std::max(1.0, std::log2(double(n)));
            EXPECT_LT(worst, bound) << "len " << n;
            if (sizeof(TypeParam) == 4 && (n == 64 || n == 4096)) {
                EXPECT_LT(worst, n == 64 ? 1.5e-6 : 3e-5);
            }
        }

        const std::vector<TypeParam> z = plan(y);
        double worst = 0;
        for (int i = 0; i < n; ++i)
            worst = std::max(worst, std::fabs(double(z[i]) - n / 2.0 * x[i]));
        EXPECT_LT(worst, 4 * eps * n * std::sqrt(double(n))) << "twice, len " << n;

        EXPECT_TRUE(tvktest::sameBits(y.data(), plan(x).data(), n)) << "second run, len " << n;
        std::vector<TypeParam> inPlace(x);
        ASSERT_EQ(Api<TypeParam>::run(inPlace.data(), inPlace.data(), plan.plan), StatusOk);
        EXPECT_TRUE(tvktest::sameBits(y.data(), inPlace.data(), n)) << "in place, len " << n;
        for (int shiftSrc : {0, 1})
            for (int shiftDst : {0, 1}) {
                std::vector<TypeParam> src(n + 1), dst(n + 1);
                std::copy(x.begin(), x.end(), src.begin() + shiftSrc);
                const std::vector<TypeParam> before(src);
                ASSERT_EQ(Api<TypeParam>::run(src.data() + shiftSrc, dst.data() + shiftDst, plan.plan), StatusOk);
                EXPECT_TRUE(tvktest::sameBits(y.data(), dst.data() + shiftDst, n))
                    << "shifted by " << shiftSrc << ", " << shiftDst << ", len " << n;
                EXPECT_TRUE(tvktest::sameBits(before.data(), src.data(), n + 1));
            }
    }
}

TYPED_TEST(Dct4Run, StatusesLeaveDstUntouched)
{
    for (int n : {16, 64}) {
        OwnedPlan<TypeParam> plan(n);
        std::vector<TypeParam> x(n, 1), y(n, 7);
        EXPECT_EQ(Api<TypeParam>::run(x.data(), y.data(), nullptr), StatusNullPointer);
        EXPECT_EQ(Api<TypeParam>::run(nullptr, y.data(), plan.plan), StatusNullPointer);
        EXPECT_EQ(Api<TypeParam>::run(x.data(), nullptr, plan.plan), StatusNullPointer);
        auto* root = reinterpret_cast<tvkgen::dct4::Dct4Plan*>(plan.plan);
        for (int damaged : {0, 7, -1}) {
            const int32_t kind = root->kind;
            root->kind = damaged;
            EXPECT_EQ(Api<TypeParam>::run(x.data(), y.data(), plan.plan), StatusBadArgument);
            root->kind = kind;
        }
        EXPECT_EQ(y, std::vector<TypeParam>(n, 7));
    }
}

// The root's work matrix of length 64: 8 rows of 8 columns, real parts of
// column c in the even rows, imaginary parts in the odd ones.
TYPED_TEST(Dct4Run, WorkMatrixOfLength64)
{
    OwnedPlan<TypeParam> plan(64);
    auto* root = reinterpret_cast<tvkgen::dct4::Dct4Plan*>(plan.plan);
    const TypeParam* work = reinterpret_cast<const TypeParam*>(plan.mem.data() + root->work);
    for (int impulse : {0, 15}) {
        std::vector<TypeParam> x(64, 0);
        x[impulse] = 1;
        plan(x);
        for (int i = 0; i < 64; ++i) {
            const bool reached = impulse == 0 ? i % 16 == 0 : i % 8 == 0;
            if (impulse == 0) {
                EXPECT_EQ(work[i], reached ? 1 : 0) << "element " << i;
            } else {
                EXPECT_EQ(work[i] != 0, reached) << "element " << i;
            }
        }
    }
}

// A plan of 2^k + 1 runs the tree of 2^k with N one larger in its fields:
// it reads x[N], writes y[N] and leaves some outputs alone.
TEST(Dct4Run, AcceptedOddLengthTouchesWhatItsFieldsSay)
{
    const int n = 33;
    OwnedPlan<float> plan(n);
    std::vector<float> x = tvktest::randomReals<float>(n + 1, 9);
    std::vector<float> y(n + 1, -99.0f);
    ASSERT_EQ(tvkgDCT4_32f(x.data(), y.data(), plan.plan), StatusOk);
    for (int k = 0; k <= n; ++k) {
        const bool untouched = k == 4 || k == 5 || k == 12 || k == 13 || k == 20 || k == 21 || k == 28 || k == 29;
        EXPECT_EQ(y[k] == -99.0f, untouched) << "element " << k;
    }
}

// Plans of 2 to 32 are read-only and may be shared; longer ones are used
// one per thread. Either way every thread gets the bytes of one thread.
TYPED_TEST(Dct4Run, ThreadsGetTheBytesOfOneThread)
{
    for (int n : {2, 8, 32, 64, 4096}) {
        const std::vector<TypeParam> x = tvktest::randomReals<TypeParam>(n, 11 * n);
        const OwnedPlan<TypeParam> shared(n);
        EXPECT_TRUE(tvktest::threadsGiveTheResultOfOne([&](int) {
            const OwnedPlan<TypeParam> own(n);
            std::vector<TypeParam> y;
            for (int round = 0; round < 50; ++round)
                y = (n <= 32 ? shared : own)(x);
            const auto* bytes = reinterpret_cast<const unsigned char*>(y.data());
            return std::vector<unsigned char>(bytes, bytes + n * sizeof(TypeParam));
        })) << "len " << n;
    }
}

} // namespace
