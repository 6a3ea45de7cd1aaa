#include "util/slist.h"

#include <gtest/gtest.h>

#include <string>

using namespace zeb;

namespace
{

struct Hit {
    int depth;
    char name;
    bool solid = false;
    bool operator<(const Hit& other) const { return depth < other.depth; }
    bool opaque() const { return solid; }
};

class SListTest : public testing::Test
{
protected:
    bool add(int depth, char name) { return list.add({depth, name}, arena); }
    bool addOpaque(int depth, char name) { return list.add({depth, name, true}, arena); }
    std::string names() const
    {
        std::string result;
        for (const auto* node = list.head(); node; node = node->next) result += node->value.name;
        return result;
    }

    Arena arena;
    SList<Hit> list;
};

}  // namespace

TEST_F(SListTest, KeepsElementsInOrder)
{
    for (int depth : {3, 1, 4, 2, 5}) EXPECT_TRUE(add(depth, static_cast<char>('0' + depth)));
    EXPECT_EQ(names(), "12345");
}

TEST_F(SListTest, ATieWithTheHeadGoesBehindIt)
{
    add(1, 'a');
    add(1, 'b');
    EXPECT_EQ(names(), "ab");
}

TEST_F(SListTest, ATieGoesBeforeLaterNodesOfEqualOrder)
{
    add(1, 'a');
    add(1, 'b');
    add(1, 'c');
    EXPECT_EQ(names(), "acb");
    add(2, 'd');
    add(2, 'e');
    EXPECT_EQ(names(), "acbed");
}

TEST_F(SListTest, AnOpaqueElementDropsAllBehindIt)
{
    add(1, 'a');
    add(3, 'c');
    add(4, 'd');
    EXPECT_TRUE(addOpaque(2, 'b'));
    EXPECT_EQ(names(), "ab");
}

TEST_F(SListTest, AnOpaqueHeadDropsAllBehindIt)
{
    add(3, 'c');
    add(4, 'd');
    EXPECT_TRUE(addOpaque(2, 'b'));
    EXPECT_EQ(names(), "b");
}

TEST_F(SListTest, WhatLiesBehindAnOpaqueElementIsDiscarded)
{
    add(1, 'a');
    addOpaque(2, 'b');
    EXPECT_FALSE(add(3, 'c'));
    EXPECT_FALSE(addOpaque(3, 'd'));
    EXPECT_EQ(names(), "ab");
}

TEST_F(SListTest, WhatLiesInFrontOfAnOpaqueElementIsKept)
{
    add(1, 'a');
    addOpaque(3, 'c');
    EXPECT_TRUE(add(2, 'b'));
    EXPECT_EQ(names(), "abc");
}

TEST_F(SListTest, TheHeadIsNeverAskedWhetherItIsOpaque)
{
    addOpaque(1, 'a');
    EXPECT_TRUE(add(2, 'b'));
    EXPECT_EQ(names(), "ab");
}

TEST_F(SListTest, ATieWithAnOpaqueElementGoesInFrontOfIt)
{
    add(1, 'a');
    addOpaque(2, 'b');
    EXPECT_TRUE(add(2, 'c'));
    EXPECT_EQ(names(), "acb");
}

TEST_F(SListTest, AnOpaqueTieDropsTheElementsItTiesWith)
{
    add(1, 'a');
    add(2, 'b');
    EXPECT_TRUE(addOpaque(2, 'c'));
    EXPECT_EQ(names(), "ac");
}

TEST_F(SListTest, ATransparentElementCutsNothing)
{
    add(1, 'a');
    add(3, 'c');
    EXPECT_TRUE(add(2, 'b'));
    EXPECT_EQ(names(), "abc");
}

TEST_F(SListTest, ClearEmptiesIt)
{
    add(1, 'a');
    list.clear();
    EXPECT_EQ(list.head(), nullptr);
    EXPECT_TRUE(addOpaque(2, 'b'));
    EXPECT_EQ(names(), "b");
}
