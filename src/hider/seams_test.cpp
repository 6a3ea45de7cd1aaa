// What closing seams adds, and that it adds nothing else: pictures with it against pictures
// without.

#include "hider/seams.h"

#include <set>

#include <gtest/gtest.h>

#include "geom/grid.h"
#include "state/option.h"
#include "support/families.h"

using namespace zebtest;

namespace
{

constexpr long kSize = 72;

// How a picture is taken; one sample a pixel, whose colour, alpha and depth it keeps.
struct Take {
    float rate = 16;
    float flatness = 0.5f;
    float opacity = 1;
    bool close = true;
    bool adaptive = false;
    bool matte = false;
    bool instance = false;
    bool frontOnly = false;
    short hider = ZEB_HIDER_HIDDEN;
};

const Take kFine{.rate = 1.0f / 16, .flatness = 0.02f, .opacity = 0.5f};

class SeamsTest : public testing::Test
{
protected:
    ~SeamsTest() override { zebReset(); }

    static void render(Picture& picture, unsigned view, const Take& take,
                       const std::function<void(float)>& add)
    {
        std::mt19937 random(view);
        std::uniform_real_distribution<float> angle(0, 360), axis(-1, 1), shift(-0.5f, 0.5f);
        std::uniform_real_distribution<float> exponent(std::log(20.0f), std::log(400.0f));
        zebReset();
        zebQuirks(0);
        zebRasterViewport(0, kSize, 0, kSize);
        const float half = kSize / std::exp(exponent(random));
        const float x = half < 1 ? shift(random) : 0, y = half < 1 ? shift(random) : 0;
        zebImageWindow(x - half, x + half, y - half, y + half);
        zebViewPerspective(40);
        zebClip(1, 6);
        zebOutputSamples(0x303);
        zebFilter(ZEB_FILTER_BOX);
        zebFilterWidth(1, 1);
        zebSampleUniform(1, 1);
        // A threshold that eight samples a pixel always stay under.
        if (take.adaptive) zebSampleAdaptive(1e9f);
        zebHider(take.hider);
        picture.attachFloat();
        zeb::gOption->closeSeams = take.close;
        zebTranslate(0, 0, 3.2f);
        zebRotate(angle(random), axis(random), axis(random), axis(random));
        zebSceneBegin();
        zebSurface(zebQuark("constant"), 0);
        zebAttributePush();
        if (take.matte) {
            // Behind a mask of what is looked at lies a wall.
            zebLoadIdentity();
            polygon({{-9, -9, 5.5f}, {9, -9, 5.5f}, {9, 9, 5.5f}, {-9, 9, 5.5f}});
        }
        zebAttributePop();
        zebShadingRate(take.rate);
        zebFlatness(take.flatness);
        zebMatteObject(take.matte);
        opacity(take.opacity, take.opacity, take.opacity);
        if (take.frontOnly) zebBackface(1);
        if (take.instance) {
            const void* object = zebObjectBegin();
            add(1);
            zebObjectEnd();
            zebObjectCall(object);
        } else {
            add(1);
        }
        zebSceneEnd();
    }

    // Of surfaces that let half through: how many lie over a sample.
    static int layers(const Picture& picture, long x, long y)
    {
        const double through = 1 - double{picture.value(x, y, 3)};
        return static_cast<int>(std::lround(-std::log2(std::max(through, 1e-6))));
    }

    static bool same(const Picture& a, const Picture& b, long x, long y)
    {
        for (int c = 0; c < 4; ++c) {
            if (a.word(x, y, c) != b.word(x, y, c)) return false;
        }
        return true;
    }

    Picture with{4}, without{4}, fine{4};
    Reports reports;
};

}  // namespace

