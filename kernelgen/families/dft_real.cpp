#include "families/dft_real.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>
#include <string>

#include "arith/scalar_arith.h"
#include "layout/real_spectrum.h"
#include "methods/codelets.h"
#include "methods/convolution.h"
#include "methods/real.h"

namespace kernelgen {

namespace {

// ---- Methods by size --------------------------------------------------------
// A road holds the real transform of its size and, for the sizes that stand
// as the second stage of a join, the complex transform of its complex rows.
// Its words come from the calls that build it.
struct RealRoad {
    std::string words;
    RealTransform real;
    Transform complex;
};

Transform folded()
{
    return [](ComplexArith& ar, const Signal& x) {
        return close(ar, foldedOddPairs(ar, binsOf(ar, x), DcOrder::SumThenX0));
    };
}

Transform plainDft2() { return [](ComplexArith& ar, const Signal& x) { return dft2(ar, x); }; }
Transform plainDft4() { return [](ComplexArith& ar, const Signal& x) { return dft4(ar, x); }; }

RealRoad butterflies(int n)
{
    const Transform t = n == 2 ? plainDft2() : plainDft4();
    return {"plain butterflies", halfOf(t), t};
}

RealRoad directFolding() { return {"direct folding", halfOf(folded()), folded()}; }

RealRoad evenOddRoad(int N, const RealRoad& half)
{
    const Transform odd = N == 8    ? twistThen(8, plainDft2())
                          : N == 16 ? twistThen(16, plainDft4())
                                    : fourStep(N, N == 32 ? plainDft2() : plainDft4());
    const RealTransform h = half.real;
    const std::string stage = N >= 32 ? "the four-step odd-bin stage" : "the twisted complex odd-bin stage";
    return {"even-odd recursion over the real size-" + std::to_string(N / 2) + ", " + stage,
            [h, odd](ComplexArith& ar, const Signal& x) { return evenOdd(ar, x, h, odd); }, nullptr};
}

std::string part(int n, const RealRoad& road, bool codelet)
{
    return codelet ? std::to_string(n) : std::to_string(n) + " (" + road.words + ")";
}

const std::map<int, RealRoad>& roads();
Transform complexOf(int n);

// A join of real data: the first stage on the input, the second across.
// The complex transforms of its stages are looked up when the join runs,
// so that a stage may be a prime whose road is defined later.
RealRoad joinRoad(const JoinMap& map, const char* how, const RealRoad& first, bool firstCodelet,
                  const RealRoad& second, bool secondCodelet)
{
    const RealTransform f = first.real, sr = second.real;
    RealRoad road;
    road.words = part(map.n1, first, firstCodelet) + " then " + part(map.n2, second, secondCodelet) + ", " + how;
    road.real = [=](ComplexArith& ar, const Signal& x) { return realJoin(ar, x, map, f, sr, complexOf(map.n2)); };
    road.complex = [=](ComplexArith& ar, const Signal& x) {
        return join(ar, x, map, Stage(complexOf(map.n1)), Stage(complexOf(map.n2)));
    };
    return road;
}

// The complex transform of size n inside this family: the road's own, or
// for a prime from 13 the convolution form over the one of size p-1.
Transform complexOf(int n)
{
    const RealRoad& road = roads().at(n);
    if (road.complex)
        return road.complex;
    return [n](ComplexArith& ar, const Signal& x) { return convolution(ar, x, complexOf(n - 1)); };
}

// The real transform of size m on the way back of a convolution form: one
// whose first stage joins x[r] with x[r + m/2] (the even-odd recursion, or
// a coprime join with 2, 4 or 8 on the input side).
RealTransform wayBack(int m)
{
    if ((m & (m - 1)) == 0)
        return roads().at(m).real;
    const int first = m % 8 == 0 ? 8 : m % 4 == 0 ? 4 : 2;
    const JoinMap map = coprimeMap(first, m / first);
    const RealTransform f = roads().at(first).real, s = roads().at(m / first).real;
    return [=](ComplexArith& ar, const Signal& x) { return realJoin(ar, x, map, f, s, complexOf(map.n2)); };
}

// A prime from 13: the convolution form on real data, nesting the real
// transform of size m = p-1 on the way there and its transposed halves on
// the way back.
RealRoad convolutionRoad(int p)
{
    return {"convolution form over " + std::to_string(p - 1),
            [p](ComplexArith& ar, const Signal& x) {
                return realConvolution(ar, x, roads().at(p - 1).real, wayBack(p - 1));
            },
            nullptr};
}

const std::map<int, RealRoad>& roads()
{
    static const std::map<int, RealRoad> table = [] {
        std::map<int, RealRoad> r;
        const auto coprime = [&](int a, int b) {
            return joinRoad(coprimeMap(a, b), "coprime join", r.at(a), a <= 11, r.at(b), b <= 11);
        };
        const auto primePower = [&](int q, int m) {
            return joinRoad(twiddledMap(q, m), "Cooley-Tukey on the prime", r.at(q), true, r.at(m), m <= 11);
        };
        r[2] = butterflies(2);
        r[4] = butterflies(4);
        for (int p : {3, 5, 7, 11})
            r[p] = directFolding();
        r[8] = evenOddRoad(8, r[4]);
        r[8].complex = [](ComplexArith& ar, const Signal& x) { return road8(ar, x); };
        r[16] = evenOddRoad(16, r[8]);
        r[16].complex = [](ComplexArith& ar, const Signal& x) {
            return join(ar, x, twiddledMap(4, 4), Stage(plainDft4()), Stage(plainDft4()));
        };
        r[32] = evenOddRoad(32, r[16]);
        r[64] = evenOddRoad(64, r[32]);
        r[9] = primePower(3, 3);
        r[25] = primePower(5, 5);
        r[27] = primePower(3, 9);
        r[49] = primePower(7, 7);
        for (int p : {13, 17, 19, 23, 29, 31, 37, 41, 43, 47, 53, 59, 61})
            r[p] = convolutionRoad(p);
        // Good-Thomas sizes, the stage on the input first.
        r[6] = coprime(3, 2);
        r[10] = coprime(5, 2);
        r[12] = coprime(4, 3);
        r[14] = coprime(2, 7);
        r[15] = coprime(3, 5);
        r[18] = coprime(2, 9);
        r[20] = coprime(5, 4);
        r[21] = coprime(7, 3);
        r[22] = coprime(2, 11);
        r[24] = coprime(3, 8);
        r[26] = coprime(13, 2);
        r[28] = coprime(4, 7);
        r[30] = coprime(5, 6);
        r[33] = coprime(11, 3);
        r[34] = coprime(2, 17);
        r[35] = coprime(7, 5);
        r[36] = coprime(9, 4);
        r[38] = coprime(19, 2);
        r[39] = coprime(13, 3);
        r[40] = coprime(8, 5);
        r[42] = coprime(7, 6);
        r[44] = coprime(11, 4);
        r[45] = coprime(5, 9);
        r[46] = coprime(2, 23);
        r[48] = coprime(16, 3);
        r[50] = coprime(25, 2);
        r[51] = coprime(17, 3);
        r[52] = coprime(13, 4);
        r[54] = coprime(2, 27);
        r[55] = coprime(11, 5);
        r[56] = coprime(7, 8);
        r[57] = coprime(19, 3);
        r[58] = coprime(2, 29);
        r[60] = coprime(3, 20);
        r[62] = coprime(31, 2);
        r[63] = coprime(7, 9);
        return r;
    }();
    return table;
}

// ---- Kernel graphs ----------------------------------------------------------

const char* typeSuffix(RealType type) { return type == RealType::R32 ? "32f" : "64f"; }
Kind elementKind(RealType type) { return type == RealType::R32 ? Kind::F32 : Kind::F64; }

// The forward graph of one size in CCS cells: R[k] to 2k, I[k] to 2k + 1,
// the constant +0.0 to the imaginary cells of bin 0 and bin n/2.
Graph forwardGraph(RealType type, int n)
{
    Graph g;
    const Kind kind = elementKind(type);
    ScalarArith ar(g, Direction::Forward, kind,
                   type == RealType::R32 ? RoundingPolicy::doubleRule() : RoundingPolicy::elementType());
    Signal x(n);
    for (int i = 0; i < n; ++i)
        x[i] = Cx{g.load(kind, i)};
    const Signal X = roads().at(n).real(ar, x);
    const SectionScope section(g, "factor and stores");
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

std::string exportedName(RealLayout layout, int size, RealType type)
{
    return std::string("tvkgDFTFwd_RTo") + layoutName(layout) + "_" + std::to_string(size) + "_" + typeSuffix(type);
}

// The factors 1, 1/N, 1/sqrt(N): in binary64 1/sqrt(N) is the quotient
// 1.0 / sqrt(N) with both steps rounded, in binary32 the nearest value.
std::array<Exact, 3> scaleFactors(RealType type, int size)
{
    if (type == RealType::R64)
        return {1, 1.0 / size, 1.0 / std::sqrt(static_cast<double>(size))};
    return {1, 1.0f / static_cast<float>(size), roundToFloat(1 / sqrtExact(size))};
}

constexpr RealLayout kLayouts[] = {RealLayout::CCS, RealLayout::Pack, RealLayout::Perm};

} // namespace

std::vector<int> realSizes()
{
    std::vector<int> sizes;
    for (const auto& entry : roads())
        sizes.push_back(entry.first);
    return sizes;
}

FramedKernelFile realForwardSizeFile(RealType type, int size)
{
    FramedKernelFile file;
    file.space = std::string("dft_real_") + typeSuffix(type) + "_" + std::to_string(size);
    file.element = std::string("Tvk") + typeSuffix(type);
    const auto road = roads().find(size);
    if (road == roads().end())
        return file;
    const Graph ccs = forwardGraph(type, size);
    for (RealLayout layout : kLayouts) {
        FramedKernel k;
        k.structName = std::string("To") + layoutName(layout);
        k.exportedName = exportedName(layout, size, type);
        k.title = std::string("Forward size-") + std::to_string(size) + " kernel into " + layoutName(layout) + ": " +
                  road->second.words;
        k.scaleRow = "Forward";
        k.scaleKind = elementKind(type);
        k.scaleLanes = 1;
        k.scaleFactors = scaleFactors(type, size);
        k.twins = false;
        // Pack and Perm are one array at odd sizes and at 2.
        if (layout == RealLayout::Perm && (size % 2 == 1 || size == 2))
            k.sameBodyAs = "ToPack";
        else
            k.graph = ccs.remapStores([=](int cell) { return spectrumCell(layout, size, cell / 2, cell % 2); });
        file.kernels.push_back(std::move(k));
    }
    return file;
}

std::vector<SizeDispatcher> realForwardDispatchers()
{
    std::vector<SizeDispatcher> dispatchers;
    const std::vector<int> sizes = realSizes();
    for (RealType type : {RealType::R32, RealType::R64})
        for (RealLayout layout : kLayouts) {
            const std::string element = std::string("Tvk") + typeSuffix(type);
            SizeDispatcher d{std::string("tvkgDFTFwd_RTo") + layoutName(layout) + "_" + typeSuffix(type), element,
                             element, 2, {}};
            for (int n = 2; n <= 64; ++n) {
                const bool built = std::find(sizes.begin(), sizes.end(), n) != sizes.end();
                d.entries.push_back(built ? exportedName(layout, n, type) : "");
            }
            dispatchers.push_back(d);
        }
    return dispatchers;
}

CountsTable realForwardCounts()
{
    CountsTable table{"RealKernelCounts", "kRealForwardCounts", {{"const char*", "type"}, {"int", "size"}}, {}};
    for (RealType type : {RealType::R32, RealType::R64})
        for (int size : realSizes())
            table.rows.push_back({{std::string("\"") + typeSuffix(type) + "\"", std::to_string(size)},
                                  forwardGraph(type, size)});
    return table;
}

} // namespace kernelgen
