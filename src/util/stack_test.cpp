#include "util/stack.h"

#include <gtest/gtest.h>

using namespace zeb;

namespace
{

struct Counted {
    static inline int alive = 0;
    Counted() { ++alive; }
    Counted(const Counted&) { ++alive; }
    ~Counted() { --alive; }
};

}  // namespace

TEST(Stack, PopsTheLatestFirst)
{
    Stack<int> stack;
    stack.push(1);
    stack.push(2);
    EXPECT_EQ(*stack.top(), 2);
    EXPECT_EQ(stack.pop(), 1);
    EXPECT_EQ(*stack.top(), 1);
}

TEST(Stack, PopAnswersZeroWhenEmpty)
{
    Stack<int> stack;
    EXPECT_TRUE(stack.empty());
    EXPECT_EQ(stack.top(), nullptr);
    EXPECT_EQ(stack.pop(), 0);
}

TEST(Stack, ElementsStayWhereTheyAreUntilPopped)
{
    Stack<int> stack;
    stack.push(1);
    const int* const first = stack.top();
    stack.push(2);
    stack.pop();
    EXPECT_EQ(stack.top(), first);
}

TEST(Stack, FlushesItsElementsAtTheEnd)
{
    {
        Stack<Counted> stack;
        stack.push({});
        stack.push({});
        EXPECT_EQ(Counted::alive, 2);
    }
    EXPECT_EQ(Counted::alive, 0);
}

TEST(Stack, FlushEmptiesIt)
{
    Stack<int> stack;
    stack.push(1);
    stack.push(2);
    stack.flush();
    EXPECT_TRUE(stack.empty());
}

TEST(CopyStack, PushCopiesTheTop)
{
    CopyStack<int> stack;
    stack.push(5);
    stack.push();
    *stack.top() = 6;
    EXPECT_EQ(*stack.top(), 6);
    stack.pop();
    EXPECT_EQ(*stack.top(), 5);
}

TEST(CopyStack, PushOntoAnEmptyStackAddsADefaultElement)
{
    struct Seven {
        int value = 7;
    };
    CopyStack<Seven> stack;
    stack.push();
    ASSERT_FALSE(stack.empty());
    EXPECT_EQ(stack.top()->value, 7);
    stack.pop();
    EXPECT_TRUE(stack.empty());
}