// Where pictures differ, a layer was missing: one that finer dicing has there, but for samples at
// outlines, which turn with the size of micropolygons. All other samples have just the hits they
// had.
TEST_F(SeamsTest, AddALayerWhereOneIsMissingAndNothingElsewhere)
{
    long differing = 0, unlike = 0;
    for (const Family& family : families()) {
        for (unsigned view = 0; view < 16; ++view) {
            SCOPED_TRACE(family.name + ", view " + std::to_string(view));
            Take take{.rate = view % 2 ? 64.0f : 16.0f, .opacity = 0.5f};
            take.instance = view % 3 == 1;
            render(with, view, take, family.add);
            take.close = false;
            render(without, view, take, family.add);
            render(fine, view, kFine, family.add);
            for (long y = 0; y < kSize; ++y) {
                for (long x = 0; x < kSize; ++x) {
                    if (same(with, without, x, y)) continue;
                    ++differing;
                    EXPECT_GT(layers(with, x, y), layers(without, x, y)) << x << ' ' << y;
                    EXPECT_GT(layers(fine, x, y) + layers(without, x, y), 0)
                        << x << ' ' << y << ": the outline moved";
                    unlike += layers(with, x, y) != layers(fine, x, y);
                }
            }
        }
    }
    EXPECT_GT(differing, 300) << "there is something to close";
    EXPECT_LT(unlike * 100, differing);
}

TEST_F(SeamsTest, AreClosedInAdaptiveBucketsAndUnderBothHidersAlike)
{
    // Gaps that the wall behind a mask would show through, and those in a sphere of its own.
    // It is flat, so that its far side lies close behind.
    const auto sphere = [](float r) {
        zebScale(1, 0.8f, 0.05f);
        zebSphere(r, -r, r, 360, 0);
    };
    for (const bool adaptive : {false, true}) {
        for (const short hider : {ZEB_HIDER_HIDDEN, ZEB_HIDER_SEQUENCE}) {
            for (const bool matte : {false, true}) {
                double closed = 0, left = 0;
                for (unsigned view = 0; view < 30; ++view) {
                    Take take{.rate = 256,
                              .adaptive = adaptive,
                              .matte = matte,
                              .frontOnly = true,
                              .hider = hider};
                    render(with, view, take, sphere);
                    take.close = false;
                    render(without, view, take, sphere);
                    render(fine, view,
                           {.rate = 1,
                            .flatness = 0.05f,
                            .matte = matte,
                            .frontOnly = true,
                            .hider = hider},
                           sphere);
                    for (long y = 3; y < kSize - 3; ++y) {
                        for (long x = 3; x < kSize - 3; ++x) {
                            const float there = matte ? 0 : 1;
                            bool inside = true;
                            for (long k = 0; k < 49; ++k) {
                                inside &= fine.value(x + k % 7 - 3, y + k / 7 - 3, 3) == there;
                            }
                            if (!inside) continue;
                            closed += std::fabs(without.value(x, y, 3) - there);
                            left += std::fabs(with.value(x, y, 3) - there);
                        }
                    }
                }
                EXPECT_GT(closed, 1) << adaptive << hider << matte;
                EXPECT_EQ(left, 0) << adaptive << hider << matte;
            }
        }
    }
}

// A comb whose teeth are cut from one another: each tooth is two faces, which share a line that
// ends at the cut, a fraction of a pixel wide.
TEST_F(SeamsTest, CutsAndBordersStayOpen)
{
    const auto comb = [](float) {
        std::vector<Vec> points;
        std::vector<long> sizes, indices;
        for (int tooth = 0; tooth < 40; ++tooth) {
            const float x0 = -1 + 0.05f * static_cast<float>(tooth), x1 = x0 + 0.0488f;
            for (const float y : {-1.0f, 0.1f, 1.0f}) {
                points.push_back({x0, y, 0});
                points.push_back({x1, y, 0});
            }
            const long at = 6 * tooth;
            for (const long k : {at, at + 1, at + 3, at + 2, at + 2, at + 3, at + 5, at + 4}) {
                indices.push_back(k);
            }
            sizes.insert(sizes.end(), {4, 4});
        }
        zebPolygonMesh(static_cast<long>(sizes.size()), sizes.data(), indices.data(),
                       zebQuark("point"), points.data(), 0);
    };
    // Curved: pieces of a cylinder that lack a hair of the whole turn, and of the next ring.
    const auto rings = [](float) {
        for (int ring = 0; ring < 8; ++ring) {
            const float z = -0.8f + 0.2f * static_cast<float>(ring);
            zebCylinder(0.7f, z, z + 0.198f, 359.7f, 0);
        }
    };
    long differing = 0, unlike = 0;
    for (const std::function<void(float)>& add : {std::function<void(float)>(comb), {rings}}) {
        for (unsigned view = 0; view < 40; ++view) {
            Take take{.rate = 64, .opacity = 0.5f};
            render(with, view, take, add);
            take.close = false;
            render(without, view, take, add);
            render(fine, view, kFine, add);
            for (long y = 0; y < kSize; ++y) {
                for (long x = 0; x < kSize; ++x) {
                    if (same(with, without, x, y)) continue;
                    ++differing;
                    unlike += layers(with, x, y) > layers(fine, x, y);
                }
            }
        }
    }
    EXPECT_GT(differing, 100);
    // At outlines, which turn with the size of micropolygons.
    EXPECT_LT(unlike * 20, differing);
}

