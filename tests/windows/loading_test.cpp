#include "windows/loading.h"

#include <thread>

#include "zebcore/zebcore.h"

namespace zebtest
{

namespace
{

// Renders a picture to nowhere and declares a name; the name's token, or 0 if a function is
// missing.
unsigned short use(HMODULE library)
{
    const auto quark = function<decltype(zebQuark)>(library, "zebQuark");
    const auto device = function<decltype(zebCustomDisplay)>(library, "zebCustomDisplay");
    const auto begin = function<decltype(zebSceneBegin)>(library, "zebSceneBegin");
    const auto end = function<decltype(zebSceneEnd)>(library, "zebSceneEnd");
    const auto reset = function<decltype(zebReset)>(library, "_Z8zebResetv");
    if (!quark || !device || !begin || !end || !reset) return 0;
    const ZebDisplay nowhere = {};
    device(&nowhere);
    begin();
    end();
    reset();
    return quark("a name of this test's own");
}

// A picture by four threads; false if a function is missing.
bool renderByThreads(HMODULE library)
{
    const auto threads = function<decltype(zebThreads)>(library, "zebThreads");
    const auto viewport = function<decltype(zebRasterViewport)>(library, "zebRasterViewport");
    const auto device = function<decltype(zebCustomDisplay)>(library, "zebCustomDisplay");
    const auto begin = function<decltype(zebSceneBegin)>(library, "zebSceneBegin");
    const auto sphere = function<decltype(zebSphereV)>(library, "zebSphereV");
    const auto end = function<decltype(zebSceneEnd)>(library, "zebSceneEnd");
    if (!threads || !viewport || !device || !begin || !sphere || !end) return false;
    const ZebDisplay nowhere = {};
    threads(4);
    viewport(0, 120, 0, 90);
    device(&nowhere);
    begin();
    for (int k = 1; k <= 5; ++k) {
        const auto radius = 0.2f * static_cast<float>(k);
        sphere(radius, -radius, radius, 360, 0, nullptr, nullptr);
    }
    end();
    return true;
}

}  // namespace

TEST_F(Loading, FunctionsAreFoundByTheirStatedNames)
{
    const HMODULE library = load();
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(use(library), 37) << "the first name after the 36 of the start";
    EXPECT_EQ(function<decltype(zebVersion)>(library, "zebVersion")(), zebVersion());
    EXPECT_TRUE(FreeLibrary(library));
}

TEST_F(Loading, TheLibraryHasTwoIcons)
{
    const HMODULE library = load();
    const auto hasIcon = [library](int number) {
        return FindResourceW(library, MAKEINTRESOURCEW(number),
                             reinterpret_cast<LPCWSTR>(RT_GROUP_ICON)) != nullptr;
    };
    EXPECT_TRUE(hasIcon(101)) << "of pictures";
    EXPECT_TRUE(hasIcon(103)) << "of messages";
    EXPECT_FALSE(hasIcon(102));
    FreeLibrary(library);
}

TEST_F(Loading, ALibraryThatIsLetGoIsGoneAndStartsAnew)
{
    for (int round = 0; round < 3; ++round) {
        const HMODULE library = load();
        ASSERT_NE(library, nullptr);
        EXPECT_EQ(load(), library);
        EXPECT_EQ(use(library), 37) << round;
        FreeLibrary(library);
        EXPECT_TRUE(loaded()) << "held once more";
        FreeLibrary(library);
        EXPECT_FALSE(loaded());
    }
}

// Nothing of it is left at work, however soon it goes.
TEST_F(Loading, ALibraryThatRenderedByThreadsIsGoneAtOnce)
{
    for (int round = 0; round < 20; ++round) {
        const HMODULE library = load();
        ASSERT_NE(library, nullptr);
        EXPECT_TRUE(renderByThreads(library));
        FreeLibrary(library);
        EXPECT_FALSE(loaded()) << round;
    }
}

TEST_F(Loading, AThreadMayOutliveTheLibraryItUsed)
{
    unsigned short token = 0;
    std::thread([this, &token] {
        const HMODULE library = load();
        token = use(library);
        FreeLibrary(library);
    }).join();
    EXPECT_EQ(token, 37);
    EXPECT_FALSE(loaded());
}

}  // namespace zebtest
