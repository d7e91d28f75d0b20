// The Walsh-Hadamard kernels' own descriptions, run on a counting vector
// type: vector operations per order as budgeted, shuffles only where the
// factorisation transposes, src read and dst written once. Each run's bytes
// must equal the exported kernel's, so the counted description is the
// shipped one. What the work buffer may hold and where it is written, and
// that src is read before dst (or a buffer over src) is written, test_wht
// checks on the kernels themselves.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "test_support.h"
#include "wht_kernel.h"

namespace {

struct Tally {
    long addSub = 0, mul = 0, shuffle = 0, srcLoads = 0, dstStores = 0;
};
Tally tally;

template <class RealType>
struct CountingOps {
    using Real = RealType;
    static constexpr int kLanes = 16 / sizeof(Real);
    struct V {
        Real lane[kLanes];
    };

    template <class Op>
    static V laneWise(V a, V b, long& count, Op op)
    {
        ++count;
        for (int i = 0; i < kLanes; ++i)
            a.lane[i] = op(a.lane[i], b.lane[i]);
        return a;
    }
    static V add(V a, V b) { return laneWise(a, b, tally.addSub, [](Real x, Real y) { return x + y; }); }
    static V sub(V a, V b) { return laneWise(a, b, tally.addSub, [](Real x, Real y) { return x - y; }); }
    static V mul(V a, V b) { return laneWise(a, b, tally.mul, [](Real x, Real y) { return x * y; }); }
    static V broadcast(Real x)
    {
        V v;
        std::fill(v.lane, v.lane + kLanes, x);
        return v;
    }
    // (a0, b0, a1, b1) / (a2, b2, a3, b3) in four lanes, (a0, b0) / (a1, b1) in two.
    static V unpackLo(V a, V b) { return interleave(a, b, 0); }
    static V unpackHi(V a, V b) { return interleave(a, b, kLanes / 2); }
    static V moveLowHalves(V a, V b) { return ++tally.shuffle, V{{a.lane[0], a.lane[1], b.lane[0], b.lane[1]}}; }
    static V moveHighHalves(V a, V b) { return ++tally.shuffle, V{{a.lane[2], a.lane[3], b.lane[2], b.lane[3]}}; }

    // The buffer's moves.
    static V load(const Real* p)
    {
        V v;
        std::memcpy(v.lane, p, sizeof v.lane);
        return v;
    }
    static void store(Real* p, V v) { std::memcpy(p, v.lane, sizeof v.lane); }

private:
    static V interleave(V a, V b, int from)
    {
        ++tally.shuffle;
        V v;
        for (int i = 0; i < kLanes / 2; ++i) {
            v.lane[2 * i] = a.lane[from + i];
            v.lane[2 * i + 1] = b.lane[from + i];
        }
        return v;
    }
};

// Moves of src and dst, which the counting passes tell apart from the
// buffer's.
template <class Ops>
struct CountingAccess {
    static typename Ops::V load(const typename Ops::Real* p) { return ++tally.srcLoads, Ops::load(p); }
    static void store(typename Ops::Real* p, typename Ops::V v) { ++tally.dstStores, Ops::store(p, v); }
};

template <class Real, int Order>
void countOrder()
{
    SCOPED_TRACE(std::string(sizeof(Real) == 8 ? "64f" : "32f") + " order " + std::to_string(Order));
    using Ops = CountingOps<Real>;
    constexpr int n = 1 << Order, lanes = Ops::kLanes;
    const auto input = tvktest::randomReals<Real>(n, 300 + Order);
    std::vector<Real> out(n), shipped(n);
    const Real scale = tvkgen::wht::kScales<Real, Order>[2];
    alignas(16) static unsigned char buffer[73728];
    tally = Tally{};
    if constexpr (Order < tvkgen::wht::kFirstBufferedOrder)
        tvkgen::wht::vectorBody<Ops, Order, CountingAccess<Ops>>(input.data(), out.data(), scale);
    else
        tvkgen::wht::passes<Ops, Order, CountingAccess<Ops>>(input.data(), out.data(), scale,
                                                             reinterpret_cast<Real*>(buffer));

    if constexpr (sizeof(Real) == 8) {
        ASSERT_EQ(tvkgWHT_64f(input.data(), shipped.data(), Order, ScaleDivBySqrtN, nullptr), StatusOk);
    } else {
        ASSERT_EQ(tvkgWHT_32f(input.data(), shipped.data(), Order, ScaleDivBySqrtN, nullptr), StatusOk);
    }
    EXPECT_TRUE(tvktest::sameBits(out.data(), shipped.data(), n)) << "counted description differs from the kernel";

    // N * order / L vector additions and subtractions and N / L products;
    // two transpositions of every vector at L / 2 shuffles each: N shuffles.
    EXPECT_EQ(tally.addSub, long{n} * Order / lanes);
    EXPECT_EQ(tally.mul, n / lanes);
    EXPECT_EQ(tally.shuffle, n);
    EXPECT_EQ(tally.srcLoads, n / lanes);
    EXPECT_EQ(tally.dstStores, n / lanes);
}

// The vector orders: 3 to 13 in 64f, 4 to 13 in 32f.
template <class Real, int First>
void countOrdersFrom()
{
    [&]<int... I>(std::integer_sequence<int, I...>) {
        (countOrder<Real, First + I>(), ...);
    }(std::make_integer_sequence<int, 14 - First>{});
}

TEST(WhtCount, OperationsAndMemoryOfTheFactorisation)
{
    countOrdersFrom<float, 4>();
    countOrdersFrom<double, 3>();
}

} // namespace
