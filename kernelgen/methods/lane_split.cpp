#include "methods/lane_split.h"

#include <algorithm>
#include <functional>
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

// The section of vector set `set` of `count` groups or rows: the indices in
// its lanes, and the length of the transform on them.
Section laneSection(const char* step, const char* unit, int set, int count, int length)
{
    return {step, unit, 4 * set, length, -1, std::min(4 * set + 3, count - 1)};
}

using Prepare = std::function<Cx(Cx, const std::array<int, 4>&)>;

// A join's groups four at a time in the lanes of a vector set, turned by
// transposes, then twiddled (steps 1 to 3 of the split): the second stage's
// outputs are out[block][k2], lanes k1 = 4*block+l. Element e of the
// transform's input is loaded from element `source(e)` of src (-1: a zero),
// and each loaded vector passes `prepare` with its elements before the
// first stage.
struct LaneGroups {
    SplitArith& ar;
    const JoinMap& map;
    const Transform& firstStage;
    const Transform& secondStage;
    std::function<int(int)> source;
    std::string prefix;
    Prepare prepare;
    std::vector<Signal> y{};
    std::vector<Signal> rows{};
    std::vector<Signal> out{};

    int firstCount() const { return (map.n2 + 3) / 4; }
    Section firstSection(int set) const { return laneSection("first stage", "groups", set, map.n2, map.n1); }
    void runFirst(int set)
    {
        Signal column(map.n1);
        for (int i1 = 0; i1 < map.n1; ++i1) {
            std::array<int, 4> elements;
            for (int l = 0; l < 4; ++l)
                elements[l] = inLane(4 * set + l, map.n2) < 0 ? -1 : source(map.input(i1, 4 * set + l));
            column[i1] = gather(ar.graph(), elements);
            if (prepare)
                column[i1] = prepare(column[i1], elements);
        }
        y.push_back(firstStage(ar, column));
    }
    void turn()
    {
        const SectionScope section(ar.graph(), {"transposes and twiddles"});
        rows = transposeSets(ar, y, map.n1);
        twiddleRows(ar, map, rows, prefix);
    }
    int secondCount() const { return static_cast<int>(rows.size()); }
    Section secondSection(int block) const { return laneSection("second stage", "rows", block, map.n1, map.n2); }
    void runSecond(int block)
    {
        out.push_back(secondStage(ar, Signal(rows[block].begin(), rows[block].begin() + map.n2)));
    }
};

// The adjoint of LaneGroups: inverse second stage, conjugate twiddles,
// transposes, inverse first stage. It is the adjoint graph of the forward
// split with conjugate constants, built here stage by stage because the
// lane patterns of the 32fc layout are their own adjoints in pairs
// (transposes), which the generic adjoint does not know. Its outputs are
// out[set][i1], lanes i2 = 4*set+l, the inverse transform's output
// input(i1, i2).
struct LaneRows {
    SplitArith& back;
    const JoinMap& map;
    const Transform& firstStage;
    const Transform& secondStage;
    const std::vector<Signal>& spectrum;
    std::string prefix;
    std::vector<Signal> rows{};
    std::vector<Signal> columns{};
    std::vector<Signal> out{};

    int firstCount() const { return static_cast<int>(spectrum.size()); }
    Section firstSection(int block) const
    {
        return laneSection("inverse second stage", "rows", block, map.n1, map.n2);
    }
    void runFirst(int block) { rows.push_back(secondStage(back, spectrum[block])); }
    void turn()
    {
        const SectionScope section(back.graph(), {"conjugate twiddles and transposes"});
        twiddleRows(back, map, rows, prefix);
        columns = transposeSets(back, rows, map.n2);
    }
    int secondCount() const { return static_cast<int>(columns.size()); }
    Section secondSection(int set) const { return laneSection("inverse first stage", "groups", set, map.n2, map.n1); }
    void runSecond(int set)
    {
        out.push_back(firstStage(back, Signal(columns[set].begin(), columns[set].begin() + map.n1)));
    }
};

} // namespace

void buildLaneForm(SplitArith& ar, const JoinMap& map, const Transform& first, const Transform& second,
                   const SpectrumForm& form)
{
    Graph& g = ar.graph();
    const std::string prefix = "kW" + std::to_string(map.n1 * map.n2);
    const Cx x0 = form.rootZero ? gather(g, {0, -1, -1, -1}) : Cx{};
    // W_p^chirp(n) for the four elements of a vector; idle lanes get 1.
    Prepare chirp;
    if (form.chirp)
        chirp = [&](Cx v, const std::array<int, 4>& elements) {
            std::array<int, 4> exponents{};
            for (int l = 0; l < 4; ++l)
                if (elements[l] >= 0)
                    exponents[l] = form.chirp(elements[l]);
            const int firstElement = *std::max_element(elements.begin(), elements.end());
            return ar.rotateLanes(v, form.p, exponents, "kChirp" + std::to_string(firstElement));
        };
    LaneGroups groups{ar, map, first, second, form.source, prefix, chirp};
    stages(g, groups);
    std::vector<Signal>& U = groups.out;

    // Bin 0 is lane 0 of U[0][0]; x0 has zeros in the other lanes.
    Cx X0{};
    {
        const SectionScope section(g, Section{chirp ? "products with the chirp spectrum" : "spectrum products"});
        if (form.rootZero)
            X0 = ar.add(x0, U[0][0]);
        for (size_t block = 0; block < U.size(); ++block)
            for (int k2 = 0; k2 < map.n2; ++k2) {
                std::array<Exact, 4> re{}, im{};
                for (int l = 0; l < 4; ++l) {
                    const int k1 = inLane(4 * static_cast<int>(block) + l, map.n1);
                    if (k1 >= 0)
                        form.constant(map.output(k1, k2), re[l], im[l]);
                }
                U[block][k2] = ar.mulLanes(U[block][k2], re, im,
                                           form.constantName + "Block" + std::to_string(block) + "Row" +
                                               std::to_string(k2));
            }
        if (form.rootZero)
            U[0][0] = ar.add(x0, U[0][0]);
    }
    SplitArith back = ar.opposite();
    LaneRows rows{back, map, first, second, U, prefix};
    stages(g, rows);
    const std::vector<Signal>& y = rows.out;
    const SectionScope section(g, Section{chirp ? "chirp, scale and stores" : "scale and stores"});
    const Graph::Value scale = g.scaleArg(Kind::V4F32);
    if (form.rootZero)
        scatterScaled(ar, X0, {0, -1, -1, -1}, scale);
    for (size_t set = 0; set < y.size(); ++set)
        for (int i1 = 0; i1 < map.n1; ++i1) {
            std::array<int, 4> elements;
            bool any = false;
            for (int l = 0; l < 4; ++l) {
                const int i2 = inLane(4 * static_cast<int>(set) + l, map.n2);
                elements[l] = i2 < 0 ? -1 : form.target(map.input(i1, i2));
                any |= elements[l] >= 0;
            }
            if (any)
                scatterScaled(ar, chirp ? chirp(y[set][i1], elements) : y[set][i1], elements, scale);
        }
}

void buildLaneSplit(SplitArith& ar, const JoinMap& map, const Transform& first, const Transform& second)
{
    const int n = map.n1 * map.n2;
    LaneGroups groups{ar, map, first, second, [](int e) { return e; }, "kW" + std::to_string(n), nullptr};
    stages(ar.graph(), groups);
    const std::vector<Signal>& out = groups.out;
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

} // namespace kernelgen
