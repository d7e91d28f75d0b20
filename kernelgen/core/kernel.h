// What a family table hands to the printer: kernels as graphs with the
// names, signatures and scale rule around them. The printer turns these
// into source files and knows nothing of how the graphs were built.
#pragma once

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "core/graph.h"

namespace kernelgen {

// A kernel behind the call frame: `body(src, dst, scale)` with its table of
// the three scale factors (1, 1/N, 1/sqrt(N)), one value per lane.
struct FramedKernel {
    std::string structName;   // "Forward", "Inverse"
    std::string exportedName; // tvkgDFTFwd_CToC_12_32fc
    std::string title;        // the first comment line: "Forward size-12 kernel: 3 then 4, coprime join"
    std::string scaleRow;     // the frame's ScaleRow that maps the flags
    Kind scaleKind;           // element type of the scale factors
    int scaleLanes;
    std::array<Exact, 3> scaleFactors;
    bool twins; // an aligned body and an unaligned twin, or one scalar body
    Graph graph;
    // The structName of an earlier kernel of the file whose body this entry
    // point runs (the same arithmetic and stores), or empty.
    std::string sameBodyAs;
};

// One generated source: kernels in `tvkgen::<space>` with the shared
// constants, and their exported entry points taking `element` arrays.
struct FramedKernelFile {
    std::string space;
    std::string element; // Tvk32fc, Tvk64f, ...
    std::vector<FramedKernel> kernels;
};

// A size dispatcher: `entries[i]` is the kernel of size firstSize + i.
struct SizeDispatcher {
    std::string name;
    std::string srcElement;
    std::string dstElement;
    int firstSize;
    std::vector<std::string> entries;
};

// A row of the table of operation counts that tests hold to the budgets:
// `key` holds the row's identifying fields as C++ literals, in the order of
// CountsTable::keyFields.
struct CountsRow {
    std::vector<std::string> key;
    Graph graph;
};

struct CountsTable {
    std::string structName;
    std::string arrayName;
    std::vector<std::array<std::string, 2>> keyFields; // {C++ type, name}
    std::vector<CountsRow> rows;
};

// A function over arrays `in` and `out` with its constants inside: the
// pieces and direct kernels of the DCT-IV plans. `sizeTag`, if given, is
// the value of a std::integral_constant<int, ...> first argument that picks
// the overload.
struct PieceFunction {
    std::string comment;
    std::string name;
    std::string sizeTag;
    std::string in;
    std::string out;
    Graph graph;
};

// A switch from an integer kind to functions of one signature.
struct KindSwitch {
    std::string name;
    std::string parameters;
    std::string arguments;
    std::vector<std::pair<int, std::string>> cases;
};

// One generated file of pieces in namespace `space`: a header of inline
// functions over the vector layer, or a source whose functions are local
// to it and reached through its switches.
struct PieceFile {
    bool header;
    std::vector<std::string> includes;
    std::string space;
    std::vector<PieceFunction> functions;
    std::vector<KindSwitch> switches;
};

} // namespace kernelgen
