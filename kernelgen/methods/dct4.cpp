// The straight-line pieces of DCT-IV plans: half-bin DFTs of lengths 2 to
// 64, the butterflies of the twiddle kernels, the 2r-point recombine
// kernels, and the direct kernels of lengths 2 to 32. Vector pieces work on
// arrays of L-lane vectors (lanes run along independent columns or row
// pairs); the loops around them are hand-written in dct4/.
#include "methods/dct4.h"

#include <stdexcept>
#include <vector>

#include "arith/lane_arith.h"
#include "methods/codelets.h"
#include "methods/joins.h"

namespace kernelgen {

namespace {

// ---- Transforms ---------------------------------------------------------------

// Unnormalised DFT with exp(+2*pi*i*j*k/n), n = 1 to 32.
Signal dftPlus(ComplexArith& ar, const Signal& x)
{
    switch (x.size()) {
    case 1: return x;
    case 2: return dft2(ar, x);
    case 4: return dft4(ar, x);
    case 8: return road8(ar, x);
    case 16: return join(ar, x, twiddledMap(4, 4), dft4, dft4);
    case 32: return join(ar, x, twiddledMap(8, 4), road8, dft4);
    default: throw std::logic_error("no DFT of this length");
    }
}

// Z[p] = sum over t = -m/2 .. m/2 - 1 of v[t] exp(+2 pi i (p + 1/2) t / m),
// p = 0 .. m/2 - 1, with v[t] at index t + m/2. Even and odd samples give
// two half-length transforms E and O; with T = exp(i pi (2q + 1) / m) O[q],
// Z[q] = E[q] + T and Z[m/2 - 1 - q] = conj(E[q] - T).
Signal halfBinDft(LaneArith& ar, const std::vector<Graph::Value>& v)
{
    const int m = static_cast<int>(v.size());
    if (m == 2)
        return {Cx{v[1], v[0], false, true}};
    std::vector<Graph::Value> even, odd;
    for (int i = 0; i < m; i += 2) {
        even.push_back(v[i]);
        odd.push_back(v[i + 1]);
    }
    const Signal e = halfBinDft(ar, even), o = halfBinDft(ar, odd);
    Signal z(m / 2);
    for (int q = 0; q < m / 4; ++q) {
        const Cx t = ar.rotate(o[q], 2 * m, 2 * q + 1);
        z[q] = ar.add(e[q], t);
        Cx d = ar.sub(e[q], t);
        d.negIm = !d.negIm;
        z[m / 2 - 1 - q] = d;
    }
    return z;
}

// The recombine kernel on rotated columns W_c = a_c + i b_c, c = 0 .. r - 1:
// with theta = pi k (2c + 1) / (2r), output q = 2k is A_k - B_k and output
// q = 2k - 1 is A_k + B_k, where A is the DCT-II of a and B the DST-II of b
// (sums of a_c cos theta and b_c sin theta). Both come from one r-point DFT
// P of p = a + i (-1)^c b in even-then-reversed-odd order: with
// phi = pi k / (2r), A_k - B_k = Re(exp(i phi) P_k) and
// A_k + B_k = Re(exp(i phi) conj P_(r - k)).
std::vector<Graph::Value> recombine(LaneArith& ar, const Signal& w)
{
    const int r = static_cast<int>(w.size());
    Signal p(r);
    for (int n = 0; n < r / 2; ++n) {
        p[n] = w[2 * n];
        p[r - 1 - n] = w[2 * n + 1];
        p[r - 1 - n].negIm = !p[r - 1 - n].negIm;
    }
    const Signal spectrum = dftPlus(ar, p);
    const auto realPart = [&](Cx z, int k) {
        const Cx c = ar.rotate(z, 4 * r, k);
        return ar.materialize(c.re, c.negRe);
    };
    std::vector<Graph::Value> y(2 * r);
    for (int k = 0; k < r; ++k)
        y[2 * k] = realPart(spectrum[k], k);
    for (int k = 1; k <= r; ++k) {
        Cx mirrored = spectrum[r - k];
        mirrored.negIm = !mirrored.negIm;
        y[2 * k - 1] = realPart(mirrored, k);
    }
    return y;
}

Cx loadComplex(Graph& g, Kind kind, int at) { return Cx{g.load(kind, at), g.load(kind, at + 1)}; }

// n complex values as (Re, Im) pairs from `at` on.
Signal loadComplexes(Graph& g, Kind kind, int n, int at)
{
    Signal z(n);
    for (int c = 0; c < n; ++c)
        z[c] = loadComplex(g, kind, at + 2 * c);
    return z;
}

void storeComplex(LaneArith& ar, Cx z, int at)
{
    ar.graph().store(ar.materialize(z.re, z.negRe), at);
    ar.graph().store(ar.materialize(z.im, z.negIm), at + 1);
}

// ---- Direct kernels: scalar, src and dst are the caller's arrays ---------------

Graph direct2(Kind kind)
{
    Graph g;
    const Graph::Value x0 = g.load(kind, 0), x1 = g.load(kind, 1);
    const Graph::Value c = g.constant("kCosPiOver8", kind, {cosTurn(1, 16)});
    const Graph::Value s = g.constant("kSinPiOver8", kind, {sinTurn(1, 16)});
    const Graph::Value sx1 = g.mul(s, x1);
    g.store(g.add(g.mul(c, x0), sx1), 0);
    const Graph::Value cx1 = g.mul(c, x1);
    g.store(g.sub(g.mul(s, x0), cx1), 1);
    return g;
}

// Two rotations in lifted form, three products each, then a butterfly.
Graph direct4(Kind kind)
{
    Graph g;
    Graph::Value x[4];
    for (int i = 0; i < 4; ++i)
        x[i] = g.load(kind, i);
    const Graph::Value s1 = g.constant("kSin7PiOver16", kind, {sinTurn(7, 32)});
    const Graph::Value t1 = g.constant("kTan7PiOver32", kind, {sinTurn(7, 64) / cosTurn(7, 64)});
    const Graph::Value s2 = g.constant("kSin5PiOver16", kind, {sinTurn(5, 32)});
    const Graph::Value t2 = g.constant("kTan5PiOver32", kind, {sinTurn(5, 64) / cosTurn(5, 64)});
    const Graph::Value w = g.constant("kSqrtHalf", kind, {cosTurn(1, 8)});
    const Graph::Value a = g.sub(x[0], g.mul(t1, x[3]));
    const Graph::Value b = g.sub(x[1], g.mul(t2, x[2]));
    const Graph::Value d = g.add(x[3], g.mul(s1, a));
    const Graph::Value e = g.add(x[2], g.mul(s2, b));
    const Graph::Value f = g.sub(a, g.mul(t1, d));
    const Graph::Value gg = g.sub(b, g.mul(t2, e));
    const Graph::Value y0 = g.add(d, e);
    const Graph::Value y3 = g.sub(f, gg);
    const Graph::Value h = g.mul(g.sub(d, e), w);
    const Graph::Value j = g.mul(g.add(f, gg), w);
    g.store(y0, 0);
    g.store(y3, 3);
    g.store(g.add(h, j), 1);
    g.store(g.sub(h, j), 2);
    return g;
}

// N = 8, 16, 32: the column and recombine steps of a two-stage plan with
// r = N/4 and M = 4, unrolled; every load comes before the first store.
Graph directUnrolled(Kind kind, int n)
{
    Graph g;
    LaneArith ar(g, kind);
    const int r = n / 4;
    std::vector<Graph::Value> x(n);
    for (int i = 0; i < n; ++i)
        x[i] = g.load(kind, i);
    std::vector<Signal> z(r);
    for (int c = 0; c < r; ++c)
        z[c] = halfBinDft(ar, {x[n - 1 - c], x[2 * r - 1 - c], x[c], x[c + 2 * r]});
    for (int p = 0; p < 2; ++p) {
        Signal w(r);
        for (int c = 0; c < r; ++c)
            w[c] = ar.rotate(z[c][p], 8 * n, (2 * p + 1) * (2 * c + 1));
        const std::vector<Graph::Value> y = recombine(ar, w);
        for (int q = 0; q < 2 * r; ++q)
            g.store(y[q], q % 2 == 0 ? 2 * q + p : 2 * (q + 1) - 1 - p);
    }
    return g;
}

} // namespace

// ---- Pieces -----------------------------------------------------------------------

// in[t + m/2] = v[t]; out[2p], out[2p + 1] = Re, Im of Z[p].
Graph halfBinPiece(Kind kind, int m)
{
    Graph g;
    LaneArith ar(g, kind);
    std::vector<Graph::Value> v;
    for (int i = 0; i < m; ++i)
        v.push_back(g.load(kind, i));
    const Signal z = halfBinDft(ar, v);
    for (int p = 0; p < m / 2; ++p)
        storeComplex(ar, z[p], 2 * p);
    return g;
}

// in: Z_c' as (Re, Im) pairs for c' = 0 .. s - 1, then the group's table
// pairs (cos, sin) in table order. out: F[l] for l < s/2, then
// conj(F[s - 1 - l]) for l < s/2.
Graph twiddlePiece(Kind kind, int s)
{
    Graph g;
    LaneArith ar(g, kind);
    const Signal z = loadComplexes(g, kind, s, 0);
    int twiddles = 0;
    auto nextTwiddle = [&] { return loadComplex(g, kind, 2 * s + 2 * twiddles++); };
    Signal f(s);
    if (s <= 8) {
        Signal t(s);
        t[0] = z[0];
        for (int c = 1; c < s; ++c)
            t[c] = ar.product(z[c], nextTwiddle());
        f = dftPlus(ar, t);
    } else {
        // c' = b + 4a, l = j + (s/4) u: (s/4)-point butterflies over a after
        // the section-two twiddles, then 4-point ones over b after section one.
        const int quarter = s / 4;
        std::vector<Cx> sectionOne(quarter * 3), sectionTwo(quarter);
        for (Cx& w : sectionOne)
            w = nextTwiddle();
        for (int a = 1; a < quarter; ++a)
            sectionTwo[a] = nextTwiddle();
        std::vector<Signal> gb(4);
        for (int b = 0; b < 4; ++b) {
            Signal column(quarter);
            for (int a = 0; a < quarter; ++a)
                column[a] = a == 0 ? z[b] : ar.product(z[b + 4 * a], sectionTwo[a]);
            gb[b] = dftPlus(ar, column);
        }
        for (int j = 0; j < quarter; ++j) {
            Signal row(4);
            for (int b = 0; b < 4; ++b)
                row[b] = b == 0 ? gb[0][j] : ar.product(gb[b][j], sectionOne[3 * j + b - 1]);
            const Signal out = dft4(ar, row);
            for (int u = 0; u < 4; ++u)
                f[j + quarter * u] = out[u];
        }
    }
    for (int l = 0; l < s / 2; ++l) {
        storeComplex(ar, f[l], 2 * l);
        Cx mirrored = f[s - 1 - l];
        mirrored.negIm = !mirrored.negIm;
        storeComplex(ar, mirrored, s + 2 * l);
    }
    return g;
}

// in: Z_c as (Re, Im) for c = 0 .. r - 1, then (cos, sin) of theta for each
// column in the same order. out: the 2r outputs by q.
Graph recombinePiece(Kind kind, int r)
{
    Graph g;
    LaneArith ar(g, kind);
    Signal w(r);
    for (int c = 0; c < r; ++c) {
        const Cx twiddle = loadComplex(g, kind, 2 * r + 2 * c);
        w[c] = ar.product(loadComplex(g, kind, 2 * c), twiddle);
    }
    const std::vector<Graph::Value> y = recombine(ar, w);
    for (int q = 0; q < 2 * r; ++q)
        g.store(y[q], q);
    return g;
}

Graph directKernel(Kind kind, int n)
{
    switch (n) {
    case 2: return direct2(kind);
    case 4: return direct4(kind);
    default: return directUnrolled(kind, n);
    }
}

} // namespace kernelgen
