#include "state/quark.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "support/reports.h"

using namespace zeb;

namespace
{

using zebtest::Report;

struct Predefined {
    const char* name;
    short storage, type;
};

const Predefined kPredefined[36] = {
    {"point", 0xD03, 0xE05},
    {"height", 0xD03, 0xE01},
    {"pointw", 0xD03, 0xE06},
    {"normal", 0xD02, 0xE05},
    {"plane", 0xD01, 0xE05},
    {"color", 0xD02, 0xE07},
    {"opacity", 0xD02, 0xE07},
    {"constant", 0xD00, 0xE00},
    {"diffuse", 0xD00, 0xE00},
    {"metal", 0xD00, 0xE00},
    {"plastic", 0xD00, 0xE00},
    {"ka", 0xD01, 0xE01},
    {"kd", 0xD01, 0xE01},
    {"ks", 0xD01, 0xE01},
    {"roughness", 0xD01, 0xE01},
    {"specularcolor", 0xD01, 0xE07},
    {"ambient", 0xD00, 0xE00},
    {"omni", 0xD00, 0xE00},
    {"distant", 0xD00, 0xE00},
    {"spot", 0xD00, 0xE00},
    {"intensity", 0xD01, 0xE01},
    {"from", 0xD01, 0xE05},
    {"to", 0xD01, 0xE05},
    {"coneangle", 0xD01, 0xE01},
    {"conedeltaangle", 0xD01, 0xE01},
    {"beamdistribution", 0xD01, 0xE01},
    {"depthcue", 0xD00, 0xE00},
    {"fog", 0xD00, 0xE00},
    {"hither", 0xD01, 0xE01},
    {"yon", 0xD01, 0xE01},
    {"distance", 0xD01, 0xE01},
    {"raster", 0xD00, 0xE00},
    {"image", 0xD00, 0xE00},
    {"eye", 0xD00, 0xE00},
    {"world", 0xD00, 0xE00},
    {"model", 0xD00, 0xE00},
};

// The slot of a token, or null.
std::uint32_t* slotOf(unsigned short token)
{
    for (unsigned i = 0; i <= Quark::fMask; ++i) {
        if ((Quark::fTable[i] & 0xFFFF) == token) return &Quark::fTable[i];
    }
    return nullptr;
}

// The table is the process's: what fills it happens in a child, from an empty table on.
void forgetAll()
{
    Quark::fNext = 1;
    Quark::fMask = 0;
    Quark::fZero = 0;
    Quark::fTable = &Quark::fZero;
    Quark::fStringTable = nullptr;
}

std::string numbered(unsigned i) { return "name " + std::to_string(i); }

// Declares tokens up to and with `last`, checking each.
bool fill(unsigned last)
{
    for (unsigned i = Quark::fNext; i <= last; ++i) {
        const short storage = static_cast<short>(0xD00 + i % 4);
        const short type = static_cast<short>(0xE00 + i % 8);
        if (Quark::declare(numbered(i).c_str(), storage, type) != i) {
            std::fprintf(stderr, "token %u\n", i);
            return false;
        }
    }
    return true;
}

// Whether tokens 1 ... last are all as fill() made them.
bool allThere(unsigned last)
{
    for (unsigned i = 1; i <= last; ++i) {
        const auto token = static_cast<unsigned short>(i);
        const std::string name = numbered(i);
        if (Quark::find(name.c_str()) != i || !Quark::getString(token) ||
            name != Quark::getString(token) ||
            Quark::getClass(token) != static_cast<short>(0xD00 + i % 4) ||
            Quark::getType(token) != static_cast<short>(0xE00 + i % 8)) {
            std::fprintf(stderr, "token %u is lost\n", i);
            return false;
        }
    }
    return true;
}

// Whether declaring the predefined names gives the reports expected.
bool predefinedReport(const std::vector<Report>& expected)
{
    const zebtest::Reports reports;
    declarePredefined();
    std::vector<Report> all;
    for (std::size_t i = 0; i < reports.size(); ++i) all.push_back(reports[i]);
    return all == expected;
}

void leave(bool right) { std::_Exit(right ? 0 : 1); }

#define EXPECT_IN_CHILD(expression) \
    EXPECT_EXIT((forgetAll(), leave(expression)), testing::ExitedWithCode(0), "")

}  // namespace

TEST(Quark, ThePredefinedNamesHaveFixedTokens)
{
    for (unsigned short i = 0; i < 36; ++i) {
        const auto token = static_cast<unsigned short>(i + 1);
        EXPECT_EQ(Quark::find(kPredefined[i].name), token);
        EXPECT_STREQ(Quark::getString(token), kPredefined[i].name);
        EXPECT_EQ(Quark::getClass(token), kPredefined[i].storage) << kPredefined[i].name;
        EXPECT_EQ(Quark::getType(token), kPredefined[i].type) << kPredefined[i].name;
    }
    EXPECT_EQ(kQPoint, 1);
    EXPECT_EQ(kQColor, 6);
    EXPECT_EQ(kQSpecularColor, 16);
    EXPECT_EQ(kQBeamDistribution, 26);
    EXPECT_EQ(kQModel, 36);
}

