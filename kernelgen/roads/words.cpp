#include "roads/words.h"

namespace kernelgen {

namespace {

std::string number(int n) { return std::to_string(n); }

// A stage as a part of its road's words: a codelet by its length alone.
std::string partOf(const RoadStage& stage)
{
    if (!stage.leadingGroups)
        return isCodelet(*stage.road) ? number(stage.length)
                                      : number(stage.length) + " (" + wordsOf(*stage.road) + ")";
    const std::string groups =
        stage.leadingGroups == 1 ? "the first group" : "the first " + number(stage.leadingGroups);
    return number(stage.length) + " (" + wordsOf(*stage.leading) + " in " + groups + ", " + wordsOf(*stage.road) +
           " elsewhere)";
}

std::string joinWords(const Road& road, const char* kind)
{
    return partOf(road.stages[0]) + " then " + partOf(road.stages[1]) + ", " + kind + " join" +
           (road.acrossLanes ? " across the lanes" : "");
}

} // namespace

std::string wordsOf(const Road& road)
{
    const std::string rule = road.doubleRule ? ", double rule" : "";
    switch (road.method) {
    case RoadMethod::Butterflies: return "length-" + number(road.size) + " codelet" + rule;
    case RoadMethod::Size8: return "size-8 road, W8 on the pair differences" + rule;
    case RoadMethod::Folded: return "folded length-" + number(road.size) + " codelet" + rule;
    case RoadMethod::Twiddled: return joinWords(road, "twiddled");
    case RoadMethod::Coprime: return joinWords(road, "coprime");
    case RoadMethod::Interleaved: {
        const int p = road.stages[0].length;
        return partOf(road.stages[0]) + " then " + partOf(road.stages[1]) + ", the " + number(road.interleave) +
               " between the stages of " + number(p * p) + ", across the lanes";
    }
    case RoadMethod::HalvingsAround:
        return "2 2 around " + partOf(road.stages[0]) + ": halving steps around the odd stage, Good-Thomas maps";
    case RoadMethod::Convolution:
        return "convolution over " + number(road.size - 1) + (road.acrossLanes ? ", across its lanes" : "");
    case RoadMethod::Chirp:
        return "chirp over " + number(road.stages[0].length) + " (" + wordsOf(*road.stages[0].road) + ")";
    case RoadMethod::EvenOdd: break;
    }
    return realWordsOf(road);
}

std::string realWordsOf(const Road& road)
{
    // A stage up to 11 points, but for a convolution form, is named by its
    // length alone.
    const auto part = [](const RoadStage& stage) {
        const bool byLength = stage.length <= 11 && stage.road->method != RoadMethod::Convolution;
        return byLength ? number(stage.length) : number(stage.length) + " (" + realWordsOf(*stage.road) + ")";
    };
    switch (road.method) {
    case RoadMethod::Butterflies: return "plain butterflies";
    case RoadMethod::Folded: return "direct folding";
    case RoadMethod::Coprime: return part(road.stages[0]) + " then " + part(road.stages[1]) + ", coprime join";
    case RoadMethod::Twiddled:
        return part(road.stages[0]) + " then " + part(road.stages[1]) + ", Cooley-Tukey on the prime";
    case RoadMethod::Convolution: return "convolution form over " + number(road.size - 1);
    case RoadMethod::EvenOdd: {
        const char* stage = road.oddStage == OddStage::FourStep  ? "the four-step odd-bin stage"
                            : road.oddStage == OddStage::Twisted ? "the twisted complex odd-bin stage"
                                                                 : "the complex odd-bin stage with its twist summed first";
        return "even-odd recursion over the real size-" + number(road.size / 2) + ", " + stage;
    }
    default: return wordsOf(road);
    }
}

} // namespace kernelgen
