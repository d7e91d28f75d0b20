// The C++ text of the batch entries: each kernel's per-element graph
// printed for a block of transforms, one vector lane per transform, and the
// exported entries that run blocks of every size. The text serves every
// processor level: the batch frame picks the vectors.
#pragma once

#include <string>
#include <vector>

#include "core/kernel.h"

namespace kernelgen {

// The block functions of a file's kernels, `tvkgen::batch::<exported name>`;
// the kernels' graphs are per element (lowerPerElement).
std::string printBatchKernelFile(const FramedKernelFile& file, const std::string& invocation);

// One exported batch entry per dispatcher, over the block functions of its
// sizes; the extents of one transform in src and dst are C++ expressions in
// `len`, counted in elements.
struct BatchDispatcher {
    SizeDispatcher sizes;
    std::string scaleRow;
    std::string srcExtent;
    std::string dstExtent;
};

// Without `lanes`, every member runs through the single kernel.
std::string printBatchDispatchers(const std::vector<BatchDispatcher>& dispatchers,
                                  const std::string& invocation);

// The batch entry of a dispatcher: tvkgDFTFwd_CToC_32fc -> tvkgBatchDFTFwd_CToC_32fc.
std::string batchName(const std::string& dispatcher);

} // namespace kernelgen
