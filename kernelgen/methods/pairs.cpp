#include "methods/pairs.h"

#include <algorithm>
#include <map>
#include <string>
#include <stdexcept>
#include <tuple>

#include "arith/signs.h"

namespace kernelgen {

namespace {

int mod(int a, int n) { return ((a % n) + n) % n; }

// c * x for x = f * base: one product with the folded constant c*f.
Cx mulFolded(DftArith& ar, Cx base, const Trig& c, const Trig& f)
{
    const std::string name = trigMagnitudeName(c.sine, c.num, c.den) + "Times" +
                             trigMagnitudeName(f.sine, f.num, f.den).substr(1);
    return ar.mulComplex(base, c.value() * f.value(), 0, name);
}

// A difference, with its factor and base where it is a product (factor
// den 0 otherwise).
struct Diff {
    Cx value;
    Cx base;
    Trig factor{false, 0, 0};
};

// The pair (a, b) of z = (a + b) W and z' = (a - b) / W, W = W_den^e, as
// (A, B) with z = A + B, z' = A - B: A = c a + W4 s b, B = c b + W4 s a for
// W = c + W4 s. Rotating the two halves costs what rotating z and z' would,
// and spares forming a + b and a - b; a factor of b goes into c and s.
std::pair<Cx, Cx> rotatePair(DftArith& ar, Cx a, const Diff& b, int den, int e)
{
    const Rotation rotation = classifyRotation(den, e);
    const int r = rotation.r;
    switch (rotation.form) {
    case RotationForm::Identity: return {a, b.value};
    case RotationForm::Negate: return {ComplexArith::neg(a), ComplexArith::neg(b.value)};
    case RotationForm::TimesI: return {ar.timesW4(b.value), ar.timesW4(a)};
    case RotationForm::TimesMinusI: return {ComplexArith::neg(ar.timesW4(b.value)), ComplexArith::neg(ar.timesW4(a))};
    default: break;
    }
    const Trig c{false, r, den}, s{true, r, den};
    if (rotation.form == RotationForm::OddEighth) {
        // |c| = |s| = cos(pi/4): one sum, then one product.
        const auto withSignOf = [](Cx v, const Trig& t) { return t.value() < 0 ? ComplexArith::neg(v) : v; };
        const Trig quarter{false, 1, 8};
        return {ar.mulReal(ar.add(withSignOf(a, c), withSignOf(ar.timesW4(b.value), s)), quarter),
                ar.mulReal(ar.add(withSignOf(b.value, c), withSignOf(ar.timesW4(a), s)), quarter)};
    }
    const bool folded = b.factor.den != 0;
    const Cx sb = folded ? mulFolded(ar, b.base, s, b.factor) : ar.mulReal(b.value, s);
    const Cx cb = folded ? mulFolded(ar, b.base, c, b.factor) : ar.mulReal(b.value, c);
    const Cx rotatedSb = ar.timesW4(sb);
    return {ar.add(ar.mulReal(a, c), rotatedSb), ar.add(cb, ar.timesW4(ar.mulReal(a, s)))};
}

std::pair<Cx, Cx> rotatePair(DftArith& ar, Cx a, Cx b, int den, int e)
{
    return rotatePair(ar, a, Diff{b, b}, den, e);
}

Diff diffOf(const PairedOutput& y, int k)
{
    if (!y.isFactored(k))
        return Diff{y.diffAt(k), y.diffAt(k)};
    return Diff{y.diffAt(k), y.baseAt(k), y.factorAt(k)};
}

// Sets output pair k of X to (h, d).
void setPair(PairedOutput& X, int k, Cx h, const Diff& d)
{
    if (d.factor.den != 0)
        X.setFactoredPair(k, h, d.value, d.base, d.factor);
    else
        X.setPair(k, h, d.value);
}

// The half and difference of output pair k of y, as seen from k; a bin that
// is its own partner is its own half.
Cx halfOrBin(const PairedOutput& y, int k) { return y.isOpen(k) ? y.halfAt(k) : y.bin[k]; }

bool selfPartner(int k, int n) { return mod(-k, n) == k; }

// Index helpers of a join: where each element sits, and the twiddle
// exponent reduced.
struct JoinIndex {
    const JoinMap& map;
    int n;
    std::vector<std::pair<int, int>> place; // input index -> (i1, i2)
    explicit JoinIndex(const JoinMap& m) : map(m), n(m.n1 * m.n2), place(n)
    {
        for (int i2 = 0; i2 < m.n2; ++i2)
            for (int i1 = 0; i1 < m.n1; ++i1)
                place[m.input(i1, i2)] = {i1, i2};
    }
    int twiddle(int i2, int k1) const { return mod(map.twiddle(i2, k1), map.twiddleDen); }
    bool twiddleFree(int k1) const
    {
        for (int i2 = 0; i2 < map.n2; ++i2)
            if (twiddle(i2, k1) != 0)
                return false;
        return true;
    }
    // The row k1' = n1 - k1 holds the partners of row k1 when its twiddles
    // are taken as those of k1 conjugated: then X[out(k1', k2')] is output
    // k2' + shift of that conjugated row. The shift, or -1 if there is none.
    int rowShift(int k1) const
    {
        const int k1n = mod(-k1, map.n1);
        const int step = map.twiddleDen / map.n2;
        const int t = mod(twiddle(1 % map.n2, k1) + twiddle(1 % map.n2, k1n), map.twiddleDen);
        if (map.n2 == 1 || t % step != 0)
            return -1;
        const int shift = t / step;
        for (int i2 = 0; i2 < map.n2; ++i2)
            if (mod(twiddle(i2, k1) + twiddle(i2, k1n) - i2 * shift * step, map.twiddleDen) != 0)
                return -1;
        return shift;
    }
    // Whether group i2 and its partner group (or group i2 alone, its own
    // partner through a skew) go through the first stage as sums and
    // differences: the partners lie at -i1 - skew, the twiddles of the two
    // match, the first stage leaves all its pairs open and, for two groups,
    // the second stage takes all of its pairs.
    bool groupsTogether(int i2, const Method& first, const Method& second) const
    {
        int i2n = 0;
        const int skew = groupSkew(i2, i2n);
        if (skew < 0 || (i2n == i2 && skew == 0) || !first.keepsAllPairs || (i2n != i2 && !second.takesAllPairs))
            return false;
        const int rootStep = map.twiddleDen / map.n1;
        for (int k1 = 0; k1 < map.n1; ++k1)
            if (mod(-k1 * skew * rootStep + twiddle(i2n, k1) + twiddle(i2, k1), map.twiddleDen) != 0)
                return false;
        return true;
    }
    // The groups i2 whose partner group is i2 or a later one.
    std::vector<int> lowerGroups() const
    {
        std::vector<int> lower;
        for (int i2 = 0; i2 < map.n2; ++i2) {
            int i2n = 0;
            groupSkew(i2, i2n);
            if (i2n >= i2)
                lower.push_back(i2);
        }
        return lower;
    }
    // Group i2's partner group holds the partner of element i1 at position
    // -i1 - skew. The skew, or -1 if the partners do not lie so.
    int groupSkew(int i2, int& partnerGroup) const
    {
        partnerGroup = place[mod(-map.input(0, i2), n)].second;
        const int skew = mod(-place[mod(-map.input(0, i2), n)].first, map.n1);
        for (int i1 = 0; i1 < map.n1; ++i1) {
            const auto at = place[mod(-map.input(i1, i2), n)];
            if (at.second != partnerGroup || at.first != mod(-i1 - skew, map.n1))
                return -1;
        }
        return skew;
    }
};

// The rows k1 and n1-k1 (one row where k1 is its own partner) from the
// pairs (A, B) of their inputs: z = A + B, z' = A - B, so each output pair
// is F(A) +- F(B), F the second stage. Where B is one factor times bases
// and every output of F is its own partner, F runs on the bases and the
// factor stays with the differences.
void pairedRows(DftArith& ar, PairedOutput& X, const JoinMap& map, int k1, int shift, const Signal& A,
                const std::vector<Diff>& B, const Method& second)
{
    const int n1 = map.n1, n2 = map.n2, n = n1 * n2;
    const int k1n = mod(-k1, n1);
    Signal values(n2), bases(n2);
    bool factored = true;
    for (int i2 = 0; i2 < n2; ++i2) {
        values[i2] = B[i2].value;
        bases[i2] = B[i2].base;
        factored = factored && B[i2].factor.den != 0 && B[i2].factor.value() == B[0].factor.value();
    }
    for (int k2 = 0; k2 < n2; ++k2)
        factored = factored && selfPartner(k2, n2);
    const PairedOutput FA = second.pairedOut(ar, A), FB = second.pairedOut(ar, values);
    const PairedOutput FBase = factored ? second.pairedOut(ar, bases) : PairedOutput(n2);
    const Signal cA = close(ar, FA), cB = close(ar, FB); // left unused where the pairs stay open
    for (int k2 = 0; k2 < n2; ++k2) {
        const int k2n = mod(-k2 - shift, n2);
        const int o = map.output(k1, k2), on = map.output(k1n, k2n);
        if (mod(-o, n) != on)
            throw std::logic_error("join outputs are not partners");
        if (k1 == k1n) {
            // Each pair of the row once, from a bin of F that is its own
            // partner where there is one.
            const bool self = selfPartner(k2, n2), selfN = selfPartner(k2n, n2);
            if (!(self ? (!selfN || k2 < k2n) : (!selfN && k2 < k2n)))
                continue;
        }
        if (selfPartner(k2, n2)) {
            setPair(X, o, FA.bin[k2],
                    factored ? Diff{FB.bin[k2], FBase.bin[k2], B[0].factor} : Diff{FB.bin[k2], FB.bin[k2]});
        } else if (FA.isOpen(k2) && FB.isOpen(k2)) {
            const Cx diff = ar.add(FA.diffAt(k2), FB.halfAt(k2));
            X.setPair(o, ar.add(FA.halfAt(k2), FB.diffAt(k2)), diff);
        } else {
            X.bin[o] = ar.add(cA[k2], cB[k2]);
            X.bin[on] = ar.sub(cA[mod(-k2, n2)], cB[mod(-k2, n2)]);
        }
    }
}

// A join whose outputs keep partner pairs open: the groups one by one,
// then the rows in partner pairs (k1, n1-k1), each pair of rows as one
// unit.
struct PairsOut {
    DftArith& ar;
    const Signal& x;
    const JoinMap& map;
    const Method& firstStage;
    const Method& secondStage;
    JoinIndex index{map};
    std::vector<PairedOutput> Y{};
    std::vector<Signal> closedY{};
    std::vector<int> lowerRows{};
    PairedOutput X = PairedOutput(map.n1 * map.n2);

