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

// In the order of the sequence both sides of a sphere are equally far; which of them shows depends
// on what came before, here something transparent that is nearer.
TEST(Plain, BothSidesOfASurfaceCountUnderTheSequence)
{
    const auto render = [](Picture& picture, bool isPlain) {
        renderPlainly(isPlain);
        zebReset();
        zebRasterViewport(0, 40, 0, 30);
        picture.attachFloat();
        zebHider(ZEB_HIDER_SEQUENCE);
        zebViewOrthographic();
        zebTranslate(0, 0, 3);
        zebSceneBegin();
        zebSurface(zebQuark("constant"), 0);
        zebBackface(2);
        static const float colors[12] = {1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 1, 1};
        zebSphere(0.8f, -0.8f, 0.8f, 360, zebQuark("color"), colors, 0);
        const float half[3] = {0.5f, 0.5f, 0.5f};
        zebOpacity(half);
        const Vec p[4] = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
        zebPolygon(4, zebQuark("point"), p, 0);
        zebSceneEnd();
    };
    Picture plain(3), picture(3);
    render(plain, true);
    render(picture, false);
    EXPECT_TRUE(plain.words() == picture.words());
    zebReset();
}

}  // namespace zebtest
