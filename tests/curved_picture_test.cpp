// Variables, sides, bounds and instances of curved surfaces, as they show in the picture, and
// surfaces around the eye.

#include <functional>

#include "support/surfaces.h"

namespace zebtest
{

namespace
{

constexpr float kCorners[12] = {1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 1, 1};

// Of the four corners above.
Vec corner(double u, double v)
{
    Vec c{};
    for (std::size_t k = 0; k < 3; ++k) {
        c[k] = static_cast<float>(
            (1 - v) * ((1 - u) * double{kCorners[k]} + u * double{kCorners[3 + k]}) +
            v * ((1 - u) * double{kCorners[6 + k]} + u * double{kCorners[9 + k]}));
    }
    return c;
}

// The plane of 40 x 40 pixels at depth 0.5 as every kind of patch and mesh: x = 40 u, y = 40 v.
struct Plane {
    const char* name;
    std::function<void(const char*, const void*)> add;  // with one more variable
};

std::vector<Vec> plane(int n, int m)
{
    std::vector<Vec> points;
    for (int j = 0; j < m; ++j) {
        for (int i = 0; i < n; ++i) {
            points.push_back({40.0f * static_cast<float>(i) / static_cast<float>(n - 1),
                              40.0f * static_cast<float>(j) / static_cast<float>(m - 1), 0.5f});
        }
    }
    return points;
}

const std::vector<Plane>& planes()
{
    static const float knots[] = {0, 0, 1, 2, 3, 3}, line[] = {0, 0, 1, 1};
    static const std::vector<Plane> all = {
        {"bilinear patch",
         [](const char* name, const void* values) {
             zebPatch(ZEB_BILINEAR, zebQuark("point"), plane(2, 2).data(), zebQuark(name), values,
                      0);
         }},
        {"bicubic patch",
         [](const char* name, const void* values) {
             zebPatch(ZEB_BICUBIC, zebQuark("point"), plane(4, 4).data(), zebQuark(name), values,
                      0);
         }},
        {"bilinear mesh",
         [](const char* name, const void* values) {
             zebPatchMesh(ZEB_BILINEAR, 6, ZEB_NONPERIODIC, 4, ZEB_NONPERIODIC, zebQuark("point"),
                          plane(6, 4).data(), zebQuark(name), values, 0);
         }},
        {"bicubic mesh",
         [](const char* name, const void* values) {
             zebPatchMesh(ZEB_BICUBIC, 10, ZEB_NONPERIODIC, 7, ZEB_NONPERIODIC, zebQuark("point"),
                          plane(10, 7).data(), zebQuark(name), values, 0);
         }},
        {"rational patch",
         [](const char* name, const void* values) {
             zebNurb(2, line, 0, 1, 2, line, 0, 1, zebQuark("point"), plane(2, 2).data(),
                     zebQuark(name), values, 0);
         }},
        {"rational mesh",
         [](const char* name, const void* values) {
             zebNurbMesh(4, 2, knots, 0, 3, 4, 2, knots, 0, 3, zebQuark("point"),
                         plane(4, 4).data(), zebQuark(name), values, 0);
         }},
    };
    return all;
}

}  // namespace

class CurvedPicture : public RasterTest
{
protected:
    void begin()
    {
        zebReset();
        raster(40, 40);
        zebFilter(ZEB_FILTER_BOX);
        zebFilterWidth(1, 1);
        zebSampleUniform(4, 4);
        zebShadingModel(ZEB_SMOOTH);
        beginFlat();
    }

