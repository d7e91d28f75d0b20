#include "methods/real.h"

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>

#include "arith/scalar_arith.h"
#include "core/inline.h"
#include "core/statements.h"
#include "core/adjoint.h"
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
    // Bin k <= n/2, as found.
    Cx bin(int k) const
    {
        const auto d = direct_.find(k);
        if (d != direct_.end())
            return d->second;
        const auto c = conjugate_.find(k);
        if (c == conjugate_.end())
            throw std::logic_error("bin " + std::to_string(k) + " of a real transform not found");
        return c->second;
    }
    Signal bins() const
    {
        Signal X(n_ / 2 + 1);
        for (int k = 0; 2 * k <= n_; ++k)
            X[k] = bin(k);
        return X;
    }

private:
    int n_;
    std::map<int, Cx> direct_;
    std::map<int, Cx> conjugate_;
};

} // namespace

RealTransform halfSpectrumOf(const Transform& complexMethod)
{
    return [complexMethod](ScalarArith& ar, const Signal& x) {
        Signal X = complexMethod(ar, x);
        X.resize(x.size() / 2 + 1);
        return X;
    };
}

Signal evenOdd(ScalarArith& ar, const Signal& x, const RealTransform& half, const Transform& odd)
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
        const SectionScope section(ar.graph(), {"even bins: the size-" + std::to_string(N / 2) + " real transform"});
        const Signal even = half(ar, s);
        for (int k = 0; 2 * k <= N / 2; ++k)
            X.set(2 * k, even[k]);
    }
    const SectionScope section(ar.graph(), {"odd bins: the complex size-" + std::to_string(quarter) + " stage"});
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
    return [N, plain](DftArith& ar, const Signal& z) {
        Signal t(z.size());
        for (size_t n = 0; n < z.size(); ++n)
            t[n] = ar.rotate(z[n], N, static_cast<int>(n));
        return plain(ar, t);
    };
}

Transform summedTwistThen(const Transform& plain)
{
    return [plain](DftArith& ar, const Signal& z) {
        const Cx twisted = ar.mulReal(ar.add(z[1], ar.timesW4(z[1])), Trig{false, 1, 8});
        return plain(ar, {z[0], twisted});
    };
}

