#include "state/error.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <new>
#include <string>
#include <vector>

#include "support/reports.h"

using namespace zeb;

namespace
{

using zebtest::Report;
using Lines = std::vector<std::string>;

Lines gLines;

// Collects the printed lines; everything else is as it was at the start.
class ErrorTest : public testing::Test
{
protected:
    void SetUp() override
    {
        gLines.clear();
        setErrorPrinter([](const char* line) { gLines.emplace_back(line); });
    }
    void TearDown() override
    {
        setErrorPrinter(fPrinter);
        setErrorFuncName(nullptr);
        setAttribNames(nullptr, nullptr);
        setErrorHandler(short{0xB01}, zebErrorIgnore);
        setErrorHandler(short{0xB06}, zebErrorPrint);
        setErrorHandler(short{0xB08}, zebErrorAbort);
    }

private:
    PrintHandler fPrinter = Error::fPrintHandler;
};

using ErrorDeathTest = ErrorTest;

int gCalled;
long gCode, gSeverity;
void handlerA(long code, long severity, const char*)
{
    gCalled = 1;
    gCode = code;
    gSeverity = severity;
}
void handlerB(long, long, const char*) { gCalled = 2; }

}  // namespace

TEST_F(ErrorTest, TheHandlersAtTheStart)
{
    EXPECT_EQ(Error::fInfoHandler, &zebErrorIgnore);
    EXPECT_EQ(Error::fWarningHandler, &zebErrorPrint);
    EXPECT_EQ(Error::fErrorHandler, &zebErrorPrint);
    EXPECT_EQ(Error::fSevereHandler, &zebErrorAbort);
    EXPECT_EQ(Error::fFuncName, nullptr);
    EXPECT_EQ(Error::fAttribName, nullptr);
    EXPECT_EQ(Error::fShadingGroup, nullptr);
}

TEST_F(ErrorTest, EveryCodeHasItsText)
{
    const char* const texts[] = {"",
                                 " Out of memory.",
                                 " Optional ZEB feature.",
                                 " Probably a bug in renderer.",
                                 " Bad begin-end nesting.",
                                 " Invalid state for parameters.",
                                 " Invalid state for attribs.",
                                 " Invalid state for primitives.",
                                 " Invalid state.",
                                 " Invalid enumerator for request.",
                                 " Parameter out of range.",
                                 " Parameters inconsistent.",
                                 " Bad object/light handle.",
                                 " Required parameters not provided.",
                                 " Declare type syntax error.",
                                 " Undefined mathematical operation."};
    for (long code = 0; code < 16; ++code) {
        gLines.clear();
        zebErrorPrint(code, 0xB04, "message");
        EXPECT_EQ(gLines, (Lines{std::string("error:") + texts[code] + " message"}));
        EXPECT_EQ(zebLastError(), code);
    }
}

TEST_F(ErrorTest, OtherCodesArePrintedAsNumbers)
{
    zebErrorPrint(99, 0xB04, "message");
    zebErrorPrint(16, 0xB04, "message");
    zebErrorPrint(-1, 0xB04, "message");
    EXPECT_EQ(gLines, (Lines{"error: Error code: 99 message", "error: Error code: 16 message",
                             "error: Error code: -1 message"}));
}

TEST_F(ErrorTest, EverySeverityHasItsWord)
{
    zebErrorPrint(0, 0xB01, "message");
    zebErrorPrint(0, 0xB02, "message");
    zebErrorPrint(0, 0xB04, "message");
    zebErrorPrint(0, 0xB08, "message");
    zebErrorPrint(0, 7, "message");
    EXPECT_EQ(gLines, (Lines{"info: message", "warning: message", "error: message",
                             "severe error: message", "error: message"}));
}

TEST_F(ErrorTest, ANullMessageLeavesTheWordAndTheText)
{
    zebErrorPrint(8, 0xB04, nullptr);
    zebErrorPrint(0, 0xB04, nullptr);
    EXPECT_EQ(gLines, (Lines{"error: Invalid state.", "error:"}));
}

TEST_F(ErrorTest, ANullFormatReportsTheBareFunctionName)
{
    setErrorFuncName("zebFrameEnd");
    error(4, 0xB04, nullptr);
    EXPECT_EQ(gLines, (Lines{"error: Bad begin-end nesting. zebFrameEnd"}));
}

TEST_F(ErrorTest, ANullFormatWithoutAFunctionNameReportsTheTextAlone)
{
    error(4, 0xB04, nullptr);
    EXPECT_EQ(gLines, (Lines{"error: Bad begin-end nesting."}));
}

