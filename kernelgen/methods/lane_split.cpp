#include "methods/lane_split.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include "layout/lanes32.h"
#include "methods/convolution.h"

namespace kernelgen {

namespace {

// The join's twiddles on rows[block][i2], whose lanes hold k1 = 4*block+l.
void twiddleRows(SplitArith& ar, const JoinMap& map, std::vector<Signal>& rows, const std::string& prefix)
{
    const int blocks = static_cast<int>(rows.size());
    for (int block = 0; block < blocks; ++block) {
        const SectionScope section(ar.graph(), {"twiddles", "block", block});
        for (int i2 = 1; i2 < map.n2; ++i2) {
            std::array<int, 4> exponents{};
            bool any = false;
            for (int l = 0; l < 4 && 4 * block + l < map.n1; ++l) {
                exponents[l] = map.twiddle(i2, 4 * block + l) % map.twiddleDen;
                any |= exponents[l] != 0;
            }
            if (!any)
                continue;
            std::string name = prefix + "Row" + std::to_string(i2);
            if (blocks > 1)
                name += "Block" + std::to_string(block);
            rows[block][i2] = ar.rotateLanes(rows[block][i2], map.twiddleDen, exponents, name);
        }
    }
}

// Steps 1 to 4 of the split up to the outputs of the second stage:
// out[block][k2], lanes k1 = 4*block+l. Element e of the transform's input
// is loaded from element `source(e)` of src (-1: a zero), and each loaded
// vector passes `prepare` with its elements before the first stage.
// The section of vector set `set` of `count` groups or rows: the indices in
// its lanes, and the length of the transform on them.
Section laneSection(const char* step, const char* unit, int set, int count, int length)
{
    return {step, unit, 4 * set, length, -1, std::min(4 * set + 3, count - 1)};
}

using Prepare = std::function<Cx(Cx, const std::array<int, 4>&)>;

std::vector<Signal> forwardSplit(SplitArith& ar, const JoinMap& map, const Transform& first,
                                 const Transform& second, const std::function<int(int)>& source,
                                 const std::string& prefix, const Prepare& prepare = nullptr)
{
    Graph& g = ar.graph();
    const int laneSets = (map.n2 + 3) / 4;
    std::vector<Signal> firstOut(laneSets);
    for (int set = 0; set < laneSets; ++set) {
        const SectionScope section(g, laneSection("first stage", "groups", set, map.n2, map.n1));
        Signal column(map.n1);
        for (int i1 = 0; i1 < map.n1; ++i1) {
            std::array<int, 4> elements;
            for (int l = 0; l < 4; ++l)
                elements[l] = inLane(4 * set + l, map.n2) < 0 ? -1 : source(map.input(i1, 4 * set + l));
            column[i1] = gather(g, elements);
            if (prepare)
                column[i1] = prepare(column[i1], elements);
        }
        firstOut[set] = first(ar, column);
    }
    std::optional<SectionScope> section;
    section.emplace(g, Section{"transposes and twiddles"});
    std::vector<Signal> rows = transposeSets(ar, firstOut, map.n1);
    twiddleRows(ar, map, rows, prefix);
    std::vector<Signal> out;
    for (size_t block = 0; block < rows.size(); ++block) {
        section.emplace(g, laneSection("second stage", "rows", static_cast<int>(block), map.n1, map.n2));
        out.push_back(second(ar, Signal(rows[block].begin(), rows[block].begin() + map.n2)));
    }
    return out;
}

// The adjoint of forwardSplit: inverse second stage, conjugate twiddles,
// transposes, inverse first stage. It is the adjoint graph of the forward
// split with conjugate constants, built here stage by stage because the
// lane patterns of the 32fc layout are their own adjoints in pairs
// (transposes), which the generic adjoint does not know. Returns y[set][i1], lanes i2 = 4*set+l,
// the inverse transform's output input(i1, i2).
std::vector<Signal> inverseSplit(SplitArith& back, const JoinMap& map, const Transform& first,
                                 const Transform& second, const std::vector<Signal>& spectrum,
                                 const std::string& prefix)
{
    Graph& g = back.graph();
    std::optional<SectionScope> section;
    std::vector<Signal> rows;
    for (size_t block = 0; block < spectrum.size(); ++block) {
        section.emplace(g, laneSection("inverse second stage", "rows", static_cast<int>(block), map.n1, map.n2));
        Signal z = second(back, spectrum[block]);
        z.resize(4 * ((map.n2 + 3) / 4));
        rows.push_back(z);
    }
    section.emplace(g, Section{"conjugate twiddles and transposes"});
    twiddleRows(back, map, rows, prefix);
    std::vector<Signal> columns = transposeSets(back, rows, map.n2);
    std::vector<Signal> out;
    for (size_t set = 0; set < columns.size(); ++set) {
        section.emplace(g, laneSection("inverse first stage", "groups", static_cast<int>(set), map.n2, map.n1));
        out.push_back(first(back, Signal(columns[set].begin(), columns[set].begin() + map.n1)));
    }
    return out;
}

} // namespace

void buildLaneSplit(SplitArith& ar, const JoinMap& map, const Transform& first, const Transform& second)
{
    const int n = map.n1 * map.n2;
    const std::vector<Signal> out =
        forwardSplit(ar, map, first, second, [](int e) { return e; }, "kW" + std::to_string(n));
    const Graph::Value scale = ar.graph().scaleArg(Kind::V4F32);
    for (size_t block = 0; block < out.size(); ++block) {
        const SectionScope section(ar.graph(), {"scale and stores", "block", static_cast<int>(block)});
        for (int k2 = 0; k2 < map.n2; ++k2) {
            std::array<int, 4> elements;
            for (int l = 0; l < 4; ++l) {
                const int k1 = inLane(4 * static_cast<int>(block) + l, map.n1);
                elements[l] = k1 < 0 ? -1 : map.output(k1, k2);
            }
            scatterScaled(ar, out[block][k2], elements, scale);
        }
    }
}

void buildLaneConvolution(SplitArith& ar, int p, const JoinMap& map, const Transform& first, const Transform& second)
{
    Graph& g = ar.graph();
    const int m = p - 1;
    const int root = primitiveRoot(p);
    const std::string prefix = "kW" + std::to_string(m);
    const Cx x0 = gather(g, {0, -1, -1, -1});
    std::vector<Signal> U = forwardSplit(ar, map, first, second, [&](int q) { return powMod(root, q, p); }, prefix);

    // Bin 0 is lane 0 of U[0][0]; x0 has zeros in the other lanes.
    std::optional<SectionScope> section;
    section.emplace(g, Section{"spectrum products"});
    const Cx X0 = ar.add(x0, U[0][0]);
    for (size_t block = 0; block < U.size(); ++block)
        for (int k2 = 0; k2 < map.n2; ++k2) {
            std::array<Exact, 4> re{}, im{};
            for (int l = 0; l < 4; ++l) {
                const int k1 = inLane(4 * static_cast<int>(block) + l, map.n1);
                if (k1 >= 0)
                    spectrumConstant(p, map.output(k1, k2), ar.exponentSign(), re[l], im[l]);
            }
            U[block][k2] = ar.mulLanes(U[block][k2], re, im,
                                       "kD" + std::to_string(p) + "Block" + std::to_string(block) + "Row" +
                                           std::to_string(k2));
        }
    U[0][0] = ar.add(x0, U[0][0]);

    SplitArith back = ar.opposite();
    section.reset();
    const std::vector<Signal> y = inverseSplit(back, map, first, second, U, prefix);
    section.emplace(g, Section{"scale and stores"});
    const Graph::Value scale = g.scaleArg(Kind::V4F32);
    scatterScaled(ar, X0, {0, -1, -1, -1}, scale);
    for (size_t set = 0; set < y.size(); ++set)
        for (int i1 = 0; i1 < map.n1; ++i1) {
            std::array<int, 4> elements;
            for (int l = 0; l < 4; ++l) {
                const int i2 = inLane(4 * static_cast<int>(set) + l, map.n2);
                elements[l] = i2 < 0 ? -1 : powMod(root, (m - map.input(i1, i2)) % m, p);
            }
            scatterScaled(ar, y[set][i1], elements, scale);
        }
}

void buildLaneChirp(SplitArith& ar, int p, const JoinMap& map, const Transform& first, const Transform& second)
{
    Graph& g = ar.graph();
    const int length = map.n1 * map.n2;
    const long h = (p + 1) / 2;
    // W^(h*n^2) for the four elements of a vector; idle lanes get 1.
    const auto chirp = [&](Cx v, const std::array<int, 4>& elements) {
        std::array<int, 4> exponents{};
        for (int l = 0; l < 4; ++l)
            if (elements[l] >= 0)
                exponents[l] = static_cast<int>(h * elements[l] % p * elements[l] % p);
        const int firstElement = *std::max_element(elements.begin(), elements.end());
        return ar.rotateLanes(v, p, exponents, "kChirp" + std::to_string(firstElement));
    };
    const std::string prefix = "kW" + std::to_string(length);
    std::vector<Signal> A = forwardSplit(ar, map, first, second, [p](int n) { return n < p ? n : -1; }, prefix, chirp);

    // B[k] = (1/M) sum over |m| < p of W^(-h*m^2) exp(-2*pi*i*m*k/M), the gap
    // between m = p-1 and M-(p-1) left empty.
    const int sign = ar.exponentSign();
    std::optional<SectionScope> section;
    section.emplace(g, Section{"products with the chirp spectrum"});
    for (size_t block = 0; block < A.size(); ++block)
        for (int k2 = 0; k2 < map.n2; ++k2) {
            std::array<Exact, 4> re{}, im{};
            for (int l = 0; l < 4; ++l) {
                const int k1 = inLane(4 * static_cast<int>(block) + l, map.n1);
                if (k1 < 0)
                    continue;
                const long k = map.output(k1, k2);
                for (long m = -(p - 1); m <= p - 1; ++m) {
                    const long num = sign * (-(h * m % p * m % p) * length + m * k * p);
                    re[l] += cosTurn(num, static_cast<long>(p) * length);
                    im[l] += sinTurn(num, static_cast<long>(p) * length);
                }
                re[l] /= length;
                im[l] /= length;
            }
            A[block][k2] = ar.mulLanes(A[block][k2], re, im,
                                       "kB" + std::to_string(length) + "Block" + std::to_string(block) + "Row" +
                                           std::to_string(k2));
        }

    SplitArith back = ar.opposite();
    section.reset();
    const std::vector<Signal> y = inverseSplit(back, map, first, second, A, prefix);
    section.emplace(g, Section{"chirp, scale and stores"});
    const Graph::Value scale = g.scaleArg(Kind::V4F32);
    for (size_t set = 0; set < y.size(); ++set)
        for (int i1 = 0; i1 < map.n1; ++i1) {
            std::array<int, 4> elements;
            bool any = false;
            for (int l = 0; l < 4; ++l) {
                const int i2 = inLane(4 * static_cast<int>(set) + l, map.n2);
                elements[l] = i2 < 0 || map.input(i1, i2) >= p ? -1 : map.input(i1, i2);
                any |= elements[l] >= 0;
            }
            if (any)
                scatterScaled(ar, chirp(y[set][i1], elements), elements, scale);
        }
}

} // namespace kernelgen