namespace
{

constexpr std::uint32_t kLine = 7, kOther = 9, kThird = 11;

// Grids of one row of cells, in raster space, and what a sample between them is given.
class SeamRules : public testing::Test
{
protected:
    SeamRules()
    {
        zebReset();
        attrib->micropolygonSide = 4;  // gaps reach a little over two pixels
        attrib->flatnessLimit = 1;
        option.projection = false;
    }
    ~SeamRules() override { zebReset(); }

    const zeb::Grid& add(const std::vector<zeb::Point>& top, const std::vector<zeb::Point>& bottom,
                         const zeb::Edges& edges, bool triangular = false)
    {
        const auto size = static_cast<unsigned short>(top.size() - 1);
        const auto grid = std::make_shared<zeb::Grid>(size, 1, attrib, zeb::Transform(), 1, false,
                                                      triangular, zeb::ArgList(), edges);
        for (int i = 0; i <= size; ++i) {
            const auto place = [&](int j, const zeb::Point& P) {
                grid->vertex(i, j).P = P;
                grid->setOpacity(i, j, zeb::Color(0.5f, 0.5f, 0.5f));
            };
            place(0, top[static_cast<std::size_t>(i)]);
            place(1, bottom[static_cast<std::size_t>(i)]);
        }
        grid->project(zeb::RenderFrame(option, zeb::Matrix()));
        owned.push_back(std::make_unique<zeb::Piece>(grid));
        pieces.insert(pieces.begin(), owned.back().get());
        return *grid;
    }
    // Two squares that are half a pixel apart, with a line between them.
    void addPair()
    {
        add({{0, 0, 0.5f}, {10, 0, 0.5f}}, {{0, 10, 0.5f}, {10, 10, 0.5f}}, {.umax = kLine});
        add({{10.5f, 0, 0.5f}, {20, 0, 0.5f}}, {{10.5f, 10, 0.5f}, {20, 10, 0.5f}},
            {.umin = kLine});
    }
    static const zeb::Grid& gridOf(zeb::Piece& piece)
    {
        zeb::Counts counts;
        return piece.dice(counts);
    }
    // Looks at the sides of every grid as often as given, then closes.
    int hits(float x, float y, int times = 1, double depthOne = 1)
    {
        zeb::Arena arena;
        zeb::Seams seams(false, depthOne, arena);
        zeb::Seams::Near* near = nullptr;
        for (zeb::Piece* piece : pieces) {
            for (zeb::Seams::Side& side : seams.sides(gridOf(*piece), zeb::Lines(zeb::Bound()))) {
                for (int k = 0; k < times; ++k) seams.look(side, x, y, near);
            }
        }
        int count = 0;
        zeb::Counts counts;
        seams.close(
            x, y, near, pieces, counts,
            [this](const zeb::Seams::Near& by) { return !unseen.contains(by.side->grid); },
            [&count](const zeb::MicroPolygon&, float, float) { ++count; });
        return count;
    }

    std::shared_ptr<zeb::Attrib> attrib = std::make_shared<zeb::Attrib>();
    zeb::Option option;
    std::vector<std::unique_ptr<zeb::Piece>> owned;
    zeb::Pieces pieces;
    std::set<const zeb::Grid*> unseen;
};

}  // namespace

