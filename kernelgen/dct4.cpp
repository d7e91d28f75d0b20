// The straight-line pieces of DCT-IV plans: half-bin DFTs of lengths 2 to
// 64, the butterflies of the twiddle kernels, the 2r-point recombine
// kernels, and the direct kernels of lengths 2 to 32. Vector pieces work on
// arrays of L-lane vectors (lanes run along independent columns or row
// pairs); the loops around them are hand-written in dct4/.
#include "dct4.h"

#include <sstream>
#include <stdexcept>

#include "methods.h"
#include "print_cpp.h"
#include "schedule.h"

namespace kernelgen {

namespace {

// ---- Complex arithmetic on separate real and imaginary values of any kind --

// a*sa + b*sb for pending signs sa, sb, as one addition or subtraction; the
// sign of the result comes back in `negative`.
Graph::Value signedSum(Graph& g, Graph::Value a, bool negA, Graph::Value b, bool negB, bool& negative)
{
    negative = negA && negB;
    if (negA == negB)
        return g.add(a, b);
    return negA ? g.sub(b, a) : g.sub(a, b);
}

Exact magnitude(Exact x) { return x < 0 ? -x : x; }

// Exponents are +2*pi*i*e/n throughout: every transform of the family uses
// the positive sign.
class LaneArith : public ComplexArith {
public:
    LaneArith(Graph& graph, Kind kind) : ComplexArith(graph, Direction::Inverse), kind_(kind) {}

    Cx add(Cx a, Cx b) override
    {
        Cx r;
        r.re = signedSum(graph_, a.re, a.negRe, b.re, b.negRe, r.negRe);
        r.im = signedSum(graph_, a.im, a.negIm, b.im, b.negIm, r.negIm);
        return r;
    }

    Cx mulReal(Cx a, Trig c) override
    {
        const Exact value = c.value();
        const Graph::Value k = constant(trigMagnitudeName(c.sine, c.num, c.den), magnitude(value));
        Cx r{graph_.mul(a.re, k), graph_.mul(a.im, k), a.negRe, a.negIm};
        return value < 0 ? neg(r) : r;
    }

    // +i (re, im) = (-im, re)
    Cx timesW4(Cx a) override { return Cx{a.im, a.re, !a.negIm, a.negRe}; }

    Cx rotate(Cx a, int n, int e) override
    {
        e = ((e % n) + n) % n;
        if (e == 0)
            return a;
        if (2 * e == n)
            return neg(a);
        if (4 * e == n)
            return timesW4(a);
        if (4 * e == 3 * n)
            return neg(timesW4(a));
        const Exact c = cosTurn(e, n), s = sinTurn(e, n);
        if ((8 * e) % n == 0) {
            // An odd multiple of pi/4: sums first, then one product each.
            const Graph::Value h = constant(trigMagnitudeName(false, 1, 8), magnitude(c));
            bool negRe, negIm;
            const Graph::Value re = signedSum(graph_, a.re, a.negRe ^ (c < 0), a.im, a.negIm ^ (s >= 0), negRe);
            const Graph::Value im = signedSum(graph_, a.re, a.negRe ^ (s < 0), a.im, a.negIm ^ (c < 0), negIm);
            return Cx{graph_.mul(re, h), graph_.mul(im, h), negRe, negIm};
        }
        const Graph::Value kc = constant(trigMagnitudeName(false, e, n), magnitude(c));
        const Graph::Value ks = constant(trigMagnitudeName(true, e, n), magnitude(s));
        return product(a, Cx{kc, ks, c < 0, s < 0});
    }

    // (a.re + i a.im)(w.re + i w.im) with four products, each rounded.
    Cx product(Cx a, Cx w)
    {
        const Graph::Value rr = graph_.mul(a.re, w.re), ii = graph_.mul(a.im, w.im);
        const Graph::Value ri = graph_.mul(a.re, w.im), ir = graph_.mul(a.im, w.re);
        Cx r;
        r.re = signedSum(graph_, rr, a.negRe ^ w.negRe, ii, !(a.negIm ^ w.negIm), r.negRe);
        r.im = signedSum(graph_, ri, a.negRe ^ w.negIm, ir, a.negIm ^ w.negRe, r.negIm);
        return r;
    }

