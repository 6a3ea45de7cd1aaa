#include "util/format.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <limits>
#include <string>

namespace zeb
{

namespace
{

std::string formatted(const char* format, ...)
{
    char buffer[100];
    std::va_list args;
    va_start(args, format);
    formatMessage(buffer, sizeof buffer, format, args);
    va_end(args);
    return buffer;
}

std::string cut(std::size_t size, const char* format, ...)
{
    char buffer[100];
    std::fill_n(buffer, sizeof buffer, '#');
    std::va_list args;
    va_start(args, format);
    formatMessage(buffer, size, format, args);
    va_end(args);
    EXPECT_EQ(buffer[size], '#') << "nothing is written past the size";
    return buffer;
}

}  // namespace

TEST(FormatMessage, CutsNoCharacterOfSeveralBytesInTwo)
{
    EXPECT_EQ(cut(6, "%s", "abc\xC3\xA9"), "abc\xC3\xA9");
    EXPECT_EQ(cut(6, "%s", "abcd\xC3\xA9"), "abcd");
    EXPECT_EQ(cut(6, "%s", "abc\xE8\xA1\xA8"), "abc");
    EXPECT_EQ(cut(6, "%s!", "abcd\xC3\xA9"), "abcd") << "nothing follows what was cut";
    EXPECT_EQ(cut(6, "%s", "abcdefg"), "abcde");
}

TEST(FormatMessage, WritesPointersInHexadecimal)
{
    EXPECT_EQ(formatted("%p %s", reinterpret_cast<void*>(0x1A2B), "next"), "0x1a2b next");
    EXPECT_EQ(formatted("%lu", 4000000000ul), "4000000000");
}

TEST(FormatMessage, TextStandsForItself)
{
    EXPECT_EQ(formatted(""), "");
    EXPECT_EQ(formatted("plain"), "plain");
    EXPECT_EQ(formatted("100%%"), "100%");
    EXPECT_EQ(formatted("<%s%s>", "one", ""), "<one>");
    EXPECT_EQ(formatted("%s", static_cast<const char*>(nullptr)), "(null)");
}

TEST(FormatMessage, IntegersOfBothWidths)
{
    EXPECT_EQ(formatted("%d %ld", -7, 12L), "-7 12");
    EXPECT_EQ(formatted("%d", INT_MIN), std::to_string(INT_MIN));
    EXPECT_EQ(formatted("%u", UINT_MAX), std::to_string(UINT_MAX));
    EXPECT_EQ(formatted("%ld", LONG_MIN), std::to_string(LONG_MIN));
}

TEST(FormatMessage, NumbersHaveSixDigitsAndAShortExponent)
{
    EXPECT_EQ(formatted("%g", 0.0), "0");
    EXPECT_EQ(formatted("%g", -0.5), "-0.5");
    EXPECT_EQ(formatted("%g", 123456.0), "123456");
    EXPECT_EQ(formatted("%g", 1234567.0), "1.23457e+06");
    EXPECT_EQ(formatted("%g", 1e10), "1e+10");
    EXPECT_EQ(formatted("%g", 0.0001), "0.0001");
    EXPECT_EQ(formatted("%g", 1.25e-7), "1.25e-07");
    EXPECT_EQ(formatted("%g", static_cast<double>(1e38f)), "1e+38");
    EXPECT_EQ(formatted("%g", -1.7976931348623157e308), "-1.79769e+308");
}

TEST(FormatMessage, WhatIsNoNumberSaysSo)
{
    const double infinite = std::numeric_limits<double>::infinity();
    EXPECT_EQ(formatted("%g %g", infinite, -infinite), "inf -inf");
    EXPECT_EQ(formatted("%g", std::numeric_limits<double>::quiet_NaN()), "nan");
}

TEST(FormatMessage, TheTextIsCutToTheBuffer)
{
    EXPECT_EQ(cut(4, "abc"), "abc");
    EXPECT_EQ(cut(4, "abcd"), "abc");
    EXPECT_EQ(cut(4, "%ld", 12345L), "123");
    EXPECT_EQ(cut(4, "%s%s", "ab", "cd"), "abc");
    EXPECT_EQ(cut(1, "%d", 1), "");
}

TEST(FormatMessage, AnUnfinishedConversionEndsTheText) { EXPECT_EQ(formatted("50%"), "50"); }

}  // namespace zeb