TEST_F(ErrorTest, TheFunctionNameComesBeforeTheMessage)
{
    error(10, 0xB04, "value %ld of %s", 7L, "text");
    setErrorFuncName("zebTest");
    error(10, 0xB04, "value %ld of %s", 7L, "text");
    EXPECT_EQ(gLines, (Lines{"error: Parameter out of range. value 7 of text",
                             "error: Parameter out of range. zebTest: value 7 of text"}));
}

TEST_F(ErrorTest, AReportThroughTheInterface)
{
    zebShadingRate(0);
    EXPECT_EQ(gLines, (Lines{"error: Parameter out of range. zebShadingRate: shading rate 0 too "
                             "small"}));
    EXPECT_EQ(zebLastError(), 10);
}

// The text has room for 123 characters and its end.
TEST_F(ErrorTest, LongMessagesAreCutToTheBuffer)
{
    zebtest::Reports reports;
    const std::string text(200, 'x');
    error(10, 0xB04, "%s", text.c_str());
    setErrorFuncName("zebTest");
    error(10, 0xB04, "%s", text.c_str());
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].message, std::string(123, 'x'));
    EXPECT_EQ(reports[1].message, "zebTest: " + std::string(114, 'x'));
}

TEST_F(ErrorTest, AMessageThatFitsIsNotCut)
{
    zebtest::Reports reports;
    error(10, 0xB04, "%s", std::string(123, 'x').c_str());
    EXPECT_EQ(reports[0].message, std::string(123, 'x'));
}

TEST_F(ErrorTest, ALongFunctionNameIsCutToo)
{
    zebtest::Reports reports;
    const std::string name(200, 'n');
    setErrorFuncName(name.c_str());
    error(10, 0xB04, "message");
    setErrorFuncName(nullptr);
    EXPECT_EQ(reports[0].message, std::string(123, 'n'));
}

// Sets a locale in which numbers have a comma.
void setCommaLocale()
{
#if defined(_WIN32)
    ASSERT_NE(std::setlocale(LC_NUMERIC, "German"), nullptr);
#else
    // Made here: the machine may have none.
    const std::string folder = testing::TempDir() + "zeb-locale";
    const std::string make = "mkdir -p '" + folder + "' && localedef -f UTF-8 -i de_DE '" + folder +
                             "/de_DE.UTF-8' 2>/dev/null";
    ASSERT_EQ(std::system(make.c_str()), 0);
    setenv("LOCPATH", folder.c_str(), 1);
    ASSERT_NE(std::setlocale(LC_NUMERIC, "de_DE.UTF-8"), nullptr);
#endif
}

TEST_F(ErrorTest, NumbersHaveAPointInEveryLocale)
{
    setCommaLocale();
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    zebtest::Reports reports;
    error(10, 0xB04, "%g and %g", 0.5, 1.25e-7);
    std::setlocale(LC_NUMERIC, "C");
    EXPECT_EQ(reports[0].message, "0.5 and 1.25e-07");
}

TEST_F(ErrorTest, TheSeverityChoosesTheHandler)
{
    const long severities[] = {0xB01, 0xB02, 0xB04, 0xB08};
    for (long chosen : severities) {
        setErrorHandler(short{0xB0F}, handlerB);
        setErrorHandler(static_cast<short>(chosen), handlerA);
        for (long severity : severities) {
            error(5, severity, "message");
            EXPECT_EQ(gCalled, severity == chosen ? 1 : 2);
            error(5, severity, nullptr);
            EXPECT_EQ(gCalled, severity == chosen ? 1 : 2);
        }
    }
}

TEST_F(ErrorTest, UnknownSeveritiesGoToTheSevereHandler)
{
    setErrorHandler(short{0xB0F}, handlerB);
    setErrorHandler(short{0xB08}, handlerA);
    for (long severity : {0L, 0xB03L, 0xB10L, -1L}) {
        gCalled = 0;
        error(5, severity, "message");
        EXPECT_EQ(gCalled, 1);
        EXPECT_EQ(gCode, 5);
        EXPECT_EQ(gSeverity, severity);
        gCalled = 0;
        error(5, severity, nullptr);
        EXPECT_EQ(gCalled, 1);
    }
}