    // The colour in the middle of a pixel.
    void expectColor(long x, long y, const Vec& c, double tolerance) const
    {
        EXPECT_NEAR(red(x, y), c[0], tolerance) << x << ' ' << y;
        EXPECT_NEAR(green(x, y), c[1], tolerance) << x << ' ' << y;
        EXPECT_NEAR(blue(x, y), c[2], tolerance) << x << ' ' << y;
    }
};

TEST_F(CurvedPicture, ColoursOfTheCornersSpreadOverEveryPatchAndMesh)
{
    for (const Plane& p : planes()) {
        SCOPED_TRACE(p.name);
        begin();
        p.add("color", kCorners);
        zebSceneEnd();
        for (long y = 1; y < 40; y += 3) {
            for (long x = 1; x < 40; x += 3) {
                const double u = (static_cast<double>(x) + 0.5) / 40;
                const double v = (static_cast<double>(y) + 0.5) / 40;
                expectColor(x, y, corner(u, v), 0.02);
                EXPECT_EQ(alpha(x, y), 1);
                EXPECT_NEAR(depth(x, y), 0.5f, 1e-6);
            }
        }
        EXPECT_TRUE(reports.empty());
    }
}

TEST_F(CurvedPicture, OpacitiesOfTheCornersSpreadToo)
{
    for (const Plane& p : planes()) {
        SCOPED_TRACE(p.name);
        begin();
        p.add("opacity", kCorners);
        zebSceneEnd();
        // Alpha is the mean of the three.
        for (const long x : {4L, 20L, 35L}) {
            const Vec o = corner((static_cast<double>(x) + 0.5) / 40, 10.5 / 40);
            EXPECT_NEAR(alpha(x, 10), (o[0] + o[1] + o[2]) / 3, 0.02) << x;
        }
    }
}

TEST_F(CurvedPicture, NormalsOfTheCornersTurnTheLight)
{
    const float normals[12] = {0, 0, 1, 0.8f, 0, 0.6f, 0, 0, 1, 0.8f, 0, 0.6f};
    for (const Plane& p : planes()) {
        SCOPED_TRACE(p.name);
        begin();
        const float from[3] = {0, 0, 0}, to[3] = {0, 0, 1};
        zebLightSource(zebQuark("distant"), zebQuark("from"), from, zebQuark("to"), to, 0);
        zebSurface(zebQuark("diffuse"), 0);
        p.add("normal", normals);
        zebSceneEnd();
        for (const long x : {3L, 12L, 25L, 36L}) {
            const double u = (static_cast<double>(x) + 0.5) / 40;
            const double nx = 0.8 * u, nz = 1 - 0.4 * u;
            EXPECT_NEAR(red(x, 20), nz / std::hypot(nx, nz), 0.02) << x;
        }
    }
}

TEST_F(CurvedPicture, UniformVariablesReachTheSurface)
{
    const float ka = 0.25f;
    for (const Plane& p : planes()) {
        SCOPED_TRACE(p.name);
        begin();
        zebLightSource(zebQuark("ambient"), 0);
        zebSurface(zebQuark("diffuse"), 0);
        p.add("ka", &ka);
        zebSceneEnd();
        EXPECT_NEAR(red(7, 31), 0.25f, 1e-4f);
    }
}

TEST_F(CurvedPicture, ColoursOfTheCornersSpreadOverQuadrics)
{
    struct Case {
        const char* name;
        std::function<void(unsigned short)> add;
        std::function<std::array<double, 2>(double, double)> parameters;  // at (x, y)
    };
    const auto turn = [](double x, double y) {
        return std::fmod(std::atan2(y, x) / (2 * M_PI) + 1, 1.0);
    };
    // Each is seen along the z axis, from where z is small: x and y are raster coordinates from the
    // centre, in units of the radius.
    const std::vector<Case> cases = {
        {"disk", [](unsigned short t) { zebDisk(0, 1, 360, t, kCorners, 0); },
         [&](double x, double y) {
             return std::array{turn(x, y), 1 - std::hypot(x, y)};
         }},
        {"cone", [](unsigned short t) { zebCone(1, 1, 1, 360, t, kCorners, 0); },
         [&](double x, double y) {
             return std::array{turn(x, y), 1 - std::hypot(x, y)};
         }},
        {"sphere", [](unsigned short t) { zebSphere(1, -1, 0, 360, t, kCorners, 0); },
         [&](double x, double y) {
             const double phi = -std::acos(std::hypot(x, y));
             return std::array{turn(x, y), 1 + phi / (M_PI / 2)};
         }},
        {"paraboloid", [](unsigned short t) { zebParaboloid(1, 0, 1, 360, t, kCorners, 0); },
         [&](double x, double y) {
             return std::array{turn(x, y), x * x + y * y};
         }},
        {"hyperboloid",
         [](unsigned short t) {
             const float p[3] = {1, 0, 0}, q[3] = {0.2f, 0, 0.5f};
             zebHyperboloid(p, q, 360, t, kCorners, 0);
         },
         [&](double x, double y) {
             return std::array{turn(x, y), (1 - std::hypot(x, y)) / 0.8};
         }},
        {"torus", [](unsigned short t) { zebTorus(0.6f, 0.4f, 180, 360, 360, t, kCorners, 0); },
         [&](double x, double y) {
             return std::array{turn(x, y), std::acos((0.6 - std::hypot(x, y)) / 0.4) / M_PI};
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        begin();
        zebTranslate(20, 20, 0.5f);
        zebScale(19, 19, 0.4f);
        c.add(zebQuark("color"));
        zebSceneEnd();
        for (const double angle : {20.0, 80.0, 140.0, 200.0, 320.0}) {
            for (const double r : {0.35, 0.5, 0.8}) {
                const double a = angle * M_PI / 180;
                const auto px = static_cast<long>(20 + 19 * r * std::cos(a));
                const auto py = static_cast<long>(20 + 19 * r * std::sin(a));
                const double x = (static_cast<double>(px) + 0.5 - 20) / 19;
                const double y = (static_cast<double>(py) + 0.5 - 20) / 19;
                const auto [u, v] = c.parameters(x, y);
                expectColor(px, py, corner(u, v), 0.045);
            }
        }
    }
}

TEST_F(CurvedPicture, ColoursOfTheCornersSpreadOverACylinder)
{
    begin();
    zebTranslate(20, 20, 0.5f);
    zebRotate(-90, 1, 0, 0);
    zebScale(18, 0.4f, 18);
    // Half a turn from x = 1 to x = -1 on the side of y, which became -z.
    zebCylinder(1, -1, 1, 180, zebQuark("color"), kCorners, 0);
    zebSceneEnd();
    for (const long px : {6L, 15L, 20L, 27L, 34L}) {
        for (const long py : {5L, 19L, 34L}) {
            const double x = (static_cast<double>(px) + 0.5 - 20) / 18;
            const double y = (static_cast<double>(py) + 0.5 - 20) / 18;
            expectColor(px, py, corner(std::acos(x) / M_PI, (1 + y) / 2), 0.03);
        }
    }
}

TEST_F(CurvedPicture, AnInstanceKeepsItsPlaceUnlessQuirksAreKept)
{
    for (const short quirks : {0, 1}) {
        begin();
        zebSceneEnd();
        zebReset();
        raster(40, 40);
        zebQuirks(quirks);
        beginFlat();
        const void* ball = zebObjectBegin();
        zebSphere(5, -5, 5, 360, 0);
        zebObjectEnd();
        for (const float x : {10.0f, 30.0f}) {
            zebMatrixPush();
            zebTranslate(x, 20, 0.5f);
            zebScale(1, 1, 0.02f);
            zebObjectCall(ball);
            zebMatrixPop();
        }
        zebSceneEnd();
        EXPECT_EQ(alpha(10, 20), quirks ? 0 : 1) << "the last call decides for all";
        EXPECT_EQ(alpha(30, 20), 1);
    }
}

TEST_F(CurvedPicture, EveryKindOfPatchCanBeInstanced)
{
    for (const Plane& p : planes()) {
        for (const short quirks : {0, 1}) {
            SCOPED_TRACE(testing::Message() << p.name << ' ' << quirks);
            zebReset();
            raster(40, 40);
            zebQuirks(quirks);
            beginFlat();
            const void* object = zebObjectBegin();
            p.add("color", kCorners);
            zebObjectEnd();
            zebObjectCall(object);
            zebSceneEnd();
            const bool single = std::string(p.name).find("patch") != std::string::npos;
            EXPECT_EQ(alpha(20, 20), quirks && single ? 0 : 1)
                << "single patches lose their points";
        }
    }
}

// Bases are attributes: an instance takes those in force where it is called.
TEST_F(CurvedPicture, AnInstanceIsDrawnInTheBasisOfItsCall)
{
    for (const bool bezier : {false, true}) {
        zebReset();
        raster(40, 40);
        beginFlat();
        zebBasis(ZEB_BASIS_BSPLINE, ZEB_APPLY_BOTH);
        const void* object = zebObjectBegin();
        zebPatchMesh(ZEB_BICUBIC, 4, ZEB_NONPERIODIC, 4, ZEB_NONPERIODIC, zebQuark("point"),
                     plane(4, 4).data(), 0);
        zebObjectEnd();
        if (bezier) zebBasis(ZEB_BASIS_BEZIER, ZEB_APPLY_BOTH);
        zebObjectCall(object);
        zebSceneEnd();
        EXPECT_EQ(alpha(20, 20), 1);
        EXPECT_EQ(alpha(5, 5), bezier ? 1 : 0) << "a B-spline covers the middle third";
    }
}

// A box in object space: what lies wholly outside it is not drawn, whatever the weights.
TEST_F(CurvedPicture, TheBoundClipsWholePieces)
{
    for (const bool spline : {false, true}) {
        begin();
        const float half[6] = {-20, -1, -20, 20, -20, 20};
        zebTranslate(20, 20, 0.5f);
        zebScale(1, 1, 0.02f);
        zebBound(half);
        if (spline) {
            nurbsSphere(15).add();
        } else {
            zebSphere(15, -15, 15, 360, 0);
        }
        zebSceneEnd();
        EXPECT_EQ(alpha(10, 20), 1);
        EXPECT_EQ(alpha(33, 20), 0);
    }
}

class CurvedEye : public testing::Test
{
protected:
    ~CurvedEye() override { zebReset(); }

    void begin(long width = 48, long height = 36, float unit = 1)
    {
        zebReset();
        zebRasterViewport(0, width, 0, height);
        zebViewPerspective(60);
        zebClip(0.01f * unit, 100 * unit);
        zebOutputSamples(ZEB_SAMPLES_RGBAZ);
        zebFilter(ZEB_FILTER_BOX);
        zebFilterWidth(1, 1);
        picture.attachFloat();
        zebSceneBegin();
        zebSurface(zebQuark("constant"), 0);
    }

    Picture picture{5};
    Reports reports;
};

TEST_F(CurvedEye, TheOutsideIsWhereNormalsPoint)
{
    const std::vector<std::pair<std::string, std::function<void()>>> shapes = {
        {"sphere", [] { zebSphere(1, -1, 1, 360, 0); }},
        {"negative radius", [] { zebSphere(-1, -1, 1, 360, 0); }},
        {"negative sweep", [] { zebSphere(1, -1, 1, -360, 0); }},
        {"torus", [] { zebTorus(0.6f, 0.4f, 0, 360, 360, 0); }},
        {"spline", [] { nurbsSphere(1).add(); }},
    };
    for (const bool mirrored : {false, true}) {
        for (const auto& [name, add] : shapes) {
            // What faces the eye of a closed surface is its near half, all else its far half; it is
            // the other way round where the parametrization is mirrored.
            for (const short orientation : {ZEB_OUTSIDE, ZEB_INSIDE}) {
                SCOPED_TRACE(testing::Message() << name << ' ' << mirrored << ' ' << orientation);
                begin();
                zebTranslate(0.5f, 0.3f, 5);
                zebScale(mirrored ? -1 : 1, 1, 1);
                zebBackface(1);
                zebOrientation(orientation);
                add();
                zebSceneEnd();
                const double z = double{picture.value(24, 18, 4)} * (100 - 0.01) + 0.01;
                const bool near = (orientation == ZEB_OUTSIDE) != (name.rfind("negative", 0) == 0);
                EXPECT_EQ(picture.value(24, 18, 3), 1);
                EXPECT_EQ(z < 5, near) << z;
            }
        }
    }
}

// All kinds of patches agree on which of their sides is the outside; these turn it away.
TEST_F(CurvedEye, PatchesFaceTheSameWay)
{
    for (const Plane& p : planes()) {
        for (const short orientation : {ZEB_OUTSIDE, ZEB_INSIDE}) {
            SCOPED_TRACE(testing::Message() << p.name << ' ' << orientation);
            begin();
            zebTranslate(-1, -1, 5);
            zebScale(0.05f, 0.05f, 1);
            zebBackface(1);
            zebOrientation(orientation);
            p.add("color", kCorners);
            zebSceneEnd();
            EXPECT_EQ(picture.value(24, 18, 3), orientation == ZEB_OUTSIDE ? 0 : 1);
        }
    }
}

TEST_F(CurvedEye, FromInsideAClosedSurfaceThereIsNoWayOut)
{
    const std::vector<std::function<void()>> shapes = {
        [] { zebSphere(2, -2, 2, 360, 0); },
        [] { nurbsSphere(2).add(); },
        [] { zebTorus(0, 2, -90, 90, 360, 0); },
    };
    for (const auto& add : shapes) {
        begin(120, 90);
        zebRotate(35, 1, 2, 0.5f);
        add();
        zebSceneEnd();
        EXPECT_GT(picture.sum(3), 0.9999 * 120 * 90);
        EXPECT_TRUE(reports.empty());
    }
}

TEST_F(CurvedEye, TheWallOfASphereIsItsRadiusAway)
{
    begin();
    zebSphere(2, -2, 2, 360, 0);
    zebSceneEnd();
    for (long y = 3; y < 36; y += 5) {
        for (long x = 3; x < 48; x += 5) {
            const double t = std::tan(M_PI / 6) / 18;
            const double dx = (static_cast<double>(x) + 0.5 - 24) * t,
                         dy = (static_cast<double>(y) + 0.5 - 18) * t;
            const double z = 2 / std::sqrt(1 + dx * dx + dy * dy);
            EXPECT_NEAR(picture.value(x, y, 4) * (100 - 0.01), z - 0.01, 0.02) << x << ' ' << y;
        }
    }
}

// Bounds of sampled surfaces have room around them that is measured in units; small scenes must not
// notice.
TEST_F(CurvedEye, TheUnitsMakeNoDifference)
{
    const std::vector<Vec> points = plane(4, 4);
    const float knots[] = {0, 0, 0, 0, 1, 1, 1, 1};
    const std::vector<std::function<void()>> shapes = {
        [&] { zebPatch(ZEB_BICUBIC, zebQuark("point"), points.data(), 0); },
        [&] {
            zebPatchMesh(ZEB_BILINEAR, 4, ZEB_NONPERIODIC, 4, ZEB_NONPERIODIC, zebQuark("point"),
                         points.data(), 0);
        },
        [&] { zebNurb(4, knots, 0, 1, 4, knots, 0, 1, zebQuark("point"), points.data(), 0); },
        [] { nurbsSphere(15).add(); },
    };
    for (const auto& add : shapes) {
        double first = 0;
        for (const float unit : {1.0f, 1e-3f, 1e-6f, 1e3f}) {
            SCOPED_TRACE(unit);
            begin(48, 36, unit);
            zebTranslate(0, 0, 3 * unit);
            zebRotate(40, 1, 0.3f, 0);
            zebScale(0.04f * unit, 0.04f * unit, 0.04f * unit);
            add();
            zebSceneEnd();
            if (first == 0) first = picture.sum(3);
            EXPECT_GT(first, 50);
            EXPECT_NEAR(picture.sum(3), first, 0.002 * first);
            EXPECT_TRUE(reports.empty());
        }
    }
}

// Every family through the eye, behind it, collapsed and of absurd sizes: ended with a picture, or
// with one report.
TEST_F(CurvedEye, NothingHangsOrCrashes)
{
#ifdef ZEB_SANITIZED
    const std::vector<float> sizes = {0.0f, 1.0f, 1e30f};  // each takes tens of seconds
#else
    const std::vector<float> sizes = {0.0f, 1e-30f, 1e-6f, 1.0f, 1e6f, 1e30f};
#endif
    for (const float size : sizes) {
        std::vector<Vec> points(16);
        for (std::size_t k = 0; k < 16; ++k) {
            points[k] = {size * (static_cast<float>(k % 4) - 1.5f),
                         size * (static_cast<float>(k / 4) - 1.5f),
                         size * (static_cast<float>(k * 7 % 5) - 2)};
        }
        const float p[3] = {size, size, -size}, q[3] = {size, -size, size};
        const float knots[] = {0, 0, 0, 1, 2, 2, 2};
        std::vector<std::array<float, 4>> weighted;
        for (const Vec& v : points) {
            const float w = v[0] > 0 ? 100.0f : 0.01f;
            weighted.push_back({v[0] * w, v[1] * w, v[2] * w, w});
        }
        const std::vector<std::function<void()>> shapes = {
            [=] { zebSphere(size, -size, size, 360, 0); },
            [=] { zebCone(size, size, size, 360, 0); },
            [=] { zebCylinder(size, -size, size, 360, 0); },
            [=] { zebHyperboloid(p, q, 360, 0); },
            [=] { zebParaboloid(size, 0, size, 360, 0); },
            [=] { zebDisk(0, size, 360, 0); },
            [=] { zebTorus(size, size / 2, 0, 360, 360, 0); },
            [&] { zebPatch(ZEB_BILINEAR, zebQuark("point"), points.data(), 0); },
            [&] { zebPatch(ZEB_BICUBIC, zebQuark("point"), points.data(), 0); },
            [&] {
                zebPatchMesh(ZEB_BILINEAR, 4, ZEB_PERIODIC, 4, ZEB_PERIODIC, zebQuark("point"),
                             points.data(), 0);
            },
            [&] {
                zebNurbMesh(4, 3, knots, 0, 2, 4, 3, knots, 0, 2, zebQuark("pointw"),
                            weighted.data(), 0);
            },
        };
        for (std::size_t k = 0; k < shapes.size(); ++k) {
            for (const float z : {-3.0f, 0.0f, 0.3f, 3.0f}) {
                SCOPED_TRACE(testing::Message() << "shape " << k << " size " << size << " z " << z);
                reports.clear();
                begin();
                zebTranslate(0.1f, 0.05f, z);
                shapes[k]();
                zebSceneEnd();
                EXPECT_LE(reports.size(), 1u);
            }
        }
    }
}

}  // namespace zebtest
