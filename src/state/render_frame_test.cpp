#include "state/render_frame.h"

#include <gtest/gtest.h>

#include "util/cores.h"

using namespace zeb;

TEST(RenderFrame, HasAThreadForEachCoreWhereNoNumberIsGiven)
{
    Option option;
    option.threads = 0;
    EXPECT_EQ(RenderFrame(option, Matrix()).threads, usableCores());
    option.threads = 7;
    EXPECT_EQ(RenderFrame(option, Matrix()).threads, 7);
}
