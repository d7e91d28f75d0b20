// Method builders: each is a short function that writes one way of
// computing a DFT as complex arithmetic on Cx values. They know nothing of
// element types, registers or printing.
#pragma once

#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "complex_arith.h"

namespace kernelgen {

using Signal = std::vector<Cx>;
using Transform = std::function<Signal(ComplexArith&, const Signal&)>;

// Partner bins k and n-k (k != 0, 2k != n) seen together. A stage whose
// first butterfly joins partners can take them as their sum and difference,
// and a stage whose last butterfly makes them can leave it undone.
struct SumDif {
    Cx sum; // x[k] + x[n-k]
    Cx dif; // x[k] - x[n-k]
};

// The inputs of a stage, asked for bin by bin or as partner sums and
// differences, whichever the stage can use. `pair` may be asked for either
// bin of a pair: for the upper one the difference changes sign.
struct PairedInput {
    int size;
    std::function<Cx(int)> bin;
    std::function<SumDif(int)> pair;
};
// Plain inputs: a pair costs its addition and subtraction.
PairedInput binsOf(ComplexArith& ar, const Signal& x);

// The outputs of a stage with some partner pairs left open as
// X[k] = half[k] + diff[k], X[n-k] = half[k] - diff[k], held at the lower
// bin k; all other bins are in `bin`.
// A difference that is a constant times a value (diff = factor * base,
// as numbers) records both, so that the next constant can absorb the
// factor and the product itself falls away.
struct PairedOutput {
    Signal bin;
    Signal half;
    Signal diff;
    std::vector<bool> open;
    Signal base;
    std::vector<Trig> factor; // den 0: none
    explicit PairedOutput(int n) : bin(n), half(n), diff(n), open(n, false), base(n), factor(n, Trig{false, 0, 0}) {}
    int size() const { return static_cast<int>(bin.size()); }
    // Leaves X[k] = h + d, X[n-k] = h - d open, for either bin k of the pair.
    void setPair(int k, Cx h, Cx d);
    // The same with d = f * b.
    void setFactoredPair(int k, Cx h, Cx d, Cx b, Trig f);
    // Whether bin k's pair is open, and its half and difference as seen from k.
    bool isOpen(int k) const;
    Cx halfAt(int k) const;
    Cx diffAt(int k) const;
    bool isFactored(int k) const { return isOpen(k) && factorAt(k).den != 0; }
    Trig factorAt(int k) const;
    Cx baseAt(int k) const;
};
// The last butterflies of the open pairs.
Signal close(ComplexArith& ar, const PairedOutput& y);

// Length 2 and 4 codelets.
Signal dft2(ComplexArith& ar, const Signal& x);
Signal dft4(ComplexArith& ar, const Signal& x);
// Length 4, taking the pair (1, 3) as given and leaving X[1], X[3] open.
PairedOutput dft4Pairs(ComplexArith& ar, const PairedInput& x);

// The folded form of an odd prime length (3, 5, 7, 11). X[0] is formed
// either as x0 + (a1 + a2 + ...) or as ((x0 + a1) + a2) + ...
enum class DcOrder { SumThenX0, FromX0 };
Signal foldedOdd(ComplexArith& ar, const Signal& x, DcOrder dcOrder);
// The same with every pair (j, p-j) taken as given, X[k] and X[p-k] open.
PairedOutput foldedOddPairs(ComplexArith& ar, const PairedInput& x, DcOrder dcOrder);

// The size-8 road of 64fc: rotations by W8 act on the pair differences
// x1 - x5 and x3 - x7 as products with cos(pi/4).
Signal road8(ComplexArith& ar, const Signal& x);
// The same taking the pair (2, 6) as given, all its output pairs open.
PairedOutput road8Pairs(ComplexArith& ar, const PairedInput& x);

// The index maps of a join of two stages, N = n1*n2 with n1 nearer to the
// input: element i1 of first-stage group i2 is x[input(i1, i2)], output k2 of
// second-stage group k1 is X[output(k1, k2)], and between them Y[i2][k1] is
// rotated by W_twiddleDen^twiddle(i2, k1) (an exponent of 0 means none).
struct JoinMap {
    int n1;
    int n2;
    std::function<int(int, int)> input;
    std::function<int(int, int)> output;
    std::function<int(int, int)> twiddle;
    int twiddleDen;
};

// Cooley-Tukey: n = n2*i1 + i2, k = k1 + n1*k2, twiddles W_N^(i2*k1).
JoinMap twiddledMap(int n1, int n2);
// Good-Thomas, gcd(n1, n2) = 1: n = (n2*i1 + n1*i2) mod N, read with
// wrap-around; X[k] = Z[k mod n1][k mod n2] (Chinese remainders); no twiddles.
JoinMap coprimeMap(int n1, int n2);
// N = q*p*p with gcd(p, q) = 1, the prime power p*p twiddled (p then p) and
// the factor q between its two stages: n1 = p, and the second stage is the
// natural-order size-q*p transform of a Good-Thomas join (q then p).
JoinMap interleavedPowerMap(int p, int q);

// The convolution form of a prime p over m = p-1, with g the smallest
// primitive root: u[q] = x[g^q], U = the size-m transform `inner` of u,
// U[k] times the spectrum constant D[k] (x[0] added to bin 0), the inverse
// size-m transform (`inner` with the signs changed) y, X[g^-r] = y[r], and
// X[0] = x[0] + U[0] from the bin 0 before the product. This plain form,
// a complex product per bin, is 32fc's; 64fc takes the pair form of
// pairs.h.
int primitiveRoot(int p);
int powMod(int base, int exponent, int p);
// D[k] = (1/m) * sum_t W^(g^t) * exp(+2*pi*i*t*k/m) for the direction of
// `sign` (-1 forward: W = exp(-2*pi*i/p)); D[0] = -1/m exactly.
void spectrumConstant(int p, int k, int sign, Exact& re, Exact& im);
std::string spectrumName(int p, int k);
// u[q] = x[g^q mod p], q = 0..p-2: the inputs in the order of the powers of g.
Signal rootOrder(const Signal& x);
Signal convolution(ComplexArith& ar, const Signal& x, const Transform& inner);

// The transforms of one stage of a join, by group (i2 in the first stage,
// k1 in the second). A stage runs one transform on all its groups, or holds
// two forms of a factor side by side: its first `leadingGroups` groups take
// `leading`, the others `rest`.
struct Stage {
    template <class F>
        requires std::is_constructible_v<Transform, F>
    Stage(F transform) : rest(std::move(transform))
    {
    }
    Stage(int leadingGroups, Transform leading, Transform rest)
        : leadingGroups(leadingGroups), leading(std::move(leading)), rest(std::move(rest))
    {
    }
    const Transform& on(int group) const { return group < leadingGroups ? leading : rest; }

    int leadingGroups = 0;
    Transform leading;
    Transform rest;
};

// Length-n1 transforms on the groups, twiddles, length-n2 transforms across.
Signal join(ComplexArith& ar, const Signal& x, const JoinMap& map, const Stage& first, const Stage& second);

// N = 4*q, q odd: the Good-Thomas maps of 4 then q (groups read with
// wrap-around, outputs stored to their Chinese-remainder places), with the
// 4-point stage split around the odd stage. The even-numbered outputs are
// the length-N/2 transform of x[n] + x[n + N/2]: the odd stage on the two
// halves of those sums, the last 2-point butterfly after it. The
// odd-numbered outputs take the rest of the 4-point stage first
// (x[n] - x[n + N/2] and the W4 butterfly), then the odd stage.
Signal halvingsAroundOdd(ComplexArith& ar, const Signal& x, const Transform& odd);

} // namespace kernelgen
