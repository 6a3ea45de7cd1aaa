// A crop window on the borders of buckets shows what the whole picture has there, to the last bit.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "support/random_scene.h"
#include "support/reports.h"
#include "support/scene.h"

namespace zebtest
{

namespace
{

unsigned sceneCount()
{
    const char* const count = std::getenv("TILED_SCENES");
    return count ? static_cast<unsigned>(std::atol(count)) : 150;
}

// Pixels x0 ... x1 - 1 of rows y0 ... y1 - 1.
struct Tile {
    long x0, x1, y0, y1;
};

// Borders are given half a pixel early: between two that a window may begin at.
void crop(const Tile& tile, long xres, long yres)
{
    const auto at = [](long border, long resolution) {
        const float place = (static_cast<float>(border) - 0.5f) / static_cast<float>(resolution);
        return border == resolution ? 1 : std::max(place, 0.0f);
    };
    zebImageCrop(at(tile.x0, xres), at(tile.x1, xres), at(tile.y0, yres), at(tile.y1, yres));
}

class Tiles : public testing::Test
{
protected:
    Tiles() { zebErrorHandler(static_cast<short>(0xB0F), ZEB_ERROR_IGNORE); }
    ~Tiles() override
    {
        zebReset();
        zebErrorHandler(static_cast<short>(0xB01), ZEB_ERROR_IGNORE);
        zebErrorHandler(static_cast<short>(0xB06), ZEB_ERROR_PRINT);
        zebErrorHandler(static_cast<short>(0xB08), ZEB_ERROR_ABORT);
    }

    // Some borders of buckets, from one end of the picture to the other.
    std::vector<long> cuts(long resolution, long bucket)
    {
        std::set<long> cuts{0, resolution};
        for (long border = bucket; border < resolution; border += bucket) {
            if (fRandom() % 3 == 0) cuts.insert(border);
        }
        return {cuts.begin(), cuts.end()};
    }
    // 60 x 44 pixels, with words that are floats.
    static void prepare(Picture& picture, float fieldOfView)
    {
        zebReset();
        zebRasterViewport(0, 60, 0, 44);
        zebViewPerspective(fieldOfView);
        zebOutputSamples(ZEB_SAMPLES_RGBA);
        picture.setChannels(4);
        picture.attachFloat();
    }
    // All tiles of a random tiling against the whole. render(picture, more) makes the picture, with
    // options that more() sets before the world opens.
    template <class Render>
    void expectSame(const Render& render, const std::string& what)
    {
        const long width = 3 + static_cast<long>(fRandom() % 12);
        const long height = 3 + static_cast<long>(fRandom() % 12);
        Picture whole(5), part(5);
        render(whole, [=] { zebTune(16, width, height); });
        const auto xs = cuts(whole.width, width), ys = cuts(whole.height, height);
        for (std::size_t j = 0; j + 1 < ys.size(); ++j) {
            for (std::size_t i = 0; i + 1 < xs.size(); ++i) {
                const Tile tile{xs[i], xs[i + 1], ys[j], ys[j + 1]};
                const auto threads = static_cast<long>(fRandom() % 3 + 1);
                render(part, [&] {
                    zebTune(16, width, height);
                    zebThreads(threads);
                    crop(tile, whole.width, whole.height);
                });
                const long buckets = (tile.x1 - tile.x0 + width - 1) / width;
                EXPECT_EQ(part.spans, buckets * (tile.y1 - tile.y0)) << what;
                const long wrong = differences(whole, part, tile);
                EXPECT_EQ(wrong, 0)
                    << what << ", buckets of " << width << " x " << height << ", pixels " << tile.x0
                    << " to " << tile.x1 << " of rows " << tile.y0 << " to " << tile.y1;
            }
        }
    }
    static long differences(const Picture& a, const Picture& b, const Tile& tile)
    {
        long count = 0;
        for (long y = tile.y0; y < tile.y1; ++y) {
            for (long x = tile.x0; x < tile.x1; ++x) {
                for (int c = 0; c < a.channels(); ++c) {
                    count += a.word(x, y, c) != b.word(x, y, c);
                }
            }
        }
        return count;
    }