TEST_F(ErrorTest, AMaskSelectsSeveralSeverities)
{
    setErrorHandler(short{0xB0F}, handlerB);
    setErrorHandler(short{0xB05}, handlerA);
    EXPECT_EQ(Error::fInfoHandler, &handlerA);
    EXPECT_EQ(Error::fWarningHandler, &handlerB);
    EXPECT_EQ(Error::fErrorHandler, &handlerA);
    EXPECT_EQ(Error::fSevereHandler, &handlerB);
    setErrorHandler(short{0xB00}, zebErrorIgnore);  // none
    EXPECT_EQ(Error::fInfoHandler, &handlerA);
    EXPECT_TRUE(gLines.empty());
}

TEST_F(ErrorTest, BuiltInHandlersGoByNumber)
{
    zebErrorHandler(0xB0F, 0xC00);
    EXPECT_EQ(Error::fSevereHandler, &zebErrorIgnore);
    zebErrorHandler(0xB03, 0xC01);
    EXPECT_EQ(Error::fInfoHandler, &zebErrorPrint);
    EXPECT_EQ(Error::fWarningHandler, &zebErrorPrint);
    EXPECT_EQ(Error::fErrorHandler, &zebErrorIgnore);
    zebErrorHandler(0xB04, 0xC02);
    EXPECT_EQ(Error::fErrorHandler, &zebErrorAbort);
}

TEST_F(ErrorTest, UnknownHandlersAreRefused)
{
    zebtest::Reports reports;
    const ErrorHandler before = Error::fErrorHandler;
    zebErrorHandler(0xB04, 5);
    setErrorHandler(short{0xB04}, short{0xC03});
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0], (Report{10, 0xB04, "zebErrorHandler: unknown error handler 5"}));
    EXPECT_EQ(reports[1], (Report{10, 0xB04, "unknown error handler 3075"}));
    EXPECT_EQ(Error::fErrorHandler, before);
}

TEST_F(ErrorTest, UnknownMasksAreRefused)
{
    for (int mask : {0xB10, 0xB84, 0xA04, 0x004, 0x1B04}) {
        zebtest::Reports reports;
        const ErrorHandler before = Error::fErrorHandler;
        setErrorHandler(static_cast<short>(mask), handlerA);
        EXPECT_EQ(Error::fErrorHandler, before);
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0], (Report{10, 0xB04, "unknown severity mask " + std::to_string(mask)}));
    }
    zebtest::Reports reports;
    zebErrorHandler(0xB14, 0xC00);
    zebCustomErrorHandler(0xB10, handlerA);
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].message, "zebErrorHandler: unknown severity mask 2836");
    EXPECT_EQ(reports[1].message, "zebCustomErrorHandler: unknown severity mask 2832");
}

TEST_F(ErrorTest, ANullHandlerIsNotRefused)
{
    setErrorHandler(short{0xB04}, ErrorHandler{nullptr});
    EXPECT_TRUE(gLines.empty());
    error(10, 0xB04, "message");
    EXPECT_TRUE(gLines.empty());
}

TEST_F(ErrorTest, ANullPrinterDropsTheLines)
{
    setErrorPrinter(nullptr);
    EXPECT_EQ(Error::fPrintHandler, nullptr);
    error(11, 0xB04, "message");
    EXPECT_EQ(zebLastError(), 11);
}

TEST_F(ErrorTest, IgnoredReportsAreRemembered)
{
    zebErrorHandler(0xB0F, 0xC00);
    zebClip(0, 10);
    error(7, 0xB08, "message");
    EXPECT_TRUE(gLines.empty());
    EXPECT_EQ(zebLastError(), 7);
    zebReset();
}

TEST_F(ErrorTest, ReportsToTheHostsHandlerAreNotRemembered)
{
    zebErrorIgnore(3, 0xB04, "message");
    setErrorHandler(short{0xB04}, handlerA);
    error(7, 0xB04, "message");
    EXPECT_EQ(zebLastError(), 3);
}

TEST_F(ErrorTest, ResetKeepsTheHandlers)
{
    setErrorHandler(short{0xB04}, handlerA);
    zebReset();
    EXPECT_EQ(Error::fErrorHandler, &handlerA);
}

TEST_F(ErrorTest, ASecondLineSaysWhatIsBeingRendered)
{
    setAttribNames("A", "B");
    error(0, 0xB04, "message");
    setAttribNames("A", nullptr);
    error(0, 0xB02, "message");
    setAttribNames(nullptr, "B");
    error(0, 0xB04, "message");
    EXPECT_EQ(gLines, (Lines{"error: message", "While rendering object A; shading group B",
                             "warning: message", "While rendering object A", "error: message",
                             "While rendering shading group B"}));
}

