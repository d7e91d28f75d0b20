// The shared library exports exactly the functions of the list of exports
// (tvkgen_exports.inc), and tvkgen.h declares exactly them.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <iterator>
#include <regex>
#include <set>
#include <string>

#include "tvkgen.h"

namespace {

// A plain array first: a braced list of 1193 std::string took clang with
// AddressSanitizer minutes to compile.
constexpr const char* kNames[] = {
#define TVKG_EXPORT(shape, name, type, size, group) #name,
#include "tvkgen_exports.inc"
};
const std::set<std::string> kListed(std::begin(kNames), std::end(kNames));

// What a command prints.
std::string outputOf(const std::string& command)
{
    std::string text;
    FILE* pipe = popen(command.c_str(), "r");
    if (pipe == nullptr)
        return text;
    char chunk[4096];
    for (size_t n; (n = std::fread(chunk, 1, sizeof chunk, pipe)) > 0;)
        text.append(chunk, n);
    pclose(pipe);
    return text;
}

// Each name of `found` that `listed` lacks, and the other way round.
void expectSameNames(const std::set<std::string>& found, const std::set<std::string>& listed, const char* what)
{
    for (const auto& name : listed)
        EXPECT_TRUE(found.count(name)) << name << " is listed but not " << what;
    for (const auto& name : found)
        EXPECT_TRUE(listed.count(name)) << name << " is " << what << " but not listed";
}

TEST(Exports, ExactlyTheListedFunctions)
{
    std::set<std::string> exported, data;
    const std::string table = outputOf("nm -D --defined-only '" TVKGEN_LIBRARY_PATH "'");
    const std::regex symbol(R"(\S+ (\S) (\S+)\n)");
    for (std::sregex_iterator m(table.begin(), table.end(), symbol), end; m != end; ++m) {
        exported.insert((*m)[2]);
        if ((*m)[1] != "T")
            data.insert((*m)[2]);
    }
    ASSERT_FALSE(exported.empty()) << "nm found no symbols in " << TVKGEN_LIBRARY_PATH;
    EXPECT_EQ(kListed.size(), 1193u);
    expectSameNames(exported, kListed, "exported");
    EXPECT_TRUE(data.empty()) << "exported data: " << *data.begin();
}

// Every function declaration of the header as the C compiler reads it,
// whatever marks it: a name followed by a parameter list and a semicolon.
TEST(Exports, HeaderDeclaresExactlyTheListedFunctions)
{
    const std::string header = outputOf(TVKGEN_C_COMPILER " -E -P -I '" TVKGEN_INCLUDE_DIR "' '" TVKGEN_INCLUDE_DIR
                                        "/tvkgen.h'");
    std::set<std::string> declared;
    const std::regex declaration(R"((\w+)\s*\([^()]*\)\s*;)");
    for (std::sregex_iterator m(header.begin(), header.end(), declaration), end; m != end; ++m)
        declared.insert((*m)[1]);
    ASSERT_FALSE(declared.empty()) << "no declarations read from " << TVKGEN_INCLUDE_DIR "/tvkgen.h";
    expectSameNames(declared, kListed, "declared in tvkgen.h");
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
