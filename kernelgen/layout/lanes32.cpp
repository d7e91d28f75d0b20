#include "layout/lanes32.h"

#include <string>

namespace kernelgen {

namespace {

// Four consecutive complex elements from src: two loads, then the real and
// imaginary parts apart.
Cx loadQuad(Graph& g, int element)
{
    const Graph::Value lo = g.load(Kind::V4F32, 2 * element);
    const Graph::Value hi = g.load(Kind::V4F32, 2 * element + 4);
    return Cx{g.shuffle(Shuffle::EvenLanes, lo, hi), g.shuffle(Shuffle::OddLanes, lo, hi)};
}

// Two consecutive elements in lanes 0 and 1, zeros in lanes 2 and 3.
Cx loadTwo(Graph& g, int element)
{
    const Graph::Value v = g.load(Kind::V4F32, 2 * element);
    const Graph::Value zero = g.constant("kZero", Kind::V4F32, {0, 0, 0, 0});
    return Cx{g.shuffle(Shuffle::EvenLanesLow, v, zero), g.shuffle(Shuffle::OddLanesLow, v, zero)};
}

std::array<Graph::Value, 4> transpose(Graph& g, std::array<Graph::Value, 4> r)
{
    const Graph::Value t0 = g.shuffle(Shuffle::UnpackLo, r[0], r[1]);
    const Graph::Value t1 = g.shuffle(Shuffle::UnpackLo, r[2], r[3]);
    const Graph::Value t2 = g.shuffle(Shuffle::UnpackHi, r[0], r[1]);
    const Graph::Value t3 = g.shuffle(Shuffle::UnpackHi, r[2], r[3]);
    return {g.shuffle(Shuffle::MoveLowHalves, t0, t1), g.shuffle(Shuffle::MoveHighHalves, t0, t1),
            g.shuffle(Shuffle::MoveLowHalves, t2, t3), g.shuffle(Shuffle::MoveHighHalves, t2, t3)};
}

} // namespace

Cx gather(Graph& g, std::array<int, 4> elements)
{
    if (elements[0] < 0 && elements[1] < 0 && elements[2] < 0 && elements[3] < 0) {
        const Graph::Value zero = g.constant("kZero", Kind::V4F32, {0, 0, 0, 0});
        return Cx{zero, zero};
    }
    const bool evenStart = elements[0] >= 0 && elements[0] % 2 == 0;
    const bool twoInOrder = evenStart && elements[1] == elements[0] + 1;
    if (twoInOrder && elements[2] == elements[0] + 2 && elements[3] == elements[0] + 3)
        return loadQuad(g, elements[0]);
    if (twoInOrder && elements[2] < 0 && elements[3] < 0)
        return loadTwo(g, elements[0]);
    const Graph::Value zero = g.constant("kZero", Kind::V4F32, {0, 0, 0, 0});
    std::array<Graph::Value, 4> v;
    for (int l = 0; l < 4; ++l)
        v[l] = elements[l] >= 0 ? g.loadElement(2 * elements[l]) : zero;
    // (re0, re1, im0, im1) and (re2, re3, im2, im3)
    const Graph::Value low = g.shuffle(Shuffle::UnpackLo, v[0], v[1]);
    const Graph::Value high = elements[2] < 0 && elements[3] < 0 ? zero : g.shuffle(Shuffle::UnpackLo, v[2], v[3]);
    return Cx{g.shuffle(Shuffle::MoveLowHalves, low, high), g.shuffle(Shuffle::MoveHighHalves, low, high)};
}

void scatterScaled(SplitArith& ar, Cx x, std::array<int, 4> elements, Graph::Value scale)
{
    Graph& g = ar.graph();
    x = ar.materialize(x);
    const Graph::Value re = g.mul(x.re, scale);
    const Graph::Value im = g.mul(x.im, scale);
    const bool whole = elements[0] % 2 == 0 && elements[1] == elements[0] + 1 && elements[2] == elements[0] + 2 &&
                       elements[3] == elements[0] + 3;
    const Graph::Value low = g.shuffle(Shuffle::UnpackLo, re, im);
    if (whole) {
        g.store(low, 2 * elements[0]);
        g.store(g.shuffle(Shuffle::UnpackHi, re, im), 2 * elements[0] + 4);
        return;
    }
    // (re0, im0, re1, im1) and (re2, im2, re3, im3), one element per half.
    if (elements[0] >= 0)
        g.storeElement(low, false, 2 * elements[0]);
    if (elements[1] >= 0)
        g.storeElement(low, true, 2 * elements[1]);
    if (elements[2] < 0 && elements[3] < 0)
        return;
    const Graph::Value high = g.shuffle(Shuffle::UnpackHi, re, im);
    if (elements[2] >= 0)
        g.storeElement(high, false, 2 * elements[2]);
    if (elements[3] >= 0)
        g.storeElement(high, true, 2 * elements[3]);
}

int inLane(int index, int count) { return index < count ? index : -1; }

std::vector<Signal> transposeSets(SplitArith& ar, const std::vector<Signal>& in, int count)
{
    Graph& g = ar.graph();
    const Graph::Value zero = g.constant("kZero", Kind::V4F32, {0, 0, 0, 0});
    const int sets = static_cast<int>(in.size());
    const int blocks = (count + 3) / 4;
    std::vector<Signal> out(blocks, Signal(4 * sets));
    for (int set = 0; set < sets; ++set)
        for (int block = 0; block < blocks; ++block) {
            // A section per tile: tiles of one shape pair in 256-bit vectors.
            const SectionScope tile(g, {"transpose of lane set " + std::to_string(set), "block", block});
            std::array<Graph::Value, 4> re, im;
            for (int l = 0; l < 4; ++l) {
                const Cx y = inLane(4 * block + l, count) < 0 ? Cx{zero, zero} : ar.materialize(in[set][4 * block + l]);
                re[l] = y.re;
                im[l] = y.im;
            }
            const auto reT = ar.inPart(0, [&] { return transpose(g, re); });
            const auto imT = ar.inPart(1, [&] { return transpose(g, im); });
            for (int l = 0; l < 4; ++l)
                out[block][4 * set + l] = Cx{reT[l], imT[l]};
        }
    return out;
}

} // namespace kernelgen
