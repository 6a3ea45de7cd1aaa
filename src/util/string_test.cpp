#include "util/string.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "support/reports.h"

using namespace zeb;

TEST(String, OfANullPointerIsEmpty)
{
    const String string(nullptr);
    EXPECT_EQ(string.length(), 0u);
    EXPECT_STREQ(string.text(), "");
    EXPECT_TRUE(string.empty());
}

TEST(String, DefaultsToEmpty) { EXPECT_STREQ(String().text(), ""); }

TEST(String, CopiesTheText)
{
    char text[] = "abc";
    const String string(text);
    text[0] = 'x';
    EXPECT_STREQ(string.text(), "abc");
    EXPECT_EQ(string.length(), 3u);
}

TEST(String, CopiesAreIndependent)
{
    String a("abc");
    String b(a);
    b[0u] = 'x';
    EXPECT_STREQ(a.text(), "abc");
    EXPECT_STREQ(b.text(), "xbc");
    a = b;
    b[1u] = 'y';
    EXPECT_STREQ(a.text(), "xbc");
}

TEST(String, EqualityIsOfTheText)
{
    EXPECT_TRUE(String("abc") == String("abc"));
    EXPECT_FALSE(String("abc") == String("abd"));
    EXPECT_FALSE(String("abc") == String("ABC"));
    EXPECT_TRUE(String("abc") != String("ab"));
    EXPECT_TRUE(String() == String(""));
}

TEST(String, Appends)
{
    String string("ab");
    string += String("cd");
    EXPECT_STREQ(string.text(), "abcd");
    EXPECT_EQ(string.length(), 4u);
    string += String();
    EXPECT_STREQ(string.text(), "abcd");
}

TEST(String, AppendsToItself)
{
    String string("ab");
    string += string;
    EXPECT_STREQ(string.text(), "abab");
}

TEST(String, SumLeavesItsOperands)
{
    const String a("ab"), b("cd");
    EXPECT_STREQ((a + b).text(), "abcd");
    EXPECT_STREQ(a.text(), "ab");
    EXPECT_STREQ(b.text(), "cd");
}

TEST(String, HoldsMoreThan65535Characters)
{
    const std::string text(70000, 'a');
    String string(text.c_str());
    EXPECT_EQ(string.length(), 70000u);
    string += String("b");
    EXPECT_EQ(string.length(), 70001u);
    EXPECT_EQ(string[70000u], 'b');
}

TEST(String, SubscriptRefersIntoTheText)
{
    String string("abc");
    EXPECT_EQ(string[1u], 'b');
    string[1u] = 'x';
    EXPECT_STREQ(string.text(), "axc");
}

TEST(String, SubscriptAtTheLengthIsTheTerminator)
{
    zebtest::Reports reports;
    String string("abc");
    EXPECT_EQ(string[3u], '\0');
    EXPECT_TRUE(reports.empty());
}

TEST(String, SubscriptPastTheLengthIsReportedAndIsTheTerminator)
{
    zebtest::Reports reports;
    String string("abc");
    EXPECT_EQ(&string[4u], string.text() + 3);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0], (zebtest::Report{3, 0xB04, "string index out of range"}));
}

TEST(String, ThatReadsNullConvertsToANullPointer)
{
    EXPECT_EQ(static_cast<const char*>(String("null")), nullptr);
    String built("nu");
    built += String("ll");
    EXPECT_EQ(static_cast<const char*>(built), nullptr);
}

TEST(String, ConvertsToItsText)
{
    for (const char* text : {"", "nul", "nulls", "Null", "abc"}) {
        const String string(text);
        EXPECT_STREQ(static_cast<const char*>(string), text);
    }
}

TEST(String, HashAddsBytesInStepsOf16)
{
    EXPECT_EQ(String("").hash(), 0u);
    EXPECT_EQ(String("a").hash(), 97u);
    EXPECT_EQ(String("ab").hash(), 97u * 16 + 98);
}

// "a" is 0x61. Six of them give 0x06777771; the seventh 0x67777771, whose top bits, moved down by
// 24, turn the end into 0x71 ^ 0x60 = 0x11; the eighth 0x77777171, ending in 0x71 ^ 0x70 = 0x01.
TEST(String, HashFoldsTheTopBitsWithoutClearingThem)
{
    EXPECT_EQ(String("aaaaaa").hash(), 0x06777771u);
    EXPECT_EQ(String("aaaaaaa").hash(), 0x67777711u);
    EXPECT_EQ(String("aaaaaaaa").hash(), 0x77777101u);
}

TEST(String, StreamsItsText)
{
    std::ostringstream stream;
    stream << String("abc") << String() << String("null");
    EXPECT_EQ(stream.str(), "abcnull");
}
