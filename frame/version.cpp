#include "tvkgen.h"

namespace {
constexpr LibVersion kLibVersion = {
    6, 1, 137, 300, {'s', '8', '\0', '\0'}, "tvkgens8-6.1.dll", "6.1 build 137.20", "Jun 10 2009",
};
}

const LibVersion* tvkgenGetLibVersion(void)
{
    return &kLibVersion;
}