TEST_F(SeamRules, ASampleBetweenTwoSidesOfALineIsGivenAHit)
{
    addPair();
    EXPECT_EQ(hits(10.25f, 5), 1);
    EXPECT_EQ(hits(10.25f, 12), 0) << "beyond the ends of both";
}

// The two are no deeper apart than their cells are deep: only the way they face tells them apart.
TEST_F(SeamRules, AFlatSurfaceIsClosedInFrontAndBehind)
{
    const float z[] = {0.2f, 0.8f, 0.2f};
    const auto row = [&z](float y, float behind) {
        std::vector<zeb::Point> points;
        for (int k = 0; k < 2; ++k)
            points.emplace_back(10 * static_cast<float>(k), y, z[k] + behind);
        return points;
    };
    const auto next = [&z](float y, float behind) {
        std::vector<zeb::Point> points;
        for (int k = 1; k < 3; ++k)
            points.emplace_back(10 * static_cast<float>(k) + 0.5f, y, z[k] + behind);
        return points;
    };
    add(row(0, 0), row(10, 0), {.umax = kLine});
    add(next(0, 0), next(10, 0), {.umin = kLine});
    EXPECT_EQ(hits(10.25f, 5), 1);
    add(row(10, 0.1f), row(0, 0.1f), {.umax = kOther});
    add(next(10, 0.1f), next(0, 0.1f), {.umin = kOther});
    EXPECT_EQ(hits(10.25f, 5), 2);
}

TEST_F(SeamRules, WhatIsNotSeenIsNotClosed)
{
    addPair();
    add({{10, 0, 0.6f}, {0, 0, 0.6f}}, {{10, 10, 0.6f}, {0, 10, 0.6f}}, {.umin = kOther});
    add({{20, 0, 0.6f}, {10.5f, 0, 0.6f}}, {{20, 10, 0.6f}, {10.5f, 10, 0.6f}}, {.umax = kOther});
    EXPECT_EQ(hits(10.25f, 5), 2);
    attrib->sides = 1;
    EXPECT_EQ(hits(10.25f, 5), 1) << "one of them faces away";
    EXPECT_EQ(hits(10.25f, 5, 1, 0.4), 0) << "both lie beyond the far clipping plane";
}

// Places outside are not looked at.
TEST_F(SeamRules, NoSideReachesBeyondItsGrid)
{
    const zeb::Edges edges{kLine, kOther, kThird, kLine};
    add({{0, 0, 0.5f}, {10, 1, 0.5f}}, {{0, 10, 0.5f}, {9, 10, 0.5f}}, edges);
    add({{0, 0, 0.5f}, {5, 1, 0.5f}, {10, 0, 0.5f}}, {{0, 9, 0.5f}, {5, 8, 0.5f}, {9, 9, 0.5f}},
        edges);
    add({{0, 0, 0.5f}, {10, 1, 0.5f}}, {{0, 10, 0.5f}, {0, 10, 0.5f}}, edges, true);
    zeb::Arena arena;
    zeb::Seams seams(false, 1, arena);
    for (zeb::Piece* piece : pieces) {
        const zeb::Bound all = zeb::Seams::reached(gridOf(*piece));
        zeb::Bound sides = zeb::Bound::empty();
        for (const zeb::Seams::Side& side : seams.sides(gridOf(*piece), zeb::Lines(zeb::Bound()))) {
            sides = joined(sides, side.bound());
        }
        EXPECT_LE(all.xmin, sides.xmin);
        EXPECT_GE(all.xmax, sides.xmax);
        EXPECT_LE(all.ymin, sides.ymin);
        EXPECT_GE(all.ymax, sides.ymax);
    }
}

