// Digests of every kernel's output bytes on fixed inputs, under each flag,
// one line per kernel and path: the aligned body, the unaligned twin (a
// 4-byte offset) and the in-place call. Results are part of the interface,
// so the lines are committed (tests/data/kernel_digests.txt):
//
//   kernel_digest --write FILE           print the digests into FILE
//   kernel_digest --check FILE [--write OUT]
//                                        fail, naming each kernel, where
//                                        they differ from FILE
//
// The SSE2 and the portable build must both reproduce the committed file.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "complex_kernels.h"
#include "digest_inputs.h"
#include "real_kernels.h"
#include "tvkcore.h"

namespace {

using tvktest::fixedInput;
using tvktest::fnv1a;
using tvktest::kFnvBasis;

// The three ways into a kernel. Each runs the kernel on `count` numbers from
// src (at the path's offset) and hands back where it wrote them.
enum class Path { Aligned, Unaligned, InPlace };
constexpr Path kPaths[] = {Path::Aligned, Path::Unaligned, Path::InPlace};
const char* pathName(Path p) { return p == Path::Aligned ? "aligned" : p == Path::Unaligned ? "unaligned" : "inplace"; }

// Scratch arrays from tvkMalloc (16-byte aligned), with room for the offset.
class Arrays {
public:
    explicit Arrays(size_t bytes)
        : src_(static_cast<unsigned char*>(tvkMalloc(static_cast<uint32_t>(bytes + 16)))),
          dst_(static_cast<unsigned char*>(tvkMalloc(static_cast<uint32_t>(bytes + 16))))
    {
    }
    ~Arrays()
    {
        tvkFree(src_);
        tvkFree(dst_);
    }
    Arrays(const Arrays&) = delete;
    Arrays& operator=(const Arrays&) = delete;

