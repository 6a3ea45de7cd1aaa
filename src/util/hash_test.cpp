#include "util/hash.h"

#include <gtest/gtest.h>

using namespace zeb;

namespace
{

struct Entry {
    unsigned short token;
    int tag;
    bool operator==(const Entry& other) const { return token == other.token; }
};

}  // namespace

TEST(Hash, StartsWithoutBuckets)
{
    const Hash<Entry> hash(17);
    for (unsigned short i = 0; i < 17; ++i) EXPECT_FALSE(hash.hasBucket(i));
    EXPECT_EQ(hash.find({5, 0}), nullptr);
}

TEST(Hash, TheBucketIsTheTokenModuloTheBucketCount)
{
    Hash<Entry> hash(17);
    EXPECT_EQ(hash.add({37, 1}), 1);  // 37 = 2 * 17 + 3
    for (unsigned short i = 0; i < 17; ++i) EXPECT_EQ(hash.hasBucket(i), i == 3) << i;
}

TEST(Hash, FindsWhatSharesABucket)
{
    Hash<Entry> hash(17);
    hash.add({3, 1});
    hash.add({20, 2});
    hash.add({65535, 3});
    EXPECT_EQ(hash.find({3, 0})->tag, 1);
    EXPECT_EQ(hash.find({20, 0})->tag, 2);
    EXPECT_EQ(hash.find({65535, 0})->tag, 3);
    EXPECT_EQ(hash.find({37, 0}), nullptr);  // same bucket, other token
    EXPECT_EQ(hash.find({4, 0}), nullptr);   // no bucket
}

TEST(Hash, FindAnswersTheStoredElement)
{
    Hash<Entry> hash(17);
    hash.add({3, 1});
    hash.find({3, 0})->tag = 9;
    EXPECT_EQ(hash.find({3, 0})->tag, 9);
}

TEST(Hash, AddsAtTheHeadOfTheBucket)
{
    Hash<Entry> hash(17);
    hash.add({3, 1});
    hash.add({3, 2});
    EXPECT_EQ(hash.find({3, 0})->tag, 2);
}

TEST(Hash, DetachRemovesOneElement)
{
    Hash<Entry> hash(17);
    hash.add({3, 1});
    hash.add({20, 2});
    EXPECT_EQ(hash.detach({3, 0}), 1);
    EXPECT_EQ(hash.find({3, 0}), nullptr);
    EXPECT_EQ(hash.find({20, 0})->tag, 2);
    EXPECT_TRUE(hash.hasBucket(3));
}

TEST(Hash, AnEmptiedBucketGoes)
{
    Hash<Entry> hash(17);
    hash.add({3, 1});
    hash.detach({3, 0});
    EXPECT_FALSE(hash.hasBucket(3));
    EXPECT_EQ(hash.add({3, 2}), 1);  // and comes back
    EXPECT_EQ(hash.find({3, 0})->tag, 2);
}

TEST(Hash, DetachOfAnAbsentElementAnswersZero)
{
    Hash<Entry> hash(17);
    EXPECT_EQ(hash.detach({3, 0}), 0);
    hash.add({3, 1});
    EXPECT_EQ(hash.detach({20, 0}), 0);
    EXPECT_EQ(hash.find({3, 0})->tag, 1);
}