TEST_F(ErrorTest, NamesOfAnyLengthArePrintedWhole)
{
    for (const std::size_t size : {471u, 472u, 473u, 2000u}) {
        const std::string name(size, 'x');
        gLines.clear();
        setAttribNames(name.c_str(), "B");
        error(0, 0xB04, "message");
        ASSERT_EQ(gLines.size(), 2u);
        EXPECT_EQ(gLines[1], "While rendering object " + name + "; shading group B");
    }
}

TEST_F(ErrorTest, AnInfoHasNoSecondLine)
{
    setAttribNames("A", "B");
    zebErrorPrint(0, 0xB01, "message");
    EXPECT_EQ(gLines, (Lines{"info: message"}));
}

TEST_F(ErrorTest, WithoutNamesThereIsNoSecondLine)
{
    setAttribNames("A", "B");
    setAttribNames(nullptr, nullptr);
    error(0, 0xB04, "message");
    EXPECT_EQ(gLines, (Lines{"error: message"}));
}

TEST_F(ErrorTest, AScopeOfNamesEndsThem)
{
    {
        AttribNamesScope scope("A", "");
        error(0, 0xB04, "message");
    }
    error(0, 0xB04, "message");
    EXPECT_EQ(gLines, (Lines{"error: message", "While rendering object A", "error: message"}));
}

TEST_F(ErrorTest, TheFunctionNameAnswersThePreviousOne)
{
    EXPECT_EQ(setErrorFuncName("a"), nullptr);
    EXPECT_STREQ(setErrorFuncName("b"), "a");
    EXPECT_STREQ(setErrorFuncName(nullptr), "b");
    EXPECT_EQ(Error::fFuncName, nullptr);
}

TEST_F(ErrorTest, TheFreeStoreIsGuardedWhileANameIsSet)
{
    const std::new_handler own = [] { throw std::bad_alloc(); };
    const std::new_handler before = std::set_new_handler(own);
    setErrorFuncName("a");
    EXPECT_EQ(std::get_new_handler(), &errorNewHandler);
    EXPECT_EQ(Error::fStoredNewHandler, own);
    setErrorFuncName("b");
    EXPECT_EQ(std::get_new_handler(), &errorNewHandler);
    EXPECT_EQ(Error::fStoredNewHandler, own);
    setErrorFuncName(nullptr);
    EXPECT_EQ(std::get_new_handler(), own);
    std::set_new_handler(before);
}

TEST_F(ErrorTest, InterfaceCallsLeaveNoNameAndNoGuard)
{
    const std::new_handler before = std::get_new_handler();
    zebColorGain(1);
    EXPECT_EQ(Error::fFuncName, nullptr);
    EXPECT_EQ(std::get_new_handler(), before);
}

TEST_F(ErrorDeathTest, AnExhaustedFreeStoreIsSevereAndAborts)
{
    setErrorPrinter([](const char* line) { std::fprintf(stderr, "<%s>", line); });
    setErrorFuncName("zebTest");
    EXPECT_DEATH(std::get_new_handler()(),
                 "<severe error: Out of memory. zebTest: free store exhausted>");
}

TEST_F(ErrorDeathTest, AnExhaustedFreeStoreAbortsWhateverTheHandler)
{
    setErrorHandler(short{0xB08}, [](long code, long severity, const char* message) {
        std::fprintf(stderr, "<%ld %lx %s>", code, static_cast<unsigned long>(severity), message);
    });
    EXPECT_DEATH(errorNewHandler(), "<1 b08 free store exhausted>");
}

TEST_F(ErrorDeathTest, AbortPrintsFirst)
{
    setErrorPrinter([](const char* line) { std::fprintf(stderr, "<%s>", line); });
    EXPECT_DEATH(zebErrorAbort(10, 0xB02, "m"), "<warning: Parameter out of range. m>");
    EXPECT_DEATH(zebErrorAbort(10, 0xB04, "m"), "<error: Parameter out of range. m>");
    EXPECT_DEATH(zebErrorAbort(10, 0xB08, "m"), "<severe error: Parameter out of range. m>");
}

TEST_F(ErrorDeathTest, SevereReportsAbort)
{
    setErrorPrinter([](const char* line) { std::fprintf(stderr, "<%s>", line); });
    EXPECT_DEATH(error(0, 0xB08, "m"), "<severe error: m>");
}

TEST_F(ErrorTest, AbortLetsAnInfoPass)
{
    zebErrorAbort(10, 0xB01, "message");
    EXPECT_EQ(gLines, (Lines{"info: Parameter out of range. message"}));
    EXPECT_EQ(zebLastError(), 10);
}
