// Colours of control points. Where the colour of each is a linear function of its place, the colour
// of every point must be that function of its own place: whatever the basis, knots and weights.

#include <random>

#include "support/scene.h"

namespace zebtest
{

namespace
{

constexpr float kSize = 40;

// Of a place on the raster: red grows with x, green with y.
Vec colorAt(float x, float y) { return {x / kSize, y / kSize, 0.25f}; }

class VertexColor : public RasterTest
{
protected:
    void begin()
    {
        zebReset();
        raster(40, 40);
        beginFlat();
    }
    // A net that fills the picture and more, bent, its colours and its opacities.
    void makeNet(int nu, int nv, bool rational, float room = 1.6f)
    {
        std::mt19937 random(5);
        std::uniform_real_distribution<float> jitter(-0.25f, 0.25f), weight(0.5f, 2);
        points.clear();
        colors.clear();
        for (int j = 0; j < nv; ++j) {
            for (int i = 0; i < nu; ++i) {
                const auto place = [&](int k, int n) {
                    const float t = (static_cast<float>(k) + jitter(random)) / (n - 1);
                    return kSize * (0.5f + room * (t - 0.5f));
                };
                const float x = place(i, nu), y = place(j, nv), w = rational ? weight(random) : 1;
                for (const float v : {x * w, y * w, 0.5f * w}) points.push_back(v);
                if (rational) points.push_back(w);
                for (const float v : colorAt(x, y)) colors.push_back(v);
            }
        }
    }
    void expectColorsOfPlaces()
    {
        zebSceneEnd();
        ASSERT_TRUE(reports.empty()) << reports.last().message;
        long seen = 0;
        for (long y = 0; y < 40; ++y) {
            for (long x = 0; x < 40; ++x) {
                if (alpha(x, y) < 1) continue;
                ++seen;
                const Vec c = colorAt(static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f);
                // Within half a pixel: a micropolygon has one colour.
                ASSERT_NEAR(red(x, y), c[0], 0.015) << x << " " << y;
                ASSERT_NEAR(green(x, y), c[1], 0.015) << x << " " << y;
                ASSERT_NEAR(blue(x, y), 0.25, 1e-3) << x << " " << y;
            }
        }
        EXPECT_GT(seen, 800) << "most of the picture is covered";
    }

