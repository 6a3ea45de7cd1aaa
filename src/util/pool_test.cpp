#include "util/pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <thread>
#include <vector>

using namespace zeb;

namespace
{

class PoolTest : public testing::Test
{
protected:
    ~PoolTest() override
    {
        pool.empty();
        EXPECT_EQ(Pool::regions(), fBefore) << "all memory goes back";
    }

    Pool pool;

private:
    const std::size_t fBefore = Pool::regions();
};

struct Block {
    unsigned char* bytes;
    std::size_t size;
    unsigned char mark;

    explicit Block(std::mt19937& random)
        : size(random() % (random() % 50 ? 1200 : 200000)),
          mark(static_cast<unsigned char>(random()))
    {
        bytes = static_cast<unsigned char*>(Pool::take(size));
        std::fill(bytes, bytes + size, mark);
    }
    bool isUntouched() const
    {
        return std::all_of(bytes, bytes + size, [this](unsigned char b) { return b == mark; });
    }
};

// Takes and gives at random, in the end as much as it took.
void exchange(std::mt19937& random, std::vector<Block>& blocks, int times)
{
    for (int k = 0; k < times; ++k) {
        if (blocks.empty() || random() % 2) {
            blocks.emplace_back(random);
            const auto address = reinterpret_cast<std::uintptr_t>(blocks.back().bytes);
            ASSERT_EQ(address % alignof(std::max_align_t), 0u);
            continue;
        }
        std::swap(blocks[random() % blocks.size()], blocks.back());
        const Block block = blocks.back();
        blocks.pop_back();
        ASSERT_TRUE(block.isUntouched());
        Pool::give(block.bytes, block.size);
    }
}

void giveAll(const std::vector<Block>& blocks)
{
    for (const Block& block : blocks) {
        EXPECT_TRUE(block.isUntouched());
        Pool::give(block.bytes, block.size);
    }
}

}  // namespace

TEST_F(PoolTest, GivesAgainWhatWasGivenBack)
{
    if (Pool::kFromHeap) GTEST_SKIP() << "the heap keeps what may hide errors";
    const Pool::Scope scope(pool);
    void* const first = Pool::take(100);
    void* const second = Pool::take(100);
    EXPECT_NE(first, second);
    Pool::give(first, 100);
    EXPECT_EQ(Pool::take(112), first) << "as many units of 16 bytes";
    Pool::give(second, 100);
    void* const larger = Pool::take(113);
    EXPECT_NE(larger, second);
    Pool::give(larger, 113);
    Pool::give(first, 112);
}

TEST_F(PoolTest, HandsNothingOutTwice)
{
    std::mt19937 random(3);
    std::vector<Block> blocks;
    Pool other;
    for (int round = 0; round < 20; ++round) {
        exchange(random, blocks, 500);
        const Pool::Scope scope(pool);
        exchange(random, blocks, 500);
        {
            const Pool::Scope inner(other);
            exchange(random, blocks, 500);
        }
        exchange(random, blocks, 500);
    }
    giveAll(blocks);
}

TEST_F(PoolTest, NothingHasAPlaceOfItsOwn)
{
    const Pool::Scope scope(pool);
    void* const first = Pool::take(0);
    void* const second = Pool::take(16);
    EXPECT_NE(first, second);
    Pool::give(first, 0);
    Pool::give(second, 16);
    Pool::give(nullptr, 16);
}

TEST_F(PoolTest, KeepsLittleOfWhatWasGivenBack)
{
    if (Pool::kFromHeap) GTEST_SKIP() << "all of it goes back to the heap";
    const std::size_t before = Pool::regions();
    const Pool::Scope scope(pool);
    std::vector<void*> blocks(100000);
    for (void*& block : blocks) block = Pool::take(200);
    EXPECT_GE(Pool::regions(), before + 19) << "20 MB";
    for (void* const block : blocks) Pool::give(block, 200);
    EXPECT_LE(Pool::regions(), before + 2);
}

TEST_F(PoolTest, PagesOfOneSizeServeAnother)
{
    if (Pool::kFromHeap) GTEST_SKIP() << "the heap's affair";
    const Pool::Scope scope(pool);
    const std::size_t before = Pool::regions();
    void* const kept = Pool::take(1000);  // which its region stays for
    for (std::size_t size = 16; size <= Pool::kMost; size += 16) {
        std::vector<void*> blocks(500000 / size);
        for (void*& block : blocks) block = Pool::take(size);
        for (void* const block : blocks) Pool::give(block, size);
    }
    EXPECT_LE(Pool::regions(), before + 4) << "of all sizes it would be 32";
    Pool::give(kept, 1000);
}

TEST_F(PoolTest, ThreadsGiveBackWhatOthersTook)
{
    std::vector<Block> blocks[2];
    for (int round = 0; round < 10; ++round) {
        const auto work = [&](int which) {
            Pool own;  // which the blocks outlive
            const Pool::Scope scope(own);
            std::mt19937 random(static_cast<unsigned>(round * 2 + which));
            exchange(random, blocks[which], 2000);
        };
        std::thread one(work, 0), other(work, 1);
        one.join();
        other.join();
        std::swap(blocks[0], blocks[1]);
    }
    giveAll(blocks[0]);
    giveAll(blocks[1]);
}

TEST_F(PoolTest, ThreadsWithoutAPoolTakeTurns)
{
    std::vector<std::thread> threads;
    for (int k = 0; k < 4; ++k) {
        threads.emplace_back([] {
            for (int round = 0; round < 3000; ++round) {
                std::uintptr_t* blocks[40];
                for (auto*& block : blocks) {
                    block = static_cast<std::uintptr_t*>(Pool::take(900));
                    *block = reinterpret_cast<std::uintptr_t>(&block);
                }
                for (auto*& block : blocks) {
                    EXPECT_EQ(*block, reinterpret_cast<std::uintptr_t>(&block));
                    Pool::give(block, 900);
                }
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

TEST_F(PoolTest, ArraysGoBackByThemselves)
{
    struct Counted {
        int value = 7;
    };
    for (const std::size_t count : {20, 2000}) EXPECT_EQ(makeArray<Counted>(count)[19].value, 7);
    PoolArray<Counted> array = makeArray<Counted>(20);
    array = makeArray<Counted>(2000);
    array = makeArray<Counted>(30);
}
