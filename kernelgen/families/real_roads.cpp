#include "families/real_roads.h"

#include <map>
#include <string>

#include "arith/scalar_arith.h"
#include "methods/codelets.h"
#include "methods/convolution.h"

namespace kernelgen {

namespace {

// A road holds the real transform of its size and, for the sizes that stand
// as the second stage of a join, the complex transform of its complex rows.
// Its words come from the calls that build it.
struct RealRoad {
    std::string words;
    RealTransform real;
    Transform complex;
};

Transform folded()
{
    return [](DftArith& ar, const Signal& x) {
        return close(ar, foldedOddPairs(ar, binsOf(ar, x), DcOrder::SumThenX0));
    };
}

Transform plainDft2() { return [](DftArith& ar, const Signal& x) { return dft2(ar, x); }; }
Transform plainDft4() { return [](DftArith& ar, const Signal& x) { return dft4(ar, x); }; }

RealRoad butterflies(int n)
{
    const Transform t = n == 2 ? plainDft2() : plainDft4();
    return {"plain butterflies", halfOf(t), t};
}

RealRoad directFolding() { return {"direct folding", halfOf(folded()), folded()}; }

RealRoad evenOddRoad(int N, const RealRoad& half)
{
    const Transform odd = N == 8    ? twistThen(8, plainDft2())
                          : N == 16 ? twistThen(16, plainDft4())
                                    : fourStep(N, N == 32 ? plainDft2() : plainDft4());
    const RealTransform h = half.real;
    const std::string stage = N >= 32 ? "the four-step odd-bin stage" : "the twisted complex odd-bin stage";
    return {"even-odd recursion over the real size-" + std::to_string(N / 2) + ", " + stage,
            [h, odd](ScalarArith& ar, const Signal& x) { return evenOdd(ar, x, h, odd); }, nullptr};
}

std::string part(int n, const RealRoad& road, bool codelet)
{
    return codelet ? std::to_string(n) : std::to_string(n) + " (" + road.words + ")";
}

const std::map<int, RealRoad>& roads();
Transform complexOf(int n);

// A join of real data: the first stage on the input, the second across.
// The complex transforms of its stages are looked up when the join runs,
// so that a stage may be a prime whose road is defined later.
RealRoad joinRoad(const JoinMap& map, const char* how, const RealRoad& first, bool firstCodelet,
                  const RealRoad& second, bool secondCodelet)
{
    const RealTransform f = first.real, sr = second.real;
    RealRoad road;
    road.words = part(map.n1, first, firstCodelet) + " then " + part(map.n2, second, secondCodelet) + ", " + how;
    road.real = [=](ScalarArith& ar, const Signal& x) { return realJoin(ar, x, map, f, sr, complexOf(map.n2)); };
    road.complex = [=](DftArith& ar, const Signal& x) {
        return join(ar, x, map, Stage(complexOf(map.n1)), Stage(complexOf(map.n2)));
    };
    return road;
}

// The complex transform of size n inside this family: the road's own, or
// for a prime from 13 the convolution form over the one of size p-1.
Transform complexOf(int n)
{
    const RealRoad& road = roads().at(n);
    if (road.complex)
        return road.complex;
    return [n](DftArith& ar, const Signal& x) { return convolution(ar, x, plainMethod(complexOf(n - 1))); };
}

// The real transform of size m on the way back of a convolution form: one
// whose first stage joins x[r] with x[r + m/2] (the even-odd recursion, or
// a coprime join with 2, 4 or 8 on the input side).
RealTransform wayBack(int m)
{
    if ((m & (m - 1)) == 0)
        return roads().at(m).real;
    const int first = m % 8 == 0 ? 8 : m % 4 == 0 ? 4 : 2;
    const JoinMap map = coprimeMap(first, m / first);
    const RealTransform f = roads().at(first).real, s = roads().at(m / first).real;
    return [=](ScalarArith& ar, const Signal& x) { return realJoin(ar, x, map, f, s, complexOf(map.n2)); };
}

// A prime from 13: the convolution form on real data, nesting the real
// transform of size m = p-1 on the way there and its transposed halves on
// the way back.
RealRoad convolutionRoad(int p)
{
    return {"convolution form over " + std::to_string(p - 1),
            [p](ScalarArith& ar, const Signal& x) {
                return realConvolution(ar, x, roads().at(p - 1).real, wayBack(p - 1));
            },
            nullptr};
}

std::map<int, RealRoad> buildRoads(RoadSet set)
{
    std::map<int, RealRoad> r;
    const auto coprimeOver = [&](const RealRoad& first, int a, bool firstCodelet, int b) {
        return joinRoad(coprimeMap(a, b), "coprime join", first, firstCodelet, r.at(b), b <= 11);
    };
    const auto coprime = [&](int a, int b) { return coprimeOver(r.at(a), a, a <= 11, b); };
    const auto primePower = [&](int q, int m) {
        return joinRoad(twiddledMap(q, m), "Cooley-Tukey on the prime", r.at(q), true, r.at(m), m <= 11);
    };
    r[2] = butterflies(2);
    r[4] = butterflies(4);
    for (int p : {3, 5, 7})
        r[p] = directFolding();
    r[11] = set == RoadSet::Inverse ? convolutionRoad(11) : directFolding();
    // The 11-point block of 33, 44 and 55.
    const RealRoad eleven = set == RoadSet::Forward ? r[11] : convolutionRoad(11);
    const bool elevenCodelet = set == RoadSet::Forward;
    r[8] = evenOddRoad(8, r[4]);
    r[8].complex = [](DftArith& ar, const Signal& x) { return road8(ar, x); };
    r[16] = evenOddRoad(16, r[8]);
    r[16].complex = [](DftArith& ar, const Signal& x) {
        return join(ar, x, twiddledMap(4, 4), Stage(plainDft4()), Stage(plainDft4()));
    };
    r[32] = evenOddRoad(32, r[16]);
    r[64] = evenOddRoad(64, r[32]);
    r[9] = primePower(3, 3);
    r[25] = primePower(5, 5);
    r[27] = primePower(3, 9);
    r[49] = primePower(7, 7);
    for (int p : {13, 17, 19, 23, 29, 31, 37, 41, 43, 47, 53, 59, 61})
        r[p] = convolutionRoad(p);
    // Good-Thomas sizes, the stage on the input first.
    r[6] = coprime(3, 2);
    r[10] = coprime(5, 2);
    r[12] = coprime(4, 3);
    r[14] = coprime(2, 7);
    r[15] = coprime(3, 5);
    r[18] = coprime(2, 9);
    r[20] = coprime(5, 4);
    r[21] = coprime(7, 3);
    r[22] = coprime(2, 11);
    r[24] = coprime(3, 8);
    r[26] = coprime(13, 2);
    r[28] = coprime(4, 7);
    r[30] = coprime(5, 6);
    r[33] = coprimeOver(eleven, 11, elevenCodelet, 3);
    r[34] = coprime(2, 17);
    r[35] = coprime(7, 5);
    r[36] = coprime(9, 4);
    r[38] = coprime(19, 2);
    r[39] = coprime(13, 3);
    r[40] = coprime(8, 5);
    r[42] = coprime(7, 6);
    r[44] = coprimeOver(eleven, 11, elevenCodelet, 4);
    r[45] = coprime(5, 9);
    r[46] = coprime(2, 23);
    r[48] = coprime(16, 3);
    r[50] = coprime(25, 2);
    r[51] = coprime(17, 3);
    r[52] = coprime(13, 4);
    r[54] = coprime(2, 27);
    r[55] = coprimeOver(eleven, 11, elevenCodelet, 5);
    r[56] = coprime(7, 8);
    r[57] = coprime(19, 3);
    r[58] = coprime(2, 29);
    r[60] = coprime(3, 20);
    r[62] = coprime(31, 2);
    r[63] = coprime(7, 9);
    // The inverse kernel of size 8 multiplies each odd-bin adjoint by c and
    // then joins the two products; the size-8 blocks of the larger inverse
    // sizes, taken above, keep the twist of the forward kernel.
    if (set == RoadSet::Inverse) {
        const RealTransform four = r.at(4).real;
        r[8] = {"even-odd recursion over the real size-4, the complex odd-bin stage with its twist summed first",
                [four](ScalarArith& ar, const Signal& x) {
                    return evenOdd(ar, x, four, summedTwistThen(plainDft2()));
                },
                nullptr};
    }
    return r;
}

const std::map<int, RealRoad>& roads(RoadSet set)
{
    static const std::map<int, RealRoad> forward = buildRoads(RoadSet::Forward);
    static const std::map<int, RealRoad> inverse = buildRoads(RoadSet::Inverse);
    static const std::map<int, RealRoad> hartley = buildRoads(RoadSet::Hartley);
    return set == RoadSet::Forward ? forward : set == RoadSet::Inverse ? inverse : hartley;
}

// The roads inside the methods (the blocks of the convolution form and the
// complex rows of the joins) are the forward ones.
const std::map<int, RealRoad>& roads() { return roads(RoadSet::Forward); }

} // namespace

std::vector<int> realSizes()
{
    std::vector<int> sizes;
    for (const auto& entry : roads())
        sizes.push_back(entry.first);
    return sizes;
}

Signal runRoadOnLoads(ScalarArith& ar, RoadSet set, int n)
{
    Signal x(n);
    for (int i = 0; i < n; ++i)
        x[i] = Cx{ar.graph().load(ar.element(), i)};
    return realRoad(set, n)(ar, x);
}

const RealTransform& realRoad(RoadSet set, int n) { return roads(set).at(n).real; }
const std::string& realRoadWords(RoadSet set, int n) { return roads(set).at(n).words; }

RoundingPolicy forwardRounding(Precision type)
{
    return type == Precision::Single ? RoundingPolicy::doubleRule() : RoundingPolicy::elementType();
}

} // namespace kernelgen
