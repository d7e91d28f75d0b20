#include "dft_complex.h"

#include <map>
#include <stdexcept>

#include "lanes32.h"
#include "pairs.h"

namespace kernelgen {

namespace {

Method folded(DcOrder order)
{
    return codeletMethod([order](ComplexArith& ar, const PairedInput& x) { return foldedOddPairs(ar, x, order); },
                         true);
}

Method coprime(int n1, const Method& first, int n2, const Method& second)
{
    return joinMethod(coprimeMap(n1, n2), first, second);
}

Method twiddled(int n1, const Method& first, int n2, const Method& second)
{
    return joinMethod(twiddledMap(n1, n2), first, second);
}

Transform joined(const JoinMap& map, Stage first, Stage second)
{
    return [=](ComplexArith& ar, const Signal& x) { return join(ar, x, map, first, second); };
}

// Joins whose stage holds two forms side by side (50, 60) have no pair
// forms: beside a spectrum product they run on bins.
Method coprime(int n1, const Stage& first, int n2, const Stage& second)
{
    return plainMethod(joined(coprimeMap(n1, n2), first, second));
}

Method twiddled(int n1, const Stage& first, int n2, const Stage& second)
{
    return plainMethod(joined(twiddledMap(n1, n2), first, second));
}

Transform innerOf32(int m);
const Method& road64(int m);

// The convolution form, nesting the element type's own size-(p-1) kernel:
// 64fc in pair form, 32fc plain.
const Method c64 = plainMethod([](ComplexArith& ar, const Signal& x) {
    return pairedConvolution(ar, x, road64(static_cast<int>(x.size()) - 1));
});
const Transform c32 = [](ComplexArith& ar, const Signal& x) {
    return convolution(ar, x, innerOf32(static_cast<int>(x.size()) - 1));
};

// Length 2 has no partner pairs, so its bins are all its pair forms need.
Method lengthTwo()
{
    Method m = plainMethod(dft2);
    m.keepsAllPairs = m.takesAllPairs = true;
    return m;
}
const Method d2 = lengthTwo();
const Method d4 = codeletMethod(dft4Pairs, true);
const Method r8 = codeletMethod(road8Pairs, false);

// The halving steps of 28, 36 and 44 around their odd stage q. Beside a
// spectrum product they leave and take pairs as the coprime join of 4 and
// q does: the same chain, with the 4-point stage whole.
Method halvingsAround(int q, const Method& odd)
{
    Method m = joinMethod(coprimeMap(4, q), d4, odd);
    m.plain = [odd](ComplexArith& ar, const Signal& x) { return halvingsAroundOdd(ar, x, odd); };
    return m;
}

// The vector codelets of both types: X[0] = x0 + (a1 + a2 + ...).
const Method f = folded(DcOrder::SumThenX0);
const Method road16 = twiddled(4, d4, 4, d4);
const Method road9 = twiddled(3, f, 3, f);
const Method road27 = twiddled(3, f, 9, road9);

// ---- 64fc: one complex number per vector ------------------------------------
// Power-of-two sizes split off a length-4 pass on the stride-N/4 groups, so
// that the first additions join x[n] with x[n + N/2]. Composite sizes join
// coprime parts by Good-Thomas and the stages of a prime power by twiddles.
struct Road64 {
    const char* description;
    Method transform;
};

const std::map<int, Road64>& roads64()
{
    static const std::map<int, Road64> roads = [] {
        std::map<int, Road64> r;
        r[2] = {"length-2 codelet", d2};
        r[3] = {"folded length-3 codelet", f};
        r[4] = {"length-4 codelet", d4};
        r[5] = {"folded length-5 codelet", f};
        r[6] = {"2 then 3, coprime join", coprime(2, d2, 3, f)};
        r[10] = {"5 (convolution over 4) then 2, coprime join", coprime(5, c64, 2, d2)};
        r[13] = {"convolution over 12", c64};
        r[17] = {"convolution over 16", c64};
        r[19] = {"convolution over 18", c64};
        r[23] = {"convolution over 22", c64};
        r[26] = {"13 (convolution) then 2, coprime join", coprime(13, c64, 2, d2)};
        r[29] = {"convolution over 28", c64};
        r[31] = {"convolution over 30", c64};
        r[34] = {"2 then 17 (convolution), coprime join", coprime(2, d2, 17, c64)};
        // 7 takes both forms side by side: the convolution form in row 0 of
        // the seven-point stage, the folded codelet in the other four.
        r[35] = {"5 (convolution over 4) then 7 (convolution over 6 in row 0, folded elsewhere), coprime join",
                 coprime(5, c64, 7, Stage(1, c64, f))};
        r[37] = {"convolution over 36", c64};
        r[38] = {"2 then 19 (convolution), coprime join", coprime(2, d2, 19, c64)};
        r[39] = {"13 (convolution) then 3, coprime join", coprime(13, c64, 3, f)};
        r[41] = {"convolution over 40", c64};
        r[43] = {"convolution over 42", c64};
        r[46] = {"23 (convolution) then 2, coprime join", coprime(23, c64, 2, d2)};
        r[47] = {"convolution over 46", c64};
        // Both forms of 5 side by side. In 50 the five-point transforms whose
        // inputs carry no twiddle take the convolution form: the first stage
        // of each 25 and its untwiddled row, 12 of 20. In 60 the 20 of row 0
        // of the outer join does, 4 of 12.
        r[50] = {"25 (5 then 5; convolution form in the first stage and the untwiddled row) then 2, coprime join",
                 coprime(25, twiddled(5, c64, 5, Stage(1, c64, f)), 2, d2)};
        r[51] = {"17 (convolution) then 3, coprime join", coprime(17, c64, 3, f)};
        r[52] = {"13 (convolution) then 4, coprime join", coprime(13, c64, 4, d4)};
        r[53] = {"convolution over 52", c64};
        r[57] = {"19 (convolution) then 3, coprime join", coprime(19, c64, 3, f)};
        r[58] = {"29 (convolution) then 2, coprime join", coprime(29, c64, 2, d2)};
        r[59] = {"convolution over 58", c64};
        r[60] = {"3 then 20 (5 then 4), coprime joins; the 20 of row 0 with five-point stages in convolution form",
                 coprime(3, f, 20, Stage(1, coprime(5, c64, 4, d4), coprime(5, f, 4, d4)))};
        r[61] = {"convolution over 60", c64};
        r[62] = {"31 (convolution) then 2, coprime join", coprime(31, c64, 2, d2)};
        r[7] = {"folded length-7 codelet", f};
        r[8] = {"size-8 road, W8 on the pair differences", r8};
        r[9] = {"3 then 3, twiddled join", road9};
        r[11] = {"folded length-11 codelet", f};
        r[12] = {"3 then 4, coprime join", coprime(3, f, 4, d4)};
        r[14] = {"2 then 7, coprime join", coprime(2, d2, 7, f)};
        r[15] = {"5 then 3, coprime join", coprime(5, f, 3, f)};
        r[16] = {"4 then 4, twiddled join", road16};
        r[18] = {"9 (3 then 3) then 2, coprime join", coprime(9, road9, 2, d2)};
        r[20] = {"5 then 4, coprime join", coprime(5, f, 4, d4)};
        r[21] = {"7 then 3, coprime join", coprime(7, f, 3, f)};
        r[22] = {"11 then 2, coprime join", coprime(11, f, 2, d2)};
        r[24] = {"8 (size-8 road) then 3, coprime join", coprime(8, r8, 3, f)};
        r[25] = {"5 then 5, twiddled join", twiddled(5, f, 5, f)};
        r[27] = {"3 then 9 (3 then 3), twiddled joins", road27};
        r[28] = {"2 2 around 7: halving steps around the odd stage, Good-Thomas maps", halvingsAround(7, f)};
        r[30] = {"2 then 15 (5 then 3), coprime joins", coprime(2, d2, 15, coprime(5, f, 3, f))};
        r[32] = {"4 then 8 (size-8 road), twiddled join", twiddled(4, d4, 8, r8)};
        r[33] = {"11 then 3, coprime join", coprime(11, f, 3, f)};
        r[36] = {"2 2 around 9 (3 then 3): halving steps around the odd stage, Good-Thomas maps",
                 halvingsAround(9, road9)};
        r[40] = {"8 (size-8 road) then 5, coprime join", coprime(8, r8, 5, f)};
        r[42] = {"2 then 21 (7 then 3), coprime joins", coprime(2, d2, 21, coprime(7, f, 3, f))};
        r[44] = {"2 2 around 11: halving steps around the odd stage, Good-Thomas maps", halvingsAround(11, f)};
        r[45] = {"5 then 9 (3 then 3), coprime join", coprime(5, f, 9, road9)};
        r[48] = {"16 (4 then 4) then 3, coprime join", coprime(16, road16, 3, f)};
        r[49] = {"7 then 7, twiddled join", twiddled(7, f, 7, f)};
        r[54] = {"2 then 27 (3 then 3 then 3), coprime join", coprime(2, d2, 27, road27)};
        r[55] = {"11 then 5, coprime join", coprime(11, f, 5, f)};
        r[56] = {"7 then 8 (size-8 road), coprime join", coprime(7, f, 8, r8)};
        r[63] = {"7 then 9 (3 then 3), coprime join", coprime(7, f, 9, road9)};
        r[64] = {"4 then 16 (4 then 4), twiddled join", twiddled(4, d4, 16, road16)};
        return r;
    }();
    return roads;
}

// ---- 32fc: scalar codelets below 6, lane splits above ----------------------
// Sizes 3 and 5 follow the double rule: products with the constants and the
// sums m[k], n[k] in binary64, rounded once to binary32. Vector kernels put
// one join across the lanes (twiddled in the powers of two, the prime
// powers and the sizes marked T, coprime elsewhere); the stages on either
// side of it run on four lanes.
struct Road32 {
    const char* description;
    Transform scalar; // a scalar codelet, or
    JoinMap lanes;    // a join across the lanes
    Transform first;
    Transform second;
    bool doubleRule = false;
    bool convolution = false; // a prime in the convolution form, across the lanes of its size-(p-1) split
    bool chirp = false;       // a prime in the chirp form over the length of `lanes`
};

Road32 scalar32(const char* description, Transform codelet, bool doubleRule)
{
    return {description, std::move(codelet), {}, {}, {}, doubleRule};
}

Road32 lanes32(const char* description, const JoinMap& map, Transform first, Transform second)
{
    return {description, {}, map, std::move(first), std::move(second), false};
}

Road32 convolution32(const char* description)
{
    return {description, {}, {}, {}, {}, false, true};
}

Road32 chirp32(const char* description, const JoinMap& map, Transform first, Transform second)
{
    return {description, {}, map, std::move(first), std::move(second), false, false, true};
}

const std::map<int, Road32>& roads32()
{
    static const std::map<int, Road32> roads = [] {
        const auto tw = twiddledMap;
        const auto cp = coprimeMap;
        const Transform road6 = coprime(2, d2, 3, f);
        std::map<int, Road32> r;
        r[2] = scalar32("scalar length-2 codelet", d2, false);
        r[3] = scalar32("scalar folded length-3 codelet, double rule", folded(DcOrder::FromX0), true);
        r[4] = scalar32("scalar length-4 codelet", d4, false);
        r[5] = scalar32("scalar folded length-5 codelet, double rule", folded(DcOrder::FromX0), true);
        r[6] = lanes32("lanes: 2 then 3, coprime", cp(2, 3), d2, f);
        r[7] = convolution32("convolution over 6, across its lanes");
        r[8] = lanes32("lanes: 4 then 2, twiddled", tw(4, 2), d4, d2);
        r[11] = convolution32("convolution over 10, across its lanes");
        r[13] = convolution32("convolution over 12, across its lanes");
        r[17] = convolution32("convolution over 16, across its lanes");
        r[19] = convolution32("convolution over 18, across its lanes");
        r[23] = convolution32("convolution over 22, across its lanes");
        r[26] = lanes32("lanes: 13 (convolution) then 2, coprime", cp(13, 2), c32, d2);
        r[29] = convolution32("convolution over 28, across its lanes");
        r[31] = convolution32("convolution over 30, across its lanes");
        r[34] = lanes32("lanes: 2 then 17 (convolution), coprime", cp(2, 17), d2, c32);
        r[37] = convolution32("convolution over 36, across its lanes");
        r[38] = lanes32("lanes: 2 then 19 (convolution), coprime", cp(2, 19), d2, c32);
        r[39] = lanes32("lanes: 13 (convolution) then 3, coprime", cp(13, 3), c32, f);
        r[41] = convolution32("convolution over 40, across its lanes");
        r[43] = convolution32("convolution over 42, across its lanes");
        r[46] = lanes32("lanes: 23 (convolution) then 2, twiddled", tw(23, 2), c32, d2);
        r[51] = lanes32("lanes: 17 (convolution) then 3, coprime", cp(17, 3), c32, f);
        r[52] = lanes32("lanes: 4 then 13 (convolution), coprime", cp(4, 13), d4, c32);
        r[53] = convolution32("convolution over 52, across its lanes");
        r[57] = lanes32("lanes: 19 (convolution) then 3, coprime", cp(19, 3), c32, f);
        r[58] = lanes32("lanes: 2 then 29 (convolution), coprime", cp(2, 29), d2, c32);
        r[61] = convolution32("convolution over 60, across its lanes");
        r[62] = lanes32("lanes: 31 (convolution) then 2, twiddled", tw(31, 2), c32, d2);
        r[9] = lanes32("lanes: 3 then 3, twiddled", tw(3, 3), f, f);
        r[10] = lanes32("lanes: 5 then 2, coprime", cp(5, 2), f, d2);
        r[12] = lanes32("lanes: 4 then 3, coprime", cp(4, 3), d4, f);
        r[14] = lanes32("lanes: 2 then 7, coprime", cp(2, 7), d2, f);
        r[15] = lanes32("lanes: 5 then 3, coprime", cp(5, 3), f, f);
        r[16] = lanes32("lanes: 4 then 4, twiddled", tw(4, 4), d4, d4);
        r[18] = lanes32("lanes: 3 then 6 (2 then 3), the 2 between the stages of 9", interleavedPowerMap(3, 2),
                        f, road6);
        r[20] = lanes32("lanes: 4 then 5, coprime", cp(4, 5), d4, f);
        r[21] = lanes32("lanes: 7 then 3, coprime", cp(7, 3), f, f);
        r[22] = lanes32("lanes: 2 then 11, coprime", cp(2, 11), d2, f);
        r[24] = lanes32("lanes: 4 then 6 (3 then 2), twiddled", tw(4, 6), d4, coprime(3, f, 2, d2));
        r[25] = lanes32("lanes: 5 then 5, twiddled", tw(5, 5), f, f);
        r[27] = lanes32("lanes: 3 then 9 (3 then 3), twiddled", tw(3, 9), f, road9);
        r[28] = lanes32("lanes: 4 then 7, coprime", cp(4, 7), d4, f);
        r[30] = lanes32("lanes: 5 then 6 (2 then 3), coprime", cp(5, 6), f, road6);
        r[32] = lanes32("lanes: 4 then 8 (size-8 road), twiddled", tw(4, 8), d4, r8);
        r[33] = lanes32("lanes: 11 then 3, coprime", cp(11, 3), f, f);
        r[35] = lanes32("lanes: 5 then 7, coprime", cp(5, 7), f, f);
        r[36] = lanes32("lanes: 4 then 9 (3 then 3), coprime", cp(4, 9), d4, road9);
        r[40] = lanes32("lanes: 10 (5 then 2) then 4, twiddled", tw(10, 4), coprime(5, f, 2, d2), d4);
        r[42] = lanes32("lanes: 7 then 6 (2 then 3), coprime", cp(7, 6), f, road6);
        r[44] = lanes32("lanes: 4 then 11, coprime", cp(4, 11), d4, f);
        r[45] = lanes32("lanes: 15 (5 then 3) then 3, twiddled", tw(15, 3), coprime(5, f, 3, f), f);
        // 96 = 3 then 32, 128 = 4 then 32: halvings after the first stage.
        r[47] = chirp32("chirp over 96 (3 then 32), across the lanes", tw(3, 32), f, twiddled(4, d4, 8, r8));
        r[59] = chirp32("chirp over 128 (4 then 32), across the lanes", tw(4, 32), d4, twiddled(4, d4, 8, r8));
        r[48] = lanes32("lanes: 4 then 12 (3 then 4), twiddled", tw(4, 12), d4, coprime(3, f, 4, d4));
        r[49] = lanes32("lanes: 7 then 7, twiddled", tw(7, 7), f, f);
        r[50] = lanes32("lanes: 5 then 10 (2 then 5), the 2 between the stages of 25", interleavedPowerMap(5, 2),
                        f, coprime(2, d2, 5, f));
        r[54] = lanes32("lanes: 2 then 27 (3 then 3 then 3), coprime", cp(2, 27), d2, road27);
        r[55] = lanes32("lanes: 5 then 11, coprime", cp(5, 11), f, f);
        r[56] = lanes32("lanes: 14 (7 then 2) then 4, twiddled", tw(14, 4), coprime(7, f, 2, d2), d4);
        r[60] = lanes32("lanes: 4 then 15 (5 then 3), twiddled", tw(4, 15), d4, coprime(5, f, 3, f));
        r[63] = lanes32("lanes: 9 (3 then 3) then 7, coprime", cp(9, 7), road9, f);
        r[64] = lanes32("lanes: 8 then 8 (size-8 roads), twiddled", tw(8, 8), r8, r8);
        return r;
    }();
    return roads;
}

const Method& road64(int m) { return roads64().at(m).transform; }

Transform innerOf32(int m)
{
    const Road32& road = roads32().at(m);
    return joined(road.lanes, road.first, road.second);
}

void build64(ComplexKernel& kernel, const Road64& road)
{
    PairArith ar(kernel.graph, kernel.direction);
    Signal x(kernel.size);
    for (int i = 0; i < kernel.size; ++i)
        x[i] = ar.load(i);
    const Signal X = road.transform(ar, x);
    const Graph::Value scale = kernel.graph.scaleArg(Kind::V2F64);
    for (int k = 0; k < kernel.size; ++k)
        ar.storeScaled(X[k], k, scale);
}

void buildScalar32(ComplexKernel& kernel, const Road32& road)
{
    Graph& g = kernel.graph;
    SplitArith ar(g, kernel.direction, Kind::F32, road.doubleRule);
    Signal x(kernel.size);
    for (int i = 0; i < kernel.size; ++i)
        x[i] = Cx{g.load(Kind::F32, 2 * i), g.load(Kind::F32, 2 * i + 1)};
    const Signal X = road.scalar(ar, x);
    const Graph::Value scale = g.scaleArg(Kind::F32);
    for (int k = 0; k < kernel.size; ++k) {
        const Cx out = ar.materialize(X[k]);
        g.store(g.mul(out.re, scale), 2 * k);
        g.store(g.mul(out.im, scale), 2 * k + 1);
    }
}

} // namespace

const char* typeSuffix(ComplexType type) { return type == ComplexType::C32 ? "32fc" : "64fc"; }

std::vector<int> complexSizes(ComplexType type)
{
    std::vector<int> sizes;
    if (type == ComplexType::C64)
        for (const auto& entry : roads64())
            sizes.push_back(entry.first);
    else
        for (const auto& entry : roads32())
            sizes.push_back(entry.first);
    return sizes;
}

ComplexKernel buildComplexKernel(ComplexType type, int size, Direction direction)
{
    ComplexKernel kernel{type, size, direction, "", true, Graph{}};
    if (type == ComplexType::C64) {
        const auto road = roads64().find(size);
        if (road == roads64().end())
            throw std::invalid_argument("no 64fc road for this size");
        kernel.road = road->second.description;
        build64(kernel, road->second);
        return kernel;
    }
    const auto road = roads32().find(size);
    if (road == roads32().end())
        throw std::invalid_argument("no 32fc road for this size");
    kernel.road = road->second.description;
    if (road->second.scalar) {
        kernel.twins = false;
        buildScalar32(kernel, road->second);
    } else if (road->second.chirp) {
        SplitArith ar(kernel.graph, direction, Kind::V4F32);
        buildLaneChirp(ar, size, road->second.lanes, road->second.first, road->second.second);
    } else if (road->second.convolution) {
        SplitArith ar(kernel.graph, direction, Kind::V4F32);
        const Road32& inner = roads32().at(size - 1);
        buildLaneConvolution(ar, size, inner.lanes, inner.first, inner.second);
    } else {
        SplitArith ar(kernel.graph, direction, Kind::V4F32);
        buildLaneSplit(ar, road->second.lanes, road->second.first, road->second.second);
    }
    return kernel;
}

} // namespace kernelgen