    std::vector<float> points, colors;
    const unsigned short point = zebQuark("point"), pointw = zebQuark("pointw");
    const unsigned short vertexColor = zebQuark("vertexcolor");
    const unsigned short vertexOpacity = zebQuark("vertexopacity");
};

}  // namespace

TEST_F(VertexColor, FollowsPatchesInEveryBasis)
{
    makeNet(2, 2, false);
    begin();
    zebPatch(ZEB_BILINEAR, point, points.data(), vertexColor, colors.data(), 0);
    expectColorsOfPlaces();
    for (const short basis : {ZEB_BASIS_BEZIER, ZEB_BASIS_BSPLINE, ZEB_BASIS_CATMULL_ROM}) {
        SCOPED_TRACE(basis);
        makeNet(4, 4, false, basis == ZEB_BASIS_BEZIER ? 1.6f : 4.5f);
        begin();
        zebBasis(basis, ZEB_APPLY_BOTH);
        zebPatch(ZEB_BICUBIC, vertexColor, colors.data(), point, points.data(), 0);
        expectColorsOfPlaces();
    }
}

TEST_F(VertexColor, FollowsPatchMeshes)
{
    makeNet(9, 6, false);
    begin();
    zebPatchMesh(ZEB_BILINEAR, 9, ZEB_NONPERIODIC, 6, ZEB_NONPERIODIC, point, points.data(),
                 vertexColor, colors.data(), 0);
    expectColorsOfPlaces();
    makeNet(7, 10, false);
    begin();
    zebPatchMesh(ZEB_BICUBIC, 7, ZEB_NONPERIODIC, 10, ZEB_NONPERIODIC, point, points.data(),
                 vertexColor, colors.data(), 0);
    expectColorsOfPlaces();
    begin();
    zebBasis(ZEB_BASIS_CATMULL_ROM, ZEB_APPLY_U);
    zebBasis(ZEB_BASIS_BSPLINE, ZEB_APPLY_V);
    makeNet(12, 12, false);
    zebPatchMesh(ZEB_BICUBIC, 12, ZEB_NONPERIODIC, 12, ZEB_NONPERIODIC, point, points.data(),
                 vertexColor, colors.data(), 0);
    expectColorsOfPlaces();
}

TEST_F(VertexColor, FollowsNurbsByTheirWeights)
{
    const std::vector<float> knots{0, 0, 0, 0.2f, 0.3f, 0.3f, 0.8f, 1, 1, 1};
    makeNet(7, 7, true);
    begin();
    zebNurbMesh(7, 3, knots.data(), 0.05f, 0.95f, 7, 3, knots.data(), 0, 1, pointw, points.data(),
                vertexColor, colors.data(), 0);
    expectColorsOfPlaces();
    const std::vector<float> single{0, 0, 0, 0, 1, 1, 1, 1};
    makeNet(4, 4, true);
    begin();
    zebNurb(4, single.data(), 0, 1, 4, single.data(), 0, 1, pointw, points.data(), vertexColor,
            colors.data(), 0);
    expectColorsOfPlaces();
    makeNet(7, 7, false);
    begin();
    zebNurbMesh(7, 3, knots.data(), 0, 1, 7, 3, knots.data(), 0, 1, point, points.data(),
                vertexColor, colors.data(), 0);
    expectColorsOfPlaces();
}

TEST_F(VertexColor, OfOpacityAsWell)
{
    makeNet(7, 7, false);
    begin();
    zebPatchMesh(ZEB_BICUBIC, 7, ZEB_NONPERIODIC, 7, ZEB_NONPERIODIC, point, points.data(),
                 vertexOpacity, colors.data(), 0);
    zebSceneEnd();
    ASSERT_TRUE(reports.empty());
    long seen = 0;
    for (long y = 8; y < 32; ++y) {
        for (long x = 8; x < 32; ++x) {
            // White by default: what there is of the colour is the opacity.
            ++seen;
            EXPECT_NEAR(red(x, y), (static_cast<float>(x) + 0.5f) / kSize, 0.015);
            EXPECT_NEAR(green(x, y), (static_cast<float>(y) + 0.5f) / kSize, 0.015);
        }
    }
    EXPECT_EQ(seen, 24 * 24);
}

TEST_F(VertexColor, ComesWithInstancesUnderTheirOwnBases)
{
    makeNet(13, 13, false);
    begin();
    const void* const object = zebObjectBegin();
    zebPatchMesh(ZEB_BICUBIC, 13, ZEB_NONPERIODIC, 13, ZEB_NONPERIODIC, point, points.data(),
                 vertexColor, colors.data(), 0);
    zebObjectEnd();
    zebBasis(ZEB_BASIS_BSPLINE, ZEB_APPLY_BOTH);
    zebObjectCall(object);
    expectColorsOfPlaces();
}

TEST_F(VertexColor, ComesWithInstancesOfSinglePatches)
{
    const std::vector<float> knots{0, 0, 0, 1, 1, 1};
    for (const int n : {2, 3, 4}) {
        SCOPED_TRACE(n);
        makeNet(n, n, n == 3);
        begin();
        const void* const object = zebObjectBegin();
        if (n == 3) {
            zebNurb(3, knots.data(), 0, 1, 3, knots.data(), 0, 1, pointw, points.data(),
                    vertexColor, colors.data(), 0);
        } else {
            zebPatch(n == 2 ? ZEB_BILINEAR : ZEB_BICUBIC, point, points.data(), vertexColor,
                     colors.data(), 0);
        }
        zebObjectEnd();
        zebObjectCall(object);
        expectColorsOfPlaces();
    }
}

TEST_F(VertexColor, GoesBeforeColorAndTheAttribute)
{
    makeNet(4, 4, false);
    const std::vector<float> blue{0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1};
    begin();
    color(1, 1, 1);
    zebPatch(ZEB_BICUBIC, zebQuark("color"), blue.data(), vertexColor, colors.data(), point,
             points.data(), 0);
    expectColorsOfPlaces();
}

TEST_F(VertexColor, OfPolygonsAndQuadricsIsThatOfTheirCorners)
{
    const std::vector<float> corners{2, 2, 0.5f, 38, 3, 0.5f, 37, 38, 0.5f, 1, 35, 0.5f};
    const std::vector<float> four{1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 1, 0};
    const long counts[] = {3, 3}, indices[] = {0, 1, 2, 0, 2, 3};
    const auto draw = [&](const char* name) {
        std::vector<std::vector<std::uint32_t>> pictures;
        const unsigned short token = zebQuark(name);
        const auto end = [&] {
            zebSceneEnd();
            EXPECT_TRUE(reports.empty());
            EXPECT_GT(picture.sum(0), 50);
            pictures.push_back(picture.words());
        };
        begin();
        zebPolygon(4, point, corners.data(), token, four.data(), 0);
        end();
        begin();
        zebPolygonMesh(2, counts, indices, point, corners.data(), token, four.data(), 0);
        end();
        begin();
        const long loop = 4;
        zebGeneralPolygon(1, &loop, point, corners.data(), token, four.data(), 0);
        end();
        begin();
        zebTranslate(20, 20, 0.5f);
        zebScale(1, 1, 0.02f);
        zebRotate(50, 1, 0.5f, 0);
        zebTorus(12, 6, 0, 360, 360, token, four.data(), 0);
        end();
        return pictures;
    };
    EXPECT_EQ(draw("vertexcolor"), draw("color"));
}

TEST_F(VertexColor, TakesAValueAControlPoint)
{
    makeNet(7, 4, false);
    begin();
    zebArray(colors.data(), 27, 0);
    zebPatchMesh(ZEB_BICUBIC, 7, ZEB_NONPERIODIC, 4, ZEB_NONPERIODIC, point, points.data(),
                 vertexColor, colors.data(), 0);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 11);
    EXPECT_TRUE(reports[0].message.ends_with("\"vertexcolor\": 27 elements where 28 are read"));
    zebSceneEnd();
}

}  // namespace zebtest
