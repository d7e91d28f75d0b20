#include "passes/lower.h"

#include "passes/lanes.h"
#include "passes/pairing.h"
#include "passes/schedule.h"

namespace kernelgen {

Graph lower(const Graph& g, const Target& target)
{
    // Numbers two by two in 128 bits, those pairs two by two in 256, and
    // those again in 512, as far as the target's vectors reach.
    Graph out = g;
    for (const std::vector<Kind>& halves : {std::vector<Kind>{Kind::F32, Kind::F64},
                                            std::vector<Kind>{Kind::V2F64, Kind::V4F32},
                                            std::vector<Kind>{Kind::V4F64, Kind::V8F32}})
        if (target.pairsInto(wideKind(halves.back())))
            out = pairSections(out, halves, target.registers);
    out.setPrintOrder(emissionOrder(out, target.registers));
    return out;
}

Graph lowerPerElement(const Graph& g, const Target& target)
{
    Graph out = perElement(g);
    out.setPrintOrder(emissionOrder(out, target.registers));
    return out;
}

} // namespace kernelgen