    std::mt19937 fRandom{1};
    double fShown = 0;  // alpha, of all pictures
};

}  // namespace

TEST_F(Tiles, OfRandomScenesAreTheWhole)
{
    for (unsigned number = 1, count = sceneCount(); number <= count; ++number) {
        const auto render = [number](Picture& picture, const auto& more) {
            RandomScene scene(number);
            scene.tellTheTruth();
            scene.render(picture, more);
        };
        expectSame(render, "scene " + std::to_string(number));
    }
}

namespace
{

// A box of spheres and patches, some in smaller boxes.
struct Box {
    static void subdivide(void* data, float)
    {
        std::mt19937 random(*static_cast<unsigned*>(data));
        const auto between = [&random](float lo, float hi) {
            return lo + (hi - lo) * static_cast<float>(random() % 65536) / 65535;
        };
        for (int k = 0; k < 4; ++k) {
            zebAttributePush();
            const float red = between(0, 1), green = between(0, 1);
            color(red, green, 0.5f);
            if (random() % 4 == 0) opacity(0.5f, 0.7f, 0.5f);
            zebShadingRate(between(0.5f, 8));
            const float x = between(-0.6f, 0.6f), y = between(-0.6f, 0.6f);
            zebTranslate(x, y, between(-0.6f, 0.6f));
            zebRotate(between(0, 90), 1, 1, 1);
            const auto kind = random() % 6;
            if (kind < 3) {
                zebSphere(0.25f, -0.25f, 0.25f, 360, 0);
            } else if (kind < 5) {
                const float p[4][3] = {
                    {-0.3f, -0.3f, 0}, {0.3f, -0.3f, 0.2f}, {-0.3f, 0.3f, 0.2f}, {0.3f, 0.3f, 0}};
                zebPatch(zebQuark("bilinear"), zebQuark("point"), p, 0);
            } else {
                zebScale(0.4f, 0.4f, 0.4f);
                add(random());
            }
            zebAttributePop();
        }
    }
    static void add(unsigned number)
    {
        if (number % 8 == 7) return;
        const float bound[6] = {-1.2f, 1.2f, -1.2f, 1.2f, -1.2f, 1.2f};
        zebProcedural(new unsigned(number), bound, subdivide,
                      [](void* data) { delete static_cast<unsigned*>(data); });
    }
};

}  // namespace

// Procedurals out of sight are not called: what others draw and come after does not depend on it.
TEST_F(Tiles, OfProceduralsAreTheWhole)
{
    for (const short hider : {ZEB_HIDER_HIDDEN, ZEB_HIDER_SEQUENCE}) {
        for (unsigned number = 1; number <= 12; ++number) {
            const auto render = [&](Picture& picture, const auto& more) {
                prepare(picture, 60);
                zebHider(hider);
                more();
                zebTranslate(0, 0, 3);
                zebSceneBegin();
                zebSurface(zebQuark("diffuse"), 0);
                zebLightSource(zebQuark("distant"), 0);
                for (unsigned k = 0; k < 5; ++k) {
                    zebMatrixPush();
                    zebTranslate(static_cast<float>(k % 3) - 1, static_cast<float>(k / 3) - 0.5f,
                                 0);
                    Box::add(number * 64 + k * 9);
                    zebMatrixPop();
                }
                zebSceneEnd();
            };
            expectSame(render, "boxes " + std::to_string(number));
        }
    }
}

// Whatever quirks do to the instances that there are.
TEST_F(Tiles, OfInstancesAreTheWhole)
{
    for (const short quirks : {0, 1}) {
        const auto render = [&](Picture& picture, const auto& more) {
            prepare(picture, 60);
            zebQuirks(quirks);
            more();
            zebTranslate(0, 0, 3);
            zebSceneBegin();
            zebSurface(zebQuark("constant"), 0);
            const void* const object = zebObjectBegin();
            zebSphere(0.4f, -0.4f, 0.4f, 360, 0);
            zebSphere(0.6f, -0.6f, 0.2f, 300, 0);
            zebObjectEnd();
            for (int k = 0; k < 9; ++k) {
                color(0.1f * static_cast<float>(k), 1, 0);
                zebMatrixPush();
                zebTranslate(static_cast<float>(k % 3) - 1, static_cast<float>(k / 3) - 1, 0);
                zebObjectCall(object);
                zebMatrixPop();
            }
            zebSceneEnd();
        };
        for (int k = 0; k < 10; ++k) expectSame(render, "instances");
    }
}

// Whose faces are given in any order, and made only where they may be seen: of instances, and of a
// mesh that a projection moves, too.
TEST_F(Tiles, OfMeshesAreTheWhole)
{
    constexpr int kSide = 40;
    std::mt19937 random(3);
    std::vector<Vec> points;
    for (int k = 0; k < (kSide + 1) * (kSide + 1); ++k) {
        const float u = static_cast<float>(k % (kSide + 1)) / kSide * 6.2832f;
        const float v = static_cast<float>(k / (kSide + 1)) / kSide * 6.2832f;
        const float r = 1 + 0.4f * std::cos(v);
        points.push_back({r * std::cos(u), r * std::sin(u), 0.4f * std::sin(v)});
    }
    std::vector<long> faces(kSide * kSide), sizes, loops, indices;
    for (std::size_t k = 0; k < faces.size(); ++k) faces[k] = static_cast<long>(k);
    for (std::size_t k = faces.size() - 1; k > 0; --k)
        std::swap(faces[k], faces[random() % (k + 1)]);
    for (const long face : faces) {
        const long a = face / kSide * (kSide + 1) + face % kSide;
        indices.insert(indices.end(), {a, a + 1, a + kSide + 2, a + kSide + 1});
        sizes.push_back(4);
        loops.push_back(1);
    }
    const auto count = static_cast<long>(faces.size());
    for (int kind = 0; kind < 12; ++kind) {
        const auto add = [&] {
            if (kind % 2) {
                zebPolygonMesh(count, sizes.data(), indices.data(), zebQuark("point"),
                               points.data(), 0);
            } else {
                zebGeneralPolygonMesh(count, loops.data(), sizes.data(), indices.data(),
                                      zebQuark("point"), points.data(), 0);
            }
        };
        const auto render = [&](Picture& picture, const auto& more) {
            prepare(picture, 50);
            zebQuirks(0);
            more();
            zebTranslate(0, 0, 2.5f);
            zebSceneBegin();
            zebSurface(zebQuark("diffuse"), 0);
            zebLightSource(zebQuark("distant"), 0);
            const bool instances = kind / 2 % 2 != 0;
            const void* object = nullptr;
            if (instances) {
                object = zebObjectBegin();
                add();
                zebObjectEnd();
            }
            if (kind / 4 == 1) zebRotate(70, 1, 0.3f, 0);
            if (kind / 4 == 2) {
                ZebMatrix bend = {{1, 0, 0, 0.2f}, {0, 1, 0, 0}, {0, 0, 1, 0.1f}, {0, 0, 0, 1}};
                zebMultMatrix(bend);
            }
            for (int k = 0; k < (instances ? 3 : 1); ++k) {
                color(0.3f * static_cast<float>(k), 0.6f, 1);
                if (instances) {
                    zebObjectCall(object);
                } else {
                    add();
                }
                zebTranslate(0.5f, 0.3f, 0.4f);
            }
            zebSceneEnd();
            fShown += picture.sum(3);
        };
        expectSame(render, "mesh " + std::to_string(kind));
    }
    EXPECT_GT(fShown, 1000);
}

// Far from the picture's first buckets, of which nothing is rendered.
TEST_F(Tiles, OfWideFiltersAreTheWhole)
{
    for (const short quirks : {0, 1}) {
        for (const float width : {1.0f, 2.0f, 5.0f, 16.0f}) {
            const auto render = [&](Picture& picture, const auto& more) {
                zebReset();
                zebRasterViewport(0, 50, 0, 30);
                zebImageWindow(0, 50, 0, 30);
                zebTranslate(0, 30, 0);
                zebScale(1, -1, 1);
                zebViewIdentity();
                zebOutputSamples(ZEB_SAMPLES_RGBAZ);
                picture.setChannels(5);
                picture.attachFloat();
                zebQuirks(quirks);
                zebFilter(ZEB_FILTER_SINC);
                zebFilterWidth(width, width);
                more();
                zebSceneBegin();
                zebSurface(zebQuark("constant"), 0);
                for (int k = 0; k < 12; ++k) {
                    const auto x = static_cast<float>(k * 4), y = static_cast<float>(k * 7 % 25);
                    color(1, 0.08f * static_cast<float>(k), 0);
                    rectangle(x, y, x + 3, y + 5, 0.5f);
                }
                zebSceneEnd();
                fShown += picture.sum(3);
            };
            for (int k = 0; k < 4; ++k) {
                expectSame(render, "filter of " + std::to_string(width));
            }
        }
    }
    EXPECT_GT(fShown, 1000);
}

// Elsewhere than on the borders of the picture's buckets they begin where the window does.
TEST_F(Tiles, BucketsOfOtherWindowsBeginWithThem)
{
    std::vector<long> starts;
    ZebDisplay device{};
    device.data = &starts;
    device.span = [](void* data, long x0, long, long, const unsigned*) {
        static_cast<std::vector<long>*>(data)->push_back(x0);
    };
    zebReset();
    zebRasterViewport(0, 40, 0, 1);
    zebCustomDisplay(&device);
    for (const auto& [tile, expected] :
         {std::pair(Tile{12, 36, 0, 1}, std::vector<long>{12, 24}),
          std::pair(Tile{12, 35, 0, 1}, std::vector<long>{12, 24}),
          std::pair(Tile{11, 36, 0, 1}, std::vector<long>{11, 23, 35}),
          std::pair(Tile{24, 40, 0, 1}, std::vector<long>{24, 36})}) {
        starts.clear();
        crop(tile, 40, 1);
        zebSceneBegin();
        zebSceneEnd();
        EXPECT_EQ(starts, expected) << tile.x0 << " to " << tile.x1;
    }
}

}  // namespace zebtest
