#include "roads/build.h"

#include <stdexcept>

#include "methods/codelets.h"
#include "methods/convolution.h"

namespace kernelgen {

namespace {

// Length 2 has no partner pairs, so its bins are all its pair forms need.
Method lengthTwo()
{
    Method m = plainMethod(dft2);
    m.keepsAllPairs = m.takesAllPairs = true;
    return m;
}

Method foldedMethod(DcOrder order)
{
    return codeletMethod([order](DftArith& ar, const PairedInput& x) { return foldedOddPairs(ar, x, order); }, true);
}

Stage stageMethod(const RoadStage& stage)
{
    if (!stage.leadingGroups)
        return Stage(methodOf(*stage.road));
    return Stage(stage.leadingGroups, methodOf(*stage.leading), methodOf(*stage.road));
}

// A join of two stages. Pairs pass through both stages; a stage holding two
// forms side by side has no pair forms, so its join runs on bins.
Method joinOf(const Road& road)
{
    const JoinMap map = mapOf(road);
    const RoadStage &first = road.stages[0], &second = road.stages[1];
    if (!first.leadingGroups && !second.leadingGroups)
        return joinMethod(map, methodOf(*first.road), methodOf(*second.road));
    const Stage a = stageMethod(first), b = stageMethod(second);
    return plainMethod([=](DftArith& ar, const Signal& x) { return join(ar, x, map, a, b); });
}

// The halving steps of 4 q around the odd stage q. Beside a spectrum
// product they leave and take pairs as the coprime join of 4 and q does:
// the same chain, with the 4-point stage whole.
Method halvingsOf(const Road& road)
{
    const Method odd = methodOf(*road.stages[0].road);
    Method m = joinMethod(coprimeMap(4, road.stages[0].length), methodOf(*butterflies(4)), odd);
    m.plain = [odd](DftArith& ar, const Signal& x) { return halvingsAroundOdd(ar, x, odd); };
    return m;
}

Method convolutionOf(const Road& road)
{
    const Method inner = methodOf(*road.stages[0].road);
    const Method used = road.pairForm ? inner : plainMethod(inner.plain);
    return plainMethod([used](DftArith& ar, const Signal& x) { return convolution(ar, x, used); });
}

Transform oddStageOf(const Road& road)
{
    const Transform plain = methodOf(*road.stages[1].road).plain;
    switch (road.oddStage) {
    case OddStage::Twisted: return twistThen(road.size, plain);
    case OddStage::TwistSummed: return summedTwistThen(plain);
    case OddStage::FourStep: return fourStep(road.size, plain);
    }
    throw std::logic_error("no such odd stage");
}

} // namespace

RealTransform realTransformOf(const Road& road)
{
    switch (road.method) {
    case RoadMethod::Butterflies:
    case RoadMethod::Folded: return halfSpectrumOf(methodOf(road).plain);
    case RoadMethod::Coprime:
    case RoadMethod::Twiddled: {
        const JoinMap map = mapOf(road);
        const RealTransform first = realTransformOf(*road.stages[0].road), second = realTransformOf(*road.stages[1].road);
        const Transform rows = methodOf(*road.stages[2].road).plain;
        return [=](ScalarArith& ar, const Signal& x) { return realJoin(ar, x, map, first, second, rows); };
    }
    case RoadMethod::Convolution: {
        const RealTransform there = realTransformOf(*road.stages[0].road), back = realTransformOf(*road.stages[1].road);
        return [=](ScalarArith& ar, const Signal& x) { return realConvolution(ar, x, there, back); };
    }
    case RoadMethod::EvenOdd: {
        const RealTransform half = realTransformOf(*road.stages[0].road);
        const Transform odd = oddStageOf(road);
        return [=](ScalarArith& ar, const Signal& x) { return evenOdd(ar, x, half, odd); };
    }
    default: throw std::logic_error("no real form of this road");
    }
}

JoinMap mapOf(const Road& road)
{
    const int n1 = road.stages.at(0).length, n2 = road.stages.at(1).length;
    switch (road.method) {
    case RoadMethod::Twiddled: return twiddledMap(n1, n2);
    case RoadMethod::Coprime: return coprimeMap(n1, n2);
    case RoadMethod::Interleaved: return interleavedPowerMap(n1, road.interleave);
    default: throw std::logic_error("not a join road");
    }
}

Method methodOf(const Road& road)
{
    switch (road.method) {
    case RoadMethod::Butterflies: return road.size == 2 ? lengthTwo() : codeletMethod(dft4Pairs, true);
    case RoadMethod::Size8: return codeletMethod(road8Pairs, false);
    case RoadMethod::Folded: return foldedMethod(road.dcFromX0 ? DcOrder::FromX0 : DcOrder::SumThenX0);
    case RoadMethod::Twiddled:
    case RoadMethod::Coprime:
    case RoadMethod::Interleaved: return joinOf(road);
    case RoadMethod::HalvingsAround: return halvingsOf(road);
    case RoadMethod::Convolution: return convolutionOf(road);
    case RoadMethod::Chirp:   // runs across the lanes of a whole kernel only
    case RoadMethod::EvenOdd: // real data only
        break;
    }
    throw std::logic_error("no complex method of this road");
}

} // namespace kernelgen
