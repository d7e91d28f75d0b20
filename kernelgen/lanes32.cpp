#include "lanes32.h"

#include <stdexcept>
#include <string>

namespace kernelgen {

namespace {

// Four consecutive complex elements from src: two loads, then the real and
// imaginary parts apart.
Cx loadQuad(Graph& g, int element)
{
    const Graph::Value lo = g.load(Kind::V4F32, 2 * element);
    const Graph::Value hi = g.load(Kind::V4F32, 2 * element + 4);
    return Cx{g.shuffle("shuffle<0, 2, 0, 2>", lo, hi), g.shuffle("shuffle<1, 3, 1, 3>", lo, hi)};
}

// Two consecutive elements in lanes 0 and 1, zeros in lanes 2 and 3.
Cx loadPair(Graph& g, int element)
{
    const Graph::Value v = g.load(Kind::V4F32, 2 * element);
    const Graph::Value zero = g.constant("kZero", Kind::V4F32, {0, 0, 0, 0});
    return Cx{g.shuffle("shuffle<0, 2, 0, 0>", v, zero), g.shuffle("shuffle<1, 3, 0, 0>", v, zero)};
}

void storeQuadScaled(SplitArith& ar, Cx x, int element, Graph::Value scale)
{
    Graph& g = ar.graph();
    x = ar.materialize(x);
    const Graph::Value re = g.mul(x.re, scale);
    const Graph::Value im = g.mul(x.im, scale);
    g.store(g.shuffle("unpackLo", re, im), 2 * element);
    g.store(g.shuffle("unpackHi", re, im), 2 * element + 4);
}

std::array<Graph::Value, 4> transpose(Graph& g, std::array<Graph::Value, 4> r)
{
    const Graph::Value t0 = g.shuffle("unpackLo", r[0], r[1]);
    const Graph::Value t1 = g.shuffle("unpackLo", r[2], r[3]);
    const Graph::Value t2 = g.shuffle("unpackHi", r[0], r[1]);
    const Graph::Value t3 = g.shuffle("unpackHi", r[2], r[3]);
    return {g.shuffle("moveLowHalves", t0, t1), g.shuffle("moveHighHalves", t0, t1),
            g.shuffle("moveLowHalves", t2, t3), g.shuffle("moveHighHalves", t2, t3)};
}

} // namespace

void buildLaneSplit(SplitArith& ar, int n1, const Transform& first, int n2, const Transform& second)
{
    Graph& g = ar.graph();
    const int n = n1 * n2;
    if (n1 % 4 != 0 || (n2 != 2 && n2 % 4 != 0))
        throw std::logic_error("lane split needs n1 a multiple of 4 and n2 of 2 or 4k");
    const int laneSets = n2 == 2 ? 1 : n2 / 4;
    const int blocks = n1 / 4;

    // 1. First pass, lanes = i2.
    std::vector<Signal> firstOut(laneSets);
    for (int set = 0; set < laneSets; ++set) {
        Signal column(n1);
        for (int i1 = 0; i1 < n1; ++i1) {
            const int element = n2 * i1 + 4 * set;
            column[i1] = n2 == 2 ? loadPair(g, element) : loadQuad(g, element);
        }
        firstOut[set] = first(ar, column);
    }

    // 2. Transposes: rows[block][i2] has lanes k1 = 4*block .. 4*block+3.
    std::vector<Signal> rows(blocks, Signal(4 * laneSets));
    for (int set = 0; set < laneSets; ++set)
        for (int block = 0; block < blocks; ++block) {
            std::array<Graph::Value, 4> re, im;
            for (int l = 0; l < 4; ++l) {
                const Cx y = ar.materialize(firstOut[set][4 * block + l]);
                re[l] = y.re;
                im[l] = y.im;
            }
            const auto reT = transpose(g, re);
            const auto imT = transpose(g, im);
            for (int l = 0; l < 4; ++l)
                rows[block][4 * set + l] = Cx{reT[l], imT[l]};
        }

    // 3. Twiddles, 4. second pass and stores.
    const Graph::Value scale = g.scaleArg(Kind::V4F32);
    for (int block = 0; block < blocks; ++block) {
        Signal row(rows[block].begin(), rows[block].begin() + n2);
        for (int i2 = 1; i2 < n2; ++i2) {
            std::array<int, 4> exponents;
            for (int l = 0; l < 4; ++l)
                exponents[l] = i2 * (4 * block + l);
            std::string name = "kW" + std::to_string(n) + "Row" + std::to_string(i2);
            if (blocks > 1)
                name += "Block" + std::to_string(block);
            row[i2] = ar.rotateLanes(row[i2], n, exponents, name);
        }
        const Signal out = second(ar, row);
        for (int k2 = 0; k2 < n2; ++k2)
            storeQuadScaled(ar, out[k2], 4 * block + n1 * k2, scale);
    }
}

} // namespace kernelgen
