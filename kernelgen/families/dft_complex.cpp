#include "families/dft_complex.h"

#include <map>
#include <stdexcept>
#include <string>

#include "arith/interleaved_arith.h"
#include "core/exports.h"
#include "methods/lane_split.h"
#include "roads/build.h"
#include "roads/words.h"

namespace kernelgen {

namespace {

// ---- 64fc: one complex number per vector ------------------------------------
// Power-of-two sizes split off a length-4 pass on the stride-N/4 groups, so
// that the first additions join x[n] with x[n + N/2]. Composite sizes join
// coprime parts by Good-Thomas and the stages of a prime power by twiddles.
// Primes from 13 take the convolution form in pair form, nesting the 64fc
// kernel of size p-1.
RoadRef coprime(int n1, const RoadRef& first, int n2, const RoadRef& second)
{
    return joined(RoadMethod::Coprime, n1, stageOf(n1, first), n2, stageOf(n2, second));
}

RoadRef twiddled(int n1, const RoadRef& first, int n2, const RoadRef& second)
{
    return joined(RoadMethod::Twiddled, n1, stageOf(n1, first), n2, stageOf(n2, second));
}

// A stage whose first `groups` groups take `leading`, the others `rest`.
RoadStage sideBySide(int length, int groups, const RoadRef& leading, const RoadRef& rest)
{
    return {length, rest, groups, leading};
}

const RoadRef d2 = butterflies(2);
const RoadRef d4 = butterflies(4);
const RoadRef r8 = size8();
// The vector codelets: X[0] = x0 + (a1 + a2 + ...).
RoadRef f(int p) { return folded(p); }
const RoadRef road9 = twiddled(3, f(3), 3, f(3));
const RoadRef road16 = twiddled(4, d4, 4, d4);
const RoadRef road27 = twiddled(3, f(3), 9, road9);

const std::map<int, RoadRef>& roads64()
{
    static const std::map<int, RoadRef> roads = [] {
        std::map<int, RoadRef> r;
        const auto c64 = [&](int p) { return convolutionOver(p, r.at(p - 1), true); };
        r[2] = d2;
        r[3] = f(3);
        r[4] = d4;
        r[5] = f(5);
        r[6] = coprime(2, d2, 3, f(3));
        r[7] = f(7);
        r[8] = r8;
        r[9] = road9;
        r[11] = f(11);
        r[12] = coprime(3, f(3), 4, d4);
        r[10] = coprime(5, c64(5), 2, d2);
        r[13] = c64(13);
        r[14] = coprime(2, d2, 7, f(7));
        r[15] = coprime(5, f(5), 3, f(3));
        r[16] = road16;
        r[17] = c64(17);
        r[18] = coprime(9, road9, 2, d2);
        r[19] = c64(19);
        r[20] = coprime(5, f(5), 4, d4);
        r[21] = coprime(7, f(7), 3, f(3));
        r[22] = coprime(11, f(11), 2, d2);
        r[23] = c64(23);
        r[24] = coprime(8, r8, 3, f(3));
        r[25] = twiddled(5, f(5), 5, f(5));
        r[26] = coprime(13, r.at(13), 2, d2);
        r[27] = road27;
        r[28] = halvingsAround(7, f(7));
        r[29] = c64(29);
        r[30] = coprime(2, d2, 15, r.at(15));
        r[31] = c64(31);
        r[32] = twiddled(4, d4, 8, r8);
        r[33] = coprime(11, f(11), 3, f(3));
        r[34] = coprime(2, d2, 17, r.at(17));
        // 7 takes both forms side by side: the convolution form in row 0 of
        // the seven-point stage, the folded codelet in the other four.
        r[35] = joined(RoadMethod::Coprime, 5, stageOf(5, c64(5)), 7, sideBySide(7, 1, c64(7), f(7)));
        r[36] = halvingsAround(9, road9);
        r[37] = c64(37);
        r[38] = coprime(2, d2, 19, r.at(19));
        r[39] = coprime(13, r.at(13), 3, f(3));
        r[40] = coprime(8, r8, 5, f(5));
        r[41] = c64(41);
        r[42] = coprime(2, d2, 21, r.at(21));
        r[43] = c64(43);
        r[44] = halvingsAround(11, f(11));
        r[45] = coprime(5, f(5), 9, road9);
        r[46] = coprime(23, r.at(23), 2, d2);
        r[47] = c64(47);
        r[48] = coprime(16, road16, 3, f(3));
        r[49] = twiddled(7, f(7), 7, f(7));
        // Both forms of 5 side by side. In 50 the five-point transforms whose
        // inputs carry no twiddle take the convolution form: the first stage
        // of each 25 and its untwiddled row, 12 of 20. In 60 the 20 of row 0
        // of the outer join does, 4 of 12.
        r[50] = coprime(25, joined(RoadMethod::Twiddled, 5, stageOf(5, c64(5)), 5, sideBySide(5, 1, c64(5), f(5))),
                        2, d2);
        r[51] = coprime(17, r.at(17), 3, f(3));
        r[52] = coprime(13, r.at(13), 4, d4);
        r[53] = c64(53);
        r[54] = coprime(2, d2, 27, road27);
        r[55] = coprime(11, f(11), 5, f(5));
        r[56] = coprime(7, f(7), 8, r8);
        r[57] = coprime(19, r.at(19), 3, f(3));
        r[58] = coprime(29, r.at(29), 2, d2);
        r[59] = c64(59);
        r[60] = joined(RoadMethod::Coprime, 3, stageOf(3, f(3)), 20,
                       sideBySide(20, 1, coprime(5, c64(5), 4, d4), coprime(5, f(5), 4, d4)));
        r[61] = c64(61);
        r[62] = coprime(31, r.at(31), 2, d2);
        r[63] = coprime(7, f(7), 9, road9);
        r[64] = twiddled(4, d4, 16, road16);
        return r;
    }();
    return roads;
}

// ---- 32fc: scalar codelets below 6, lane splits above ----------------------
// Sizes 3 and 5 follow the double rule: products with the constants and the
// sums m[k], n[k] in binary64, rounded once to binary32. Vector kernels put
// one join across the lanes (twiddled in the powers of two, the prime
// powers and the sizes marked T, coprime elsewhere); the stages on either
// side of it run on four lanes. Primes from 7 take the convolution form
// across the lanes of their size-(p-1) split, 47 and 59 the chirp form.
// Inside a split, a prime from 13 takes the plain convolution form over the
// split of p-1 run on four lanes.
const std::map<int, RoadRef>& roads32()
{
    static const std::map<int, RoadRef> roads = [] {
        std::map<int, RoadRef> r;
        const auto lanes = [](RoadMethod m, int n1, const RoadRef& first, int n2, const RoadRef& second) {
            return acrossLanes(joined(m, n1, stageOf(n1, first), n2, stageOf(n2, second)));
        };
        const auto laneConvolution = [&](int p) { return acrossLanes(convolutionOver(p, r.at(p - 1))); };
        const auto c32 = [&](int p) { return convolutionOver(p, r.at(p - 1)); };
        constexpr RoadMethod cp = RoadMethod::Coprime, tw = RoadMethod::Twiddled;
        const RoadRef road6 = coprime(2, d2, 3, f(3));
        // The scalar codelets: X[0] = ((x0 + a1) + a2) + ...
        r[2] = d2;
        r[3] = withDoubleRule(folded(3, true));
        r[4] = d4;
        r[5] = withDoubleRule(folded(5, true));
        r[6] = lanes(cp, 2, d2, 3, f(3));
        r[8] = lanes(tw, 4, d4, 2, d2);
        r[9] = lanes(tw, 3, f(3), 3, f(3));
        r[10] = lanes(cp, 5, f(5), 2, d2);
        r[12] = lanes(cp, 4, d4, 3, f(3));
        r[14] = lanes(cp, 2, d2, 7, f(7));
        r[15] = lanes(cp, 5, f(5), 3, f(3));
        r[16] = lanes(tw, 4, d4, 4, d4);
        r[18] = acrossLanes(interleaved(3, 2, f(3), road6));
        r[20] = lanes(cp, 4, d4, 5, f(5));
        r[21] = lanes(cp, 7, f(7), 3, f(3));
        r[22] = lanes(cp, 2, d2, 11, f(11));
        r[24] = lanes(tw, 4, d4, 6, coprime(3, f(3), 2, d2));
        r[25] = lanes(tw, 5, f(5), 5, f(5));
        r[27] = lanes(tw, 3, f(3), 9, road9);
        r[28] = lanes(cp, 4, d4, 7, f(7));
        r[30] = lanes(cp, 5, f(5), 6, road6);
        r[32] = lanes(tw, 4, d4, 8, r8);
        r[33] = lanes(cp, 11, f(11), 3, f(3));
        r[35] = lanes(cp, 5, f(5), 7, f(7));
        r[36] = lanes(cp, 4, d4, 9, road9);
        r[40] = lanes(tw, 10, coprime(5, f(5), 2, d2), 4, d4);
        r[42] = lanes(cp, 7, f(7), 6, road6);
        r[44] = lanes(cp, 4, d4, 11, f(11));
        r[45] = lanes(tw, 15, coprime(5, f(5), 3, f(3)), 3, f(3));
        r[48] = lanes(tw, 4, d4, 12, coprime(3, f(3), 4, d4));
        r[49] = lanes(tw, 7, f(7), 7, f(7));
        r[50] = acrossLanes(interleaved(5, 2, f(5), coprime(2, d2, 5, f(5))));
        r[54] = lanes(cp, 2, d2, 27, road27);
        r[55] = lanes(cp, 5, f(5), 11, f(11));
        r[56] = lanes(tw, 14, coprime(7, f(7), 2, d2), 4, d4);
        r[60] = lanes(tw, 4, d4, 15, coprime(5, f(5), 3, f(3)));
        r[63] = lanes(cp, 9, road9, 7, f(7));
        r[64] = lanes(tw, 8, r8, 8, r8);
        r[26] = lanes(cp, 13, c32(13), 2, d2);
        r[34] = lanes(cp, 2, d2, 17, c32(17));
        r[38] = lanes(cp, 2, d2, 19, c32(19));
        r[39] = lanes(cp, 13, c32(13), 3, f(3));
        r[46] = lanes(tw, 23, c32(23), 2, d2);
        r[51] = lanes(cp, 17, c32(17), 3, f(3));
        r[52] = lanes(cp, 4, d4, 13, c32(13));
        r[57] = lanes(cp, 19, c32(19), 3, f(3));
        r[58] = lanes(cp, 2, d2, 29, c32(29));
        r[62] = lanes(tw, 31, c32(31), 2, d2);
        for (int p : {7, 11, 13, 17, 19, 23, 29, 31, 37, 41, 43, 53, 61})
            r[p] = laneConvolution(p);
        // 96 = 3 then 32, 128 = 4 then 32: halvings after the first stage.
        const RoadRef road32 = twiddled(4, d4, 8, r8);
        r[47] = acrossLanes(chirpOver(47, lanes(tw, 3, f(3), 32, road32)));
        r[59] = acrossLanes(chirpOver(59, lanes(tw, 4, d4, 32, road32)));
        return r;
    }();
    return roads;
}

// The words of a 32fc road: those of its scalar codelet, or of its split.
std::string roadWords32(const Road& road) { return (road.acrossLanes ? "" : "scalar ") + wordsOf(road); }

// ---- Kernel graphs ----------------------------------------------------------

Graph build64(int size, Direction direction)
{
    Graph g;
    InterleavedArith ar(g, direction);
    Signal x(size);
    for (int i = 0; i < size; ++i)
        x[i] = ar.load(i);
    const Signal X = methodOf(*roads64().at(size)).plain(ar, x);
    const Graph::Value scale = g.scaleArg(Kind::V2F64);
    for (int k = 0; k < size; ++k)
        ar.storeScaled(X[k], k, scale);
    return g;
}

Graph buildScalar32(int size, Direction direction, const Road& road)
{
    Graph g;
    SplitArith ar(g, direction, Kind::F32,
                  road.doubleRule ? RoundingPolicy::doubleRule() : RoundingPolicy::elementType());
    Signal x(size);
    for (int i = 0; i < size; ++i)
        x[i] = ar.load(i);
    const Signal X = methodOf(road).plain(ar, x);
    const Graph::Value scale = g.scaleArg(Kind::F32);
    for (int k = 0; k < size; ++k)
        ar.storeScaled(X[k], k, scale);
    return g;
}

// A kernel across the lanes: its join, or the join that its convolution or
// chirp form runs over, split across the lanes.
Graph build32(int size, Direction direction, const Road& road)
{
    if (!road.acrossLanes)
        return buildScalar32(size, direction, road);
    Graph g;
    SplitArith ar(g, direction, Kind::V4F32);
    const bool form = road.method == RoadMethod::Convolution || road.method == RoadMethod::Chirp;
    const Road& split = form ? *road.stages[0].road : road;
    const JoinMap map = mapOf(split);
    const Transform first = methodOf(*split.stages[0].road).plain, second = methodOf(*split.stages[1].road).plain;
    if (road.method == RoadMethod::Convolution)
        buildLaneForm(ar, map, first, second, convolutionForm(size, ar.exponentSign()));
    else if (road.method == RoadMethod::Chirp)
        buildLaneForm(ar, map, first, second, chirpForm(size, map.n1 * map.n2, ar.exponentSign()));
    else
        buildLaneSplit(ar, map, first, second);
    return g;
}

std::string directionName(Direction d) { return d == Direction::Forward ? "Forward" : "Inverse"; }

std::string dispatcherName(Precision type, Direction d)
{
    return std::string(d == Direction::Forward ? "tvkgDFTFwd_CToC_" : "tvkgDFTInv_CToC_") + typeSuffix(type, true);
}

FramedKernel complexKernel(Precision type, int size, Direction direction)
{
    FramedKernel k;
    k.structName = directionName(direction);
    k.exportedName = listedKernel(dispatcherName(type, direction), size);
    k.scaleRow = directionName(direction);
    k.scaleFactors = scaleFactors(type, size);
    if (type == Precision::Double) {
        const auto road = roads64().find(size);
        if (road == roads64().end())
            throw std::invalid_argument("no 64fc road for this size");
        k.title = k.structName + " size-" + std::to_string(size) + " kernel: " + wordsOf(*road->second);
        k.scaleKind = Kind::F64;
        k.scaleLanes = 2;
        k.twins = true;
        k.graph = build64(size, direction);
        return k;
    }
    const auto road = roads32().find(size);
    if (road == roads32().end())
        throw std::invalid_argument("no 32fc road for this size");
    k.title = k.structName + " size-" + std::to_string(size) + " kernel: " + roadWords32(*road->second);
    k.scaleKind = Kind::F32;
    k.scaleLanes = 1;
    k.twins = road->second->acrossLanes;
    k.graph = build32(size, direction, *road->second);
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

std::string complexRoadWords(Precision type, int size)
{
    return type == Precision::Double ? wordsOf(*roads64().at(size)) : roadWords32(*roads32().at(size));
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
            SizeDispatcher s{dispatcherName(type, d), element, element, 2, {}};
            for (int n = 2; n <= 64; ++n)
                s.entries.push_back(listedKernel(s.name, n));
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
