// The library's exported functions, read from the one list that the
// headers, the link, the tests and the Python module share
// (include/tvkgen_exports.inc). The families name their dispatchers and
// take each kernel's name from the list instead of spelling the scheme
// again.
#pragma once

#include <string>

namespace kernelgen {

// The name of the kernel of `size` that the dispatcher `group` runs; an
// error where the list has none.
std::string listedKernel(const std::string& group, int size);

} // namespace kernelgen
