#include "util/pool.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <set>

using namespace zeb;

TEST(Pool, GivesAgainWhatWasGivenBack)
{
    Pool pool;
    void* const first = pool.take(100);
    void* const second = pool.take(100);
    EXPECT_NE(first, second);
    pool.give(first, 100);
    EXPECT_EQ(pool.take(128), first) << "as many lines of 64 bytes";
    pool.give(second, 100);
    EXPECT_NE(pool.take(129), second);
}

TEST(Pool, SizesOfAClassDifferByAnEighthAtMost)
{
    Pool pool;
    for (const std::size_t lines : {17, 33, 100, 1000}) {
        void* const large = pool.take(64 * lines);
        pool.give(large, 64 * lines);
        EXPECT_NE(pool.take(64 * lines * 7 / 8 - 64), large) << lines;
        EXPECT_EQ(pool.take(64 * lines), large) << lines;
    }
    void* const some = pool.take(64 * 100);
    pool.give(some, 64 * 100);
    EXPECT_EQ(pool.take(64 * 98), some);
}

TEST(Pool, HandsNothingOutTwice)
{
    Pool pool;
    std::mt19937 random(3);
    struct Block {
        unsigned char* bytes;
        std::size_t size;
        unsigned char mark;
    };
    std::vector<Block> blocks;
    for (int k = 0; k < 20000; ++k) {
        if (!blocks.empty() && random() % 2) {
            std::swap(blocks[random() % blocks.size()], blocks.back());
            const Block block = blocks.back();
            blocks.pop_back();
            for (std::size_t i = 0; i < block.size; i += 61) ASSERT_EQ(block.bytes[i], block.mark);
            pool.give(block.bytes, block.size);
            continue;
        }
        const std::size_t size = random() % (random() % 50 ? 5000 : 200000);
        const auto mark = static_cast<unsigned char>(random());
        auto* const bytes = static_cast<unsigned char*>(pool.take(size));
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % alignof(std::max_align_t), 0u);
        std::fill(bytes, bytes + size, mark);
        blocks.push_back({bytes, size, mark});
    }
    for (const Block& block : blocks) pool.give(block.bytes, block.size);
}

TEST(Pool, NothingHasAPlaceOfItsOwn)
{
    Pool pool;
    void* const first = pool.take(0);
    void* const second = pool.take(64);
    EXPECT_NE(first, second);
    pool.give(first, 0);
    EXPECT_EQ(pool.take(0), first);
}

TEST(Pool, ArraysGoBackByThemselves)
{
    Pool pool;
    struct Counted {
        int value = 7;
    };
    const Counted* first = nullptr;
    {
        const PoolArray<Counted> array = makeArray<Counted>(&pool, 20);
        first = array.get();
        EXPECT_EQ(array[19].value, 7);
    }
    EXPECT_EQ(makeArray<Counted>(&pool, 20).get(), first);
    EXPECT_EQ(makeArray<Counted>(nullptr, 20)[19].value, 7) << "from the heap";
}
