// Replays a corpus of fuzz inputs through the same checks as the fuzzer,
// so that builds without libFuzzer run them too:
//
//   fuzz_replay DIR...       every file of each directory, one call each
//   fuzz_replay --seed DIR   writes the seed corpus (a few hundred calls
//                            over every export and batch entry, valid and
//                            invalid)
//   fuzz_replay --edges      every export with every bad argument of its
//                            frame, and good ones beside them
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "call_surface.h"

namespace {

// Seed inputs: each export with a valid and a random flag, valid and raw
// lengths, null pointers, in place, odd offsets, and data of special values.
int writeSeeds(const std::filesystem::path& dir)
{
    std::filesystem::create_directories(dir);
    std::mt19937 rng(20261124);
    const size_t exports = tvkfuzz::exportCount();
    int written = 0;
    for (size_t index = 0; index < exports; index += 3)
        for (int variant = 0; variant < 2; ++variant) {
            std::vector<uint8_t> bytes(13 + 64);
            bytes[0] = static_cast<uint8_t>((index + variant) % exports);
            bytes[1] = static_cast<uint8_t>(((index + variant) % exports) >> 8);
            for (size_t i = 2; i < bytes.size(); ++i)
                bytes[i] = static_cast<uint8_t>(rng());
            // Mostly valid flags and lengths, so the arithmetic is reached.
            if (variant == 0)
                bytes[12] = static_cast<uint8_t>((bytes[12] & 0x0f) | 0x30);
            std::ofstream(dir / ("seed-" + std::to_string(written++))).write(
                reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        }
    // Then each batch entry (indices from 0x8000 on) with valid flags and
    // lengths, random counts and gaps, in place in every other one; nulls
    // and raw values in the last of its four.
    const size_t batch = tvkfuzz::batchEntryCount();
    int batchSeeds = 0;
    for (size_t index = 0; index < batch; ++index)
        for (int variant = 0; variant < 4; ++variant) {
            std::vector<uint8_t> bytes(16 + 64);
            for (uint8_t& b : bytes)
                b = static_cast<uint8_t>(rng());
            bytes[0] = static_cast<uint8_t>(index);
            bytes[1] = static_cast<uint8_t>(0x80 | index >> 8);
            if (variant < 3)
                bytes[11] = static_cast<uint8_t>(0x30 | (variant & 1) | (bytes[11] & 8)); // the mode byte
            std::ofstream(dir / ("batch-seed-" + std::to_string(batchSeeds++))).write(
                reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        }
    std::printf("wrote %d seeds for %zu exports and %d for %zu batch entries\n", written, exports, batchSeeds, batch);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::string(argv[1]) == "--seed")
        return writeSeeds(argv[2]);
    if (argc == 2 && std::string(argv[1]) == "--edges") {
        size_t calls = 0;
        const std::string problem = tvkfuzz::checkEdgeCalls(calls);
        std::printf("%zu edge calls over %zu exports%s%s\n", calls, tvkfuzz::exportCount(), problem.empty() ? "" : ": ",
                    problem.c_str());
        return problem.empty() ? 0 : 1;
    }
    int calls = 0, failures = 0;
    for (int a = 1; a < argc; ++a)
        for (const auto& entry : std::filesystem::directory_iterator(argv[a])) {
            std::ifstream in(entry.path(), std::ios::binary);
            const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
            const std::string problem = tvkfuzz::checkOneCall(bytes.data(), bytes.size());
            ++calls;
            if (!problem.empty()) {
                std::printf("%s: %s\n", entry.path().filename().c_str(), problem.c_str());
                ++failures;
            }
        }
    std::printf("%d calls over %zu exports, %d failed\n", calls, tvkfuzz::exportCount(), failures);
    return calls == 0 || failures ? 1 : 0;
}
