// A host whose own windows are of the same toolkit.

#include <FL/Fl.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Window.H>

#include <new>

#include "window_test.h"

// Defines names that Google Test uses.
#include <FL/Fl_Text_Buffer.H>
#include <FL/Fl_Text_Display.H>

namespace zebtest
{

namespace
{

class FltkHost : public WindowTest
{
protected:
    FltkHost() : own(120, 80, "own")
    {
        own.end();
        own.show();
    }
    // As a host that goes through all windows comes by it.
    static Fl_Window* reached(const std::string& title)
    {
        for (Fl_Window* w = Fl::first_window(); w; w = Fl::next_window(w)) {
            if (w->label() == title) return w;
        }
        ADD_FAILURE() << title;
        return nullptr;
    }

    Fl_Window own;
};

TEST_F(FltkHost, KeepsTheGroupItIsFilling)
{
    own.begin();
    showBall();
    zebFilterWidth(-1, 2);
    EXPECT_EQ(Fl_Group::current(), &own);
    EXPECT_EQ(own.children(), 0);
    own.end();
}

TEST_F(FltkHost, MayHideAPictureForGood)
{
    showBall("first");
    reached("first")->hide();
    EXPECT_EQ(zebWindowEvents(0), 0);
    showBall("second");
    EXPECT_EQ(zebWindowEvents(0), 1);
    EXPECT_TRUE(shows(only("second"), ballOfTheHost()));
    EXPECT_EQ(desktop->find("own").size(), 1u);
}

TEST_F(FltkHost, MayHideAPictureWhileItRenders)
{
    zebOutputDisplay("ball");
    beginBall();
    zebRenderInit();
    ASSERT_TRUE(zebRenderBucket());
    reached("ball")->hide();
    while (zebRenderBucket()) {
    }
    zebSceneEnd();
    EXPECT_EQ(zebLastError(), 0);
    EXPECT_EQ(zebWindowEvents(0), 0);
}

// Its callbacks run while the library handles events in the middle of a call.
TEST_F(FltkHost, MayCallInFromThere)
{
    Reports reports;
    static int calls;
    calls = 0;
    Fl::add_timeout(0, [](void*) {
        ++calls;
        zebReset();
        zebSceneEnd();
        zebWindowEvents(1);
    });
    zebOutputDisplay("ball");
    beginBall();
    EXPECT_EQ(calls, 1);
    zebSceneEnd();
    EXPECT_TRUE(shows(only("ball"), ballOfTheHost()));
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].code, 8) << "zebReset";
    EXPECT_EQ(reports[1].code, 8) << "zebSceneEnd";
}

// What they add goes to the buckets that are left.
TEST_F(FltkHost, MayBuildFromThere)
{
    zebOutputDisplay("ball");
    zebRasterViewport(0, 36, 0, 12);
    zebViewIdentity();
    zebSceneBegin();
    zebSurface(zebQuark("constant"), 0);
    zebRenderInit();
    Fl::add_timeout(0, [](void*) {
        const float plane[4][3] = {{-9, -9, 0.5f}, {9, -9, 0.5f}, {9, 9, 0.5f}, {-9, 9, 0.5f}};
        zebPolygon(4, zebQuark("point"), plane, 0);
    });
    // Events are handled some thirty times a second.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    while (zebRenderBucket()) {
    }
    zebSceneEnd();
    EXPECT_EQ(zebLastError(), 0);
    const Shot shot = desktop->shoot(only("ball"));
    EXPECT_EQ(shot.at(6, 6), 0u) << "this bucket was done";
    EXPECT_EQ(shot.at(18, 6), 0xFFFFFFu);
    EXPECT_EQ(shot.at(30, 6), 0xFFFFFFu);
}

// The library minds what becomes of its own memory, and not of what they allocate.
TEST_F(FltkHost, KeepsItsHandlerOfExhaustedMemoryThere)
{
    static const std::new_handler hosts = [] { throw std::bad_alloc(); };
    static std::new_handler found;
    const std::new_handler before = std::set_new_handler(hosts);
    const auto look = [](void*) { found = std::get_new_handler(); };
    Fl::add_timeout(0, look);
    showBall();
    EXPECT_EQ(found, hosts) << "while it renders";
    found = nullptr;
    Fl::add_timeout(0, look);
    zebWindowEvents(0);
    EXPECT_EQ(found, hosts);
    EXPECT_EQ(std::get_new_handler(), hosts);
    std::set_new_handler(before);
}

// Messages that wait are shown by whoever handles events, but they are the library's.
TEST_F(FltkHost, HasNothingToDoWithTheMemoryOfMessagesThatItsLoopShows)
{
    static const std::new_handler hosts = [] { throw std::bad_alloc(); };
    static int theirs, others;
    const auto look = [](int, int, int, int, const char*, void*) {
        ++(std::get_new_handler() == hosts ? theirs : others);
    };
    const auto complain = [] { zebFilterWidth(-1, 2); };
    complain();
    auto* text = dynamic_cast<Fl_Text_Display*>(reached("ZEB Messages")->child(0));
    ASSERT_NE(text, nullptr);
    text->buffer()->add_modify_callback(look, nullptr);
    const std::new_handler before = std::set_new_handler(hosts);
    // Until one is not shown at once.
    do {
        theirs = others = 0;
        complain();
    } while (theirs + others > 0);
    EXPECT_TRUE(eventually([] { return theirs + others > 0; }, [] { Fl::wait(0.01); }));
    EXPECT_EQ(theirs, 0);
    EXPECT_EQ(std::get_new_handler(), hosts) << "as it was";
    std::set_new_handler(before);
    text->buffer()->remove_modify_callback(look, nullptr);
}

}  // namespace
}  // namespace zebtest
