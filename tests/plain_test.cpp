// What is hidden is left out, and what is seen is worked out late: the pictures are those of the
// plain way, bit for bit.

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/picture.h"
#include "support/plain.h"
#include "support/random_scene.h"

namespace zebtest
{

namespace
{

unsigned sceneCount()
{
    const char* const count = std::getenv("PLAIN_SCENES");
    return count ? static_cast<unsigned>(std::atol(count)) : 400;
}

}  // namespace

TEST(Plain, RandomScenesAreTheSame)
{
    for (unsigned number = 1, count = sceneCount(); number <= count; ++number) {
        Picture plain(3), picture(3);
        renderPlainly(true);
        RandomScene(number).render(plain);
        renderPlainly(false);
        RandomScene(number).render(picture);
        ASSERT_EQ(plain.words().size(), picture.words().size());
        std::size_t differing = 0;
        for (std::size_t k = 0; k < plain.words().size(); ++k) {
            differing += plain.words()[k] != picture.words()[k];
        }
        EXPECT_EQ(differing, 0u) << "scene " << number;
    }
    zebReset();
}

}  // namespace zebtest
