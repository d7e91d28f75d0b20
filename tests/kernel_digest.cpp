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
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "complex_kernels.h"
#include "dct4_api.h"
#include "digest_inputs.h"
#include "real_kernels.h"

namespace {

using namespace tvktest;

// The three ways into a kernel: src and dst 16-byte aligned, both 4 bytes
// past that, or one array for both.
enum class Path { Aligned, Unaligned, InPlace };
const char* pathName(Path p) { return p == Path::Aligned ? "aligned" : p == Path::Unaligned ? "unaligned" : "inplace"; }

using Digests = std::vector<std::pair<std::string, std::string>>; // "kernel path", hash in hex

// Valid arguments must not fail: the program stops, naming the call.
void require(TvkStatus status, const std::string& call)
{
    if (status != StatusOk) {
        std::cerr << call << " failed (status " << status << ") on valid arguments\n";
        std::exit(1);
    }
}

// One line per path: the hash of the first `outBytes` of each result of
// call(in, out, flag, seed), seed by seed and under each of `flags`, on
// fixed inputs of `count` numbers; `room` bytes hold input and output.
template <class Call>
void digestPaths(Digests& out, const std::string& name, std::initializer_list<Path> paths, unsigned seeds,
                 std::initializer_list<int> flags, bool is64, size_t count, size_t room, size_t outBytes, Call call)
{
    for (Path path : paths) {
        const int offset = path == Path::Unaligned ? 4 : 0;
        OffsetArray<unsigned char> src(room, offset), dst(room, offset);
        unsigned char* in = (path == Path::InPlace ? dst : src).get();
        uint64_t hash = kFnvBasis;
        for (unsigned seed = 0; seed < seeds; ++seed)
            for (int flag : flags) {
                fixedInput(is64, count, in, seed);
                require(call(in, dst.get(), flag, seed), name);
                hash = fnv1a(dst.get(), outBytes, hash);
            }
        out.emplace_back(name + " " + pathName(path), hexDigest(hash));
    }
}

constexpr std::initializer_list<int> kFlags = {1, 2, 4, 8};
constexpr std::initializer_list<Path> kEveryPath = {Path::Aligned, Path::Unaligned, Path::InPlace};

// Complex kernels, and kernels on real data: the forward ones from N inputs
// to the layout's cells, the inverse ones back, the Hartley ones N to N; in
// place the array has room for both.
template <class Kernel>
void digestKernels(Digests& out, const std::vector<Kernel>& kernels)
{
    for (const Kernel& k : kernels) {
        const size_t room = std::max(k.inCells(), k.outCells()) * k.realBytes();
        const auto run = [&k](const void* in, void* result, int flag, unsigned) { return k.run(in, result, flag); };
        digestPaths(out, k.name(), kEveryPath, 16, kFlags, k.is64(), k.inCells(), room, k.outCells() * k.realBytes(),
                    run);
    }
}

// Walsh-Hadamard kernels through their dispatchers, with the kernel's own
// work buffer (even seeds) and with a caller's (odd seeds).
template <class Real, class Dispatcher>
void digestWhtKernels(Digests& out, const char* type, Dispatcher dispatcher)
{
    alignas(16) static unsigned char work[73728];
    for (int order = 1; order <= 13; ++order) {
        const size_t count = size_t{1} << order, bytes = count * sizeof(Real);
        const auto run = [&](const void* in, void* result, int flag, unsigned seed) {
            return dispatcher(static_cast<const Real*>(in), static_cast<Real*>(result), order, flag,
                              seed % 2 ? work : nullptr);
        };
        digestPaths(out, "tvkgWHT_" + std::to_string(order) + "_" + type, kEveryPath, 4, kFlags, sizeof(Real) == 8,
                    count, bytes, bytes, run);
    }
}

// DCT-IV plans of every power of two: the direct lengths, the column kernel
// lengths, and every length of one and of two split levels. A plan reads
// all of src before it writes dst only through its work block, so it has no
// in-place path; it takes no flag.
template <class Real>
void digestDct4(Digests& out, const char* type)
{
    using Api = Dct4Api<Real>;
    for (int len = 2; len <= 131072; len *= 2) {
        const std::string name = "tvkgDCT4_" + std::to_string(len) + "_" + type;
        int32_t size = 0;
        require(Api::getSize(len, &size), name + " size");
        std::vector<uint8_t> mem(size);
        typename Api::Plan* plan = nullptr;
        require(Api::init(&plan, len, mem.data()), name + " init");
        const size_t bytes = len * sizeof(Real);
        const auto call = [&](const void* in, void* result, int, unsigned) {
            return Api::run(static_cast<const Real*>(in), static_cast<Real*>(result), plan);
        };
        digestPaths(out, name, {Path::Aligned, Path::Unaligned}, 2, {0}, sizeof(Real) == 8, len, bytes, bytes, call);
    }
}

// Names every line that changed, appeared or disappeared against the
// committed file of lines "kernel path hash".
int check(const Digests& digests, const std::string& committedPath)
{
    auto committed = readDigests(committedPath);
    if (committed.empty()) {
        std::cerr << "cannot read " << committedPath << "\n";
        return 1;
    }
    const size_t total = committed.size();
    int changed = 0;
    for (const auto& [key, hash] : digests) {
        if (const auto line = committed.extract(key); !line)
            std::cerr << "new:     " << key << " " << hash << "\n", ++changed;
        else if (line.mapped() != hash)
            std::cerr << "changed: " << key << " " << line.mapped() << " -> " << hash << "\n", ++changed;
    }
    for (const auto& [key, hash] : committed)
        std::cerr << "missing: " << key << "\n", ++changed;
    if (changed) {
        std::cerr << changed << " of " << total
                  << " kernel digests differ from the committed ones; if the change of bits is meant, run the "
                     "update-digests target and name it in the commit message\n";
        return 1;
    }
    std::cout << digests.size() << " kernel digests equal the committed ones\n";
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    std::map<std::string, std::string> files; // by option
    for (int i = 1; i + 1 < argc; i += 2)
        files[argv[i]] = argv[i + 1];
    const auto known = [](const auto& option) { return option.first == "--check" || option.first == "--write"; };
    if (argc % 2 == 0 || files.empty() || !std::ranges::all_of(files, known)) {
        std::cerr << "usage: kernel_digest [--check FILE] [--write FILE]\n";
        return 2;
    }

    Digests digests;
    digestKernels(digests, builtComplexKernels());
    digestKernels(digests, allRealKernels());
    digestWhtKernels<Tvk32f>(digests, "32f", tvkgWHT_32f);
    digestWhtKernels<Tvk64f>(digests, "64f", tvkgWHT_64f);
    digestDct4<Tvk32f>(digests, "32f");
    digestDct4<Tvk64f>(digests, "64f");
    if (files.count("--write")) {
        std::ofstream out(files["--write"]);
        for (const auto& [name, hash] : digests)
            out << name << " " << hash << "\n";
        if (!out) {
            std::cerr << "cannot write " << files["--write"] << "\n";
            return 1;
        }
    }
    return files.count("--check") ? check(digests, files["--check"]) : 0;
}
