#include "methods/real.h"

#include <map>
#include <optional>
#include <stdexcept>
#include <string>

#include "methods/codelets.h"
#include "methods/convolution.h"

namespace kernelgen {

namespace {

Cx conj(Cx a)
{
    a.negIm = !a.negIm;
    return a;
}

bool isReal(const Cx& a) { return a.im < 0; }

// Bins of a real transform of length n as they are found: directly, or as
// conjugates of bins above n/2. A bin found directly is kept over its
// conjugate.
class HalfSpectrum {
public:
    explicit HalfSpectrum(int n) : n_(n) {}
    void set(int k, Cx value)
    {
        k %= n_;
        if (2 * k <= n_)
            direct_[k] = value;
        else
            conjugate_.emplace(n_ - k, conj(value));
    }
    Signal bins() const
    {
        Signal X(n_ / 2 + 1);
        for (int k = 0; 2 * k <= n_; ++k) {
            const auto d = direct_.find(k);
            if (d != direct_.end()) {
                X[k] = d->second;
                continue;
            }
            const auto c = conjugate_.find(k);
            if (c == conjugate_.end())
                throw std::logic_error("bin " + std::to_string(k) + " of a real transform not found");
            X[k] = c->second;
        }
        return X;
    }

private:
    int n_;
    std::map<int, Cx> direct_;
    std::map<int, Cx> conjugate_;
};

} // namespace

RealTransform halfOf(const Transform& complexMethod)
{
    return [complexMethod](ComplexArith& ar, const Signal& x) {
        Signal X = complexMethod(ar, x);
        X.resize(x.size() / 2 + 1);
        return X;
    };
}

Signal evenOdd(ComplexArith& ar, const Signal& x, const RealTransform& half, const Transform& odd)
{
    const int N = static_cast<int>(x.size());
    const int quarter = N / 4;
    Signal s(N / 2), d(N / 2);
    for (int n = 0; n < N / 2; ++n) {
        s[n] = ar.add(x[n], x[n + N / 2]);
        d[n] = ar.sub(x[n], x[n + N / 2]);
    }
    HalfSpectrum X(N);
    {
        const SectionScope section(ar.graph(), "even bins: the size-" + std::to_string(N / 2) + " real transform");
        const Signal even = half(ar, s);
        for (int k = 0; 2 * k <= N / 2; ++k)
            X.set(2 * k, even[k]);
    }
    const SectionScope section(ar.graph(), "odd bins: the complex size-" + std::to_string(quarter) + " stage");
    Signal z(quarter);
    for (int n = 0; n < quarter; ++n)
        z[n] = Cx{d[n].re, d[n + quarter].re, d[n].negRe, !d[n + quarter].negRe};
    const Signal Z = odd(ar, z);
    for (int j = 0; j < quarter; ++j)
        X.set(4 * j + 1, Z[j]);
    return X.bins();
}

Transform twistThen(int N, const Transform& plain)
{
    return [N, plain](ComplexArith& ar, const Signal& z) {
        Signal t(z.size());
        for (size_t n = 0; n < z.size(); ++n)
            t[n] = ar.rotate(z[n], N, static_cast<int>(n));
        return plain(ar, t);
    };
}

Transform fourStep(int N, const Transform& across)
{
    return [N, across](ComplexArith& ar, const Signal& z) {
        const int M = N / 4, r = M / 4;
        std::vector<Signal> u(4);
        for (int n = 0; n < 4; ++n) {
            Signal w(r);
            for (int l = 0; l < r; ++l)
                w[l] = ar.rotate(z[n + 4 * l], M, l);
            u[n] = across(ar, w);
            for (int q = 0; q < r; ++q)
                u[n][q] = ar.rotate(u[n][q], N, n * (1 + 4 * q));
        }
        Signal out(M);
        for (int q = 0; q < r; ++q) {
            const Signal p4 = dft4(ar, {u[0][q], u[1][q], u[2][q], u[3][q]});
            for (int p = 0; p < 4; ++p)
                out[q + r * p] = p4[p];
        }
        return out;
    };
}

Signal realJoin(ComplexArith& ar, const Signal& x, const JoinMap& map, const RealTransform& first,
                const RealTransform& secondReal, const Transform& secondComplex)
{
    const int n1 = map.n1, n2 = map.n2;
    std::vector<Signal> Y(n2);
    for (int i2 = 0; i2 < n2; ++i2) {
        const SectionScope section(ar.graph(), groupLabel(i2, n1));
        Signal group(n1);
        for (int i1 = 0; i1 < n1; ++i1)
            group[i1] = x[map.input(i1, i2)];
        Y[i2] = first(ar, group);
    }
    HalfSpectrum X(n1 * n2);
    for (int k1 = 0; 2 * k1 <= n1; ++k1) {
        const SectionScope section(ar.graph(), rowLabel(k1, n2));
        Signal row(n2);
        bool real = true;
        for (int i2 = 0; i2 < n2; ++i2) {
            row[i2] = ar.rotate(Y[i2][k1], map.twiddleDen, map.twiddle(i2, k1));
            real = real && isReal(row[i2]);
        }
        if (real) {
            const Signal Z = secondReal(ar, row);
            for (int k2 = 0; 2 * k2 <= n2; ++k2) {
                X.set(map.output(k1, k2), Z[k2]);
                if (k2 > 0)
                    X.set(map.output(k1, (n2 - k2) % n2), conj(Z[k2]));
            }
        } else {
            const Signal Z = secondComplex(ar, row);
            for (int k2 = 0; k2 < n2; ++k2)
                X.set(map.output(k1, k2), Z[k2]);
        }
    }
    return X.bins();
}

Signal realConvolution(ComplexArith& ar, const Signal& x, const RealTransform& forward, const Transform& inverse)
{
    const int p = static_cast<int>(x.size()), m = p - 1, g = primitiveRoot(p);
    std::optional<SectionScope> section;
    section.emplace(ar.graph(), "real size-" + std::to_string(m) + " transform of the inputs in primitive-root order");
    const Signal U = forward(ar, rootOrder(x));
    HalfSpectrum X(p);
    X.set(0, ar.add(x[0], U[0]));
    section.emplace(ar.graph(), "spectrum products");
    Signal V(m);
    for (int k = 0; 2 * k <= m; ++k) {
        Exact re, im;
        spectrumConstant(p, k, ar.exponentSign(), re, im);
        // T = x[0] + D[0] U[0] is one statement.
        const Cx u = k == 0 ? ar.enterSum(U[0]) : U[k];
        V[k] = ar.mulComplex(u, re, im, spectrumName(p, k));
    }
    V[0] = ar.leaveSum(ar.add(ar.enterSum(x[0]), V[0]));
    for (int k = 1; 2 * k < m; ++k)
        V[m - k] = k % 2 ? ComplexArith::neg(conj(V[k])) : conj(V[k]);
    section.emplace(ar.graph(), "inverse complex size-" + std::to_string(m) + " transform");
    const auto back = ar.reversed();
    const Signal y = inverse(*back, V);
    // g^-r = g^(m-r); the outputs r >= m/2 are the conjugates of these.
    for (int r = 0; 2 * r < m; ++r)
        X.set(powMod(g, (m - r) % m, p), y[r]);
    return X.bins();
}

} // namespace kernelgen
