#include "families/hartley.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "arith/scalar_arith.h"
#include "core/exports.h"

namespace kernelgen {

namespace {

// The core rounds each part to the element type when it ends (in binary32
// the statement rule's one rounding); the butterfly and the factor are
// operations of the element type, so no output needs a negation: the sign
// of Im X[k] picks which of the pair is the sum.
Graph hartleyGraph(Precision type, int n)
{
    Graph g;
    const Kind kind = numberKind(type);
    ScalarArith ar(g, Direction::Forward, kind, forwardRounding(type));
    const Signal X = runRoadOnLoads(ar, RoadSet::Hartley, n);
    const SectionScope section(g, {"butterflies of the parts, factor and stores"});
    const Graph::Value scale = g.scaleArg(kind);
    const auto store = [&](Graph::Value v, bool negative, int cell) {
        if (negative)
            throw std::logic_error("a Hartley output comes negated");
        g.store(g.mul(v, scale), cell);
    };
    for (int k = 0; 2 * k <= n; ++k) {
        const Graph::Value p = ar.variable(X[k].re);
        if (k == 0 || 2 * k == n) {
            store(p, X[k].negRe, k);
            continue;
        }
        // H[k] = Re X[k] - Im X[k], H[n-k] = Re X[k] + Im X[k].
        const Graph::Value q = ar.variable(X[k].im);
        bool negative = false;
        const Graph::Value low = signedSum(g, p, X[k].negRe, q, !X[k].negIm, negative);
        store(low, negative, k);
        const Graph::Value high = signedSum(g, p, X[k].negRe, q, X[k].negIm, negative);
        store(high, negative, n - k);
    }
    return g;
}

std::string dispatcherName(Precision type) { return std::string("tvkgHartley_") + typeSuffix(type, false); }

} // namespace

FramedKernelFile hartleySizeFile(Precision type, int size)
{
    FramedKernelFile file;
    file.space = std::string("hartley_") + typeSuffix(type, false) + "_" + std::to_string(size);
    file.element = std::string("Tvk") + typeSuffix(type, false);
    FramedKernel k;
    k.structName = "Hartley";
    k.exportedName = listedKernel(dispatcherName(type), size);
    k.title = "Hartley size-" + std::to_string(size) + " kernel: " + realRoadWords(RoadSet::Hartley, size) +
              ", then the butterflies of the parts";
    k.scaleRow = "SelfInverse";
    k.scaleKind = numberKind(type);
    k.scaleLanes = 1;
    k.scaleFactors = scaleFactors(type, size);
    k.twins = false;
    k.graph = hartleyGraph(type, size);
    file.kernels.push_back(std::move(k));
    return file;
}

std::vector<SizeDispatcher> hartleyDispatchers()
{
    std::vector<SizeDispatcher> result;
    for (Precision type : {Precision::Single, Precision::Double}) {
        const std::string element = std::string("Tvk") + typeSuffix(type, false);
        SizeDispatcher d{dispatcherName(type), element, element, 2, {}};
        for (int n = 2; n <= 64; ++n)
            d.entries.push_back(listedKernel(d.name, n));
        result.push_back(d);
    }
    return result;
}

CountsTable hartleyCounts()
{
    CountsTable table{"HartleyCounts", "kHartleyCounts", {{"const char*", "type"}, {"int", "size"}}, {}};
    for (Precision type : {Precision::Single, Precision::Double})
        for (int size : realSizes())
            table.rows.push_back(
                {{std::string("\"") + typeSuffix(type, false) + "\"", std::to_string(size)}, hartleyGraph(type, size)});
    return table;
}

} // namespace kernelgen
