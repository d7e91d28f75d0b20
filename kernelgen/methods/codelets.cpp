#include "methods/codelets.h"

namespace kernelgen {

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
    const Cx sumX0 = ar.enterSum(x0);
    Signal sumA(h + 1), sumB(h + 1);
    for (int j = 1; j <= h; ++j) {
        sumA[j] = ar.enterSum(a[j]);
        sumB[j] = ar.enterSum(b[j]);
    }
    for (int k = 1; k <= h; ++k) {
        Cx m = sumX0;
        for (int j = 1; j <= h; ++j)
            m = ar.add(m, ar.mulReal(sumA[j], Trig{false, j * k, p}));
        Cx n = ar.mulReal(sumB[1], Trig{true, k, p});
        for (int j = 2; j <= h; ++j)
            n = ar.add(n, ar.mulReal(sumB[j], Trig{true, j * k, p}));
        const Cx rotated = ar.timesW4(ar.leaveSum(n));
        if (h == 1) { // n = sin(2*pi/3) * b alone
            const Cx rotatedB = ar.timesW4(b[1]);
            X.setFactoredPair(k, ar.leaveSum(m), rotated, rotatedB, Trig{true, k, p});
        } else {
            X.setPair(k, ar.leaveSum(m), rotated);
        }
    }
    return X;
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

} // namespace kernelgen
