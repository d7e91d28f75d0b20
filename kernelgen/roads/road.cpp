#include "roads/road.h"

namespace kernelgen {

namespace {

RoadRef make(Road road) { return std::make_shared<const Road>(std::move(road)); }

} // namespace

RoadRef butterflies(int n) { return make({RoadMethod::Butterflies, n, {}}); }
RoadRef size8() { return make({RoadMethod::Size8, 8, {}}); }

RoadRef folded(int p, bool dcFromX0)
{
    Road road{RoadMethod::Folded, p, {}};
    road.dcFromX0 = dcFromX0;
    return make(std::move(road));
}

RoadRef joined(RoadMethod method, int n1, const RoadStage& first, int n2, const RoadStage& second)
{
    return make({method, n1 * n2, {first, second}});
}

RoadRef interleaved(int p, int q, const RoadRef& first, const RoadRef& second)
{
    Road road{RoadMethod::Interleaved, q * p * p, {stageOf(p, first), stageOf(p * q, second)}};
    road.interleave = q;
    return make(std::move(road));
}

RoadRef halvingsAround(int q, const RoadRef& odd) { return make({RoadMethod::HalvingsAround, 4 * q, {stageOf(q, odd)}}); }

RoadRef convolutionOver(int p, const RoadRef& inner, bool pairForm)
{
    Road road{RoadMethod::Convolution, p, {stageOf(p - 1, inner)}};
    road.pairForm = pairForm;
    return make(std::move(road));
}

RoadRef chirpOver(int p, const RoadRef& twiddled)
{
    return make({RoadMethod::Chirp, p, {stageOf(twiddled->size, twiddled)}});
}

RoadRef withStage(const RoadRef& road, const RoadStage& stage)
{
    Road r = *road;
    r.stages.push_back(stage);
    return make(std::move(r));
}

RoadRef evenOdd(int N, const RoadRef& half, OddStage odd, const RoadRef& oddPlain)
{
    Road road{RoadMethod::EvenOdd, N, {stageOf(N / 2, half), stageOf(N / 4, oddPlain)}};
    road.oddStage = odd;
    return make(std::move(road));
}

RoadStage stageOf(int length, const RoadRef& road) { return {length, road, 0, nullptr}; }

RoadRef withDoubleRule(const RoadRef& road)
{
    Road r = *road;
    r.doubleRule = true;
    return make(std::move(r));
}

RoadRef acrossLanes(const RoadRef& road)
{
    Road r = *road;
    r.acrossLanes = true;
    return make(std::move(r));
}

bool isCodelet(const Road& road)
{
    return road.method == RoadMethod::Butterflies || road.method == RoadMethod::Size8 ||
           road.method == RoadMethod::Folded;
}

} // namespace kernelgen
