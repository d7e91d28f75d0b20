#include "families/real_roads.h"

#include <map>
#include <stdexcept>
#include <string>

#include "roads/build.h"
#include "roads/words.h"

namespace kernelgen {

namespace {

// The complex transform of size n inside the real family (the complex rows
// of a join, the blocks of a complex convolution form), from the forward
// road of n: its codelet, the complex join of its stages, the plain
// convolution form over p - 1; the even-odd roads of 8 and 16 stand for
// the size-8 road and 4 then 4.
RoadRef complexOf(const std::map<int, RoadRef>& forward, int n)
{
    const Road& real = *forward.at(n);
    switch (real.method) {
    case RoadMethod::Butterflies: return butterflies(n);
    case RoadMethod::Folded: return folded(n);
    case RoadMethod::Coprime:
    case RoadMethod::Twiddled: {
        const int n1 = real.stages[0].length, n2 = real.stages[1].length;
        return joined(real.method, n1, stageOf(n1, complexOf(forward, n1)), n2, stageOf(n2, complexOf(forward, n2)));
    }
    case RoadMethod::Convolution: return convolutionOver(n, complexOf(forward, n - 1));
    case RoadMethod::EvenOdd:
        if (n == 8)
            return size8();
        if (n == 16)
            return joined(RoadMethod::Twiddled, 4, stageOf(4, butterflies(4)), 4, stageOf(4, butterflies(4)));
        break;
    default: break;
    }
    throw std::logic_error("no complex road of this size");
}

// A join on real data: the first stage on the input, the second across,
// whose complex rows run the complex road of its length.
RoadRef realJoin(const std::map<int, RoadRef>& forward, RoadMethod method, int n1, const RoadRef& first, int n2,
                 const RoadRef& second)
{
    return withStage(joined(method, n1, stageOf(n1, first), n2, stageOf(n2, second)),
                     stageOf(n2, complexOf(forward, n2)));
}

// The even-odd recursion over the road of N/2: the twisted odd-bin stage
// at 8 and 16, the four steps above, with plain butterflies inside.
RoadRef evenOddOver(int N, const RoadRef& half)
{
    const RoadRef plain = butterflies(N == 8 || N == 32 ? 2 : 4);
    return evenOdd(N, half, N >= 32 ? OddStage::FourStep : OddStage::Twisted, plain);
}

// A prime from 13: the convolution form on real data, nesting the forward
// real road of m = p-1 on the way there and, on the way back, one whose
// first stage joins x[r] with x[r + m/2] (the even-odd recursion, or a
// coprime join with 2, 4 or 8 on the input side), transposed.
RoadRef convolutionOn(const std::map<int, RoadRef>& forward, int p)
{
    const int m = p - 1;
    RoadRef back = forward.at(m);
    if ((m & (m - 1)) != 0) {
        const int first = m % 8 == 0 ? 8 : m % 4 == 0 ? 4 : 2;
        back = realJoin(forward, RoadMethod::Coprime, first, forward.at(first), m / first, forward.at(m / first));
    }
    Road road{RoadMethod::Convolution, p, {stageOf(m, forward.at(m)), stageOf(m, back)}};
    return std::make_shared<const Road>(std::move(road));
}

// The roads of one set. The blocks inside the methods (the convolution
// form's transforms, the complex rows of the joins) take the forward roads:
// `done` once the forward set is built, the set itself while it is.
std::map<int, RoadRef> buildRoads(RoadSet set, const std::map<int, RoadRef>& done)
{
    std::map<int, RoadRef> r;
    const std::map<int, RoadRef>& forward = set == RoadSet::Forward ? r : done;
    const auto coprimeOver = [&](const RoadRef& first, int a, int b) {
        return realJoin(forward, RoadMethod::Coprime, a, first, b, r.at(b));
    };
    const auto coprime = [&](int a, int b) { return coprimeOver(r.at(a), a, b); };
    const auto primePower = [&](int q, int m) { return realJoin(forward, RoadMethod::Twiddled, q, r.at(q), m, r.at(m)); };
    const auto convolution = [&](int p) { return convolutionOn(forward, p); };
    r[2] = butterflies(2);
    r[4] = butterflies(4);
    for (int p : {3, 5, 7})
        r[p] = folded(p);
    r[8] = evenOddOver(8, r[4]);
    r[16] = evenOddOver(16, r[8]);
    r[32] = evenOddOver(32, r[16]);
    r[64] = evenOddOver(64, r[32]);
    // Forward: direct folding at 11 and in its multiples; inverse: the
    // convolution form at 11 and in 33, 44 and 55; Hartley: in those three.
    r[11] = set == RoadSet::Inverse ? convolution(11) : folded(11);
    r[9] = primePower(3, 3);
    r[25] = primePower(5, 5);
    r[27] = primePower(3, 9);
    r[49] = primePower(7, 7);
    // Good-Thomas sizes, the stage on the input first, and the primes from
    // 13 as soon as the roads they nest are there.
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
    for (int p : {13, 17, 19, 23})
        r[p] = convolution(p);
    r[26] = coprime(13, 2);
    r[28] = coprime(4, 7);
    r[29] = convolution(29);
    r[30] = coprime(5, 6);
    r[31] = convolution(31);
    r[34] = coprime(2, 17);
    r[35] = coprime(7, 5);
    r[36] = coprime(9, 4);
    r[37] = convolution(37);
    r[38] = coprime(19, 2);
    r[39] = coprime(13, 3);
    r[40] = coprime(8, 5);
    r[41] = convolution(41);
    r[42] = coprime(7, 6);
    r[43] = convolution(43);
    r[45] = coprime(5, 9);
    r[46] = coprime(2, 23);
    r[47] = convolution(47);
    r[48] = coprime(16, 3);
    r[50] = coprime(25, 2);
    r[51] = coprime(17, 3);
    r[52] = coprime(13, 4);
    r[53] = convolution(53);
    r[54] = coprime(2, 27);
    r[56] = coprime(7, 8);
    r[57] = coprime(19, 3);
    r[58] = coprime(2, 29);
    r[59] = convolution(59);
    r[60] = coprime(3, 20);
    r[61] = convolution(61);
    r[62] = coprime(31, 2);
    r[63] = coprime(7, 9);
    const RoadRef eleven = set == RoadSet::Forward ? r[11] : convolution(11);
    r[33] = coprimeOver(eleven, 11, 3);
    r[44] = coprimeOver(eleven, 11, 4);
    r[55] = coprimeOver(eleven, 11, 5);
    // The inverse kernel of size 8 multiplies each odd-bin adjoint by c and
    // then joins the two products; the size-8 blocks of the larger inverse
    // sizes, taken above, keep the twist of the forward kernel.
    if (set == RoadSet::Inverse)
        r[8] = evenOdd(8, r.at(4), OddStage::TwistSummed, butterflies(2));
    return r;
}

const std::map<int, RoadRef>& roads(RoadSet set)
{
    static const std::map<int, RoadRef> forward = buildRoads(RoadSet::Forward, {});
    static const std::map<int, RoadRef> inverse = buildRoads(RoadSet::Inverse, forward);
    static const std::map<int, RoadRef> hartley = buildRoads(RoadSet::Hartley, forward);
    return set == RoadSet::Forward ? forward : set == RoadSet::Inverse ? inverse : hartley;
}

} // namespace

std::vector<int> realSizes()
{
    std::vector<int> sizes;
    for (const auto& entry : roads(RoadSet::Forward))
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

RealTransform realRoad(RoadSet set, int n) { return realTransformOf(*roads(set).at(n)); }
std::string realRoadWords(RoadSet set, int n) { return realWordsOf(*roads(set).at(n)); }

RoundingPolicy forwardRounding(Precision type)
{
    return type == Precision::Single ? RoundingPolicy::doubleRule() : RoundingPolicy::elementType();
}

} // namespace kernelgen
