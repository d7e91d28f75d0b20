// Runs every registered case, then prints one table per family: time per
// call of ours beside the peer's, and their ratio (below 1: we are faster).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "bench_support.h"

namespace {

// Sorted by family and variant first: each pair gets one table summary.
struct CaseKey {
    std::string family, variant, type;
    int size;
    auto operator<=>(const CaseKey&) const = default;
};

// Times of every repetition; the table shows their medians.
struct CaseTimes {
    std::vector<double> ours;
    std::string peer;
    std::vector<double> peerTimes;
};

double median(std::vector<double> v)
{
    if (v.empty())
        return NAN;
    std::sort(v.begin(), v.end());
    const size_t h = v.size() / 2;
    return v.size() % 2 ? v[h] : (v[h - 1] + v[h]) / 2;
}

class RatioTableReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.error_occurred || run.run_type != Run::RT_Iteration)
                continue;
            std::vector<std::string> parts = split(run.benchmark_name());
            if (parts.size() < 5)
                continue;
            CaseTimes& times = cases_[{parts[0], parts[2], parts[1], std::stoi(parts[3])}];
            if (parts[4] == tvkbench::kOurs)
                times.ours.push_back(run.GetAdjustedRealTime());
            else {
                times.peer = parts[4];
                times.peerTimes.push_back(run.GetAdjustedRealTime());
            }
        }
    }

    void Finalize() override
    {
        ConsoleReporter::Finalize();
        std::string family; // a family and variant: each has its own summary
        double logSum = 0;
        int paired = 0, faster = 0;
        auto summary = [&] {
            if (paired > 0)
                std::printf("%s: geometric mean ratio %.2f over %d cases, %d at or below 1\n", family.c_str(),
                            std::exp(logSum / paired), paired, faster);
        };
        for (const auto& [key, times] : cases_) {
            if (key.family + " " + key.variant != family) {
                summary();
                family = key.family + " " + key.variant;
                logSum = 0;
                paired = faster = 0;
                std::printf("\n%-12s %-5s %-8s %6s %12s %-7s %12s %7s\n", "family", "type", "variant", "size",
                            "tvkgen ns", "peer", "peer ns", "ratio");
            }
            const double ours = median(times.ours), peer = median(times.peerTimes), ratio = ours / peer;
            std::printf("%-12s %-5s %-8s %6d %12.2f %-7s %12.2f %7.2f\n", key.family.c_str(), key.type.c_str(),
                        key.variant.c_str(), key.size, ours, times.peer.empty() ? "-" : times.peer.c_str(), peer,
                        ratio);
            if (std::isfinite(ratio)) {
                logSum += std::log(ratio);
                ++paired;
                faster += ratio <= 1.0;
            }
        }
        summary();
    }

private:
    static std::vector<std::string> split(const std::string& name)
    {
        std::vector<std::string> parts;
        size_t start = 0;
        for (size_t slash; (slash = name.find('/', start)) != std::string::npos; start = slash + 1)
            parts.push_back(name.substr(start, slash - start));
        parts.push_back(name.substr(start));
        return parts;
    }

    std::map<CaseKey, CaseTimes> cases_;
};

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RatioTableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
