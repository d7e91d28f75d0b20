#include "families/dct4.h"

#include <string>
#include <vector>

#include "methods/dct4.h"

namespace kernelgen {

PieceFile dct4Pieces()
{
    PieceFile file{true, {"<type_traits>", "\"simd/vec.h\""}, "tvkgen::dct4::pieces", {}, {}};
    const auto piece = [&](const std::string& comment, const char* name, int size, Graph g) {
        file.functions.push_back({comment, name, std::to_string(size), "in", "out", std::move(g)});
    };
    for (Kind kind : {Kind::V4F32, Kind::V2F64, Kind::V4F64}) {
        for (int m = 2; m <= 64; m *= 2)
            piece("Half-bin DFT of length " + std::to_string(m) + ".", "halfBinDft", m, halfBinPiece(kind, m));
        for (int s = 2; s <= 32; s *= 2)
            piece("Twiddles and butterfly of radix " + std::to_string(s) + ".", "twiddleButterfly", s,
                  twiddlePiece(kind, s));
        for (int r = 2; r <= 32; r *= 2) // radix 1 is never chosen
            piece("Rotation and " + std::to_string(2 * r) + "-point recombine kernel.", "recombine", r,
                  recombinePiece(kind, r));
    }
    return file;
}

PieceFile dct4Direct()
{
    PieceFile file{false, {"\"plan_run.h\"", "\"simd/vec.h\""}, "tvkgen::dct4", {}, {}};
    for (Kind kind : {Kind::F32, Kind::F64})
        for (int n = 2; n <= 32; n *= 2)
            file.functions.push_back(
                {"Length " + std::to_string(n) + ".", "direct" + std::to_string(n), "", "src", "dst", directKernel(kind, n)});
    for (const char* real : {"float", "double"}) {
        KindSwitch run{"runDirect", std::string("int32_t kind, const ") + real + "* src, " + real + "* dst", "src, dst", {}};
        for (int kind = 1, n = 2; n <= 32; ++kind, n *= 2)
            run.cases.push_back({kind, "direct" + std::to_string(n)});
        file.switches.push_back(run);
    }
    return file;
}

} // namespace kernelgen
