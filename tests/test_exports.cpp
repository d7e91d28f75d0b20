// The shared library exports exactly its 1193 names, all of them functions,
// the version record among them.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <set>
#include <string>

#include "complex_kernels.h"
#include "real_kernels.h"
#include "tvkgen.h"

namespace {

// Names of the library's dynamic symbol table with their nm type letter.
std::set<std::string> definedSymbols(const std::string& library, std::set<std::string>& nonFunctions)
{
    std::set<std::string> names;
    FILE* pipe = popen(("nm -D --defined-only '" + library + "'").c_str(), "r");
    if (pipe == nullptr)
        return names;
    char line[512];
    while (std::fgets(line, sizeof line, pipe)) {
        char address[64], type[4], name[400];
        if (std::sscanf(line, "%63s %3s %399s", address, type, name) != 3)
            continue;
        names.insert(name);
        if (std::strcmp(type, "T") != 0)
            nonFunctions.insert(name);
    }
    pclose(pipe);
    return names;
}

// Each family adds the names it builds.
std::set<std::string> expectedExports()
{
    std::set<std::string> names = {"tvkgenGetLibVersion"};
    for (const auto& k : tvktest::builtComplexKernels())
        names.insert(k.name());
    for (const char* dispatcher :
         {"tvkgDFTFwd_CToC_32fc", "tvkgDFTFwd_CToC_64fc", "tvkgDFTInv_CToC_32fc", "tvkgDFTInv_CToC_64fc"})
        names.insert(dispatcher);
    for (tvktest::RealFamily family :
         {tvktest::RealFamily::Forward, tvktest::RealFamily::Inverse, tvktest::RealFamily::Hartley})
        for (const auto& k : tvktest::builtRealKernels(family)) {
            names.insert(k.name());
            names.insert(k.dispatcherName());
        }
    for (const char* type : {"32f", "64f"}) {
        for (int order = 1; order <= 13; ++order)
            names.insert("tvkgWHT_" + std::to_string(order) + "_" + type);
        names.insert(std::string("tvkgWHT_") + type);
        names.insert(std::string("tvkgWHTGetBufferSize_") + type);
    }
    for (const char* type : {"_32f", "_64f"})
        for (const char* lifeCycle : {"tvkgDCT4GetSize", "tvkgDCT4Init", "tvkgDCT4InitAlloc", "tvkgDCT4", "tvkgDCT4Free"})
            names.insert(std::string(lifeCycle) + type);
    return names;
}

TEST(Exports, ExactlyTheBuiltFunctions)
{
    std::set<std::string> nonFunctions;
    const std::set<std::string> exported = definedSymbols(TVKGEN_LIBRARY_PATH, nonFunctions);
    ASSERT_FALSE(exported.empty()) << "nm found no symbols in " << TVKGEN_LIBRARY_PATH;
    const std::set<std::string> expected = expectedExports();
    EXPECT_EQ(expected.size(), 1193u);
    for (const auto& name : expected)
        EXPECT_TRUE(exported.count(name)) << "missing export " << name;
    for (const auto& name : exported)
        EXPECT_TRUE(expected.count(name)) << "unexpected export " << name;
    EXPECT_TRUE(nonFunctions.empty()) << "exported data: " << *nonFunctions.begin();
}

// The record's numbers are the library's own version, that of the shared
// object; its file name and version text are made of them. The build
// number, processor code and date have no other source in the build.
TEST(Version, RecordNamesTheLibraryVersion)
{
    const LibVersion* v = tvkgenGetLibVersion();
    ASSERT_NE(v, nullptr);
    EXPECT_EQ(v, tvkgenGetLibVersion());
    const std::string release = std::to_string(v->versionMajor) + "." + std::to_string(v->versionMinor);
    EXPECT_EQ(release + "." + std::to_string(v->buildSeries), TVKGEN_VERSION);
    EXPECT_EQ(0, std::memcmp(v->cpuCode, "s8\0\0", 4));
    EXPECT_EQ(v->fileName, "tvkgens8-" + release + ".dll");
    EXPECT_EQ(v->versionText, release + " build " + std::to_string(v->buildSeries) + ".20");
    EXPECT_EQ(v->buildNumber, 300);
    EXPECT_STREQ(v->buildDateText, "Jun 10 2009");
}

} // namespace