    int firstCount() const { return map.n2; }
    Section firstSection(int i2) const { return groupSection(i2, map.n1); }
    void runFirst(int i2)
    {
        Y.push_back(firstStage.pairedOut(ar, map.group(x, i2)));
        closedY.push_back(close(ar, Y.back())); // left unused where the pairs stay open
    }
    void turn()
    {
        for (int k1 = 0; k1 < map.n1; ++k1)
            if (mod(-k1, map.n1) >= k1)
                lowerRows.push_back(k1);
    }
    int secondCount() const { return static_cast<int>(lowerRows.size()); }
    Section secondSection(int u) const { return rowSection(lowerRows[u], map.n2, mod(-lowerRows[u], map.n1)); }
    void plainRow(int k1)
    {
        Signal row(map.n2);
        for (int i2 = 0; i2 < map.n2; ++i2)
            row[i2] = ar.rotate(closedY[i2][k1], map.twiddleDen, map.twiddle(i2, k1));
        map.placeRow(X.bin, k1, secondStage.plain(ar, row));
    }
    void runSecond(int u)
    {
        const int n1 = map.n1, n2 = map.n2, n = index.n;
        const int k1 = lowerRows[u], k1n = mod(-k1, n1);
        const int shift = index.rowShift(k1);
        if (k1n == k1 && index.twiddleFree(k1)) {
            Signal row(n2);
            for (int i2 = 0; i2 < n2; ++i2)
                row[i2] = Y[i2].bin[k1];
            const PairedOutput R = secondStage.pairedOut(ar, row);
            for (int k2 = 0; k2 < n2; ++k2) {
                const int o = map.output(k1, k2);
                if (mod(-o, n) != map.output(k1, mod(-k2, n2)))
                    throw std::logic_error("join outputs are not partners");
                if (R.isOpen(k2))
                    setPair(X, o, R.halfAt(k2), diffOf(R, k2));
                else
                    X.bin[o] = R.bin[k2];
            }
            return;
        }
        bool open = shift >= 0;
        for (int i2 = 0; i2 < n2 && k1n != k1; ++i2)
            open = open && Y[i2].isOpen(k1);
        if (!open) {
            plainRow(k1);
            if (k1n != k1)
                plainRow(k1n);
            return;
        }
        // A row that is its own partner through its twiddles: its inputs
        // are the halves with empty differences.
        Signal A(n2);
        std::vector<Diff> B(n2);
        for (int i2 = 0; i2 < n2; ++i2) {
            const Diff d = k1n == k1 ? Diff{ar.zero(), ar.zero()} : diffOf(Y[i2], k1);
            const Cx h = k1n == k1 ? Y[i2].bin[k1] : Y[i2].halfAt(k1);
            const int e = index.twiddle(i2, k1);
            if (e == 0) {
                A[i2] = h;
                B[i2] = d;
            } else {
                const auto AB = rotatePair(ar, h, d, map.twiddleDen, e);
                A[i2] = AB.first;
                B[i2] = Diff{AB.second, AB.second};
            }
        }
        pairedRows(ar, X, map, k1, shift, A, B, secondStage);
    }
};

// A join whose inputs come as bins or partner sums and differences: the
// groups with their partner groups (one unit each pair), then the rows.
struct PairsIn {
    DftArith& ar;
    const PairedInput& in;
    const JoinMap& map;
    const Method& firstStage;
    const Method& secondStage;
    JoinIndex index{map};
    std::vector<int> lowerGroups = index.lowerGroups();
    // Row k1's input i2, or for a pair of partner groups taken together the
    // row's sum and difference at the lower group.
    std::vector<Signal> rowBin = std::vector<Signal>(map.n1, Signal(map.n2));
    std::vector<std::map<int, SumDif>> rowPair = std::vector<std::map<int, SumDif>>(map.n1);
    Signal X = Signal(map.n1 * map.n2);

