// What the shared library shows to the outside.

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>

namespace
{

std::set<std::string> exportedSymbols()
{
    std::set<std::string> names;
    std::FILE* nm = popen("nm -D --defined-only '" ZEB_LIBRARY "'", "r");
    char address[64], kind[8], name[512];
    while (nm && std::fscanf(nm, "%63s %7s %511s", address, kind, name) == 3) names.insert(name);
    if (nm) pclose(nm);
    return names;
}

// The names that the header declares, those with a label under that too.
std::set<std::string> declaredSymbols()
{
    std::ifstream file(ZEB_HEADER);
    const std::string text((std::istreambuf_iterator<char>(file)),
                           std::istreambuf_iterator<char>());
    std::set<std::string> names;
    const std::regex declaration(R"(ZEB_API [^;]*?\b(zeb\w+)\([^;]*;)");
    const std::regex label(R"re(ZEB_DECORATED\("(\w+)"\))re");
    for (std::sregex_iterator it(text.begin(), text.end(), declaration), end; it != end; ++it) {
        std::smatch decorated;
        const std::string whole = it->str();
        const bool labelled = std::regex_search(whole, decorated, label);
        names.insert((*it)[1].str());
        if (labelled) names.insert(decorated[1].str());
    }
    return names;
}

}  // namespace

TEST(Symbols, ExactlyTheDeclaredFunctionsAreExported)
{
    const std::set<std::string> exported = exportedSymbols();
    EXPECT_EQ(exported, declaredSymbols());
    EXPECT_EQ(exported.size(), 161u);
}

TEST(Symbols, NineNamesAreDecorated)
{
    const std::set<std::string> exported = exportedSymbols();
    const char* decorated[] = {
        "_Z8zebResetv",         "_Z15zebErrorPrinterPFvPKcE", "_Z13zebRenderInitv",
        "_Z15zebRenderBucketv", "_Z11zebProgressv",           "_Z20zebBoundDisplacementf",
        "_Z14zebMotionBeginlz", "_Z15zebMotionBeginVlPf",     "_Z12zebMotionEndv"};
    for (const char* name : decorated) EXPECT_TRUE(exported.count(name)) << name;
}
