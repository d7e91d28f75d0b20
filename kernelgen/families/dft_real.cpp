#include "families/dft_real.h"

#include <stdexcept>
#include <string>

#include "arith/scalar_arith.h"
#include "core/exports.h"
#include "layout/real_cells.h"

namespace kernelgen {

namespace {

// The forward graph of one size in CCS cells: R[k] to 2k, I[k] to 2k + 1,
// the constant +0.0 to the imaginary cells of bin 0 and bin n/2.
Graph forwardGraph(Precision type, int n)
{
    Graph g;
    const Kind kind = numberKind(type);
    ScalarArith ar(g, Direction::Forward, kind, forwardRounding(type));
    const Signal X = runRoadOnLoads(ar, RoadSet::Forward, n);
    const SectionScope section(g, {"factor and stores"});
    for (int k = 0; 2 * k <= n; ++k) {
        ar.storeOutput(X[k].re, X[k].negRe, 2 * k);
        const bool realBin = k == 0 || 2 * k == n;
        if (realBin) {
            if (X[k].im >= 0)
                throw std::logic_error("a real bin with an imaginary part");
            ar.storeZero(2 * k + 1);
        } else {
            ar.storeOutput(X[k].im, X[k].negIm, 2 * k + 1);
        }
    }
    return g;
}

// The inverse graph of one size reading CCS cells: every interior part
// doubled first, in the element type; the transposed forward road; each
// output times the factor, in the element type, as its last operation.
Graph inverseGraph(Precision type, int n)
{
    Graph g;
    const Kind kind = numberKind(type);
    Signal bins(n / 2 + 1);
    {
        const SectionScope section(g, {"interior cells doubled"});
        const Graph::Value two = g.constant("kTwo", kind, {2});
        for (int k = 0; 2 * k <= n; ++k) {
            const bool realBin = k == 0 || 2 * k == n;
            const Graph::Value re = g.load(kind, 2 * k);
            bins[k] = realBin ? Cx{re} : Cx{g.mul(re, two), g.mul(g.load(kind, 2 * k + 1), two)};
        }
    }
    Signal y;
    {
        const SectionScope section(g, {"transposed forward road"});
        y = adjointTransform(g, kind, realRoad(RoadSet::Inverse, n), n, bins);
    }
    const SectionScope section(g, {"factor and stores"});
    const Graph::Value scale = g.scaleArg(kind);
    for (int r = 0; r < n; ++r) {
        if (y[r].re < 0 || y[r].negRe)
            throw std::logic_error("an inverse output missing or negated");
        g.store(g.mul(y[r].re, scale), r);
    }
    return g;
}

std::string dispatcherName(bool inverse, RealLayout layout, Precision type)
{
    const std::string family = inverse ? std::string("tvkgDFTInv_") + layoutName(layout) + "ToR"
                                       : std::string("tvkgDFTFwd_RTo") + layoutName(layout);
    return family + "_" + typeSuffix(type, false);
}

constexpr RealLayout kLayouts[] = {RealLayout::CCS, RealLayout::Pack, RealLayout::Perm};

FramedKernelFile sizeFile(bool inverse, Precision type, int size)
{
    FramedKernelFile file;
    file.space = std::string(inverse ? "dft_real_inverse_" : "dft_real_") + typeSuffix(type, false) + "_" +
                 std::to_string(size);
    file.element = std::string("Tvk") + typeSuffix(type, false);
    const Graph ccs = inverse ? inverseGraph(type, size) : forwardGraph(type, size);
    const std::string words = realRoadWords(inverse ? RoadSet::Inverse : RoadSet::Forward, size);
    for (RealLayout layout : kLayouts) {
        FramedKernel k;
        k.structName = inverse ? std::string(layoutName(layout)) + "ToR" : std::string("To") + layoutName(layout);
        k.exportedName = listedKernel(dispatcherName(inverse, layout, type), size);
        k.title = inverse ? std::string("Inverse size-") + std::to_string(size) + " kernel from " +
                                layoutName(layout) + ": the transpose of " + words
                          : std::string("Forward size-") + std::to_string(size) + " kernel into " +
                                layoutName(layout) + ": " + words;
        k.scaleRow = inverse ? "Inverse" : "Forward";
        k.scaleKind = numberKind(type);
        k.scaleLanes = 1;
        k.scaleFactors = scaleFactors(type, size);
        k.twins = false;
        const auto cellOf = [=](int cell) { return binCell(layout, size, cell / 2, cell % 2); };
        // Pack and Perm are one array at odd sizes and at 2.
        if (layout == RealLayout::Perm && (size % 2 == 1 || size == 2))
            k.sameBodyAs = file.kernels.back().structName;
        else
            k.graph = inverse ? ccs.remapLoads(cellOf) : ccs.remapStores(cellOf);
        file.kernels.push_back(std::move(k));
    }
    return file;
}

std::vector<SizeDispatcher> dispatchers(bool inverse)
{
    std::vector<SizeDispatcher> result;
    for (Precision type : {Precision::Single, Precision::Double})
        for (RealLayout layout : kLayouts) {
            const std::string element = std::string("Tvk") + typeSuffix(type, false);
            SizeDispatcher d{dispatcherName(inverse, layout, type), element, element, 2, {}};
            for (int n = 2; n <= 64; ++n)
                d.entries.push_back(listedKernel(d.name, n));
            result.push_back(d);
        }
    return result;
}

CountsTable counts(bool inverse)
{
    CountsTable table{inverse ? "RealInverseCounts" : "RealKernelCounts",
                      inverse ? "kRealInverseCounts" : "kRealForwardCounts",
                      {{"const char*", "type"}, {"int", "size"}},
                      {}};
    for (Precision type : {Precision::Single, Precision::Double})
        for (int size : realSizes())
            table.rows.push_back({{std::string("\"") + typeSuffix(type, false) + "\"", std::to_string(size)},
                                  inverse ? inverseGraph(type, size) : forwardGraph(type, size)});
    return table;
}

} // namespace

FramedKernelFile realForwardSizeFile(Precision type, int size) { return sizeFile(false, type, size); }
FramedKernelFile realInverseSizeFile(Precision type, int size) { return sizeFile(true, type, size); }
std::vector<SizeDispatcher> realForwardDispatchers() { return dispatchers(false); }
std::vector<SizeDispatcher> realInverseDispatchers() { return dispatchers(true); }
CountsTable realForwardCounts() { return counts(false); }
CountsTable realInverseCounts() { return counts(true); }

} // namespace kernelgen