    Graph::Value materialize(Graph::Value v, bool negative)
    {
        if (!negative)
            return v;
        if (!isVector(kind_))
            return graph_.neg(v);
        return graph_.bitXor(v, graph_.signMask("kNegate", kind_, std::vector<bool>(laneCount(kind_), true)));
    }

    Kind kind() const { return kind_; }

private:
    Graph::Value constant(const std::string& name, Exact value)
    {
        return graph_.constant(name, kind_, std::vector<Exact>(laneCount(kind_), value));
    }
    Kind kind_;
};

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

// The recombine kernel on rotated columns W_c, c = 0 .. r - 1: with
// C_k = sum_c W_c exp(i pi k (2c + 1) / (2r)), output q = 2k is Re C_k and
// output q = 2k - 1 is -Re C_(2r - k). C_k = exp(i pi k / (2r)) D_k, and
// D, the 2r-point DFT of W padded with zeros, is two r-point DFTs: of W for
// even k and of W_c exp(i pi c / r) for odd k.
std::vector<Graph::Value> recombine(LaneArith& ar, const Signal& w)
{
    const int r = static_cast<int>(w.size());
    Signal shifted(r);
    for (int c = 0; c < r; ++c)
        shifted[c] = ar.rotate(w[c], 2 * r, c);
    const Signal even = dftPlus(ar, w), odd = dftPlus(ar, shifted);
    std::vector<Graph::Value> realC(2 * r);
    std::vector<bool> negC(2 * r);
    for (int k = 0; k < 2 * r; ++k) {
        const Cx c = ar.rotate(k % 2 ? odd[k / 2] : even[k / 2], 4 * r, k);
        realC[k] = c.re;
        negC[k] = c.negRe;
    }
    std::vector<Graph::Value> y(2 * r);
    for (int k = 0; k < r; ++k)
        y[2 * k] = ar.materialize(realC[k], negC[k]);
    for (int k = 1; k <= r; ++k)
        y[2 * k - 1] = ar.materialize(realC[2 * r - k], !negC[2 * r - k]);
    return y;
}

Cx loadComplex(Graph& g, Kind kind, int at) { return Cx{g.load(kind, at), g.load(kind, at + 1)}; }

void storeComplex(LaneArith& ar, Cx z, int at)
{
    ar.graph().store(ar.materialize(z.re, z.negRe), at);
    ar.graph().store(ar.materialize(z.im, z.negIm), at + 1);
}

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
    Signal z(s);
    for (int c = 0; c < s; ++c)
        z[c] = loadComplex(g, kind, 2 * c);
    int pair = 0;
    auto nextTwiddle = [&] { return loadComplex(g, kind, 2 * s + 2 * pair++); };
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
    for (int c = 0; c < r; ++c)
        w[c] = ar.product(loadComplex(g, kind, 2 * c), loadComplex(g, kind, 2 * r + 2 * c));
    const std::vector<Graph::Value> y = recombine(ar, w);
    for (int q = 0; q < 2 * r; ++q)
        g.store(y[q], q);
    return g;
}

// ---- Direct kernels: scalar, src and dst are the caller's arrays ---------------

Graph direct2(Kind kind)
{
    Graph g;
    const Graph::Value x0 = g.load(kind, 0), x1 = g.load(kind, 1);
    const Graph::Value c = g.constant("kCosPiOver8", kind, {cosTurn(1, 16)});
    const Graph::Value s = g.constant("kSinPiOver8", kind, {sinTurn(1, 16)});
    g.store(g.add(g.mul(c, x0), g.mul(s, x1)), 0);
    g.store(g.sub(g.mul(s, x0), g.mul(c, x1)), 1);
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

// ---- Printing ---------------------------------------------------------------------

// Statements of the live nodes in register-pressure order. Loads read `in`
// (or `src`), stores write `out` (or `dst`).
std::string printBody(const Graph& g, const char* in, const char* out)
{
    std::ostringstream body;
    const std::vector<bool> live = g.liveNodes();
    std::vector<bool> used(g.constants().size(), false);
    for (size_t i = 0; i < g.nodes().size(); ++i)
        if (live[i] && g.nodes()[i].op == Op::Constant)
            used[g.nodes()[i].constant] = true;
    for (size_t k = 0; k < g.constants().size(); ++k) {
        if (!used[k])
            continue;
        const ConstantDef& c = g.constants()[k];
        if (isVector(c.kind)) {
            body << "    alignas(16) static constexpr " << (isSingle(c.kind) ? "float" : "double") << " " << c.name
                 << "[" << c.lanes.size() << "] = {";
            for (size_t l = 0; l < c.lanes.size(); ++l)
                body << (l ? ", " : "") << literal(c.kind, c.lanes[l]);
            body << "};\n";
        } else {
            body << "    static constexpr " << cppType(c.kind) << " " << c.name << " = " << literal(c.kind, c.lanes[0])
                 << ";\n";
        }
    }
    for (const int i : emissionOrder(g)) {
        const Node& n = g.nodes()[i];
        const std::string a = n.a >= 0 ? "v" + std::to_string(n.a) : "";
        const std::string b = n.b >= 0 ? "v" + std::to_string(n.b) : "";
        std::string expr;
        switch (n.op) {
        case Op::Load: expr = std::string(in) + "[" + std::to_string(n.offset) + "]"; break;
        case Op::Store: body << "    " << out << "[" << n.offset << "] = " << a << ";\n"; continue;
        default: expr = arithmeticExpr(g, n, a, b); break;
        }
        body << "    const " << cppType(n.kind) << " v" << i << " = " << expr << ";\n";
    }
    return body.str();
}

std::string countComment(const Graph& g)
{
    const OpCounts c = g.countOps();
    return "// " + std::to_string(c.addSub) + " additions, " + std::to_string(c.mul) + " multiplications.\n";
}

std::string printPiece(const char* name, int size, const Graph& g)
{
    const char* v = cppType(g.nodes().front().kind);
    std::ostringstream out;
    out << countComment(g) << "TVKG_INLINE void " << name << "(std::integral_constant<int, " << size << ">, const " << v
        << "* in, " << v << "* out)\n{\n"
        << printBody(g, "in", "out") << "}\n\n";
    return out.str();
}

} // namespace

std::string printDct4PiecesHeader(const std::string& invocation)
{
    std::ostringstream out;
    out << header(invocation) << "#pragma once\n\n#include <type_traits>\n\n#include \"simd/vec.h\"\n\n"
        << "namespace tvkgen::dct4::pieces {\n\nusing namespace tvkgen::simd;\n\n";
    for (Kind kind : {Kind::V4F32, Kind::V2F64}) {
        for (int m = 2; m <= 64; m *= 2)
            out << "// Half-bin DFT of length " << m << ".\n" << printPiece("halfBinDft", m, halfBinPiece(kind, m));
        for (int s = 2; s <= 32; s *= 2)
            out << "// Twiddles and butterfly of radix " << s << ".\n"
                << printPiece("twiddleButterfly", s, twiddlePiece(kind, s));
        for (int r = 2; r <= 32; r *= 2) // radix 1 is never chosen
            out << "// Rotation and " << 2 * r << "-point recombine kernel.\n"
                << printPiece("recombine", r, recombinePiece(kind, r));
    }
    out << "} // namespace tvkgen::dct4::pieces\n";
    return out.str();
}

std::string printDct4DirectFile(const std::string& invocation)
{
    std::ostringstream out;
    out << header(invocation) << "#include \"plan_run.h\"\n\nnamespace tvkgen::dct4 {\n\nnamespace {\n\n";
    for (Kind kind : {Kind::F32, Kind::F64}) {
        const char* real = cppType(kind);
        for (int n = 2; n <= 32; n *= 2) {
            const Graph g = n == 2 ? direct2(kind) : n == 4 ? direct4(kind) : directUnrolled(kind, n);
            out << "// Length " << n << ". " << countComment(g).substr(3) << "void direct" << n << "(const " << real
                << "* src, " << real << "* dst)\n{\n"
                << printBody(g, "src", "dst") << "}\n\n";
        }
    }
    out << "} // namespace\n\n";
    for (const char* real : {"float", "double"}) {
        out << "void runDirect(int32_t kind, const " << real << "* src, " << real << "* dst)\n{\n"
            << "    switch (kind) {\n";
        for (int kind = 1, n = 2; n <= 32; ++kind, n *= 2)
            out << "    case " << kind << ": direct" << n << "(src, dst); return;\n";
        out << "    }\n}\n\n";
    }
    out << "} // namespace tvkgen::dct4\n";
    return out.str();
}

} // namespace kernelgen
