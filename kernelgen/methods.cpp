#include "methods.h"

#include <stdexcept>

namespace kernelgen {

Signal dft2(ComplexArith& ar, const Signal& x)
{
    return {ar.add(x[0], x[1]), ar.sub(x[0], x[1])};
}

Signal dft4(ComplexArith& ar, const Signal& x)
{
    const Cx a = ar.add(x[0], x[2]);
    const Cx b = ar.sub(x[0], x[2]);
    const Cx c = ar.add(x[1], x[3]);
    const Cx d = ar.sub(x[1], x[3]);
    const Cx wd = ar.timesW4(d);
    return {ar.add(a, c), ar.add(b, wd), ar.sub(a, c), ar.sub(b, wd)};
}

// X[k] = m[k] + W4*n[k], X[p-k] = m[k] - W4*n[k] with
// m[k] = x0 + sum_j cos(2*pi*j*k/p) a[j], n[k] = sum_j sin(2*pi*j*k/p) b[j],
// a[j] = x[j] + x[p-j], b[j] = x[j] - x[p-j]: 2h^2 separate products.
Signal foldedOdd(ComplexArith& ar, const Signal& x, DcOrder dcOrder)
{
    const int p = static_cast<int>(x.size());
    const int h = (p - 1) / 2;
    Signal a(h + 1), b(h + 1);
    for (int j = 1; j <= h; ++j) {
        a[j] = ar.add(x[j], x[p - j]);
        b[j] = ar.sub(x[j], x[p - j]);
    }
    Signal X(p);
    if (dcOrder == DcOrder::SumThenX0) {
        Cx sum = a[1];
        for (int j = 2; j <= h; ++j)
            sum = ar.add(sum, a[j]);
        X[0] = ar.add(x[0], sum);
    } else {
        X[0] = x[0];
        for (int j = 1; j <= h; ++j)
            X[0] = ar.add(X[0], a[j]);
    }
    const Cx wideX0 = ar.widen(x[0]);
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
        m = ar.narrow(m);
        X[k] = ar.add(m, rotated);
        X[p - k] = ar.sub(m, rotated);
    }
    return X;
}

Signal road8(ComplexArith& ar, const Signal& x)
{
    const Trig c{false, 1, 8}; // cos(pi/4)
    const Cx s0 = ar.add(x[0], x[4]), d0 = ar.sub(x[0], x[4]);
    const Cx s1 = ar.add(x[1], x[5]);
    const Cx s2 = ar.add(x[2], x[6]), d2 = ar.sub(x[2], x[6]);
    const Cx s3 = ar.add(x[3], x[7]);
    const Cx w1 = ar.mulReal(ar.sub(x[1], x[5]), c);
    const Cx w3 = ar.mulReal(ar.sub(x[3], x[7]), c);
    const Cx e = ar.add(s0, s2), f = ar.sub(s0, s2);
    const Cx g = ar.add(s1, s3), h = ar.sub(s1, s3);
    const Cx p = ar.sub(w1, w3), q = ar.add(w1, w3);
    const Cx A = ar.add(d0, p), B = ar.sub(d0, p);
    const Cx t = ar.add(d2, q), u = ar.sub(q, d2);
    const Cx wh = ar.timesW4(h), wt = ar.timesW4(t), wu = ar.timesW4(u);
    Signal X(8);
    X[0] = ar.add(e, g);
    X[4] = ar.sub(e, g);
    X[2] = ar.add(f, wh);
    X[6] = ar.sub(f, wh);
    X[1] = ar.add(A, wt);
    X[7] = ar.sub(A, wt);
    X[3] = ar.add(B, wu);
    X[5] = ar.sub(B, wu);
    return X;
}

Signal twiddledJoin(ComplexArith& ar, const Signal& x, int n1, const Transform& first, int n2,
                    const Transform& second)
{
    const int n = n1 * n2;
    if (static_cast<int>(x.size()) != n)
        throw std::logic_error("twiddled join of the wrong length");
    std::vector<Signal> columns(n2);
    for (int i2 = 0; i2 < n2; ++i2) {
        Signal group(n1);
        for (int i1 = 0; i1 < n1; ++i1)
            group[i1] = x[n2 * i1 + i2];
        columns[i2] = first(ar, group);
        for (int k1 = 1; k1 < n1; ++k1)
            if (i2 != 0)
                columns[i2][k1] = ar.rotate(columns[i2][k1], n, i2 * k1);
    }
    Signal X(n);
    for (int k1 = 0; k1 < n1; ++k1) {
        Signal row(n2);
        for (int i2 = 0; i2 < n2; ++i2)
            row[i2] = columns[i2][k1];
        const Signal out = second(ar, row);
        for (int k2 = 0; k2 < n2; ++k2)
            X[k1 + n1 * k2] = out[k2];
    }
    return X;
}

} // namespace kernelgen
