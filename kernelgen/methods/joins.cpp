#include "methods/joins.h"

#include <stdexcept>
#include <string>

#include "arith/scalar_arith.h"

namespace kernelgen {

namespace {

// The k in 0..n1*n2-1 with k = r1 mod n1 and k = r2 mod n2.
int chineseRemainder(int r1, int n1, int r2, int n2)
{
    for (int k = r1; k < n1 * n2; k += n1)
        if (k % n2 == r2)
            return k;
    throw std::logic_error("factors not coprime");
}

int noTwiddle(int, int) { return 0; }

} // namespace

Signal JoinMap::group(const Signal& x, int i2) const
{
    Signal g(n1);
    for (int i1 = 0; i1 < n1; ++i1)
        g[i1] = x[input(i1, i2)];
    return g;
}

void JoinMap::placeRow(Signal& X, int k1, const Signal& out) const
{
    for (int k2 = 0; k2 < n2; ++k2)
        X[output(k1, k2)] = out[k2];
}

JoinMap twiddledMap(int n1, int n2)
{
    return {n1, n2, [n2](int i1, int i2) { return n2 * i1 + i2; }, [n1](int k1, int k2) { return k1 + n1 * k2; },
            [](int i2, int k1) { return i2 * k1; }, n1 * n2};
}

JoinMap coprimeMap(int n1, int n2)
{
    const int n = n1 * n2;
    chineseRemainder(0, n1, 0, n2); // checks gcd(n1, n2) = 1
    return {n1, n2, [=](int i1, int i2) { return (n2 * i1 + n1 * i2) % n; },
            [=](int k1, int k2) { return chineseRemainder(k1, n1, k2, n2); }, noTwiddle, n};
}

JoinMap interleavedPowerMap(int p, int q)
{
    const int n2 = q * p;
    const int n = p * n2;
    // i2 is the input index of the inner q*p transform: i2 = (p*a + q*b) mod qp
    // with a the q-point and b the p-point index; its output k2 has the
    // residues ka = k2 mod q and kb = k2 mod p.
    const auto pointA = [=](int i2) { return chineseRemainder(i2 % q, q, 0, p) / p; };
    const auto pointB = [=](int i2) { return chineseRemainder(0, q, i2 % p, p) / q; };
    auto check = [&](int i2) {
        if ((p * pointA(i2) + q * pointB(i2)) % n2 != i2)
            throw std::logic_error("bad interleaved map");
    };
    for (int i2 = 0; i2 < n2; ++i2)
        check(i2);
    // The whole: Good-Thomas of q and p*p, whose j = p*j1 + b.
    return {p, n2,
            [=](int j1, int i2) { return (p * p * pointA(i2) + q * (p * j1 + pointB(i2))) % n; },
            [=](int k1, int k2) { return chineseRemainder(k2 % q, q, k1 + p * (k2 % p), p * p); },
            [=](int i2, int k1) { return pointB(i2) * k1; }, p * p};
}

Section groupSection(int i2, int n1, int partner) { return {"first stage", "group", i2, n1, partner}; }

Section rowSection(int k1, int n2, int partner) { return {"second stage", "row", k1, n2, partner}; }

namespace {

// The groups of a join one by one, each twiddled after its transform, and
// the rows across them.
template <class Arith>
struct Groups {
    Arith& ar;
    const Signal& x;
    const JoinMap& map;
    const StageOf<Arith>& firstStage;
    const StageOf<Arith>& secondStage;
    std::vector<Signal> y{};
    std::vector<Signal> rows{};
    Signal X = Signal(map.n1 * map.n2);

