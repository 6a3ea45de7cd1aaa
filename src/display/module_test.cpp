#include "display/module.h"

#include <gtest/gtest.h>

namespace zeb
{

namespace
{

class ModuleCountTest : public testing::Test
{
protected:
    ModuleCountTest() { gModule.reset(); }
    ~ModuleCountTest() override { gModule.reset(); }

    ModuleCount count;
    int first = 0, second = 0;
};

}  // namespace

TEST_F(ModuleCountTest, TheFirstAttachMakesTheModuleOfItsInstance)
{
    EXPECT_EQ(gModule, nullptr);
    count.attach(&first);
    ASSERT_NE(gModule, nullptr);
    EXPECT_EQ(gModule->instance(), &first);
}

TEST_F(ModuleCountTest, LaterAttachesLeaveItAsItIs)
{
    count.attach(&first);
    const Module* const module = gModule.get();
    count.attach(&second);
    EXPECT_EQ(gModule.get(), module);
    EXPECT_EQ(gModule->instance(), &first);
}

TEST_F(ModuleCountTest, TheModuleGoesWithTheLastDetach)
{
    count.attach(&first);
    count.attach(&first);
    count.detach();
    EXPECT_NE(gModule, nullptr);
    count.detach();
    EXPECT_EQ(gModule, nullptr);
}

TEST_F(ModuleCountTest, AfterTheLastDetachItStartsAnew)
{
    count.attach(&first);
    count.detach();
    count.attach(&second);
    ASSERT_NE(gModule, nullptr);
    EXPECT_EQ(gModule->instance(), &second);
}

TEST_F(ModuleCountTest, ADetachWithoutAnAttachDoesNothing)
{
    count.detach();
    EXPECT_EQ(gModule, nullptr);
    count.attach(&first);
    EXPECT_NE(gModule, nullptr);
    count.detach();
    EXPECT_EQ(gModule, nullptr);
}

}  // namespace zeb
