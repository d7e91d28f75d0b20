// A road: how one transform of one size is computed, as data. The family
// tables build one per size; the interpreter in build.h turns a road into
// the method that builds its graph, and words.h into the words of the
// kernel's title and of `kernelgen --roads`. A road names its method and
// the parameters it takes, and holds the roads of the smaller transforms
// it is made of.
#pragma once

#include <memory>
#include <vector>

namespace kernelgen {

enum class RoadMethod {
    Butterflies,    // 2, 4: the plain butterflies
    Size8,          // 8: the rotations by W8 on the pair differences
    Folded,         // an odd prime: its partner pairs folded
    Twiddled,       // n1 then n2 with twiddles between (Cooley-Tukey)
    Coprime,        // n1 then n2, gcd 1, no twiddles (Good-Thomas)
    Interleaved,    // q p p: the p p twiddled, with the q between its stages
    HalvingsAround, // 4 q, q odd: the halving steps of 4 around the odd stage
    Convolution,    // a prime p over a transform of length p - 1
    Chirp,          // a prime p over a twiddled transform of length M
    EvenOdd,        // a power of two on real data: its even bins by the real
                    // transform of half the length, its odd bins by a complex
                    // stage of a quarter
};

// How the even-odd recursion forms its odd bins from z: the twist W_N^n
// on z[n] then a plain transform; the same at N = 8 with the eighth-turn
// twist summed before its product; or the four steps of N >= 32.
enum class OddStage { Twisted, TwistSummed, FourStep };

struct Road;
using RoadRef = std::shared_ptr<const Road>;

// A stage of a road made of smaller transforms: `road` on all its groups,
// or on those after the first `leadingGroups`, which take `leading`.
struct RoadStage {
    int length;
    RoadRef road;
    int leadingGroups = 0;
    RoadRef leading;
};

struct Road {
    RoadMethod method;
    int size;
    // The stages in the order the data flows: a join's two, the odd stage
    // of HalvingsAround, the transform a convolution or chirp form runs
    // over (Interleaved: p, then q p). On real data: a join's two real
    // stages and the complex road of its second (its complex rows); the
    // convolution form's real transform of p - 1 and the one whose adjoint
    // it runs back; the even-odd recursion's half and the plain transform
    // of its odd stage.
    std::vector<RoadStage> stages;
    // Folded: X[0] summed from x[0] on, ((x0 + a1) + a2) + ..., where the
    // others take x0 + (a1 + a2 + ...).
    bool dcFromX0 = false;
    // A 32fc kernel of scalars whose products and their sums are binary64,
    // rounded once to binary32.
    bool doubleRule = false;
    // A 32fc kernel whose outermost join (or convolution or chirp form)
    // runs across the four lanes of its vectors.
    bool acrossLanes = false;
    // Interleaved: q.
    int interleave = 0;
    // Convolution: the inner transform leaves partner pairs open for the
    // products in pair form (64fc), rather than running plain.
    bool pairForm = false;
    // EvenOdd.
    OddStage oddStage = OddStage::Twisted;
};

// The roads of the codelets and the forms built of others.
RoadRef butterflies(int n);
RoadRef size8();
RoadRef folded(int p, bool dcFromX0 = false);
RoadRef joined(RoadMethod method, int n1, const RoadStage& first, int n2, const RoadStage& second);
RoadRef interleaved(int p, int q, const RoadRef& first, const RoadRef& second);
RoadRef halvingsAround(int q, const RoadRef& odd);
RoadRef convolutionOver(int p, const RoadRef& inner, bool pairForm = false);
RoadRef chirpOver(int p, const RoadRef& twiddled);
// The road of a size with one more stage (a real join's complex rows).
RoadRef withStage(const RoadRef& road, const RoadStage& stage);
RoadRef evenOdd(int N, const RoadRef& half, OddStage odd, const RoadRef& oddPlain);

// A stage of one road on all its groups.
RoadStage stageOf(int length, const RoadRef& road);

// The same road with the 32fc options.
RoadRef withDoubleRule(const RoadRef& road);
RoadRef acrossLanes(const RoadRef& road);

// Butterflies, Size8 and Folded: whole transforms named by their length.
bool isCodelet(const Road& road);

} // namespace kernelgen
