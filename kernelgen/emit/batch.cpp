#include "emit/batch.h"

#include <map>
#include <set>
#include <sstream>
#include <stdexcept>

#include "emit/cpp_body.h"

namespace kernelgen {

namespace {

// Runs of `width` consecutive offsets, taken greedily from the lowest: each
// offset's run (its first offset), or -1 where it has none.
std::map<int, int> columnRuns(const std::set<int>& offsets, int width)
{
    std::map<int, int> runOf;
    for (auto it = offsets.begin(); it != offsets.end();) {
        const int first = *it;
        bool whole = true;
        for (int j = 1; j < width; ++j)
            whole = whole && offsets.count(first + j);
        for (int j = 0; j < (whole ? width : 1); ++j)
            runOf[first + j] = whole ? first : -1;
        std::advance(it, whole ? width : 1);
    }
    return runOf;
}

class BlockBody {
public:
    BlockBody(const Graph& g, bool singleKernel) : g_(g), single_(singleKernel) {}

    std::string print()
    {
        const int width = single_ ? 4 : 2; // numbers per column block
        std::set<int> loaded, stored;
        for (const int i : g_.printOrder()) {
            const Node& n = g_.nodes()[i];
            if (isLoad(n.op))
                loaded.insert(n.offset);
            if (isStore(n.op) && !stored.insert(n.offset).second)
                throw std::logic_error("a number stored twice");
        }
        loadRuns_ = columnRuns(loaded, width);
        storeRuns_ = columnRuns(stored, width);
        for (const int i : g_.printOrder())
            statement(i, g_.nodes()[i]);
        return out_.str();
    }

private:
    // A binary64 value of a binary32 kernel fills two vectors.
    int parts(Kind kind) const { return kind == Kind::F64 && single_ ? 2 : 1; }
    static std::string name(int id, int part, int parts)
    {
        std::string s = "v";
        s.append(std::to_string(id));
        return parts == 1 ? s : s.append("_").append(std::to_string(part));
    }
    std::string operand(int id, int part) const { return name(id, part, parts(g_.nodes()[id].kind)); }
    static const char* vector(Kind kind) { return kind == Kind::F32 ? "Vs" : "Vd"; }

    void define(int id, int part, const std::string& expr)
    {
        const Kind kind = g_.nodes()[id].kind;
        out_ << "        const " << vector(kind) << " " << name(id, part, parts(kind)) << " = " << expr << ";\n";
    }

    void statement(int id, const Node& n)
    {
        const std::string real = n.kind == Kind::F32 ? "float" : "double";
        switch (n.op) {
        case Op::Load: {
            const int run = loadRuns_.at(n.offset);
            if (run < 0)
                return define(id, 0, "gather(src + " + std::to_string(n.offset) + ", srcDist)");
            if (loadedRuns_.insert(run).second)
                out_ << "        " << vector(n.kind) << " in" << run << "[" << (single_ ? 4 : 2) << "];\n"
                     << "        loadColumns(src + " << run << ", srcDist, in" << run << ");\n";
            return define(id, 0, "in" + std::to_string(run) + "[" + std::to_string(n.offset - run) + "]");
        }
        case Op::Store: {
            const int run = storeRuns_.at(n.offset);
            if (run < 0) {
                out_ << "        scatter(dst + " << n.offset << ", dstDist, " << operand(n.a, 0) << ");\n";
                return;
            }
            std::vector<int>& values = pending_[run];
            values.resize(single_ ? 4 : 2, -1);
            values[n.offset - run] = n.a;
            for (int v : values)
                if (v < 0)
                    return;
            out_ << "        storeColumns(dst + " << run << ", dstDist";
            for (int v : values)
                out_ << ", " << operand(v, 0);
            out_ << ");\n";
            return;
        }
        case Op::Constant:
            for (int p = 0; p < parts(n.kind); ++p)
                define(id, p, "splat(" + g_.constants()[n.constant].name + ")");
            return;
        case Op::ScaleArg:
            for (int p = 0; p < parts(n.kind); ++p)
                define(id, p, "splat(static_cast<" + real + ">(scale[0]))");
            return;
        case Op::Widen:
            define(id, 0, "widenLow(" + operand(n.a, 0) + ")");
            define(id, 1, "widenHigh(" + operand(n.a, 0) + ")");
            return;
        case Op::Narrow: return define(id, 0, "narrow(" + operand(n.a, 0) + ", " + operand(n.a, 1) + ")");
        case Op::Neg:
            for (int p = 0; p < parts(n.kind); ++p)
                define(id, p, "neg(" + operand(n.a, p) + ")");
            return;
        case Op::Add:
        case Op::Sub:
        case Op::Mul: {
            const char* call = n.op == Op::Add ? "add(" : n.op == Op::Sub ? "sub(" : "mul(";
            for (int p = 0; p < parts(n.kind); ++p)
                define(id, p, call + operand(n.a, p) + ", " + operand(n.b, p) + ")");
            return;
        }
        default: throw std::logic_error("a vector operation in a per-element graph");
        }
    }

