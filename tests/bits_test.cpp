// Pictures have the same bits on every machine, by every instruction set, and under every system.
// They are compared with those that they had where this was written; scenes whose picture is meant
// to change are printed with their new line.

#include <gtest/gtest.h>

#include <cstdint>
#include <iomanip>
#include <sstream>
#include <string>

#include "support/random_scene.h"

namespace zebtest
{

namespace
{

constexpr std::uint32_t kHashes[] = {
#include "bits.inc"
};

// Fowler, Noll and Vo's, of all words.
std::uint32_t hashOf(const Picture& picture)
{
    std::uint32_t hash = 0x811C9DC5;
    for (const std::uint32_t word : picture.words()) {
        for (int k = 0; k < 32; k += 8) hash = (hash ^ (word >> k & 0xFF)) * 0x01000193;
    }
    return hash;
}

}  // namespace

TEST(Bits, AreTheSameEverywhere)
{
    std::ostringstream found;
    int differing = 0;
    unsigned number = 0;
    for (const std::uint32_t expected : kHashes) {
        Picture picture(3);
        RandomScene(++number).render(picture);
        const std::uint32_t hash = hashOf(picture);
        if (hash != expected) ++differing;
        found << (number % 8 == 1 ? "\n    " : " ") << "0x" << std::hex << std::uppercase
              << std::setw(8) << std::setfill('0') << hash << std::dec << ",";
    }
    zebReset();
    EXPECT_EQ(differing, 0) << "pictures differ; all of them now are" << found.str();
}

}  // namespace zebtest
