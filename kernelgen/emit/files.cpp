#include "emit/files.h"

#include <algorithm>
#include <sstream>

#include "emit/cpp_body.h"

namespace kernelgen {

namespace {

std::string scaleTable(const FramedKernel& k)
{
    std::ostringstream out;
    out << "    alignas(16) static constexpr Real kScale[3][" << k.scaleLanes << "] = {";
    for (int i = 0; i < 3; ++i) {
        out << (i ? ", {" : "{");
        for (int l = 0; l < k.scaleLanes; ++l)
            out << (l ? ", " : "") << literal(k.scaleKind, k.scaleFactors[i]);
        out << "}";
    }
    out << "};\n";
    return out.str();
}

std::string kernelStruct(const FramedKernel& k)
{
    const char* real = isSingle(k.scaleKind) ? "float" : "double";
    std::ostringstream out;
    out << "// " << k.title << ".\n"
        << "// " << countsComment(k.graph) << ".\n"
        << "struct " << k.structName << " {\n"
        << "    using Real = " << real << ";\n"
        << "    static constexpr ScaleRow kRow = ScaleRow::" << k.scaleRow << ";\n"
        << scaleTable(k) << (k.twins ? "\n    template <class Access>\n" : "\n")
        << "    static TVKG_INLINE void body(const " << real << "* src, " << real << "* dst, const " << real
        << "* scale)\n    {\n"
        << printStatements(k.graph, {"src", "dst", false}, "        ") << "    }\n};\n";
    return out.str();
}

} // namespace

std::string printFramedKernelFile(const FramedKernelFile& file, const std::string& invocation)
{
    std::vector<const Graph*> graphs;
    for (const FramedKernel& k : file.kernels)
        if (k.sameBodyAs.empty())
            graphs.push_back(&k.graph);
    std::ostringstream out;
    out << banner(invocation) << "#include \"kernel_frame.h\"\n\n"
        << "namespace tvkgen::" << file.space << " {\n\nusing namespace tvkgen::simd;\n\n"
        << printConstants(graphs, false, "");
    for (const FramedKernel& k : file.kernels)
        if (k.sameBodyAs.empty())
            out << "\n" << kernelStruct(k);
    out << "\n} // namespace tvkgen::" << file.space << "\n";
    for (const FramedKernel& k : file.kernels)
        out << "\nTvkStatus " << k.exportedName << "(const " << file.element << "* src, " << file.element
            << "* dst, int flag)\n{\n    return tvkgen::" << (k.twins ? "runWithTwins" : "runSingleBody")
            << "<tvkgen::" << file.space << "::" << (k.sameBodyAs.empty() ? k.structName : k.sameBodyAs)
            << ">(src, dst, flag);\n}\n";
    return out.str();
}

std::string printDispatchers(const std::vector<SizeDispatcher>& dispatchers, const std::string& invocation)
{
    std::ostringstream out;
    out << banner(invocation) << "#include \"kernel_frame.h\"\n";
    for (const SizeDispatcher& d : dispatchers) {
        out << "\nTvkStatus " << d.name << "(const " << d.srcElement << "* src, " << d.dstElement
            << "* dst, int len, int flag)\n{\n"
            << "    static constexpr tvkgen::KernelFn<" << d.srcElement << ", " << d.dstElement << "> kBySize[] = {\n";
        for (const std::string& entry : d.entries)
            out << "        " << entry << ",\n";
        out << "    };\n    return tvkgen::dispatchBySize(kBySize, src, dst, len, flag);\n}\n";
    }
    return out.str();
}

std::string printCountsHeader(const CountsTable& table, const std::string& invocation)
{
    std::ostringstream out;
    out << banner(invocation) << "#pragma once\n\n"
        << "// Operations of each kernel as generated: vector operations in vector\n"
        << "// kernels, scalar operations in scalar kernels. Products by the scale\n"
        << "// factor are counted apart.\n"
        << "// magnitudes: distinct magnitudes of the stored constants, 0 and 1\n"
        << "// included, the scale factors not. wide: binary64 operations of a\n"
        << "// binary32 kernel (its statements with products).\n"
        << "struct " << table.structName << " {\n";
    for (const auto& field : table.keyFields)
        out << "    " << field[0] << " " << field[1] << ";\n";
    out << "    int addSub;\n    int mul;\n    int scaleMul;\n    int magnitudes;\n    int wide;\n};\n\n"
        << "inline constexpr " << table.structName << " " << table.arrayName << "[] = {\n";
    for (const CountsRow& row : table.rows) {
        const OpCounts c = row.graph.countOps();
        out << "    {";
        for (const std::string& key : row.key)
            out << key << ", ";
        out << c.addSub << ", " << c.mul << ", " << c.scaleMul << ", " << row.graph.storedMagnitudes() << ", " << c.wide
            << "},\n";
    }
    out << "};\n";
    return out.str();
}

std::string printPieceFile(const PieceFile& file, const std::string& invocation)
{
    std::ostringstream out;
    out << banner(invocation) << (file.header ? "#pragma once\n\n" : "");
    for (const std::string& include : file.includes)
        out << "#include " << include << "\n";
    out << "\nnamespace " << file.space << " {\n\nusing namespace tvkgen::simd;\n\n"
        << (file.header ? "" : "namespace {\n\n");
    for (const PieceFunction& f : file.functions) {
        const auto load = std::find_if(f.graph.nodes().begin(), f.graph.nodes().end(),
                                       [](const Node& n) { return n.op == Op::Load; });
        const std::string value = cppType(load->kind);
        out << "// " << f.comment << "\n// " << countsComment(f.graph) << ".\n"
            << (file.header ? "TVKG_INLINE " : "") << "void " << f.name << "(";
        if (!f.sizeTag.empty())
            out << "std::integral_constant<int, " << f.sizeTag << ">, ";
        out << "const " << value << "* " << f.in << ", " << value << "* " << f.out << ")\n{\n"
            << printConstants({&f.graph}, true, "    ") << printStatements(f.graph, {f.in, f.out, true}, "    ")
            << "}\n\n";
    }
    if (!file.header)
        out << "} // namespace\n\n";
    for (const KindSwitch& s : file.switches) {
        out << "void " << s.name << "(" << s.parameters << ")\n{\n    switch (kind) {\n";
        for (const auto& [kind, function] : s.cases)
            out << "    case " << kind << ": " << function << "(" << s.arguments << "); return;\n";
        out << "    }\n}\n\n";
    }
    out << "} // namespace " << file.space << "\n";
    return out.str();
}

} // namespace kernelgen
