#include "util/list.h"

#include <gtest/gtest.h>

#include <vector>

using namespace zeb;

namespace
{

std::vector<int> contents(const List<int>& list)
{
    std::vector<int> values;
    for (int value : list) values.push_back(value);
    return values;
}

using Ints = std::vector<int>;

List<int> oneTwoThree()
{
    List<int> list;
    list.add(1);
    list.add(2);
    list.add(3);
    return list;
}

// Equal to others of its key; the tag tells them apart.
struct Keyed {
    int key, tag;
    bool operator==(const Keyed& other) const { return key == other.key; }
};

struct Counted {
    static inline int alive = 0;
    Counted() { ++alive; }
    Counted(const Counted&) { ++alive; }
    ~Counted() { --alive; }
};

}  // namespace

TEST(List, AddsAtTheHead) { EXPECT_EQ(contents(oneTwoThree()), (Ints{3, 2, 1})); }

TEST(List, AddAnswersOne)
{
    List<int> list;
    EXPECT_EQ(list.add(7), 1);
    EXPECT_EQ(list.add(7), 1);
}

TEST(List, StartsEmpty)
{
    List<int> list;
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.head(), nullptr);
}

TEST(List, HeadIsTheLatest) { EXPECT_EQ(*oneTwoThree().head(), 3); }

TEST(List, CopyRunsTheOtherWayRound)
{
    const List<int> list = oneTwoThree();
    EXPECT_EQ(contents(List<int>(list)), (Ints{1, 2, 3}));
    EXPECT_EQ(contents(list), (Ints{3, 2, 1}));
}

TEST(List, CopyOfACopyRunsAsTheOriginal)
{
    const List<int> once = oneTwoThree();
    const List<int> twice(once);
    EXPECT_EQ(contents(List<int>(twice)), contents(once));
}

TEST(List, CopyHasItsOwnNodes)
{
    const List<int> list = oneTwoThree();
    List<int> copy(list);
    *copy.head() = 9;
    EXPECT_EQ(contents(list), (Ints{3, 2, 1}));
    EXPECT_EQ(contents(copy), (Ints{9, 2, 3}));
}

TEST(List, MoveKeepsTheOrder)
{
    List<int> list = oneTwoThree();
    const List<int> moved(std::move(list));
    EXPECT_EQ(contents(moved), (Ints{3, 2, 1}));
}

TEST(List, FindPredOfAnEmptyListIsNull)
{
    const List<int> list;
    EXPECT_EQ(list.findPred(1), nullptr);
}

TEST(List, FindPredIsTheNodeWhoseSuccessorHoldsTheValue)
{
    const List<int> list = oneTwoThree();
    EXPECT_EQ(list.findPred(2)->value, 3);
    EXPECT_EQ(list.findPred(1)->value, 2);
}

TEST(List, FindPredIsTheLastNodeIfNoSuccessorHoldsTheValue)
{
    const List<int> list = oneTwoThree();
    EXPECT_EQ(list.findPred(4)->value, 1);
    EXPECT_EQ(list.findPred(3)->value, 1);  // the head is nobody's successor
}

TEST(List, FindAnswersTheStoredElement)
{
    List<int> list = oneTwoThree();
    *list.find(3) = 30;
    *list.find(1) = 10;
    EXPECT_EQ(contents(list), (Ints{30, 2, 10}));
    EXPECT_EQ(list.find(4), nullptr);
    EXPECT_EQ(List<int>().find(4), nullptr);
}

TEST(List, FindComparesTheHeadFirst)
{
    List<Keyed> list;
    list.add({1, 10});
    list.add({1, 11});
    EXPECT_EQ(list.find({1, 0})->tag, 11);
}

TEST(List, DetachHeadUnlinksTheHead)
{
    List<int> list = oneTwoThree();
    EXPECT_EQ(list.detachHead(), 1);
    EXPECT_EQ(contents(list), (Ints{2, 1}));
}

TEST(List, DetachHeadOfAnEmptyListAnswersZero) { EXPECT_EQ(List<int>().detachHead(), 0); }

TEST(List, DetachUnlinksWhereverTheValueIs)
{
    for (int value : {1, 2, 3}) {
        List<int> list = oneTwoThree();
        EXPECT_EQ(list.detach(value), 1);
        EXPECT_EQ(list.find(value), nullptr);
        EXPECT_EQ(contents(list).size(), 2u);
    }
}

TEST(List, DetachTakesTheFirstOfEquals)
{
    List<Keyed> list;
    list.add({1, 10});
    list.add({1, 11});
    list.add({2, 12});
    EXPECT_EQ(list.detach({1, 0}), 1);
    EXPECT_EQ(list.find({1, 0})->tag, 10);
    EXPECT_EQ(list.find({2, 0})->tag, 12);
}

TEST(List, DetachOfAnAbsentValueAnswersZeroAndChangesNothing)
{
    List<int> list = oneTwoThree();
    EXPECT_EQ(list.detach(4), 0);
    EXPECT_EQ(contents(list), (Ints{3, 2, 1}));
    EXPECT_EQ(List<int>().detach(4), 0);
}

TEST(List, FlushFreesEveryNode)
{
    List<Counted> list;
    list.add({});
    list.add({});
    EXPECT_EQ(Counted::alive, 2);
    list.flush();
    EXPECT_EQ(Counted::alive, 0);
    EXPECT_TRUE(list.empty());
}

TEST(List, DestructorFreesEveryNode)
{
    {
        List<Counted> list;
        list.add({});
        list.add({});
        EXPECT_EQ(Counted::alive, 2);
    }
    EXPECT_EQ(Counted::alive, 0);
}

TEST(List, NeverOwnsWhatAPointerElementPointsTo)
{
    Counted element;
    {
        List<Counted*> list;
        list.add(&element);
        list.add(&element);
        list.detachHead();
    }
    EXPECT_EQ(Counted::alive, 1);
}

TEST(List, FreesALongListWithoutRecursion)
{
    List<int> list;
    for (int i = 0; i < 1'000'000; ++i) list.add(i);
    list.flush();
    EXPECT_TRUE(list.empty());
}

TEST(List, TakeHeadUnlinksAndAnswersTheHead)
{
    List<int> list = oneTwoThree();
    EXPECT_EQ(list.takeHead(), 3);
    EXPECT_EQ(contents(list), (Ints{2, 1}));
}

TEST(ListIterator, PostIncrementAnswersTheElementItLeaves)
{
    List<int> list = oneTwoThree();
    ListIterator<int> it(list);
    EXPECT_EQ(*it++, 3);
    EXPECT_EQ(*it++, 2);
    EXPECT_EQ(*it++, 1);
    EXPECT_EQ(it++, nullptr);
    EXPECT_EQ(it++, nullptr);
}

TEST(ListIterator, PreIncrementAnswersTheElementItReaches)
{
    List<int> list = oneTwoThree();
    ListIterator<int> it(list);
    EXPECT_EQ(*++it, 2);
    EXPECT_EQ(*++it, 1);
    EXPECT_EQ(++it, nullptr);
    EXPECT_EQ(++it, nullptr);
}

TEST(ListIterator, RestartsAtTheHead)
{
    List<int> list = oneTwoThree();
    ListIterator<int> it(list);
    ++it;
    it.restart();
    EXPECT_EQ(*it++, 3);
}

TEST(ListIterator, PointsIntoTheList)
{
    List<int> list = oneTwoThree();
    ListIterator<int> it(list);
    *it++ = 30;
    EXPECT_EQ(contents(list), (Ints{30, 2, 1}));
}