// The shortest step, which is the first or the last one, counts.
TEST_F(SeamRules, GapsReachAsFarWhicheverWayAnEdgeRuns)
{
    const auto reach = [this](const std::vector<float>& places) {
        std::vector<zeb::Point> top, bottom;
        for (const float x : places) {
            top.emplace_back(x, 0.0f, 0.5f);
            bottom.emplace_back(x, 5.0f, 0.5f);
        }
        zeb::Arena arena;
        zeb::Seams seams(false, 1, arena);
        return seams.sides(add(top, bottom, {.vmin = kLine}), zeb::Lines(zeb::Bound())).at(0).reach;
    };
    const float there = reach({0, 3, 6.25f, 9.75f}), back = reach({9.75f, 6.25f, 3, 0});
    EXPECT_EQ(there, back);
    EXPECT_GT(there, 0.17f);
    EXPECT_LT(there, 0.2f);
}

// The line between an upper and a lower part goes round the outline of both, at x = 10, and back
// behind them.
TEST_F(SeamRules, NothingIsAddedBeyondAnOutlineThatALineTurnsRound)
{
    add({{0, 0, 0.5f}, {10, 0, 0.5f}, {0, 0, 0.6f}}, {{0, 5, 0.5f}, {10, 5, 0.5f}, {0, 3, 0.6f}},
        {.vmax = kLine});
    add({{0, 5.2f, 0.5f}, {10, 5.2f, 0.5f}, {0, 3.2f, 0.6f}},
        {{0, 10, 0.5f}, {10, 10, 0.5f}, {0, 10, 0.6f}}, {.vmin = kLine});
    EXPECT_EQ(hits(5, 5.1f), 1);
    EXPECT_EQ(hits(10.25f, 5.1f), 0);
}

// The other side of a gap may be hidden, but not both.
TEST_F(SeamRules, AGapIsClosedAlongALineThatIsSeenFromEitherSide)
{
    addPair();
    unseen = {&gridOf(*pieces[0])};
    EXPECT_EQ(hits(10.25f, 5), 1);
    unseen = {&gridOf(*pieces[1])};
    EXPECT_EQ(hits(10.25f, 5), 1);
    unseen = {&gridOf(*pieces[0]), &gridOf(*pieces[1])};
    EXPECT_EQ(hits(10.25f, 5), 0);
}

// 66 sides, of which no more than 2 count.
TEST_F(SeamRules, SidesOfLinesThatAreNotSeenDoNotPileUp)
{
    addPair();
    for (int k = 0; k < 64; ++k) {
        unseen.insert(
            &add({{0, 0, 0.5f}, {10, 0, 0.5f}}, {{0, 10, 0.5f}, {10, 10, 0.5f}}, {.umax = kThird}));
    }
    EXPECT_EQ(hits(10.25f, 5), 1);
    unseen.clear();
    EXPECT_EQ(hits(10.25f, 5), 0);
}

TEST_F(SeamRules, SidesThatPileUpAreLeftAlone)
{
    addPair();
    EXPECT_EQ(hits(10.25f, 5, 32), 1) << "64 sides";
    EXPECT_EQ(hits(10.25f, 5, 33), 0) << "66 sides";
}

// Places come line by line, and lines again and again: each keeps the box of all of its places.
TEST(Lines, KeepWhereEachOfThemIs)
{
    zeb::Lines lines;
    lines.add(kThird, 5, 5);
    lines.add(kLine, 1, 2);
    lines.add(kLine, 3, 1);
    lines.add(kThird, 6, 4);
    lines.add(kLine, 2, 4);
    lines.sort();
    const zeb::Bound* const box = lines.find(kLine);
    ASSERT_TRUE(box);
    EXPECT_EQ(box->xmin, 1);
    EXPECT_EQ(box->xmax, 3);
    EXPECT_EQ(box->ymin, 1);
    EXPECT_EQ(box->ymax, 4);
    EXPECT_FALSE(lines.find(kOther));
    EXPECT_FALSE(lines.find(0)) << "where a surface ends";
    const zeb::Bound there(3, 4, 4, 5, 0, 0), beyond(3.5f, 9, 0, 9, 0, 0);
    EXPECT_TRUE(lines.reach({.umin = kOther, .vmax = kLine}, there));
    EXPECT_FALSE(lines.reach({.umin = kOther, .vmax = kLine}, beyond));
    EXPECT_FALSE(lines.reach({.umin = kOther}, there));
    EXPECT_TRUE(lines.reach({.umin = kThird}, {6, 7, 4, 5, 0, 0})) << "of the last line";
}
