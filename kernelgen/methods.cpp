#include "methods.h"

#include <algorithm>
#include <stdexcept>

namespace kernelgen {

PairedInput binsOf(ComplexArith& ar, const Signal& x)
{
    const int n = static_cast<int>(x.size());
    return {n, [x](int k) { return x[k]; },
            [&ar, x, n](int k) { return SumDif{ar.add(x[k], x[(n - k) % n]), ar.sub(x[k], x[(n - k) % n])}; }};
}

void PairedOutput::setPair(int k, Cx h, Cx d)
{
    const int partner = (size() - k) % size();
    if (partner == k)
        throw std::logic_error("a bin that is its own partner");
    const int lower = std::min(k, partner);
    open[lower] = true;
    half[lower] = h;
    diff[lower] = k == lower ? d : ComplexArith::neg(d);
}

void PairedOutput::setFactoredPair(int k, Cx h, Cx d, Cx b, Trig f)
{
    setPair(k, h, d);
    const int lower = std::min(k, (size() - k) % size());
    base[lower] = k == lower ? b : ComplexArith::neg(b);
    factor[lower] = f;
}

Trig PairedOutput::factorAt(int k) const { return factor[std::min(k, (size() - k) % size())]; }

Cx PairedOutput::baseAt(int k) const
{
    const int partner = (size() - k) % size();
    return k <= partner ? base[k] : ComplexArith::neg(base[partner]);
}

bool PairedOutput::isOpen(int k) const { return open[std::min(k, (size() - k) % size())]; }

Cx PairedOutput::halfAt(int k) const { return half[std::min(k, (size() - k) % size())]; }

Cx PairedOutput::diffAt(int k) const
{
    const int partner = (size() - k) % size();
    return k <= partner ? diff[k] : ComplexArith::neg(diff[partner]);
}

Signal close(ComplexArith& ar, const PairedOutput& y)
{
    Signal X = y.bin;
    for (int k = 0; k < y.size(); ++k)
        if (y.open[k]) {
            X[k] = ar.add(y.half[k], y.diff[k]);
            X[y.size() - k] = ar.sub(y.half[k], y.diff[k]);
        }
    return X;
}

Signal dft2(ComplexArith& ar, const Signal& x)
{
    return {ar.add(x[0], x[1]), ar.sub(x[0], x[1])};
}

PairedOutput dft4Pairs(ComplexArith& ar, const PairedInput& x)
{
    const Cx x0 = x.bin(0), x2 = x.bin(2);
    const Cx a = ar.add(x0, x2);
    const Cx b = ar.sub(x0, x2);
    const SumDif cd = x.pair(1);
    PairedOutput X(4);
    X.bin[0] = ar.add(a, cd.sum);
    X.bin[2] = ar.sub(a, cd.sum);
    X.setPair(1, b, ar.timesW4(cd.dif));
    return X;
}

Signal dft4(ComplexArith& ar, const Signal& x) { return close(ar, dft4Pairs(ar, binsOf(ar, x))); }

// X[k] = m[k] + W4*n[k], X[p-k] = m[k] - W4*n[k] with
// m[k] = x0 + sum_j cos(2*pi*j*k/p) a[j], n[k] = sum_j sin(2*pi*j*k/p) b[j],
// a[j] = x[j] + x[p-j], b[j] = x[j] - x[p-j]: 2h^2 separate products.
PairedOutput foldedOddPairs(ComplexArith& ar, const PairedInput& x, DcOrder dcOrder)
{
    const int p = x.size;
    const int h = (p - 1) / 2;
    const Cx x0 = x.bin(0);
    Signal a(h + 1), b(h + 1);
    for (int j = 1; j <= h; ++j) {
        const SumDif ab = x.pair(j);
        a[j] = ab.sum;
        b[j] = ab.dif;
    }
    PairedOutput X(p);
    if (dcOrder == DcOrder::SumThenX0) {
        Cx sum = a[1];
        for (int j = 2; j <= h; ++j)
            sum = ar.add(sum, a[j]);
        X.bin[0] = ar.add(x0, sum);
    } else {
        X.bin[0] = x0;
        for (int j = 1; j <= h; ++j)
            X.bin[0] = ar.add(X.bin[0], a[j]);
    }
    const Cx wideX0 = ar.widen(x0);
    Signal wideA(h + 1), wideB(h + 1);
    for (int j = 1; j <= h; ++j) {
        wideA[j] = ar.widen(a[j]);
        wideB[j] = ar.widen(b[j]);
    }
    for (int k = 1; k <= h; ++k) {
        Cx m = wideX0;
        for (int j = 1; j <= h; ++j)
            m = ar.add(m, ar.mulReal(wideA[j], Trig{false, j * k, p}));
        Cx n = ar.mulReal(wideB[1], Trig{true, k, p});
        for (int j = 2; j <= h; ++j)
            n = ar.add(n, ar.mulReal(wideB[j], Trig{true, j * k, p}));
        const Cx rotated = ar.timesW4(ar.narrow(n));
        if (h == 1) // n = sin(2*pi/3) * b alone
            X.setFactoredPair(k, ar.narrow(m), rotated, ar.timesW4(b[1]), Trig{true, k, p});
        else
            X.setPair(k, ar.narrow(m), rotated);
    }
    return X;
}

Signal foldedOdd(ComplexArith& ar, const Signal& x, DcOrder dcOrder)
{
    return close(ar, foldedOddPairs(ar, binsOf(ar, x), dcOrder));
}

PairedOutput road8Pairs(ComplexArith& ar, const PairedInput& x)
{
    const Trig c{false, 1, 8}; // cos(pi/4)
    const Cx x0 = x.bin(0), x1 = x.bin(1), x3 = x.bin(3), x4 = x.bin(4), x5 = x.bin(5), x7 = x.bin(7);
    const Cx s0 = ar.add(x0, x4), d0 = ar.sub(x0, x4);
    const Cx s1 = ar.add(x1, x5);
    const SumDif sd2 = x.pair(2);
    const Cx s2 = sd2.sum, d2 = sd2.dif;
    const Cx s3 = ar.add(x3, x7);
    const Cx w1 = ar.mulReal(ar.sub(x1, x5), c);
    const Cx w3 = ar.mulReal(ar.sub(x3, x7), c);
    const Cx e = ar.add(s0, s2), f = ar.sub(s0, s2);
    const Cx g = ar.add(s1, s3), h = ar.sub(s1, s3);
    const Cx p = ar.sub(w1, w3), q = ar.add(w1, w3);
    const Cx A = ar.add(d0, p), B = ar.sub(d0, p);
    const Cx t = ar.add(d2, q), u = ar.sub(q, d2);
    const Cx wh = ar.timesW4(h), wt = ar.timesW4(t), wu = ar.timesW4(u);
    PairedOutput X(8);
    X.bin[0] = ar.add(e, g);
    X.bin[4] = ar.sub(e, g);
    X.setPair(2, f, wh);
    X.setPair(1, A, wt);
    X.setPair(3, B, wu);
    return X;
}

Signal road8(ComplexArith& ar, const Signal& x) { return close(ar, road8Pairs(ar, binsOf(ar, x))); }

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

int powMod(int base, int exponent, int p)
{
    int r = 1;
    for (int i = 0; i < exponent; ++i)
        r = r * base % p;
    return r;
}

int primitiveRoot(int p)
{
    for (int g = 2; g < p; ++g) {
        int order = 1;
        while (powMod(g, order, p) != 1)
            ++order;
        if (order == p - 1)
            return g;
    }
    return 1; // p = 2
}

void spectrumConstant(int p, int k, int sign, Exact& re, Exact& im)
{
    const int m = p - 1;
    if (k == 0) {
        re = Exact(-1) / m;
        im = 0;
        return;
    }
    const int g = primitiveRoot(p);
    re = im = 0;
    for (int t = 0; t < m; ++t) {
        // angle in turns: sign * (g^t / p - t*k / m)
        const long num = sign * (static_cast<long>(powMod(g, t, p)) * m - static_cast<long>(t) * k * p);
        re += cosTurn(num, static_cast<long>(p) * m);
        im += sinTurn(num, static_cast<long>(p) * m);
    }
    re /= m;
    im /= m;
    // Parts that vanish exactly (D[m/2] is real or imaginary) come out as
    // rounding noise of binary128.
    if (re < 0 ? -re < 1e-30Q : re < 1e-30Q)
        re = 0;
    if (im < 0 ? -im < 1e-30Q : im < 1e-30Q)
        im = 0;
}

std::string spectrumName(int p, int k) { return "kD" + std::to_string(p) + "Bin" + std::to_string(k); }

Signal rootOrder(const Signal& x)
{
    const int p = static_cast<int>(x.size());
    const int g = primitiveRoot(p);
    Signal u(p - 1);
    for (int q = 0; q < p - 1; ++q)
        u[q] = x[powMod(g, q, p)];
    return u;
}

Signal convolution(ComplexArith& ar, const Signal& x, const Transform& inner)
{
    const int p = static_cast<int>(x.size());
    const int m = p - 1;
    const int g = primitiveRoot(p);
    Signal U = inner(ar, rootOrder(x));
    Signal X(p);
    X[0] = ar.add(x[0], U[0]);
    for (int k = 0; k < m; ++k) {
        Exact re, im;
        spectrumConstant(p, k, ar.exponentSign(), re, im);
        U[k] = ar.mulComplex(U[k], re, im, spectrumName(p, k));
    }
    U[0] = ar.add(x[0], U[0]);
    const auto back = ar.reversed();
    const Signal y = inner(*back, U);
    // g^-r = g^(m-r)
    for (int r = 0; r < m; ++r)
        X[powMod(g, (m - r) % m, p)] = y[r];
    return X;
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

Signal join(ComplexArith& ar, const Signal& x, const JoinMap& map, const Stage& first, const Stage& second)
{
    const int n = map.n1 * map.n2;
    if (static_cast<int>(x.size()) != n)
        throw std::logic_error("join of the wrong length");
    if (first.leadingGroups > map.n2 || second.leadingGroups > map.n1)
        throw std::logic_error("more leading groups than the stage has");
    std::vector<Signal> columns(map.n2);
    for (int i2 = 0; i2 < map.n2; ++i2) {
        Signal group(map.n1);
        for (int i1 = 0; i1 < map.n1; ++i1)
            group[i1] = x[map.input(i1, i2)];
        columns[i2] = first.on(i2)(ar, group);
        for (int k1 = 1; k1 < map.n1; ++k1)
            if (map.twiddle(i2, k1) % map.twiddleDen != 0)
                columns[i2][k1] = ar.rotate(columns[i2][k1], map.twiddleDen, map.twiddle(i2, k1));
    }
    Signal X(n);
    for (int k1 = 0; k1 < map.n1; ++k1) {
        Signal row(map.n2);
        for (int i2 = 0; i2 < map.n2; ++i2)
            row[i2] = columns[i2][k1];
        const Signal out = second.on(k1)(ar, row);
        for (int k2 = 0; k2 < map.n2; ++k2)
            X[map.output(k1, k2)] = out[k2];
    }
    return X;
}

Signal halvingsAroundOdd(ComplexArith& ar, const Signal& x, const Transform& odd)
{
    const int q = static_cast<int>(x.size()) / 4;
    if (4 * q != static_cast<int>(x.size()) || q % 2 == 0)
        throw std::logic_error("halvings around an odd stage need N = 4 * odd");
    const JoinMap map = coprimeMap(4, q);
    // rows[k1][i2]: the half sums in rows 0 and 2, the odd outputs of the
    // 4-point stage in rows 1 and 3.
    std::vector<Signal> rows(4, Signal(q));
    for (int i2 = 0; i2 < q; ++i2) {
        const Cx x0 = x[map.input(0, i2)], x1 = x[map.input(1, i2)];
        const Cx x2 = x[map.input(2, i2)], x3 = x[map.input(3, i2)];
        rows[0][i2] = ar.add(x0, x2);
        rows[2][i2] = ar.add(x1, x3);
        const Cx b = ar.sub(x0, x2);
        const Cx wd = ar.timesW4(ar.sub(x1, x3));
        rows[1][i2] = ar.add(b, wd);
        rows[3][i2] = ar.sub(b, wd);
    }
    for (Signal& row : rows)
        row = odd(ar, row);
    Signal X(4 * q);
    for (int k2 = 0; k2 < q; ++k2) {
        X[map.output(0, k2)] = ar.add(rows[0][k2], rows[2][k2]);
        X[map.output(2, k2)] = ar.sub(rows[0][k2], rows[2][k2]);
        X[map.output(1, k2)] = rows[1][k2];
        X[map.output(3, k2)] = rows[3][k2];
    }
    return X;
}

} // namespace kernelgen