    int firstCount() const { return map.n2; }
    Section firstSection(int i2) const { return groupSection(i2, map.n1); }
    void runFirst(int i2)
    {
        Signal& out = y.emplace_back(firstStage.on(i2)(ar, map.group(x, i2)));
        for (int k1 = 1; k1 < static_cast<int>(out.size()); ++k1)
            if (map.twiddle(i2, k1) % map.twiddleDen != 0)
                out[k1] = ar.rotate(out[k1], map.twiddleDen, map.twiddle(i2, k1));
    }
    // Row k1: element k1 of every group.
    void turn()
    {
        rows.assign(y[0].size(), Signal(map.n2));
        for (size_t k1 = 0; k1 < rows.size(); ++k1)
            for (int i2 = 0; i2 < map.n2; ++i2)
                rows[k1][i2] = y[i2][k1];
    }
    int secondCount() const { return static_cast<int>(rows.size()); }
    Section secondSection(int k1) const { return rowSection(k1, map.n2); }
    void runSecond(int k1) { map.placeRow(X, k1, secondStage.on(k1)(ar, rows[k1])); }
};

} // namespace

template <class Arith>
Signal join(Arith& ar, const Signal& x, const JoinMap& map, const std::type_identity_t<StageOf<Arith>>& first,
            const std::type_identity_t<StageOf<Arith>>& second)
{
    if (static_cast<int>(x.size()) != map.n1 * map.n2)
        throw std::logic_error("join of the wrong length");
    if (first.leadingGroups > map.n2 || second.leadingGroups > map.n1)
        throw std::logic_error("more leading groups than the stage has");
    Groups<Arith> groups{ar, x, map, first, second};
    stages(ar.graph(), groups);
    return groups.X;
}

template Signal join<DftArith>(DftArith&, const Signal&, const JoinMap&, const Stage&, const Stage&);
template Signal join<ScalarArith>(ScalarArith&, const Signal&, const JoinMap&, const StageOf<ScalarArith>&,
                                  const StageOf<ScalarArith>&);
template Signal join<ComplexArith>(ComplexArith&, const Signal&, const JoinMap&, const StageOf<ComplexArith>&,
                                   const StageOf<ComplexArith>&);

Signal halvingsAroundOdd(DftArith& ar, const Signal& x, const Transform& odd)
{
    const int q = static_cast<int>(x.size()) / 4;
    if (4 * q != static_cast<int>(x.size()) || q % 2 == 0)
        throw std::logic_error("halvings around an odd stage need N = 4 * odd");
    const JoinMap map = coprimeMap(4, q);
    // rows[k1][i2]: the half sums in rows 0 and 2, the odd outputs of the
    // 4-point stage in rows 1 and 3.
    std::vector<Signal> rows(4, Signal(q));
    for (int i2 = 0; i2 < q; ++i2) {
        const SectionScope section(ar.graph(), {"halving steps", "group", i2});
        const Cx x0 = x[map.input(0, i2)], x1 = x[map.input(1, i2)];
        const Cx x2 = x[map.input(2, i2)], x3 = x[map.input(3, i2)];
        rows[0][i2] = ar.add(x0, x2);
        rows[2][i2] = ar.add(x1, x3);
        const Cx b = ar.sub(x0, x2);
        const Cx wd = ar.timesW4(ar.sub(x1, x3));
        rows[1][i2] = ar.add(b, wd);
        rows[3][i2] = ar.sub(b, wd);
    }
    for (int k1 = 0; k1 < 4; ++k1) {
        const SectionScope section(ar.graph(), {"odd stage", "row", k1, q});
        rows[k1] = odd(ar, rows[k1]);
    }
    Signal X(4 * q);
    const SectionScope section(ar.graph(), {"last 2-point butterflies of the even outputs"});
    for (int k2 = 0; k2 < q; ++k2) {
        X[map.output(0, k2)] = ar.add(rows[0][k2], rows[2][k2]);
        X[map.output(2, k2)] = ar.sub(rows[0][k2], rows[2][k2]);
        X[map.output(1, k2)] = rows[1][k2];
        X[map.output(3, k2)] = rows[3][k2];
    }
    return X;
}

} // namespace kernelgen