TEST(Quark, InitDeclaresOnlyOnce)
{
    zebtest::Reports reports;
    const unsigned short next = Quark::fNext;
    initQuark();
    EXPECT_EQ(Quark::fNext, next);
    EXPECT_TRUE(reports.empty());
}

TEST(QuarkDeathTest, ANameBeforeThePredefinedOnesIsReported)
{
    EXPECT_IN_CHILD(predefinedReport({}) && Quark::fNext == 37);
    EXPECT_IN_CHILD(Quark::declare("early", 0xD00, 0xE00) == 1 &&
                    predefinedReport({{3, 0xB04, "predefined quark mismatch"}}) &&
                    Quark::find("model") == 37);
}

TEST(Quark, ResetKeepsTheTokens)
{
    const unsigned short token = zebQuark("quark: reset");
    zebReset();
    EXPECT_EQ(Quark::find("quark: reset"), token);
    EXPECT_EQ(zebQuark("point"), 1);
}

TEST(Quark, AKnownNameKeepsItsTokenClassAndType)
{
    EXPECT_EQ(zebQuark("point"), 1);
    EXPECT_EQ(Quark::declare("point", 0xD01, 0xE01), 1);
    EXPECT_EQ(Quark::getClass(1), 0xD03);
    EXPECT_EQ(Quark::getType(1), 0xE05);
}

TEST(Quark, NamesAreCaseSensitive)
{
    const unsigned short token = zebQuark("Point");
    EXPECT_NE(token, 1);
    EXPECT_STREQ(Quark::getString(token), "Point");
    EXPECT_EQ(Quark::getClass(token), 0xD00);
    EXPECT_EQ(Quark::getType(token), 0xE00);
}

TEST(Quark, TokensAreHandedOutInOrder)
{
    const unsigned short next = Quark::fNext;
    EXPECT_EQ(zebQuark("quark: first"), next);
    EXPECT_EQ(zebQuark("quark: second"), next + 1);
    EXPECT_EQ(zebQuark("quark: first"), next);
    EXPECT_EQ(Quark::fNext, next + 2);
}

TEST(Quark, ANullNameIsZeroAndUsesNoToken)
{
    const unsigned short next = Quark::fNext;
    EXPECT_EQ(zebQuark(nullptr), 0);
    EXPECT_EQ(Quark::find(nullptr), 0);
    EXPECT_EQ(Quark::fNext, next);
}

TEST(Quark, TheEmptyNameIsAName)
{
    const unsigned short token = zebQuark("");
    EXPECT_NE(token, 0);
    EXPECT_EQ(Quark::find(""), token);
}

TEST(Quark, FindDeclaresNothing)
{
    const unsigned short next = Quark::fNext;
    EXPECT_EQ(Quark::find("quark: never declared"), 0);
    EXPECT_EQ(Quark::fNext, next);
}

TEST(Quark, NamesAreCopied)
{
    char name[] = "quark: copied";
    const unsigned short token = zebQuark(name);
    name[0] = 'Q';
    EXPECT_STREQ(Quark::getString(token), "quark: copied");
}

TEST(Quark, TokensNeverHandedOutHaveNoNameClassOrType)
{
    zebtest::Reports reports;
    for (unsigned short token :
         {static_cast<unsigned short>(0), Quark::fNext, static_cast<unsigned short>(65535)}) {
        EXPECT_EQ(Quark::getString(token), nullptr);
        EXPECT_EQ(Quark::getClass(token), 0xD00);
        EXPECT_EQ(Quark::getType(token), 0xE00);
    }
    EXPECT_TRUE(reports.empty());
}

TEST(Quark, SignatureAddsBytesInStepsOf16)
{
    EXPECT_EQ(Quark::signature(""), 0u);
    EXPECT_EQ(Quark::signature("a"), 97u);
    EXPECT_EQ(Quark::signature("ab"), 97u * 16 + 98);
}

// "a" is 0x61. Seven of them give 0x67777771; the 6 is moved down by 24 and cleared.
TEST(Quark, SignatureFoldsTheTopBitsAndClearsThem)
{
    EXPECT_EQ(Quark::signature("aaaaaa"), 0x06777771u);
    EXPECT_EQ(Quark::signature("aaaaaaa"), 0x07777711u);
    EXPECT_EQ(Quark::signature("aaaaaaaa"), 0x07777101u);
}

// -1 is 0xFFFFFFFF: its top bits are cleared and 0xF0 turns the end round.
TEST(Quark, BytesAbove127Subtract) { EXPECT_EQ(Quark::signature("\xFF"), 0x0FFFFF0Fu); }