    const Graph& g_;
    bool single_;
    std::ostringstream out_;
    std::map<int, int> loadRuns_, storeRuns_;
    std::set<int> loadedRuns_;
    std::map<int, std::vector<int>> pending_; // the values of each store run, -1 until computed
};

} // namespace

std::string batchName(const std::string& dispatcher) { return "tvkgBatch" + dispatcher.substr(4); }

std::string printBatchKernelFile(const FramedKernelFile& file, const std::string& invocation)
{
    std::vector<const Graph*> all;
    for (const FramedKernel& k : file.kernels)
        if (k.sameBodyAs.empty())
            all.push_back(&k.graph);
    std::ostringstream out;
    out << banner(invocation) << "#include \"batch_frame.h\"\n\n"
        << "namespace tvkgen::batch {\n\n"
        << "// This file's bodies under its own name: a unity build compiles many such files as one.\n"
        << "namespace " << file.space << " {\n\nnamespace {\n\n"
        << printConstants(all, false, "");
    for (const FramedKernel& k : file.kernels) {
        if (!k.sameBodyAs.empty())
            continue;
        const bool single = isSingle(k.scaleKind);
        const char* real = single ? "float" : "double";
        out << "\n// " << k.title << ", for the lanes of a batch.\n"
            << "struct " << k.structName << " {\n"
            << "    alignas(16) static constexpr " << real << " kScale[3] = {";
        for (int s = 0; s < 3; ++s)
            out << (s ? ", " : "") << literal(k.scaleKind, k.scaleFactors[s]);
        out << "};\n"
            << "    static TVKG_INLINE void body(const " << real << "* src, ptrdiff_t srcDist, " << real
            << "* dst, ptrdiff_t dstDist, const " << real << "* scale)\n    {\n"
            << BlockBody(k.graph, single).print() << "    }\n};\n";
    }
    out << "\n} // namespace\n\n} // namespace " << file.space << "\n";
    for (const FramedKernel& k : file.kernels) {
        const char* real = isSingle(k.scaleKind) ? "float" : "double";
        out << "\nvoid " << k.exportedName << "(const " << real << "* src, ptrdiff_t srcDist, " << real
            << "* dst, ptrdiff_t dstDist, ptrdiff_t blocks, int pick)\n{\n    runBlocks<" << file.space << "::"
            << (k.sameBodyAs.empty() ? k.structName : k.sameBodyAs)
            << ">(src, srcDist, dst, dstDist, blocks, pick);\n}\n";
    }
    out << "\n} // namespace tvkgen::batch\n";
    return out.str();
}

// One text for every level: where the frame has no batch lanes, the block
// functions are neither declared nor called.
std::string printBatchDispatchers(const std::vector<BatchDispatcher>& dispatchers, const std::string& invocation)
{
    std::ostringstream out;
    out << banner(invocation) << "#include \"batch_frame.h\"\n#include \"tvkgen_batch.h\"\n";
    for (const BatchDispatcher& d : dispatchers) {
        const std::string real = d.sizes.srcElement.find("32f") != std::string::npos ? "float" : "double";
        out << "\n#if TVKGEN_BATCH_LANES\nnamespace tvkgen::batch {\n";
        for (const std::string& entry : d.sizes.entries)
            out << "void " << entry << "(const " << real << "*, ptrdiff_t, " << real
                << "*, ptrdiff_t, ptrdiff_t, int);\n";
        out << "} // namespace tvkgen::batch\n#endif\n";
        out << "\nTvkStatus " << batchName(d.sizes.name) << "(const " << d.sizes.srcElement << "* src, int srcDist, "
            << d.sizes.dstElement << "* dst, int dstDist, int len, int count, int flag)\n{\n";
        out << "    if (len < " << d.sizes.firstSize << " || len > " << d.sizes.firstSize + d.sizes.entries.size() - 1
            << ")\n        return StatusSizeError;\n#if TVKGEN_BATCH_LANES\n"
            << "    static constexpr tvkgen::batch::BlocksFn<" << real << "> kBySize[] = {\n";
        for (const std::string& entry : d.sizes.entries)
            out << "        tvkgen::batch::" << entry << ",\n";
        out << "    };\n    const tvkgen::batch::BlocksFn<" << real << "> blocks = kBySize[len - " << d.sizes.firstSize
            << "];\n#else\n    const tvkgen::batch::BlocksFn<" << real << "> blocks = nullptr;\n#endif\n"
            << "    return tvkgen::batch::runBatch(blocks, " << d.sizes.name
            << ", tvkgen::ScaleRow::" << d.scaleRow << ", src, srcDist, dst, dstDist, len, count, flag, "
            << d.srcExtent << ", " << d.dstExtent << ");\n}\n";
    }
    return out.str();
}

} // namespace kernelgen
