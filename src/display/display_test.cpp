#include "display/display.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "state/error.h"

using namespace zeb;

namespace
{

std::vector<std::string> gLines;

// Lets messages of one severity through, and notes which it is asked about.
class Picky : public Display
{
public:
    explicit Picky(long severity) : fSeverity(severity) {}
    bool error(long severity) override
    {
        asked.push_back(severity);
        return severity == fSeverity;
    }
    std::vector<long> asked;

private:
    long fSeverity;
};

}  // namespace

TEST(Display, TheBaseLetsEveryMessageThrough)
{
    Display display;
    for (const long severity : {kInfo, kWarning, kError, kSevere}) {
        EXPECT_TRUE(display.error(severity));
    }
}

TEST(Display, AMessageThatItRefusesIsRememberedButNotPrinted)
{
    gLines.clear();
    const PrintHandler before = Error::fPrintHandler;
    setErrorPrinter([](const char* line) { gLines.emplace_back(line); });
    auto owned = std::make_unique<Picky>(kWarning);
    const Picky& picky = *owned;
    gDisplay = std::move(owned);
    error(3, kWarning, "printed");
    error(4, kError, "not printed");
    EXPECT_EQ(Error::fLastError, 4);
    EXPECT_EQ(picky.asked, (std::vector<long>{kWarning, kError}));
    gDisplay.reset();
    setErrorPrinter(before);
    EXPECT_EQ(gLines, (std::vector<std::string>{"warning: Probably a bug in renderer. printed"}));
}
