#include "families/dft_complex.h"

#include <map>
#include <stdexcept>
#include <string>

#include "arith/pair_arith.h"
#include "methods/codelets.h"
#include "methods/convolution.h"
#include "methods/lane_split.h"
#include "methods/pairs.h"

namespace kernelgen {

namespace {

// ---- Roads: a method with the words that describe it ------------------------
// The words of a road are derived from the same calls that build it, so the
// comment of a kernel says what its graph does.
struct Road {
    Method method;
    std::function<std::string(int n)> words; // of the road at length n
    bool codelet = false;                     // named by its length alone inside a chain
};

std::string part(int n, const Road& road)
{
    return road.codelet ? std::to_string(n) : std::to_string(n) + " (" + road.words(n) + ")";
}

Road codelet(const std::string& what, Method method)
{
    const std::string prefix = what.empty() ? "" : what + " ";
    return {std::move(method), [prefix](int n) { return prefix + "length-" + std::to_string(n) + " codelet"; }, true};
}

// The stage of a join: one road on all its groups, or two forms side by
// side, the first `leadingGroups` groups taking `leading`.
struct StageRoad {
    StageRoad(const Road& road) : leading(road), rest(road) {}
    StageRoad(int leadingGroups, Road leading, Road rest)
        : leadingGroups(leadingGroups), leading(std::move(leading)), rest(std::move(rest))
    {
    }
    Stage stage() const
    {
        return leadingGroups ? Stage(leadingGroups, leading.method, rest.method) : Stage(rest.method);
    }
    std::string part(int n) const
    {
        if (!leadingGroups)
            return kernelgen::part(n, rest);
        const std::string groups = leadingGroups == 1 ? "the first group" : "the first " + std::to_string(leadingGroups);
        return std::to_string(n) + " (" + leading.words(n) + " in " + groups + ", " + rest.words(n) + " elsewhere)";
    }

