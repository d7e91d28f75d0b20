#include "methods/convolution.h"

#include <map>
#include <optional>

#include "arith/signs.h"

namespace kernelgen {

namespace {

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

void chirpConstant(int p, int length, long k, int sign, Exact& re, Exact& im)
{
    const long h = (p + 1) / 2;
    re = im = 0;
    for (long m = -(p - 1); m <= p - 1; ++m) {
        const long num = sign * (-(h * m % p * m % p) * length + m * k * p);
        re += cosTurn(num, static_cast<long>(p) * length);
        im += sinTurn(num, static_cast<long>(p) * length);
    }
    re /= length;
    im /= length;
}

} // namespace

SpectrumForm convolutionForm(int p, int sign)
{
    const int m = p - 1;
    const int g = primitiveRoot(p);
    SpectrumForm form;
    form.p = p;
    form.source = [=](int q) { return powMod(g, q, p); };
    form.constant = [=](int k, Exact& re, Exact& im) { spectrumConstant(p, k, sign, re, im); };
    form.constantName = "kD" + std::to_string(p);
    // g^-r = g^(m-r)
    form.target = [=](int r) { return powMod(g, (m - r) % m, p); };
    form.rootZero = true;
    return form;
}

SpectrumForm chirpForm(int p, int length, int sign)
{
    SpectrumForm form;
    form.p = p;
    form.source = [p](int n) { return n < p ? n : -1; };
    form.constant = [=](int k, Exact& re, Exact& im) { chirpConstant(p, length, k, sign, re, im); };
    form.constantName = "kB" + std::to_string(length);
    form.target = form.source;
    form.chirp = [p](int n) {
        const long h = (p + 1) / 2;
        return static_cast<int>(h * n % p * n % p);
    };
    return form;
}

Signal SpectrumForm::rootOrder(const Signal& x) const
{
    Signal u(p - 1);
    for (int q = 0; q < p - 1; ++q)
        u[q] = x[source(q)];
    return u;
}

Signal convolution(DftArith& ar, const Signal& x, const Method& inner)
{
    const int p = static_cast<int>(x.size());
    const int m = p - 1;
    const SpectrumForm form = convolutionForm(p, ar.exponentSign());
    std::optional<SectionScope> section;
    section.emplace(ar.graph(), Section{"size-" + std::to_string(m) + " transform of the inputs in primitive-root order"});
    const PairedOutput U = inner.pairedOut(ar, form.rootOrder(x));
    const Signal closedU = close(ar, U); // left unused where the pairs stay open
    section.reset();
    Signal X(p);
    X[0] = ar.add(x[0], U.bin[0]);
    std::map<int, Cx> bins;
    std::map<int, SumDif> pairs;
    const auto bin = [&](int k) {
        if (!bins.count(k)) {
            Exact re, im;
            form.constant(k, re, im);
            const Cx product = ar.mulComplex(closedU[k], re, im, form.binName(k));
            bins[k] = k == 0 ? ar.add(x[0], product) : product;
        }
        return bins[k];
    };
    // With D[k] = A + iB, D[m-k] = (-1)^k conj(D[k]); for the half-sum h
    // and half-difference d of U[k], U[m-k]:
    //   even k: P[k] + P[m-k] = 2A h + i 2B d,  P[k] - P[m-k] = 2A d + i 2B h
    //   odd k:  the roles of h and d exchanged.
    const auto pair = [&](int k) {
        const int lower = std::min(k, m - k);
        if (!pairs.count(lower)) {
            if (U.open[lower]) {
                Exact re, im;
                form.constant(lower, re, im);
                const std::string name = form.binName(lower) + "Twice";
                // A difference that is a product leaves its factor to the
                // constants it meets.
                const Cx h = U.half[lower];
                const bool folded = U.isFactored(lower);
                const Trig factor = U.factorAt(lower);
                const Exact f = folded ? factor.value() : 1;
                const std::string times =
                    folded ? "Times" + trigMagnitudeName(factor.sine, factor.num, factor.den).substr(1) : "";
                const Cx dv = folded ? U.baseAt(lower) : U.diffAt(lower);
                // 2A on one of h and d, i 2B on the other, summed
                const auto product = [&](bool reOnHalf) {
                    const Cx a = reOnHalf ? ar.mulComplex(h, 2 * re, 0, name)
                                          : ar.mulComplex(dv, 2 * re * f, 0, name + times);
                    const Cx b = reOnHalf ? ar.mulComplex(dv, 0, 2 * im * f, name + times)
                                          : ar.mulComplex(h, 0, 2 * im, name);
                    return ar.add(a, b);
                };
                const bool even = lower % 2 == 0;
                pairs[lower] = SumDif{product(even), product(!even)};
            } else {
                const Cx a = bin(lower), b = bin(m - lower);
                pairs[lower] = SumDif{ar.add(a, b), ar.sub(a, b)};
            }
        }
        const SumDif sd = pairs[lower];
        return k == lower ? sd : SumDif{sd.sum, ComplexArith::neg(sd.dif)};
    };
    const auto back = ar.reversed();
    // The products are made where the inverse transform asks for them.
    section.emplace(ar.graph(), Section{"spectrum products and the inverse size-" + std::to_string(m) + " transform"});
    const Signal y = inner.pairedIn(*back, PairedInput{m, bin, pair});
    for (int r = 0; r < m; ++r)
        X[form.target(r)] = y[r];
    return X;
}

} // namespace kernelgen
