// Joins of two stages: the index maps of Cooley-Tukey and Good-Thomas
// chains, the join itself, and the halving steps around an odd stage.
#pragma once

#include <string>
#include <type_traits>

#include "methods/signal.h"

namespace kernelgen {

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

    // First-stage group i2 of x, and the outputs `out` of second-stage row
    // k1 put in their places in X.
    Signal group(const Signal& x, int i2) const;
    void placeRow(Signal& X, int k1, const Signal& out) const;
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

// The transforms of one stage of a join, by group (i2 in the first stage,
// k1 in the second). A stage runs one transform on all its groups, or holds
// two forms of a factor side by side: its first `leadingGroups` groups take
// `leading`, the others `rest`.
template <class Arith>
struct StageOf {
    template <class F>
        requires std::is_constructible_v<TransformOf<Arith>, F>
    StageOf(F transform) : rest(std::move(transform))
    {
    }
    StageOf(int leadingGroups, TransformOf<Arith> leading, TransformOf<Arith> rest)
        : leadingGroups(leadingGroups), leading(std::move(leading)), rest(std::move(rest))
    {
    }
    const TransformOf<Arith>& on(int group) const { return group < leadingGroups ? leading : rest; }

    int leadingGroups = 0;
    TransformOf<Arith> leading;
    TransformOf<Arith> rest;
};
using Stage = StageOf<DftArith>;

// The sections of a join's stages: group i2 of the first stage, with its
// length and the partner group taken with it, and row k1 of the second.
Section groupSection(int i2, int n1, int partner = -1);
Section rowSection(int k1, int n2, int partner = -1);

// The two stages of a join and the turn between them, written once for
// every form of the values. `units` says what one transform of a stage runs
// on (a group; a partner pair of groups; four groups in the lanes of a
// vector set) and runs it, keeping the values between the steps:
//   int firstCount() const;  Section firstSection(int u) const;
//   void runFirst(int u);    the unit's loads, transform and twiddles
//   void turn();             the second stage's units from the first's
//   int secondCount() const; Section secondSection(int u) const;
//   void runSecond(int u);   the unit's transform, its outputs in place
template <class Units>
void stages(Graph& g, Units& units)
{
    for (int u = 0; u < units.firstCount(); ++u) {
        const SectionScope section(g, units.firstSection(u));
        units.runFirst(u);
    }
    units.turn();
    for (int u = 0; u < units.secondCount(); ++u) {
        const SectionScope section(g, units.secondSection(u));
        units.runSecond(u);
    }
}

// Length-n1 transforms on the groups, twiddles, length-n2 transforms across
// the rows the first stage gives (all n1, or bins 0 .. n1/2 of real groups:
// the other bins of X are then left empty). Any arithmetic runs it: the DFT
// kernels' (DftArith), the real kernels' (ScalarArith) and the DCT-IV
// pieces' (ComplexArith, with codelet stages).
template <class Arith>
Signal join(Arith& ar, const Signal& x, const JoinMap& map, const std::type_identity_t<StageOf<Arith>>& first,
            const std::type_identity_t<StageOf<Arith>>& second);

// N = 4*q, q odd: the Good-Thomas maps of 4 then q (groups read with
// wrap-around, outputs stored to their Chinese-remainder places), with the
// 4-point stage split around the odd stage. The even-numbered outputs are
// the length-N/2 transform of x[n] + x[n + N/2]: the odd stage on the two
// halves of those sums, the last 2-point butterfly after it. The
// odd-numbered outputs take the rest of the 4-point stage first
// (x[n] - x[n + N/2] and the W4 butterfly), then the odd stage.
Signal halvingsAroundOdd(DftArith& ar, const Signal& x, const Transform& odd);

} // namespace kernelgen
