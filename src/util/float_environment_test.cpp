#include "util/float_environment.h"

#include <gtest/gtest.h>

#include "zebcore/zebcore.h"

namespace zeb
{

TEST(FloatEnvironment, TheHostsRoundingIsPutAsideAndRestored)
{
    std::fesetround(FE_DOWNWARD);
    int inside = -1;
    {
        FloatEnvironment environment;
        inside = std::fegetround();
    }
    const int after = std::fegetround();
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(inside, FE_TONEAREST);
    EXPECT_EQ(after, FE_DOWNWARD);
}

#if defined(__SSE2__)

namespace
{

// 24 bits of precision, truncation, and a trap for divisions by zero.
constexpr unsigned short kOdd = 0x0C7B;

}  // namespace

TEST(FloatEnvironment, TheX87sPrecisionAndTrapsArePutAsideAndRestored)
{
    X87Modes::set(kOdd);
    unsigned short inside = 0;
    {
        FloatEnvironment environment;
        inside = X87Modes::get();
    }
    const unsigned short after = X87Modes::get();
    X87Modes::set(X87Modes::kDefault);
    EXPECT_EQ(inside, X87Modes::kDefault);
    EXPECT_EQ(after, kOdd);
}

TEST(FloatEnvironment, ADivisionByZeroInsideRaisesNothingAfterwards)
{
    volatile long double one = 1, zero = 0;
    X87Modes::set(kOdd);
    {
        FloatEnvironment environment;
        one = one / zero;
    }
    // The next instruction would deliver what is pending.
    __asm__ volatile("fwait");
    X87Modes::set(X87Modes::kDefault);
    EXPECT_GT(one, 1e4000L);
}

TEST(FloatEnvironment, FunctionsOfTheInterfaceLeaveTheHostsModes)
{
    X87Modes::set(kOdd);
    zebColorGamma(2.2f);
    const unsigned short after = X87Modes::get();
    X87Modes::set(X87Modes::kDefault);
    EXPECT_EQ(after, kOdd);
    zebReset();
}

#endif

}  // namespace zeb
