// kernelgen: prints the straight-line kernels of the library.
//
//   kernelgen dft-complex <32fc|64fc> <size> [avx2] <out.cpp>
//   kernelgen <dft-real-forward|dft-real-inverse|hartley> <32f|64f> <size> <out.cpp>
//   kernelgen <family>-dispatch <out.cpp>, <family>-counts <out.h>
//   kernelgen dct4-pieces [avx2] <out.h>, dct4-direct <out.cpp>
//
// The driver asks a family table for the kernels of a command and hands
// them to a file writer. Output is deterministic; a file whose content
// would not change is left untouched so that the build does not recompile
// it.
#include <fstream>
#include <functional>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "emit/files.h"
#include "families/dct4.h"
#include "families/dft_complex.h"
#include "families/dft_real.h"
#include "families/hartley.h"

namespace {

void writeIfChanged(const std::string& path, const std::string& text)
{
    std::ifstream in(path, std::ios::binary);
    if (in) {
        std::ostringstream old;
        old << in.rdbuf();
        if (old.str() == text)
            return;
    }
    std::ofstream out(path, std::ios::binary);
    out << text;
    if (!out)
        throw std::runtime_error("cannot write " + path);
}

// Families printed one file per size and element type.
struct SizedFamily {
    const char* command;
    std::function<kernelgen::FramedKernelFile(kernelgen::RealType, int)> sizeFile;
};

// Files printed whole: dispatchers, counts headers, pieces.
struct WholeFile {
    const char* command;
    std::function<std::string(const std::string& command)> print;
};

const std::vector<SizedFamily>& realFamilies()
{
    using namespace kernelgen;
    static const std::vector<SizedFamily> families = {
        {"dft-real-forward", realForwardSizeFile},
        {"dft-real-inverse", realInverseSizeFile},
        {"hartley", hartleySizeFile},
    };
    return families;
}

const std::vector<WholeFile>& wholeFiles()
{
    using namespace kernelgen;
    static const std::vector<WholeFile> files = {
        {"dft-complex-dispatch", [](const std::string& c) { return printDispatchers(complexDispatchers(), c); }},
        {"dft-complex-counts", [](const std::string& c) { return printCountsHeader(complexCounts(), c); }},
        {"dft-real-forward-dispatch", [](const std::string& c) { return printDispatchers(realForwardDispatchers(), c); }},
        {"dft-real-forward-counts", [](const std::string& c) { return printCountsHeader(realForwardCounts(), c); }},
        {"dft-real-inverse-dispatch", [](const std::string& c) { return printDispatchers(realInverseDispatchers(), c); }},
        {"dft-real-inverse-counts", [](const std::string& c) { return printCountsHeader(realInverseCounts(), c); }},
        {"hartley-dispatch", [](const std::string& c) { return printDispatchers(hartleyDispatchers(), c); }},
        {"hartley-counts", [](const std::string& c) { return printCountsHeader(hartleyCounts(), c); }},
        {"dct4-direct", [](const std::string& c) { return printPieceFile(dct4Direct(), c); }},
    };
    return files;
}

int usage()
{
    std::cerr << "usage: kernelgen dft-complex <32fc|64fc> <size> [avx2] <out.cpp>\n";
    std::cerr << "       kernelgen dct4-pieces [avx2] <out.h>\n";
    for (const SizedFamily& f : realFamilies())
        std::cerr << "       kernelgen " << f.command << " <32f|64f> <size> <out.cpp>\n";
    for (const WholeFile& f : wholeFiles())
        std::cerr << "       kernelgen " << f.command << " <out>\n";
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    using namespace kernelgen;
    try {
        const std::string command = argc > 1 ? argv[1] : "";
        if (command == "dft-complex" && (argc == 5 || (argc == 6 && std::string(argv[4]) == "avx2"))) {
            const std::string type = argv[2];
            if (type != "32fc" && type != "64fc")
                return usage();
            const bool avx2 = argc == 6;
            const FramedKernelFile file =
                complexSizeFile(type == "32fc" ? ComplexType::C32 : ComplexType::C64, std::stoi(argv[3]), avx2);
            writeIfChanged(argv[argc - 1],
                           printFramedKernelFile(file, command + " " + type + " " + argv[3] + (avx2 ? " avx2" : "")));
            return 0;
        }
        if (command == "dct4-pieces" && (argc == 3 || (argc == 4 && std::string(argv[2]) == "avx2"))) {
            const bool avx2 = argc == 4;
            writeIfChanged(argv[argc - 1], printPieceFile(dct4Pieces(avx2), command + (avx2 ? " avx2" : "")));
            return 0;
        }
        for (const SizedFamily& f : realFamilies()) {
            if (command != f.command || argc != 5)
                continue;
            const std::string type = argv[2];
            if (type != "32f" && type != "64f")
                return usage();
            const FramedKernelFile file = f.sizeFile(type == "32f" ? RealType::R32 : RealType::R64, std::stoi(argv[3]));
            writeIfChanged(argv[4], printFramedKernelFile(file, command + " " + type + " " + argv[3]));
            return 0;
        }
        for (const WholeFile& f : wholeFiles()) {
            if (command == f.command && argc == 3) {
                writeIfChanged(argv[2], f.print(command));
                return 0;
            }
        }
        return usage();
    } catch (const std::exception& e) {
        std::cerr << "kernelgen: " << e.what() << "\n";
        return 1;
    }
}