TEST(Quark, ASlotHoldsTokenHashTypeAndClass)
{
    for (unsigned short i = 0; i < 36; ++i) {
        const auto token = static_cast<unsigned short>(i + 1);
        const Predefined& p = kPredefined[i];
        const std::uint32_t hash = Quark::signature(p.name) & 0x7FF;
        const std::uint32_t* slot = slotOf(token);
        ASSERT_NE(slot, nullptr);
        EXPECT_EQ(*slot, token | hash << 16 | static_cast<std::uint32_t>(p.type & 7) << 27 |
                             static_cast<std::uint32_t>(p.storage & 3) << 30);
    }
}

TEST(Quark, ANameLiesOnItsProbeSequence)
{
    EXPECT_EQ(Quark::fRehash, Quark::fMask - 2);
    for (unsigned short token = 1; token <= 36; ++token) {
        const std::uint32_t h = Quark::signature(Quark::getString(token));
        const std::uint32_t step = ((h % Quark::fRehash) + 2) | 1;
        std::uint32_t s = h & Quark::fMask;
        while ((Quark::fTable[s] & 0xFFFF) != token) {
            ASSERT_NE(Quark::fTable[s], 0u);
            s = (s + step) & Quark::fMask;
        }
    }
}

TEST(Quark, ALostNameIsReported)
{
    std::uint32_t* const slot = slotOf(1);
    ASSERT_NE(slot, nullptr);
    const std::uint32_t entry = *slot;
    *slot = 0;
    {
        zebtest::Reports reports;
        EXPECT_EQ(Quark::getClass(1), 0xD00);
        EXPECT_EQ(Quark::getType(1), 0xE00);
        ASSERT_EQ(reports.size(), 2u);
        EXPECT_EQ(reports[0], (Report{3, 0xB04, "lost quark point"}));
        EXPECT_EQ(reports[1], reports[0]);
    }
    *slot = entry;
    EXPECT_EQ(Quark::getClass(1), 0xD03);
}

TEST(Quark, TypedNamesKeepTheirClassAndType)
{
    const unsigned short token = zebDeclare("quark: typed", 0xD02, 0xE04);
    EXPECT_EQ(Quark::getClass(token), 0xD02);
    EXPECT_EQ(Quark::getType(token), 0xE04);
    EXPECT_EQ(zebDeclare("quark: typed", 0xD01, 0xE01), token);
    EXPECT_EQ(Quark::getClass(token), 0xD02);
}

TEST(Quark, CodesThatAreNoneAreRefused)
{
    zebtest::Reports reports;
    for (const auto& [storage, type] :
         {std::pair<short, short>{0xD04, 0xE01}, {0xCFF, 0xE01}, {0xD01, 0xE08}, {0xD01, 0xDFF}}) {
        reports.clear();
        EXPECT_EQ(zebDeclare("quark: bad codes", storage, type), 0);
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].code, 10);
        EXPECT_EQ(reports[0].severity, 0xB04);
    }
    EXPECT_EQ(Quark::find("quark: bad codes"), 0);
}

TEST(QuarkDeathTest, TheFirstDeclarationMakesATableOf512Slots)
{
    EXPECT_IN_CHILD(fill(1) && Quark::fMask == 511 && Quark::fRehash == 509 &&
                    Quark::fTable != &Quark::fZero && allThere(1));
}

TEST(QuarkDeathTest, Token410GrowsTheTable)
{
    EXPECT_IN_CHILD(fill(409) && Quark::fMask == 511 && fill(410) && Quark::fMask == 1023 &&
                    Quark::fRehash == 1021 && allThere(410));
}

// 819 + 819 / 4 = 1023 still fits.
TEST(QuarkDeathTest, TheTableDoublesAgain)
{
    EXPECT_IN_CHILD(fill(819) && Quark::fMask == 1023 && fill(820) && Quark::fMask == 2047 &&
                    allThere(820));
}

TEST(QuarkDeathTest, Token256OpensASecondPageOfNames)
{
    EXPECT_IN_CHILD(fill(255) && fill(257) && Quark::fStringTable[1][0] == Quark::getString(256) &&
                    Quark::fStringTable[0][255] == Quark::getString(255) && allThere(257));
}

TEST(QuarkDeathTest, Token2048EnlargesTheDirectoryOfPages)
{
    EXPECT_IN_CHILD(fill(2047) && fill(2048) && fill(4100) &&
                    Quark::fStringTable[8][0] == Quark::getString(2048) && allThere(4100));
}

TEST(QuarkDeathTest, KnownNamesDoNotGrowTheTable)
{
    EXPECT_IN_CHILD(fill(409) && Quark::declare("name 3", 0xD00, 0xE00) == 3 &&
                    Quark::fMask == 511 && Quark::fNext == 410);
}

TEST(QuarkDeathTest, NoTokenIsLeftAfter65535)
{
    EXPECT_IN_CHILD(fill(65534) && Quark::fNext == 65535 && fill(65535) && Quark::fNext == 0 &&
                    Quark::declare("one more", 0xD00, 0xE00) == 0 && zebQuark("one more") == 0 &&
                    Quark::find("one more") == 0 && Quark::declare("name 7", 0xD00, 0xE00) == 7 &&
                    allThere(65535));
}
