#include "passes/lower.h"

#include "passes/lanes.h"
#include "passes/pairing.h"
#include "passes/schedule.h"

namespace kernelgen {

Graph lower(const Graph& g, const Target& target)
{
    Graph out = target.nativeVectors ? pairSections(g, {Kind::F32, Kind::F64}, target.registers) : g;
    if (target.pairsSections())
        out = pairSections(out, {Kind::V2F64, Kind::V4F32}, target.registers);
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
