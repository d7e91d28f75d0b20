// kernelgen: prints the straight-line kernels of the library.
//
//   kernelgen dft-complex <32fc|64fc> <size> <out.cpp>
//   kernelgen dft-complex-dispatch <out.cpp>
//   kernelgen dft-complex-counts <out.h>
//   kernelgen dft-real-forward <32f|64f> <size> <out.cpp>
//   kernelgen dft-real-forward-dispatch <out.cpp>
//   kernelgen dft-real-forward-counts <out.h>
//   kernelgen dct4-pieces <out.h>
//   kernelgen dct4-direct <out.cpp>
//
// The driver asks a family table for the kernels of a command and hands
// them to a file writer. Output is deterministic; a file whose content
// would not change is left untouched so that the build does not recompile
// it.
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>

#include "emit/files.h"
#include "families/dct4.h"
#include "families/dft_complex.h"
#include "families/dft_real.h"

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

int usage()
{
    std::cerr << "usage: kernelgen dft-complex <32fc|64fc> <size> <out.cpp>\n"
                 "       kernelgen dft-complex-dispatch <out.cpp>\n"
                 "       kernelgen dft-complex-counts <out.h>\n"
                 "       kernelgen dft-real-forward <32f|64f> <size> <out.cpp>\n"
                 "       kernelgen dft-real-forward-dispatch <out.cpp>\n"
                 "       kernelgen dft-real-forward-counts <out.h>\n"
                 "       kernelgen dct4-pieces <out.h>\n"
                 "       kernelgen dct4-direct <out.cpp>\n";
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    using namespace kernelgen;
    try {
        const std::string command = argc > 1 ? argv[1] : "";
        if (command == "dft-complex" && argc == 5) {
            const std::string type = argv[2];
            if (type != "32fc" && type != "64fc")
                return usage();
            const FramedKernelFile file =
                complexSizeFile(type == "32fc" ? ComplexType::C32 : ComplexType::C64, std::stoi(argv[3]));
            writeIfChanged(argv[4], printFramedKernelFile(file, command + " " + type + " " + argv[3]));
            return 0;
        }
        if (command == "dft-complex-dispatch" && argc == 3) {
            writeIfChanged(argv[2], printDispatchers(complexDispatchers(), command));
            return 0;
        }
        if (command == "dft-complex-counts" && argc == 3) {
            writeIfChanged(argv[2], printCountsHeader(complexCounts(), command));
            return 0;
        }
        if (command == "dft-real-forward" && argc == 5) {
            const std::string type = argv[2];
            if (type != "32f" && type != "64f")
                return usage();
            const FramedKernelFile file =
                realForwardSizeFile(type == "32f" ? RealType::R32 : RealType::R64, std::stoi(argv[3]));
            writeIfChanged(argv[4], printFramedKernelFile(file, command + " " + type + " " + argv[3]));
            return 0;
        }
        if (command == "dft-real-forward-dispatch" && argc == 3) {
            writeIfChanged(argv[2], printDispatchers(realForwardDispatchers(), command));
            return 0;
        }
        if (command == "dft-real-forward-counts" && argc == 3) {
            writeIfChanged(argv[2], printCountsHeader(realForwardCounts(), command));
            return 0;
        }
        if (command == "dct4-pieces" && argc == 3) {
            writeIfChanged(argv[2], printPieceFile(dct4Pieces(), command));
            return 0;
        }
        if (command == "dct4-direct" && argc == 3) {
            writeIfChanged(argv[2], printPieceFile(dct4Direct(), command));
            return 0;
        }
        return usage();
    } catch (const std::exception& e) {
        std::cerr << "kernelgen: " << e.what() << "\n";
        return 1;
    }
}