    int leadingGroups = 0;
    Road leading;
    Road rest;
};

enum class JoinKind { Coprime, Twiddled };

JoinMap mapOf(JoinKind kind, int n1, int n2) { return kind == JoinKind::Coprime ? coprimeMap(n1, n2) : twiddledMap(n1, n2); }
const char* nameOf(JoinKind kind) { return kind == JoinKind::Coprime ? "coprime" : "twiddled"; }

// A join of two stages. Pairs pass through both stages; a stage holding two
// forms side by side has no pair forms, so its join runs on bins.
Road joinRoad(JoinKind kind, int n1, const StageRoad& first, int n2, const StageRoad& second)
{
    const JoinMap map = mapOf(kind, n1, n2);
    Method method;
    if (!first.leadingGroups && !second.leadingGroups) {
        method = joinMethod(map, first.rest.method, second.rest.method);
    } else {
        const Stage a = first.stage(), b = second.stage();
        method = plainMethod([=](DftArith& ar, const Signal& x) { return join(ar, x, map, a, b); });
    }
    const std::string words = first.part(n1) + " then " + second.part(n2) + ", " + nameOf(kind) + " join";
    return {method, [words](int) { return words; }};
}

Road coprime(int n1, const StageRoad& first, int n2, const StageRoad& second)
{
    return joinRoad(JoinKind::Coprime, n1, first, n2, second);
}

Road twiddled(int n1, const StageRoad& first, int n2, const StageRoad& second)
{
    return joinRoad(JoinKind::Twiddled, n1, first, n2, second);
}

// ---- The codelets of both types ---------------------------------------------

Method foldedMethod(DcOrder order)
{
    return codeletMethod([order](DftArith& ar, const PairedInput& x) { return foldedOddPairs(ar, x, order); },
                         true);
}

// Length 2 has no partner pairs, so its bins are all its pair forms need.
Method lengthTwo()
{
    Method m = plainMethod(dft2);
    m.keepsAllPairs = m.takesAllPairs = true;
    return m;
}

const Road d2 = codelet("", lengthTwo());
const Road d4 = codelet("", codeletMethod(dft4Pairs, true));
const Road r8 = {codeletMethod(road8Pairs, false), [](int) { return "size-8 road, W8 on the pair differences"; },
                 true};
// The vector codelets: X[0] = x0 + (a1 + a2 + ...).
const Road f = codelet("folded", foldedMethod(DcOrder::SumThenX0));
// The scalar 32fc codelets: X[0] = ((x0 + a1) + a2) + ...
const Road fFromX0 = codelet("folded", foldedMethod(DcOrder::FromX0));

const Road road9 = twiddled(3, f, 3, f);
const Road road16 = twiddled(4, d4, 4, d4);
const Road road27 = twiddled(3, f, 9, road9);

// ---- 64fc: one complex number per vector ------------------------------------
// Power-of-two sizes split off a length-4 pass on the stride-N/4 groups, so
// that the first additions join x[n] with x[n + N/2]. Composite sizes join
// coprime parts by Good-Thomas and the stages of a prime power by twiddles.
// Primes from 13 take the convolution form in pair form, nesting the 64fc
// kernel of size p-1.
const Method& road64(int m);

const Road c64 = {plainMethod([](DftArith& ar, const Signal& x) {
                      return convolution(ar, x, road64(static_cast<int>(x.size()) - 1));
                  }),
                  [](int p) { return "convolution over " + std::to_string(p - 1); }};

// The halving steps of 28, 36 and 44 around their odd stage q. Beside a
// spectrum product they leave and take pairs as the coprime join of 4 and
// q does: the same chain, with the 4-point stage whole.
Road halvingsAround(int q, const Road& odd)
{
    Method m = joinMethod(coprimeMap(4, q), d4.method, odd.method);
    const Method inner = odd.method;
    m.plain = [inner](DftArith& ar, const Signal& x) { return halvingsAroundOdd(ar, x, inner); };
    const std::string words = "2 2 around " + part(q, odd) + ": halving steps around the odd stage, Good-Thomas maps";
    return {m, [words](int) { return words; }};
}

const std::map<int, Road>& roads64()
{
    static const std::map<int, Road> roads = [] {
        std::map<int, Road> r;
        r[2] = d2;
        r[3] = f;
        r[4] = d4;
        r[5] = f;
        r[6] = coprime(2, d2, 3, f);
        r[7] = f;
        r[8] = r8;
        r[9] = road9;
        r[10] = coprime(5, c64, 2, d2);
        r[11] = f;
        r[12] = coprime(3, f, 4, d4);
        r[13] = c64;
        r[14] = coprime(2, d2, 7, f);
        r[15] = coprime(5, f, 3, f);
        r[16] = road16;
        r[17] = c64;
        r[18] = coprime(9, road9, 2, d2);
        r[19] = c64;
        r[20] = coprime(5, f, 4, d4);
        r[21] = coprime(7, f, 3, f);
        r[22] = coprime(11, f, 2, d2);
        r[23] = c64;
        r[24] = coprime(8, r8, 3, f);
        r[25] = twiddled(5, f, 5, f);
        r[26] = coprime(13, c64, 2, d2);
        r[27] = road27;
        r[28] = halvingsAround(7, f);
        r[29] = c64;
        r[30] = coprime(2, d2, 15, coprime(5, f, 3, f));
        r[31] = c64;
        r[32] = twiddled(4, d4, 8, r8);
        r[33] = coprime(11, f, 3, f);
        r[34] = coprime(2, d2, 17, c64);
        // 7 takes both forms side by side: the convolution form in row 0 of
        // the seven-point stage, the folded codelet in the other four.
        r[35] = coprime(5, c64, 7, StageRoad(1, c64, f));
        r[36] = halvingsAround(9, road9);
        r[37] = c64;
        r[38] = coprime(2, d2, 19, c64);
        r[39] = coprime(13, c64, 3, f);
        r[40] = coprime(8, r8, 5, f);
        r[41] = c64;
        r[42] = coprime(2, d2, 21, coprime(7, f, 3, f));
        r[43] = c64;
        r[44] = halvingsAround(11, f);
        r[45] = coprime(5, f, 9, road9);
        r[46] = coprime(23, c64, 2, d2);
        r[47] = c64;
        r[48] = coprime(16, road16, 3, f);
        r[49] = twiddled(7, f, 7, f);
        // Both forms of 5 side by side. In 50 the five-point transforms whose
        // inputs carry no twiddle take the convolution form: the first stage
        // of each 25 and its untwiddled row, 12 of 20. In 60 the 20 of row 0
        // of the outer join does, 4 of 12.
        r[50] = coprime(25, twiddled(5, c64, 5, StageRoad(1, c64, f)), 2, d2);
        r[51] = coprime(17, c64, 3, f);
        r[52] = coprime(13, c64, 4, d4);
        r[53] = c64;
        r[54] = coprime(2, d2, 27, road27);
        r[55] = coprime(11, f, 5, f);
        r[56] = coprime(7, f, 8, r8);
        r[57] = coprime(19, c64, 3, f);
        r[58] = coprime(29, c64, 2, d2);
        r[59] = c64;
        r[60] = coprime(3, f, 20, StageRoad(1, coprime(5, c64, 4, d4), coprime(5, f, 4, d4)));
        r[61] = c64;
        r[62] = coprime(31, c64, 2, d2);
        r[63] = coprime(7, f, 9, road9);
        r[64] = twiddled(4, d4, 16, road16);
        return r;
    }();
    return roads;
}

const Method& road64(int m) { return roads64().at(m).method; }

// ---- 32fc: scalar codelets below 6, lane splits above ----------------------
// Sizes 3 and 5 follow the double rule: products with the constants and the
// sums m[k], n[k] in binary64, rounded once to binary32. Vector kernels put
// one join across the lanes (twiddled in the powers of two, the prime
// powers and the sizes marked T, coprime elsewhere); the stages on either
// side of it run on four lanes. Primes from 7 take the convolution form
// across the lanes of their size-(p-1) split, 47 and 59 the chirp form.
enum class Form32 { ScalarCodelet, LaneJoin, LaneConvolution, LaneChirp };

struct LaneJoin {
    JoinMap map;
    Road first;
    Road second;
    std::string words;
};

struct Road32 {
    Form32 form;
    std::string words;
    Road codelet{};                                         // ScalarCodelet
    RoundingPolicy rounding = RoundingPolicy::elementType(); // ScalarCodelet
    LaneJoin lanes{};                                       // LaneJoin, LaneChirp (over the chirp's length)
};

Road32 scalar(int n, const Road& road, RoundingPolicy rounding)
{
    return {Form32::ScalarCodelet, "scalar " + road.words(n) + (rounding.wideSums() ? ", double rule" : ""), road,
            rounding};
}

LaneJoin lanesOf(JoinKind kind, int n1, const Road& first, int n2, const Road& second)
{
    return {mapOf(kind, n1, n2), first, second,
            part(n1, first) + " then " + part(n2, second) + ", " + nameOf(kind) + " join across the lanes"};
}

Road32 lanes(JoinKind kind, int n1, const Road& first, int n2, const Road& second)
{
    LaneJoin join = lanesOf(kind, n1, first, n2, second);
    return {Form32::LaneJoin, join.words, {}, RoundingPolicy::elementType(), join};
}

// N = q*p*p: the p*p twiddled with the factor q between its two stages.
Road32 interleaved(int p, int q, const Road& first, const Road& second)
{
    const LaneJoin join{interleavedPowerMap(p, q), first, second,
                        part(p, first) + " then " + part(p * q, second) + ", the " + std::to_string(q) +
                            " between the stages of " + std::to_string(p * p) + ", across the lanes"};
    return {Form32::LaneJoin, join.words, {}, RoundingPolicy::elementType(), join};
}

Road32 laneConvolution(int p)
{
    return {Form32::LaneConvolution, "convolution over " + std::to_string(p - 1) + ", across its lanes"};
}

Road32 laneChirp(int n1, const Road& first, int n2, const Road& second)
{
    LaneJoin join = lanesOf(JoinKind::Twiddled, n1, first, n2, second);
    return {Form32::LaneChirp, "chirp over " + std::to_string(n1 * n2) + " (" + join.words + ")", {},
            RoundingPolicy::elementType(), join};
}

const std::map<int, Road32>& roads32();

Transform laneJoinTransform(const LaneJoin& j)
{
    const JoinMap map = j.map;
    const Stage a(j.first.method), b(j.second.method);
    return [=](DftArith& ar, const Signal& x) { return join(ar, x, map, a, b); };
}

// The plain convolution form inside a lane join, nesting the 32fc split of
// size p-1 on four lanes.
const Road c32 = {plainMethod([](DftArith& ar, const Signal& x) {
                      const int m = static_cast<int>(x.size()) - 1;
                      return convolution(ar, x, plainMethod(laneJoinTransform(roads32().at(m).lanes)));
                  }),
                  [](int p) { return "convolution over " + std::to_string(p - 1); }};

const std::map<int, Road32>& roads32()
{
    static const std::map<int, Road32> roads = [] {
        constexpr JoinKind cp = JoinKind::Coprime, tw = JoinKind::Twiddled;
        const Road road6 = coprime(2, d2, 3, f);
        std::map<int, Road32> r;
        r.emplace(2, scalar(2, d2, RoundingPolicy::elementType()));
        r.emplace(3, scalar(3, fFromX0, RoundingPolicy::doubleRule()));
        r.emplace(4, scalar(4, d4, RoundingPolicy::elementType()));
        r.emplace(5, scalar(5, fFromX0, RoundingPolicy::doubleRule()));
        r.emplace(6, lanes(cp, 2, d2, 3, f));
        r.emplace(7, laneConvolution(7));
        r.emplace(8, lanes(tw, 4, d4, 2, d2));
        r.emplace(9, lanes(tw, 3, f, 3, f));
        r.emplace(10, lanes(cp, 5, f, 2, d2));
        r.emplace(11, laneConvolution(11));
        r.emplace(12, lanes(cp, 4, d4, 3, f));
        r.emplace(13, laneConvolution(13));
        r.emplace(14, lanes(cp, 2, d2, 7, f));
        r.emplace(15, lanes(cp, 5, f, 3, f));
        r.emplace(16, lanes(tw, 4, d4, 4, d4));
        r.emplace(17, laneConvolution(17));
        r.emplace(18, interleaved(3, 2, f, road6));
        r.emplace(19, laneConvolution(19));
        r.emplace(20, lanes(cp, 4, d4, 5, f));
        r.emplace(21, lanes(cp, 7, f, 3, f));
        r.emplace(22, lanes(cp, 2, d2, 11, f));
        r.emplace(23, laneConvolution(23));
        r.emplace(24, lanes(tw, 4, d4, 6, coprime(3, f, 2, d2)));
        r.emplace(25, lanes(tw, 5, f, 5, f));
        r.emplace(26, lanes(cp, 13, c32, 2, d2));
        r.emplace(27, lanes(tw, 3, f, 9, road9));
        r.emplace(28, lanes(cp, 4, d4, 7, f));
        r.emplace(29, laneConvolution(29));
        r.emplace(30, lanes(cp, 5, f, 6, road6));
        r.emplace(31, laneConvolution(31));
        r.emplace(32, lanes(tw, 4, d4, 8, r8));
        r.emplace(33, lanes(cp, 11, f, 3, f));
        r.emplace(34, lanes(cp, 2, d2, 17, c32));
        r.emplace(35, lanes(cp, 5, f, 7, f));
        r.emplace(36, lanes(cp, 4, d4, 9, road9));
        r.emplace(37, laneConvolution(37));
        r.emplace(38, lanes(cp, 2, d2, 19, c32));
        r.emplace(39, lanes(cp, 13, c32, 3, f));
        r.emplace(40, lanes(tw, 10, coprime(5, f, 2, d2), 4, d4));
        r.emplace(41, laneConvolution(41));
        r.emplace(42, lanes(cp, 7, f, 6, road6));
        r.emplace(43, laneConvolution(43));
        r.emplace(44, lanes(cp, 4, d4, 11, f));
        r.emplace(45, lanes(tw, 15, coprime(5, f, 3, f), 3, f));
        r.emplace(46, lanes(tw, 23, c32, 2, d2));
        // 96 = 3 then 32, 128 = 4 then 32: halvings after the first stage.
        r.emplace(47, laneChirp(3, f, 32, twiddled(4, d4, 8, r8)));
        r.emplace(48, lanes(tw, 4, d4, 12, coprime(3, f, 4, d4)));
        r.emplace(49, lanes(tw, 7, f, 7, f));
        r.emplace(50, interleaved(5, 2, f, coprime(2, d2, 5, f)));
        r.emplace(51, lanes(cp, 17, c32, 3, f));
        r.emplace(52, lanes(cp, 4, d4, 13, c32));
        r.emplace(53, laneConvolution(53));
        r.emplace(54, lanes(cp, 2, d2, 27, road27));
        r.emplace(55, lanes(cp, 5, f, 11, f));
        r.emplace(56, lanes(tw, 14, coprime(7, f, 2, d2), 4, d4));
        r.emplace(57, lanes(cp, 19, c32, 3, f));
        r.emplace(58, lanes(cp, 2, d2, 29, c32));
        r.emplace(59, laneChirp(4, d4, 32, twiddled(4, d4, 8, r8)));
        r.emplace(60, lanes(tw, 4, d4, 15, coprime(5, f, 3, f)));
        r.emplace(61, laneConvolution(61));
        r.emplace(62, lanes(tw, 31, c32, 2, d2));
        r.emplace(63, lanes(cp, 9, road9, 7, f));
        r.emplace(64, lanes(tw, 8, r8, 8, r8));
        return r;
    }();
    return roads;
}

// ---- Kernel graphs ----------------------------------------------------------

Graph build64(int size, Direction direction)
{
    Graph g;
    PairArith ar(g, direction);
    Signal x(size);
    for (int i = 0; i < size; ++i)
        x[i] = ar.load(i);
    const Signal X = roads64().at(size).method(ar, x);
    const Graph::Value scale = g.scaleArg(Kind::V2F64);
    for (int k = 0; k < size; ++k)
        ar.storeScaled(X[k], k, scale);
    return g;
}

Graph buildScalar32(int size, Direction direction, const Road32& road)
{
    Graph g;
    SplitArith ar(g, direction, Kind::F32, road.rounding);
    Signal x(size);
    for (int i = 0; i < size; ++i)
        x[i] = Cx{g.load(Kind::F32, 2 * i), g.load(Kind::F32, 2 * i + 1)};
    const Signal X = road.codelet.method(ar, x);
    const Graph::Value scale = g.scaleArg(Kind::F32);
    for (int k = 0; k < size; ++k) {
        const Cx out = ar.materialize(X[k]);
        g.store(g.mul(out.re, scale), 2 * k);
        g.store(g.mul(out.im, scale), 2 * k + 1);
    }
    return g;
}

Graph build32(int size, Direction direction, const Road32& road)
{
    if (road.form == Form32::ScalarCodelet)
        return buildScalar32(size, direction, road);
    Graph g;
    SplitArith ar(g, direction, Kind::V4F32);
    const LaneJoin& j = road.form == Form32::LaneConvolution ? roads32().at(size - 1).lanes : road.lanes;
    switch (road.form) {
    case Form32::LaneJoin: buildLaneSplit(ar, j.map, j.first.method, j.second.method); break;
    case Form32::LaneConvolution: buildLaneConvolution(ar, size, j.map, j.first.method, j.second.method); break;
    case Form32::LaneChirp: buildLaneChirp(ar, size, j.map, j.first.method, j.second.method); break;
    case Form32::ScalarCodelet: break;
    }
    return g;
}

std::string directionName(Direction d) { return d == Direction::Forward ? "Forward" : "Inverse"; }

std::string exportedName(Precision type, int size, Direction d)
{
    return std::string(d == Direction::Forward ? "tvkgDFTFwd_CToC_" : "tvkgDFTInv_CToC_") + std::to_string(size) +
           "_" + typeSuffix(type, true);
}

FramedKernel complexKernel(Precision type, int size, Direction direction)
{
    FramedKernel k;
    k.structName = directionName(direction);
    k.exportedName = exportedName(type, size, direction);
    k.scaleRow = directionName(direction);
    k.scaleFactors = scaleFactors(type, size);
    if (type == Precision::Double) {
        const auto road = roads64().find(size);
        if (road == roads64().end())
            throw std::invalid_argument("no 64fc road for this size");
        k.title = k.structName + " size-" + std::to_string(size) + " kernel: " + road->second.words(size);
        k.scaleKind = Kind::F64;
        k.scaleLanes = 2;
        k.twins = true;
        k.graph = build64(size, direction);
        return k;
    }
    const auto road = roads32().find(size);
    if (road == roads32().end())
        throw std::invalid_argument("no 32fc road for this size");
    k.title = k.structName + " size-" + std::to_string(size) + " kernel: " + road->second.words;
    k.scaleKind = Kind::F32;
    k.scaleLanes = 1;
    k.twins = road->second.form != Form32::ScalarCodelet;
    k.graph = build32(size, direction, road->second);
    return k;
}

} // namespace

std::vector<int> complexSizes(Precision type)
{
    std::vector<int> sizes;
    if (type == Precision::Double)
        for (const auto& entry : roads64())
            sizes.push_back(entry.first);
    else
        for (const auto& entry : roads32())
            sizes.push_back(entry.first);
    return sizes;
}

FramedKernelFile complexSizeFile(Precision type, int size)
{
    FramedKernelFile file;
    file.space = std::string("dft_") + typeSuffix(type, true) + "_" + std::to_string(size);
    file.element = std::string("Tvk") + typeSuffix(type, true);
    for (Direction d : {Direction::Forward, Direction::Inverse})
        file.kernels.push_back(complexKernel(type, size, d));
    return file;
}

std::vector<SizeDispatcher> complexDispatchers()
{
    std::vector<SizeDispatcher> dispatchers;
    for (Precision type : {Precision::Single, Precision::Double})
        for (Direction d : {Direction::Forward, Direction::Inverse}) {
            const std::string element = std::string("Tvk") + typeSuffix(type, true);
            SizeDispatcher s{std::string(d == Direction::Forward ? "tvkgDFTFwd_CToC_" : "tvkgDFTInv_CToC_") +
                                 typeSuffix(type, true),
                             element, element, 2, {}};
            for (int n = 2; n <= 64; ++n)
                s.entries.push_back(exportedName(type, n, d));
            dispatchers.push_back(s);
        }
    return dispatchers;
}

CountsTable complexCounts()
{
    CountsTable table{"ComplexKernelCounts",
                      "kComplexKernelCounts",
                      {{"const char*", "type"}, {"int", "size"}, {"bool", "inverse"}, {"bool", "twins"}},
                      {}};
    for (Precision type : {Precision::Single, Precision::Double})
        for (int size : complexSizes(type))
            for (Direction d : {Direction::Forward, Direction::Inverse}) {
                FramedKernel k = complexKernel(type, size, d);
                table.rows.push_back({{std::string("\"") + typeSuffix(type, true) + "\"", std::to_string(size),
                                       d == Direction::Inverse ? "true" : "false", k.twins ? "true" : "false"},
                                      std::move(k.graph)});
            }
    return table;
}

} // namespace kernelgen
