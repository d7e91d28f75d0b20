// The words of a road, as the kernel titles and `kernelgen --roads` give
// them: "3 then 4, coprime join", "convolution over 12, across its lanes".
#pragma once

#include <string>

#include "roads/road.h"

namespace kernelgen {

std::string wordsOf(const Road& road);

} // namespace kernelgen
