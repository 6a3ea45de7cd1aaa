#include "state/free_store.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <new>
#include <string>
#include <thread>

#include "api/call_frame.h"
#include "state/callback.h"
#include "state/error.h"
#include "zebcore/zebcore.h"

using namespace zeb;

namespace
{

struct HostsFailure {
};
void hostsHandler() { throw HostsFailure(); }

// The host has a handler of its own.
class FreeStore : public testing::Test
{
protected:
    ~FreeStore() override
    {
        setErrorFuncName(nullptr);
        guardFreeStore(false);
        setErrorPrinter(fPrinter);
        std::set_new_handler(fBefore);
    }

private:
    PrintHandler fPrinter = Error::fPrintHandler;
    std::new_handler fBefore = std::set_new_handler(hostsHandler);
};

using FreeStoreDeathTest = FreeStore;

// What operator new does when it finds no memory.
void exhaust() { std::get_new_handler()(); }

}  // namespace

TEST_F(FreeStore, IsTheHostsOutsideOfCalls)
{
    EXPECT_EQ(std::get_new_handler(), hostsHandler);
    {
        const CallFrame frame("zebTest");
        EXPECT_EQ(std::get_new_handler(), errorNewHandler);
    }
    EXPECT_EQ(std::get_new_handler(), hostsHandler);
}

TEST_F(FreeStore, IsGuardedInCallsThatGoByNoName)
{
    {
        const CallFrame frame(nullptr);
        EXPECT_EQ(std::get_new_handler(), errorNewHandler);
        EXPECT_EQ(Error::fFuncName, nullptr);
    }
    EXPECT_EQ(std::get_new_handler(), hostsHandler);
    const CallFrame outer("zebOuter");
    {
        const CallFrame frame(nullptr);
        EXPECT_EQ(std::get_new_handler(), errorNewHandler);
        EXPECT_EQ(Error::fFuncName, nullptr);
    }
    EXPECT_EQ(std::get_new_handler(), errorNewHandler);
    EXPECT_STREQ(Error::fFuncName, "zebOuter");
}

TEST_F(FreeStore, IsTheHostsInItsCallbacks)
{
    const CallFrame frame("zebTest");
    {
        const CallbackScope callback;
        EXPECT_EQ(std::get_new_handler(), hostsHandler);
        for (const char* name : {"zebInner", static_cast<const char*>(nullptr)}) {
            {
                const CallFrame inner(name);
                EXPECT_EQ(std::get_new_handler(), errorNewHandler);
            }
            EXPECT_EQ(std::get_new_handler(), hostsHandler);
        }
    }
    EXPECT_EQ(std::get_new_handler(), errorNewHandler);
}

TEST_F(FreeStore, OfOtherThreadsFailsAsWithoutTheLibrary)
{
    const CallFrame frame("zebTest");
    std::thread([] { EXPECT_THROW(exhaust(), HostsFailure); }).join();
}

TEST_F(FreeStore, OfOtherThreadsFailsWithoutAHandlerToo)
{
    std::set_new_handler(nullptr);
    const CallFrame frame("zebTest");
    std::thread([] { EXPECT_THROW(exhaust(), std::bad_alloc); }).join();
}

// A handler that has made room returns, and the memory is asked for once more.
TEST_F(FreeStore, OfOtherThreadsMayBeSavedByTheirHandler)
{
    static int called;
    called = 0;
    std::set_new_handler([] { ++called; });
    const CallFrame frame("zebTest");
    std::thread([] { exhaust(); }).join();
    EXPECT_EQ(called, 1);
}

TEST_F(FreeStore, KeepsAHandlerThatTheHostSetsMeanwhile)
{
    {
        const CallFrame frame("zebTest");
        std::set_new_handler(nullptr);
    }
    EXPECT_EQ(std::get_new_handler(), nullptr);
}

// A thread of the host that looks at the handler during a call may set the same again afterwards.
TEST_F(FreeStore, SurvivesItsHandlerInTheHostsHands)
{
    std::set_new_handler(errorNewHandler);
    EXPECT_NE(Error::fStoredNewHandler.load(), errorNewHandler);
    Error::fStoredNewHandler = hostsHandler;
    EXPECT_THROW(exhaust(), HostsFailure);
    {
        const CallFrame frame("zebTest");
        EXPECT_EQ(Error::fStoredNewHandler.load(), hostsHandler);
    }
    EXPECT_THROW(exhaust(), HostsFailure);
}

TEST_F(FreeStoreDeathTest, OfACallIsReportedAndEndsTheProcess)
{
    setErrorPrinter([](const char* line) { std::fprintf(stderr, "<%s>", line); });
    EXPECT_DEATH(
        {
            const CallFrame frame("zebTest");
            exhaust();
        },
        "<severe error: Out of memory. zebTest: free store exhausted>");
    EXPECT_DEATH(
        {
            const CallFrame frame(nullptr);
            exhaust();
        },
        "<severe error: Out of memory. free store exhausted>");
}

// What a window would show then, nobody would see.
TEST_F(FreeStoreDeathTest, IsReportedWhereItStays)
{
    EXPECT_DEATH(
        {
            zebCustomErrorHandler(ZEB_ALL, [](long, long, const char*) {
                std::fprintf(stderr, "<%d>", Error::fEnding);
            });
            const CallFrame frame("zebTest");
            exhaust();
        },
        "<1>");
}

// Neither a severe handler that goes on nor one that fails itself keeps the process alive.
TEST_F(FreeStoreDeathTest, EndsTheProcessWhateverTheHandlerDoes)
{
    EXPECT_DEATH(
        {
            zebErrorHandler(ZEB_ALL, ZEB_ERROR_IGNORE);
            const CallFrame frame("zebTest");
            exhaust();
        },
        "^$");
    EXPECT_DEATH(
        {
            zebCustomErrorHandler(ZEB_ALL, [](long, long, const char* message) {
                std::fputs(message, stderr);
                exhaust();
            });
            const CallFrame frame("zebTest");
            exhaust();
        },
        "^zebTest: free store exhausted$");
}