Transform fourStep(int N, const Transform& across)
{
    return [N, across](DftArith& ar, const Signal& z) {
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

Signal realJoin(ScalarArith& ar, const Signal& x, const JoinMap& map, const RealTransform& first,
                const RealTransform& secondReal, const Transform& secondComplex)
{
    // A row whose twiddles left it real takes the real transform, and its
    // upper bins are the conjugates of its lower ones.
    const RealTransform second = [&](ScalarArith& rowArith, const Signal& row) {
        if (!std::all_of(row.begin(), row.end(), isReal))
            return secondComplex(rowArith, row);
        const int n2 = static_cast<int>(row.size());
        const Signal Z = secondReal(rowArith, row);
        Signal full(n2);
        for (int k2 = 0; k2 < n2; ++k2)
            full[k2] = 2 * k2 <= n2 ? Z[k2] : conj(Z[n2 - k2]);
        return full;
    };
    // The first stage keeps bins 0 .. n1/2 of each group, so the join runs
    // the rows k1 <= n1/2.
    const Signal Y = join<ScalarArith>(ar, x, map, first, second);
    HalfSpectrum X(map.n1 * map.n2);
    for (int k1 = 0; 2 * k1 <= map.n1; ++k1)
        for (int k2 = 0; k2 < map.n2; ++k2)
            X.set(map.output(k1, k2), Y[map.output(k1, k2)]);
    return X.bins();
}

namespace {

// A forward real block apart: loads 0 .. n-1, the parts of bins 0 .. bins-1
// stored bare to cells 2k and 2k + 1, with the sign each comes back with.
struct ForwardBlock {
    Graph graph;
    std::map<int, bool> negative;
};

void buildForwardBlock(ForwardBlock& b, ScalarArith& ar, const RealTransform& forward, int n, size_t bins)
{
    Signal x(n);
    for (int i = 0; i < n; ++i)
        x[i] = Cx{b.graph.load(ar.element(), i)};
    const Signal X = forward(ar, x);
    const auto storeBare = [&](Graph::Value v, bool neg, int cell) {
        if (v < 0)
            return;
        b.graph.store(ar.variable(v), cell);
        b.negative[cell] = neg;
    };
    for (size_t k = 0; k < bins; ++k) {
        storeBare(X[k].re, X[k].negRe, 2 * static_cast<int>(k));
        storeBare(X[k].im, X[k].negIm, 2 * static_cast<int>(k) + 1);
    }
}

// The adjoint's inputs: the parts of `bins` by cell; a cell stored negated
// takes its input negated.
std::map<int, SignedValue> adjointInputs(const ForwardBlock& b, const Signal& bins,
                                         const std::function<Graph::Value(Graph::Value)>& variable)
{
    std::map<int, SignedValue> inputs;
    for (const auto& [cell, neg] : b.negative) {
        const Cx& bin = bins[cell / 2];
        const Graph::Value part = cell % 2 ? bin.im : bin.re;
        const bool partNeg = cell % 2 ? bin.negIm : bin.negRe;
        inputs[cell] = part < 0 ? SignedValue{} : SignedValue{variable(part), partNeg != neg};
    }
    return inputs;
}

Signal realsOf(const std::map<int, SignedValue>& out, int n)
{
    Signal y(n);
    for (int r = 0; r < n; ++r) {
        const auto found = out.find(r);
        if (found != out.end())
            y[r] = Cx{found->second.value, -1, found->second.negative, false};
    }
    return y;
}

} // namespace

Signal adjointBlock(ScalarArith& ar, const RealTransform& forward, int n, const Signal& bins)
{
    ForwardBlock block;
    buildForwardBlock(block, *ar.onGraph(block.graph), forward, n, bins.size());
    const auto inputs = adjointInputs(block, bins, [&](Graph::Value v) { return ar.variable(v); });
    return realsOf(inlineGraph(ar.graph(), adjoint(block.graph), inputs), n);
}

Signal adjointTransform(Graph& g, Kind element, const RealTransform& forward, int n, const Signal& bins)
{
    ForwardBlock block;
    ScalarArith wide(block.graph, Direction::Forward, Kind::F64, RoundingPolicy::elementType());
    buildForwardBlock(block, wide, forward, n, bins.size());
    const auto inputs = adjointInputs(block, bins, [](Graph::Value v) { return v; });
    return realsOf(inlineAsStatements(g, adjoint(block.graph), inputs, element), n);
}

namespace {

// The first n reals and n zeros after them.
Signal padded(const Signal& half)
{
    Signal x(2 * half.size());
    std::copy(half.begin(), half.end(), x.begin());
    return x;
}

} // namespace

RealTransform evenBinsOfHalf(const RealTransform& forward)
{
    return [forward](ScalarArith& ar, const Signal& s) {
        const Signal X = forward(ar, padded(s));
        Signal even(s.size() / 2 + 1);
        for (size_t k = 0; k < even.size(); ++k)
            even[k] = X[2 * k];
        return even;
    };
}

RealTransform oddBinsOfHalf(const RealTransform& forward)
{
    return [forward](ScalarArith& ar, const Signal& d) {
        const Signal X = forward(ar, padded(d));
        Signal odd((d.size() + 1) / 2);
        for (size_t k = 0; k < odd.size(); ++k)
            odd[k] = X[2 * k + 1];
        return odd;
    };
}

Signal realConvolution(ScalarArith& ar, const Signal& x, const RealTransform& forward, const RealTransform& back)
{
    const int p = static_cast<int>(x.size()), m = p - 1, n = m / 2;
    const SpectrumForm form = convolutionForm(p, ar.exponentSign());
    std::optional<SectionScope> section;
    section.emplace(ar.graph(), Section{"real size-" + std::to_string(m) + " transform of the inputs in primitive-root order"});
    const Signal U = forward(ar, form.rootOrder(x));
    HalfSpectrum X(p);
    X.set(0, ar.add(x[0], U[0]));

    section.emplace(ar.graph(), Section{"spectrum products"});
    // Cells of the two blocks: bin k of the products goes to bin k/2 of the
    // even block or bin (k-1)/2 of the half-bin block.
    Signal even(n / 2 + 1), odd((n + 1) / 2);
    for (int k = 0; k <= n; ++k) {
        Exact re, im;
        form.constant(k, re, im);
        std::string name = form.binName(k);
        if (k > 0 && k < n) {
            re *= 2;
            im *= 2;
            name += "Twice";
        }
        if (k % 2) { // times -i: (re + i im)(-i) = im - i re
            const Exact r = re;
            re = im;
            im = -r;
            name += "TimesMinusI";
        }
        if (k == 0) { // T = x[0] + D[0] U[0], one statement
            const Cx product = ar.mulComplex(ar.enterSum(U[0]), re, im, name);
            even[0] = ar.leaveSum(ar.add(ar.enterSum(x[0]), product));
        } else if (k % 2 == 0) {
            even[k / 2] = ar.mulComplex(U[k], re, im, name);
        } else {
            odd[(k - 1) / 2] = ar.mulComplex(U[k], re, im, name);
        }
    }
    // Bin m/2 of the products is real (D[m/2] real, m/2 even) or, times -i,
    // real again (D[m/2] imaginary, m/2 odd): one cell of one block.

    section.emplace(ar.graph(),
                    Section{"adjoint of the real size-" + std::to_string(m) + " transform, even bins: the real parts"});
    const Signal re = adjointBlock(ar, evenBinsOfHalf(back), n, even);
    section.emplace(ar.graph(),
                    Section{"adjoint of the real size-" + std::to_string(m) + " transform, odd bins: the imaginary parts"});
    const Signal imag = adjointBlock(ar, oddBinsOfHalf(back), n, odd);
    // The outputs X[g^-r], r >= m/2, are the conjugates of these.
    for (int r = 0; r < n; ++r)
        X.set(form.target(r), Cx{re[r].re, imag[r].re, re[r].negRe, imag[r].negRe});
    return X.bins();
}

} // namespace kernelgen
