// The words of a road, as the kernel titles and `kernelgen --roads` give
// them: "3 then 4, coprime join", "convolution over 12, across its lanes".
#pragma once

#include <string>

#include "roads/road.h"

namespace kernelgen {

std::string wordsOf(const Road& road);
// The words of a road on real data, as the real families' titles give them:
// "3 then 4, coprime join", "even-odd recursion over the real size-8, ...".
std::string realWordsOf(const Road& road);

} // namespace kernelgen
