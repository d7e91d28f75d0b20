#include "methods/convolution.h"

#include <optional>

namespace kernelgen {

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

Signal convolution(DftArith& ar, const Signal& x, const Transform& inner)
{
    const int p = static_cast<int>(x.size());
    const int m = p - 1;
    const int g = primitiveRoot(p);
    std::optional<SectionScope> section;
    section.emplace(ar.graph(), "size-" + std::to_string(m) + " transform of the inputs in primitive-root order");
    Signal U = inner(ar, rootOrder(x));
    section.emplace(ar.graph(), "spectrum products");
    Signal X(p);
    X[0] = ar.add(x[0], U[0]);
    for (int k = 0; k < m; ++k) {
        Exact re, im;
        spectrumConstant(p, k, ar.exponentSign(), re, im);
        U[k] = ar.mulComplex(U[k], re, im, spectrumName(p, k));
    }
    U[0] = ar.add(x[0], U[0]);
    const auto back = ar.reversed();
    section.emplace(ar.graph(), "inverse size-" + std::to_string(m) + " transform");
    const Signal y = inner(*back, U);
    // g^-r = g^(m-r)
    for (int r = 0; r < m; ++r)
        X[powMod(g, (m - r) % m, p)] = y[r];
    return X;
}

} // namespace kernelgen
