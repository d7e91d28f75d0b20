// kernelgen: prints the straight-line kernels of the library.
//
//   kernelgen --roads
//   kernelgen [--target=<sse2|avx2|avx512|portable>] <command> <arguments> <out>
//     dft-complex <32fc|64fc> <size>
//     <dft-real-forward|dft-real-inverse|hartley> <32f|64f> <size>
//     <family>-dispatch, <family>-counts
//     batch-<family> <type> <size>, batch-<family>-dispatch: the batch entries
//     dct4-pieces, dct4-direct
//
// --roads prints the road of every size of every family, as the kernels'
// titles give it. The driver asks a family table for the kernels of a command, runs every
// graph through the passes of the target (sse2 when none is named) and hands
// the result to a file writer. Output is deterministic; a file whose content
// would not change is left untouched so that the build does not recompile
// it.
#include <fstream>
#include <functional>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "emit/batch.h"
#include "emit/files.h"
#include "families/dct4.h"
#include "families/dft_complex.h"
#include "families/dft_real.h"
#include "families/hartley.h"
#include "passes/lower.h"

namespace {

using namespace kernelgen;

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

// Families printed one file per size and element type, named by their
// element's suffix.
struct SizedFamily {
    const char* command;
    bool complex;
    std::function<FramedKernelFile(Precision precision, int size)> sizeFile;
};

// Files printed whole: dispatchers, counts headers, pieces.
struct WholeFile {
    const char* command;
    std::function<std::string(const Target& target, const std::string& invocation)> print;
};

const std::vector<SizedFamily>& sizedFamilies()
{
    static const std::vector<SizedFamily> families = {
        {"dft-complex", true, complexSizeFile},
        {"dft-real-forward", false, realForwardSizeFile},
        {"dft-real-inverse", false, realInverseSizeFile},
        {"hartley", false, hartleySizeFile},
    };
    return families;
}

FramedKernelFile lowered(FramedKernelFile file, const Target& target, Graph (*passes)(const Graph&, const Target&))
{
    for (FramedKernel& k : file.kernels)
        k.graph = passes(k.graph, target);
    return file;
}

// The pieces whose vectors the target has, lowered for it.
PieceFile lowered(PieceFile file, const Target& target)
{
    std::vector<PieceFunction> kept;
    for (PieceFunction& f : file.functions) {
        bool runs = true;
        for (const Node& n : f.graph.nodes())
            runs = runs && target.has(n.kind);
        if (runs) {
            f.graph = lower(f.graph, target);
            kept.push_back(std::move(f));
        }
    }
    file.functions = std::move(kept);
    return file;
}

// The batch entries over a family's dispatchers: a transform takes `len`
// elements, a CCS spectrum bins 0 to len/2 in both parts.
std::vector<BatchDispatcher> batchDispatchers(const std::vector<SizeDispatcher>& sizes)
{
    const auto has = [](const std::string& name, const char* part) { return name.find(part) != std::string::npos; };
    const std::string ccs = "2 * (len / 2 + 1)";
    std::vector<BatchDispatcher> out;
    for (const SizeDispatcher& d : sizes) {
        const std::string row = has(d.name, "Fwd") ? "Forward" : has(d.name, "Inv") ? "Inverse" : "SelfInverse";
        out.push_back({d, row, has(d.name, "CCSTo") ? ccs : "len", has(d.name, "ToCCS") ? ccs : "len"});
    }
    return out;
}

const std::vector<WholeFile>& wholeFiles()
{
    using Print = std::function<std::string(const Target&, const std::string&)>;
    const auto dispatchers = [](std::vector<SizeDispatcher> (*table)()) -> Print {
        return [table](const Target&, const std::string& c) { return printDispatchers(table(), c); };
    };
    const auto counts = [](CountsTable (*table)()) -> Print {
        return [table](const Target&, const std::string& c) { return printCountsHeader(table(), c); };
    };
    const auto batch = [](std::vector<SizeDispatcher> (*table)()) -> Print {
        return [table](const Target&, const std::string& c) {
            return printBatchDispatchers(batchDispatchers(table()), c);
        };
    };
    const auto pieces = [](PieceFile (*table)()) -> Print {
        return [table](const Target& t, const std::string& c) { return printPieceFile(lowered(table(), t), c); };
    };
    static const std::vector<WholeFile> files = {
        {"dft-complex-dispatch", dispatchers(complexDispatchers)},
        {"dft-complex-counts", counts(complexCounts)},
        {"dft-real-forward-dispatch", dispatchers(realForwardDispatchers)},
        {"dft-real-forward-counts", counts(realForwardCounts)},
        {"dft-real-inverse-dispatch", dispatchers(realInverseDispatchers)},
        {"dft-real-inverse-counts", counts(realInverseCounts)},
        {"hartley-dispatch", dispatchers(hartleyDispatchers)},
        {"hartley-counts", counts(hartleyCounts)},
        {"batch-dft-complex-dispatch", batch(complexDispatchers)},
        {"batch-dft-real-forward-dispatch", batch(realForwardDispatchers)},
        {"batch-dft-real-inverse-dispatch", batch(realInverseDispatchers)},
        {"batch-hartley-dispatch", batch(hartleyDispatchers)},
        {"dct4-pieces", pieces(dct4Pieces)},
        {"dct4-direct", pieces(dct4Direct)},
    };
    return files;
}

// The road tables: one line per size, "  12  3 then 4, coprime join".
void printRoads(std::ostream& out)
{
    const auto table = [&](const std::string& title, const std::vector<int>& sizes,
                           const std::function<std::string(int)>& words) {
        out << title << "\n";
        for (int n : sizes)
            out << (n < 10 ? "   " : "  ") << n << "  " << words(n) << "\n";
    };
    for (Precision p : {Precision::Single, Precision::Double})
        table(std::string("dft-complex ") + typeSuffix(p, true), complexSizes(p),
              [p](int n) { return complexRoadWords(p, n); });
    const std::pair<const char*, RoadSet> real[] = {
        {"dft-real-forward", RoadSet::Forward}, {"dft-real-inverse", RoadSet::Inverse}, {"hartley", RoadSet::Hartley}};
    for (const auto& [name, set] : real)
        table(name, realSizes(), [set = set](int n) { return realRoadWords(set, n); });
}

int usage()
{
    std::string targets;
    for (const std::string& name : targetNames())
        targets += (targets.empty() ? "" : "|") + name;
    std::cerr << "usage: kernelgen --roads\n";
    std::cerr << "       kernelgen [--target=<" << targets << ">] <command> <arguments> <out>\n";
    for (const SizedFamily& f : sizedFamilies())
        std::cerr << "       [batch-]" << f.command << " <" << typeSuffix(Precision::Single, f.complex) << "|"
                  << typeSuffix(Precision::Double, f.complex) << "> <size>\n";
    for (const WholeFile& f : wholeFiles())
        std::cerr << "       " << f.command << "\n";
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        std::vector<std::string> args(argv + 1, argv + argc);
        if (args.size() == 1 && args[0] == "--roads") {
            printRoads(std::cout);
            return 0;
        }
        std::string invocation;
        // The banner of a file names the command as typed, without the
        // default target.
        const std::string defaultTarget = "sse2", targetFlag = "--target=";
        Target target = targetNamed(defaultTarget);
        if (!args.empty() && args[0].rfind(targetFlag, 0) == 0) {
            target = targetNamed(args[0].substr(targetFlag.size()));
            if (target.name != defaultTarget)
                invocation = args[0] + " ";
            args.erase(args.begin());
        }
        if (args.size() < 2)
            return usage();
        const std::string& command = args[0];
        const std::string& out = args.back();
        for (size_t i = 0; i + 1 < args.size(); ++i)
            invocation += (i ? " " : "") + args[i];
        const std::string batchPrefix = "batch-";
        const bool batch = command.rfind(batchPrefix, 0) == 0;
        for (const SizedFamily& f : sizedFamilies()) {
            if (command != (batch ? batchPrefix : "") + f.command || args.size() != 4)
                continue;
            const bool single = args[1] == typeSuffix(Precision::Single, f.complex);
            if (!single && args[1] != typeSuffix(Precision::Double, f.complex))
                return usage();
            const FramedKernelFile file =
                f.sizeFile(single ? Precision::Single : Precision::Double, std::stoi(args[2]));
            writeIfChanged(out, batch ? printBatchKernelFile(lowered(file, target, lowerPerElement), invocation)
                                      : printFramedKernelFile(lowered(file, target, lower), invocation));
            return 0;
        }
        for (const WholeFile& f : wholeFiles())
            if (command == f.command && args.size() == 2) {
                writeIfChanged(out, f.print(target, invocation));
                return 0;
            }
        return usage();
    } catch (const std::exception& e) {
        std::cerr << "kernelgen: " << e.what() << "\n";
        return 1;
    }
}