    // Fills the input for `path` and returns {in, out}.
    std::pair<unsigned char*, unsigned char*> prepare(Path path, bool is64, size_t count, unsigned seed)
    {
        const size_t offset = path == Path::Unaligned ? 4 : 0;
        unsigned char* in = (path == Path::InPlace ? dst_ : src_) + offset;
        fixedInput(is64, count, in, seed);
        return {in, dst_ + offset};
    }

private:
    unsigned char* src_;
    unsigned char* dst_;
};

using Digests = std::vector<std::pair<std::string, uint64_t>>;

void add(Digests& out, const std::string& kernel, Path path, uint64_t hash)
{
    out.emplace_back(kernel + " " + pathName(path), hash);
}

bool digestComplexKernels(Digests& out)
{
    for (const tvktest::ComplexKernel& k : tvktest::builtComplexKernels()) {
        const size_t count = 2 * k.size, bytes = count * k.realBytes();
        Arrays arrays(bytes);
        for (Path path : kPaths) {
            uint64_t hash = kFnvBasis;
            for (unsigned seed = 0; seed < 16; ++seed)
                for (int flag : {1, 2, 4, 8}) {
                    const auto [in, result] = arrays.prepare(path, k.is64(), count, seed);
                    if (k.run(in, result, flag) != StatusOk)
                        return false;
                    hash = fnv1a(result, bytes, hash);
                }
            add(out, k.name(), path, hash);
        }
    }
    return true;
}

// Kernels on real data: the forward ones from N inputs to the layout's
// cells, the inverse ones back, the Hartley ones N to N; in place the array
// has room for both.
bool digestRealKernels(Digests& out, tvktest::RealFamily family)
{
    for (const tvktest::RealKernel& k : tvktest::builtRealKernels(family)) {
        const size_t outBytes = k.outCells() * k.realBytes();
        Arrays arrays(std::max(k.inCells(), k.outCells()) * k.realBytes());
        for (Path path : kPaths) {
            uint64_t hash = kFnvBasis;
            for (unsigned seed = 0; seed < 16; ++seed)
                for (int flag : {1, 2, 4, 8}) {
                    const auto [in, result] = arrays.prepare(path, k.is64(), k.inCells(), seed);
                    if (k.run(in, result, flag) != StatusOk)
                        return false;
                    hash = fnv1a(result, outBytes, hash);
                }
            add(out, k.name(), path, hash);
        }
    }
    return true;
}

// Walsh-Hadamard kernels through their dispatchers, with the kernel's own
// work buffer and with a caller's.
template <class Real, class Dispatcher>
bool digestWhtKernels(Digests& out, const char* type, Dispatcher dispatcher)
{
    alignas(16) static unsigned char work[73728];
    for (int order = 1; order <= 13; ++order) {
        const size_t count = size_t{1} << order, bytes = count * sizeof(Real);
        Arrays arrays(bytes);
        for (Path path : kPaths) {
            uint64_t hash = kFnvBasis;
            for (unsigned seed = 0; seed < 4; ++seed)
                for (int flag : {1, 2, 4, 8}) {
                    const auto [in, result] = arrays.prepare(path, sizeof(Real) == 8, count, seed);
                    if (dispatcher(reinterpret_cast<const Real*>(in), reinterpret_cast<Real*>(result), order, flag,
                                   seed % 2 ? work : nullptr) != StatusOk)
                        return false;
                    hash = fnv1a(result, bytes, hash);
                }
            add(out, "tvkgWHT_" + std::to_string(order) + "_" + type, path, hash);
        }
    }
    return true;
}

// DCT-IV plans of every power of two: the direct lengths, the column kernel
// lengths, and every length of one and of two split levels. A plan reads
// all of src before it writes dst only through its work block, so it has no
// in-place path.
template <class Real, class Plan, class GetSize, class Init, class Run>
bool digestDct4(Digests& out, const char* type, GetSize getSize, Init init, Run run)
{
    for (int len : {2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384, 32768, 65536, 131072}) {
        int32_t size = 0;
        if (getSize(len, &size) != StatusOk)
            return false;
        std::vector<uint8_t> mem(size);
        Plan* plan = nullptr;
        if (init(&plan, len, mem.data()) != StatusOk)
            return false;
        const size_t bytes = len * sizeof(Real);
        Arrays arrays(bytes);
        for (Path path : {Path::Aligned, Path::Unaligned}) {
            uint64_t hash = kFnvBasis;
            for (unsigned seed = 0; seed < 2; ++seed) {
                const auto [in, result] = arrays.prepare(path, sizeof(Real) == 8, len, seed);
                if (run(reinterpret_cast<const Real*>(in), reinterpret_cast<Real*>(result), plan) != StatusOk)
                    return false;
                hash = fnv1a(result, bytes, hash);
            }
            add(out, "tvkgDCT4_" + std::to_string(len) + "_" + type, path, hash);
        }
    }
    return true;
}

std::string format(const Digests& digests)
{
    std::ostringstream text;
    char hex[17];
    for (const auto& [name, hash] : digests) {
        std::snprintf(hex, sizeof hex, "%016llx", static_cast<unsigned long long>(hash));
        text << name << " " << hex << "\n";
    }
    return text.str();
}

// Lines "kernel path hash" of a digest file, keyed by "kernel path".
std::map<std::string, std::string> parse(std::istream& in)
{
    std::map<std::string, std::string> lines;
    std::string kernel, path, hash;
    while (in >> kernel >> path >> hash)
        lines[kernel + " " + path] = hash;
    return lines;
}

// Names every line that changed, appeared or disappeared.
int check(const std::string& text, const std::string& committedPath)
{
    std::ifstream file(committedPath);
    if (!file) {
        std::cerr << "cannot read " << committedPath << "\n";
        return 1;
    }
    std::istringstream now(text);
    const auto expected = parse(file), actual = parse(now);
    int changed = 0;
    for (const auto& [key, hash] : expected) {
        const auto it = actual.find(key);
        if (it == actual.end())
            std::cerr << "missing: " << key << "\n", ++changed;
        else if (it->second != hash)
            std::cerr << "changed: " << key << " " << hash << " -> " << it->second << "\n", ++changed;
    }
    for (const auto& [key, hash] : actual)
        if (!expected.count(key))
            std::cerr << "new:     " << key << " " << hash << "\n", ++changed;
    if (changed) {
        std::cerr << changed << " of " << expected.size()
                  << " kernel digests differ from the committed ones; if the change of bits is meant, run the "
                     "update-digests target and name it in the commit message\n";
        return 1;
    }
    std::cout << actual.size() << " kernel digests equal the committed ones\n";
    return 0;
}

int usage()
{
    std::cerr << "usage: kernel_digest [--check FILE] [--write FILE]\n";
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    std::string checkPath, writePath;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string option = argv[i];
        if (option == "--check")
            checkPath = argv[i + 1];
        else if (option == "--write")
            writePath = argv[i + 1];
        else
            return usage();
    }
    if (argc % 2 == 0 || (checkPath.empty() && writePath.empty()))
        return usage();

    Digests digests;
    const bool ok =
        digestComplexKernels(digests) && digestRealKernels(digests, tvktest::RealFamily::Forward) &&
        digestRealKernels(digests, tvktest::RealFamily::Inverse) &&
        digestRealKernels(digests, tvktest::RealFamily::Hartley) && digestWhtKernels<Tvk32f>(digests, "32f", tvkgWHT_32f) &&
        digestWhtKernels<Tvk64f>(digests, "64f", tvkgWHT_64f) &&
        digestDct4<Tvk32f, TvkgDCT4Plan_32f>(digests, "32f", tvkgDCT4GetSize_32f, tvkgDCT4Init_32f, tvkgDCT4_32f) &&
        digestDct4<Tvk64f, TvkgDCT4Plan_64f>(digests, "64f", tvkgDCT4GetSize_64f, tvkgDCT4Init_64f, tvkgDCT4_64f);
    if (!ok) {
        std::cerr << "a kernel returned a failure status on valid arguments\n";
        return 1;
    }
    const std::string text = format(digests);
    if (!writePath.empty()) {
        std::ofstream out(writePath);
        out << text;
        if (!out) {
            std::cerr << "cannot write " << writePath << "\n";
            return 1;
        }
    }
    return checkPath.empty() ? 0 : check(text, checkPath);
}
