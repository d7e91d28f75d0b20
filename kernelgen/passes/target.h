// The processor level a build prints its kernels for. The driver makes one
// from the build's choice and hands it to the passes; the families and
// methods build the same graphs for every level.
#pragma once

#include <string>
#include <vector>

#include "core/graph.h"

namespace kernelgen {

struct Target {
    std::string name;
    // The vector kinds its registers hold; a graph of other kinds cannot run.
    std::vector<Kind> vectorKinds;
    // How many vector registers the scheduler may keep values in.
    int registers;
    // Whether its vectors are the processor's own: where they are emulated
    // (the portable layer), lanes gain nothing and cost compile time, so
    // the scalar kernels stay scalar.
    bool nativeVectors;

    bool has(Kind kind) const;
    // Whether sections of one shape run side by side in its vectors of
    // `wide`, two halves each.
    bool pairsInto(Kind wide) const { return nativeVectors && has(wide); }
};

// sse2 (the default), avx2, avx512 and portable; any other name is an error.
Target targetNamed(const std::string& name);
// Every name targetNamed knows.
std::vector<std::string> targetNames();

} // namespace kernelgen
