// The DCT-IV entry points of one element type, for tests written once over
// float and double.
#pragma once

#include "tvkgen.h"

namespace tvktest {

template <class Real>
struct Dct4Api;

template <>
struct Dct4Api<float> {
    using Plan = TvkgDCT4Plan_32f;
    static constexpr auto getSize = tvkgDCT4GetSize_32f;
    static constexpr auto init = tvkgDCT4Init_32f;
    static constexpr auto initAlloc = tvkgDCT4InitAlloc_32f;
    static constexpr auto run = tvkgDCT4_32f;
    static constexpr auto free = tvkgDCT4Free_32f;
};

template <>
struct Dct4Api<double> {
    using Plan = TvkgDCT4Plan_64f;
    static constexpr auto getSize = tvkgDCT4GetSize_64f;
    static constexpr auto init = tvkgDCT4Init_64f;
    static constexpr auto initAlloc = tvkgDCT4InitAlloc_64f;
    static constexpr auto run = tvkgDCT4_64f;
    static constexpr auto free = tvkgDCT4Free_64f;
};

} // namespace tvktest