    int firstCount() const { return static_cast<int>(lowerGroups.size()); }
    Section firstSection(int u) const
    {
        int i2n = 0;
        index.groupSkew(lowerGroups[u], i2n);
        return groupSection(lowerGroups[u], map.n1, i2n);
    }
    Signal plainGroup(int i2)
    {
        Signal group(map.n1);
        for (int i1 = 0; i1 < map.n1; ++i1)
            group[i1] = in.bin(map.input(i1, i2));
        return firstStage.plain(ar, group);
    }
    void setRows(int i2, const Signal& Y)
    {
        for (int k1 = 0; k1 < map.n1; ++k1)
            rowBin[k1][i2] = ar.rotate(Y[k1], map.twiddleDen, map.twiddle(i2, k1));
    }
    // Group i2 holds (s + t)/2 and its partner group (s - t)/2 reversed,
    // s and t the sums and differences of the partners: transform s and t
    // with their pairs open, and the halves cancel in the rows' sums and
    // differences of the two groups. A group that is its own partner
    // through a skew takes one member of each pair, the other member zero,
    // and keeps the sum alone.
    void sumsAndDifferences(int i2, int skew, bool alone)
    {
        const int n1 = map.n1;
        Signal s(n1), t(n1);
        for (int i1 = 0; i1 < n1; ++i1) {
            const int partner = mod(-i1 - skew, n1);
            if (alone && partner == i1) {
                s[i1] = in.bin(map.input(i1, i2));
                t[i1] = ar.zero();
            } else if (alone && partner < i1) {
                s[i1] = t[i1] = ar.zero();
            } else {
                const SumDif st = in.pair(map.input(i1, i2));
                s[i1] = st.sum;
                t[i1] = st.dif;
            }
        }
        const PairedOutput FS = firstStage.pairedOut(ar, s), FT = firstStage.pairedOut(ar, t);
        for (int k1 = 0; k1 < n1; ++k1) {
            Cx u = halfOrBin(FS, k1), v = halfOrBin(FT, k1);
            if (!selfPartner(k1, n1)) {
                u = ar.add(FS.halfAt(k1), FT.diffAt(k1));
                v = ar.add(FS.diffAt(k1), FT.halfAt(k1));
            }
            const auto sd = rotatePair(ar, u, v, map.twiddleDen, index.twiddle(i2, k1));
            if (alone)
                rowBin[k1][i2] = sd.first;
            else
                rowPair[k1][i2] = SumDif{sd.first, sd.second};
        }
    }
    void runFirst(int u)
    {
        const int i2 = lowerGroups[u];
        int i2n = 0;
        const int skew = index.groupSkew(i2, i2n);
        if (i2n == i2 && skew == 0) {
            const PairedInput group{map.n1, [this, i2](int i1) { return in.bin(map.input(i1, i2)); },
                                    [this, i2](int i1) { return in.pair(map.input(i1, i2)); }};
            setRows(i2, firstStage.pairedIn(ar, group));
        } else if (index.groupsTogether(i2, firstStage, secondStage)) {
            sumsAndDifferences(i2, skew, i2n == i2);
        } else {
            setRows(i2, plainGroup(i2));
            if (i2n != i2)
                setRows(i2n, plainGroup(i2n));
        }
    }
    void turn() {}
    int secondCount() const { return map.n1; }
    Section secondSection(int k1) const { return rowSection(k1, map.n2); }
    void runSecond(int k1)
    {
        const int n2 = map.n2;
        const Signal& bins = rowBin[k1];
        const std::map<int, SumDif>& pairs = rowPair[k1];
        const PairedInput row{
            n2,
            [&](int i2) {
                if (pairs.count(std::min(i2, mod(-i2, n2))))
                    throw std::logic_error("a group taken with its partner asked for alone");
                return bins[i2];
            },
            [&](int i2) {
                const int i2n = mod(-i2, n2);
                const auto found = pairs.find(std::min(i2, i2n));
                if (found == pairs.end())
                    return SumDif{ar.add(bins[i2], bins[i2n]), ar.sub(bins[i2], bins[i2n])};
                return i2 < i2n ? found->second : SumDif{found->second.sum, ComplexArith::neg(found->second.dif)};
            }};
        map.placeRow(X, k1, secondStage.pairedIn(ar, row));
    }
};

} // namespace

Method codeletMethod(std::function<PairedOutput(DftArith&, const PairedInput&)> core, bool takesAllPairs)
{
    Method m;
    m.plain = [core](DftArith& ar, const Signal& x) { return close(ar, core(ar, binsOf(ar, x))); };
    m.pairedOut = [core](DftArith& ar, const Signal& x) { return core(ar, binsOf(ar, x)); };
    m.pairedIn = [core](DftArith& ar, const PairedInput& x) { return close(ar, core(ar, x)); };
    m.keepsAllPairs = true;
    m.takesAllPairs = takesAllPairs;
    return m;
}

Method plainMethod(Transform plain)
{
    Method m;
    m.plain = plain;
    m.pairedOut = [plain](DftArith& ar, const Signal& x) {
        PairedOutput y(static_cast<int>(x.size()));
        y.bin = plain(ar, x);
        return y;
    };
    m.pairedIn = [plain](DftArith& ar, const PairedInput& in) {
        Signal x(in.size);
        for (int k = 0; k < in.size; ++k)
            x[k] = in.bin(k);
        return plain(ar, x);
    };
    return m;
}

Method joinMethod(const JoinMap& map, const Method& first, const Method& second)
{
    Method m;
    m.plain = [=](DftArith& ar, const Signal& x) { return join(ar, x, map, first, second); };
    m.pairedOut = [=](DftArith& ar, const Signal& x) {
        PairsOut join{ar, x, map, first, second};
        stages(ar.graph(), join);
        return join.X;
    };
    m.pairedIn = [=](DftArith& ar, const PairedInput& in) {
        PairsIn join{ar, in, map, first, second};
        stages(ar.graph(), join);
        return join.X;
    };
    const JoinIndex index(map);
    bool rowsPaired = true, groupsPaired = true;
    for (int k1 = 0; k1 < map.n1; ++k1)
        rowsPaired = rowsPaired && (index.twiddleFree(k1) || index.rowShift(k1) >= 0);
    for (int i2 = 0; i2 < map.n2; ++i2) {
        int i2n = 0;
        groupsPaired = groupsPaired && ((index.groupSkew(i2, i2n) == 0 && i2n == i2) ||
                                        index.groupsTogether(i2, first, second));
    }
    m.keepsAllPairs = first.keepsAllPairs && second.keepsAllPairs && rowsPaired;
    m.takesAllPairs = first.takesAllPairs && groupsPaired;
    return m;
}

} // namespace kernelgen
