#include "dft_complex.h"

#include <map>
#include <stdexcept>

#include "lanes32.h"
#include "methods.h"

namespace kernelgen {

namespace {

Transform folded(DcOrder order)
{
    return [order](ComplexArith& ar, const Signal& x) { return foldedOdd(ar, x, order); };
}

Transform joined(int n1, Transform first, int n2, Transform second)
{
    return [=](ComplexArith& ar, const Signal& x) { return twiddledJoin(ar, x, n1, first, n2, second); };
}

// ---- 64fc: one complex number per vector ------------------------------------
// Power-of-two sizes split off a length-4 pass on the stride-N/4 groups, so
// that the first additions join x[n] with x[n + N/2].
struct Road64 {
    const char* description;
    Transform transform;
};

const std::map<int, Road64>& roads64()
{
    static const std::map<int, Road64> roads = [] {
        std::map<int, Road64> r;
        const Transform road16 = joined(4, dft4, 4, dft4);
        r[2] = {"length-2 codelet", dft2};
        r[3] = {"folded length-3 codelet", folded(DcOrder::SumThenX0)};
        r[4] = {"length-4 codelet", dft4};
        r[5] = {"folded length-5 codelet", folded(DcOrder::SumThenX0)};
        r[7] = {"folded length-7 codelet", folded(DcOrder::SumThenX0)};
        r[8] = {"size-8 road, W8 on the pair differences", road8};
        r[11] = {"folded length-11 codelet", folded(DcOrder::SumThenX0)};
        r[16] = {"4 then 4, twiddled join", road16};
        r[32] = {"4 then 8 (size-8 road), twiddled join", joined(4, dft4, 8, road8)};
        r[64] = {"4 then 16 (4 then 4), twiddled join", joined(4, dft4, 16, road16)};
        return r;
    }();
    return roads;
}

// ---- 32fc: scalar codelets below 6, lane splits above ----------------------
// Sizes 3 and 5 follow the double rule: products with the constants and the
// sums m[k], n[k] in binary64, rounded once to binary32.
struct Road32 {
    const char* description;
    int n1 = 0; // lane split n1 x n2; 0 for a scalar codelet
    Transform first;
    int n2 = 0;
    Transform second;
    bool doubleRule = false;
};

const std::map<int, Road32>& roads32()
{
    static const std::map<int, Road32> roads = [] {
        std::map<int, Road32> r;
        r[2] = {"scalar length-2 codelet", 0, dft2, 0, {}, false};
        r[3] = {"scalar folded length-3 codelet, double rule", 0, folded(DcOrder::FromX0), 0, {}, true};
        r[4] = {"scalar length-4 codelet", 0, dft4, 0, {}, false};
        r[5] = {"scalar folded length-5 codelet, double rule", 0, folded(DcOrder::FromX0), 0, {}, true};
        r[8] = {"lanes: 4 then 2", 4, dft4, 2, dft2, false};
        r[16] = {"lanes: 4 then 4", 4, dft4, 4, dft4, false};
        r[32] = {"lanes: 4 then 8 (size-8 road)", 4, dft4, 8, road8, false};
        r[64] = {"lanes: 8 then 8 (size-8 roads)", 8, road8, 8, road8, false};
        return r;
    }();
    return roads;
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
    const Signal X = road.first(ar, x);
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
    if (road->second.n1 == 0) {
        kernel.twins = false;
        buildScalar32(kernel, road->second);
    } else {
        SplitArith ar(kernel.graph, direction, Kind::V4F32);
        buildLaneSplit(ar, road->second.n1, road->second.first, road->second.n2, road->second.second);
    }
    return kernel;
}

} // namespace kernelgen
