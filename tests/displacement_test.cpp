// Surfaces that functions of the host's move before they are seen.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/families.h"
#include "support/plain.h"
#include "support/reports.h"
#include "support/row.h"
#include "support/scene.h"

namespace zebtest
{

namespace
{

using Words = std::vector<std::uint32_t>;
using Scene = std::function<void()>;
using Move = std::function<Vec(const Vec&)>;

constexpr float kDistance = 5;  // of the world's origin from the eye
constexpr float kHalf = 1.6f;   // of the screen window's width

Vec operator+(const Vec& a, const Vec& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
Vec operator*(float s, const Vec& a) { return {s * a[0], s * a[1], s * a[2]}; }
Vec unit(const Vec& a) { return static_cast<float>(1 / std::sqrt(dot(a, a))) * a; }
Vec at(float* const* planes, long k) { return {planes[0][k], planes[1][k], planes[2][k]}; }
void put(float* const* planes, long k, const Vec& value)
{
    for (std::size_t c = 0; c < 3; ++c) planes[c][k] = value[c];
}
// Of a row, seen from the world's origin.
Vec place(const ZebRow* row, long k) { return at(row->P, k) - Vec{0, 0, kDistance}; }

void displacement(const std::function<void(ZebRow*)>& function, long flags = ZEB_SHADE_ANYWHERE)
{
    const ZebShader made = shader(function, flags);
    zebCustomDisplacement(&made);
}

// Moves points by what a function says of their places.
void moveBy(const Move& by, float bound, long flags = ZEB_SHADE_ANYWHERE)
{
    zebBoundDisplacement(bound);
    displacement(
        [by](ZebRow* row) {
            for (long k = 0; k < row->count; ++k) {
                put(row->P, k, at(row->P, k) + by(place(row, k)));
            }
        },
        flags);
}

// The same along the normal.
void swell(const std::function<float(const Vec&)>& by, float bound)
{
    zebBoundDisplacement(bound);
    displacement([by](ZebRow* row) {
        for (long k = 0; k < row->count; ++k) {
            const Vec p = at(row->P, k);
            put(row->P, k, p + by(place(row, k)) * unit(at(row->N, k)));
        }
    });
}

// Shows N as the colour.
void showN()
{
    surface(
        [](ZebRow* row) {
            for (long k = 0; k < row->count; ++k) put(row->Ci, k, unit(at(row->N, k)));
        },
        ZEB_SHADE_ANYWHERE);
}

class Displacement : public testing::Test
{
protected:
    Displacement() { zebReset(); }
    ~Displacement() override { zebReset(); }

    // One sample in the middle of each pixel, without perspective: colours, alpha, depth.
    void render(
        const Scene& scene, const Scene& options = [] {})
    {
        zebFrameBegin();
        zebRasterViewport(0, 64, 0, 64);
        zebImageWindow(-kHalf, kHalf, -kHalf, kHalf);
        zebOutputSamples(ZEB_SAMPLES_RGBAZ);
        picture.attachFloat();
        zebQuirks(0);
        zebClip(1, 9);
        zebSampleUniform(1, 1);
        zebSampleJitter(0);
        zebFilter(ZEB_FILTER_BOX);
        zebFilterWidth(1, 1);
        options();
        zebTranslate(0, 0, kDistance);
        zebSceneBegin();
        zebShadingModel(ZEB_SMOOTH);
        scene();
        zebSceneEnd();
        zebFrameEnd();
    }
    Words words(
        const Scene& scene, const Scene& options = [] {})
    {
        render(scene, options);
        return picture.words();
    }
    // Calls visit(x, y, column, row) for all pixels: their middles in the scene, and their numbers.
    template <class Visit>
    void everywhere(const Visit& visit) const
    {
        const double pixel = 2 * double{kHalf} / 64;
        for (long j = 0; j < 64; ++j) {
            for (long i = 0; i < 64; ++i) {
                visit((static_cast<double>(i) - 31.5) * pixel,
                      (31.5 - static_cast<double>(j)) * pixel, i, j);
            }
        }
    }
    bool shown(long i, long j) const { return picture.value(i, j, 3) > 0; }
    // From the world's origin.
    double depth(long i, long j) const
    {
        return 1 + 8 * double{picture.value(i, j, 4)} - double{kDistance};
    }
    Vec color(long i, long j) const
    {
        return {picture.value(i, j, 0), picture.value(i, j, 1), picture.value(i, j, 2)};
    }
    // The surface f = 0 shows, seen from where f is above 0, with the normals along its gradient;
    // pixels that it touches at a flat angle may show anything.
    void expectSurface(const std::function<double(double, double, double)>& f, double tolerance,
                       double turned)
    {
        long seen = 0, empty = 0;
        everywhere([&](double x, double y, long i, long j) {
            const double h = 1e-4;
            double z = -2;
            while (z < 2 && f(x, y, z) > 0) z += 0.01;
            if (z >= 2) {
                double least = 1;
                for (z = -2; z < 2; z += 0.01) least = std::min(least, f(x, y, z));
                if (least < 0.05) return;
                ++empty;
                EXPECT_FALSE(shown(i, j)) << i << ' ' << j;
                return;
            }
            double low = z - 0.01, high = z;
            for (int k = 0; k < 40; ++k) {
                const double middle = (low + high) / 2;
                (f(x, y, middle) > 0 ? low : high) = middle;
            }
            const Vec gradient = {
                static_cast<float>((f(x + h, y, low) - f(x - h, y, low)) / (2 * h)),
                static_cast<float>((f(x, y + h, low) - f(x, y - h, low)) / (2 * h)),
                static_cast<float>((f(x, y, low + h) - f(x, y, low - h)) / (2 * h))};
            const Vec n = unit(gradient);
            if (n[2] > -0.35f) return;
            ++seen;
            ASSERT_TRUE(shown(i, j)) << i << ' ' << j;
            EXPECT_NEAR(depth(i, j), low, tolerance) << i << ' ' << j;
            EXPECT_GT(std::fabs(dot(unit(color(i, j)), n)), 1 - turned) << i << ' ' << j;
        });
        EXPECT_GT(seen, 500);
        EXPECT_GT(empty, 100);
    }

    Picture picture{5};
    Reports reports;
};

// The axis of what is turned lies across the view.
void turnUp() { zebRotate(-90, 1, 0, 0); }

TEST_F(Displacement, MovesASphereAlongItsNormalsToALargerOne)
{
    for (const bool nurbs : {false, true}) {
        render([&] {
            turnUp();
            zebRotate(40, 0, 0, 1);
            swell([](const Vec&) { return 0.3f; }, 0.3f);
            showN();
            if (nurbs) {
                nurbsSphere(1).add();
            } else {
                zebSphere(1, -1, 1, 360, 0);
            }
        });
        expectSurface(
            [](double x, double y, double z) { return std::sqrt(x * x + y * y + z * z) - 1.3; },
            2e-3, 1e-4);
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(Displacement, HasTheNormalsOfPoles)
{
    for (const float pole : {1.0f, -1.0f}) {
        for (const float by : {0.0f, 0.3f}) {
            render([&] {
                zebRotate(pole > 0 ? 20 : 200, 1, 0.3f, 0);
                swell([by](const Vec&) { return by; }, 0.3f);
                showN();
                zebSphere(1, -1, 1, 360, 0);
            });
            expectSurface(
                [by](double x, double y, double z) {
                    return std::sqrt(x * x + y * y + z * z) - 1 - double{by};
                },
                2e-3, 1e-3);
        }
    }
}

// Whatever its family: all are the same flat square.
TEST_F(Displacement, BendsSquaresToBowls)
{
    static const std::vector<Vec> corners = {{-1, -1, 0}, {1, -1, 0}, {-1, 1, 0}, {1, 1, 0}};
    static const std::vector<Vec> around = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    std::vector<Vec> points;
    for (int k = 0; k < 16; ++k) {
        points.push_back({static_cast<float>(k % 4) / 1.5f - 1,
                          static_cast<float>(k / 4) / 1.5f - 1, 0});  // NOLINT
    }
    const std::vector<float> knots = {0, 0, 0, 0, 1, 1, 1, 1};
    const long size = 4, order[4] = {0, 1, 3, 2};
    const unsigned short point = zebQuark("point");
    const std::vector<Scene> squares = {
        [&] { zebPolygon(4, point, around.data(), 0); },
        [&] { zebGeneralPolygon(1, &size, point, around.data(), 0); },
        [&] { zebPolygonMesh(1, &size, order, point, corners.data(), 0); },
        [&] { zebPatch(ZEB_BILINEAR, point, corners.data(), 0); },
        [&] { zebPatch(ZEB_BICUBIC, point, points.data(), 0); },
        [&] {
            zebPatchMesh(ZEB_BILINEAR, 4, ZEB_NONPERIODIC, 4, ZEB_NONPERIODIC, point, points.data(),
                         0);
        },
        [&] { zebNurb(4, knots.data(), 0, 1, 4, knots.data(), 0, 1, point, points.data(), 0); }};
    for (const Scene& square : squares) {
        const std::string which = "square " + std::to_string(&square - squares.data());
        SCOPED_TRACE(which);
        render([&] {
            moveBy(
                [](const Vec& p) {
                    return Vec{0, 0, 0.4f * (p[0] * p[0] + p[1] * p[1]) - 0.3f * p[0]};
                },
                1.5f);
            showN();
            square();
        });
        long seen = 0;
        everywhere([&](double x, double y, long i, long j) {
            if (std::fabs(std::fabs(x) - 1) < 0.01 || std::fabs(std::fabs(y) - 1) < 0.01) return;
            const bool within = std::fabs(x) < 1 && std::fabs(y) < 1;
            ASSERT_EQ(shown(i, j), within) << i << ' ' << j;
            if (!within) return;
            ++seen;
            EXPECT_NEAR(depth(i, j), 0.4 * (x * x + y * y) - 0.3 * x, 2e-4) << i << ' ' << j;
            const Vec n =
                unit({static_cast<float>(0.8 * x - 0.3), static_cast<float>(0.8 * y), -1});
            EXPECT_GT(std::fabs(dot(unit(color(i, j)), n)), 1 - 1e-5) << i << ' ' << j;
        });
        EXPECT_GT(seen, 1000);
    }
    EXPECT_TRUE(reports.empty());
}

double lumps(double x, double y, double z)
{
    const double r = std::sqrt(x * x + y * y + z * z);
    return 0.25 * (x * x - y * y) * z / (r * r * r) + 0.15 * std::sin(5 * x / r);
}

TEST_F(Displacement, GivesSpheresLumps)
{
    render([&] {
        turnUp();
        zebRotate(25, 0, 0, 1);
        moveBy([](const Vec& p) { return static_cast<float>(lumps(p[0], p[1], p[2])) * unit(p); },
               0.5f);
        showN();
        zebSphere(1, -1, 1, 360, 0);
    });
    expectSurface([](double x, double y,
                     double z) { return std::sqrt(x * x + y * y + z * z) - 1 - lumps(x, y, z); },
                  5e-3, 2e-3);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Displacement, FlutesCylindersByTheirParameters)
{
    render([&] {
        turnUp();
        zebBoundDisplacement(0.2f);
        displacement([](ZebRow* row) {
            for (long k = 0; k < row->count; ++k) {
                const double by = 0.1 * std::cos(2 * M_PI * 7 * double{row->u[k]});
                put(row->P, k, at(row->P, k) + static_cast<float>(by) * unit(at(row->N, k)));
            }
        });
        showN();
        zebCylinder(1, -1.2f, 1.2f, 360, 0);
    });
    // Turned up, the angle u goes from +x to -z.
    expectSurface(
        [](double x, double y, double z) {
            const double side = std::hypot(x, z) - 1 - 0.1 * std::cos(7 * std::atan2(-z, x));
            return std::max(side, std::fabs(y) - 1.2);
        },
        1e-2, 3e-3);
    EXPECT_TRUE(reports.empty());
}

// Parameters and colours stay with the points.
TEST_F(Displacement, CarriesAlongWhatBelongsToThePoints)
{
    render([&] {
        moveBy([](const Vec& p) { return Vec{0.5f * p[1], 0.25f, -1}; }, 2);
        surface([](ZebRow* row) {
            for (long k = 0; k < row->count; ++k) {
                put(row->Ci, k, {row->u[k], row->v[k], row->s[k] * row->t[k]});
            }
        });
        const float corners[12] = {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0};
        zebPolygon(4, zebQuark("point"), corners, 0);
    });
    long seen = 0;
    everywhere([&](double x, double y, long i, long j) {
        const double v = y - 0.25, u = x - 0.5 * v;
        if (std::fabs(u) > 0.98 || std::fabs(v) > 0.98) return;
        ++seen;
        EXPECT_NEAR(depth(i, j), -1, 1e-5);
        EXPECT_NEAR(color(i, j)[0], u, 1e-4);
        EXPECT_NEAR(color(i, j)[1], v, 1e-4);
        EXPECT_NEAR(color(i, j)[2], u * v, 1e-3);
    });
    EXPECT_GT(seen, 1000);
}

// A square that turns about the y axis, by being moved.
void turnSquare(double angle)
{
    moveBy(
        [angle](const Vec& p) {
            const double x = p[0], c = std::cos(angle), s = std::sin(angle);
            return Vec{static_cast<float>(c * x - x), 0, static_cast<float>(s * x)};
        },
        2);
}

TEST_F(Displacement, TurnsNormalsThatAreGivenAsFarAsTheSurface)
{
    const float corners[12] = {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0};
    const Vec given = unit({0.3f, 0.4f, 1});
    const Vec normals[4] = {given, given, given, given};
    for (const double angle : {0.0, 0.5, -0.9}) {
        render([&] {
            turnSquare(angle);
            showN();
            zebPolygon(4, zebQuark("point"), corners, zebQuark("normal"), normals, 0);
        });
        const auto c = static_cast<float>(std::cos(angle)), s = static_cast<float>(std::sin(angle));
        const Vec turned = {c * given[0] - s * given[2], given[1], s * given[0] + c * given[2]};
        long seen = 0;
        everywhere([&](double x, double y, long i, long j) {
            if (std::fabs(x) > 0.9 * double{c} || std::fabs(y) > 0.9) return;
            ++seen;
            EXPECT_NEAR(dot(color(i, j), turned), 1, 1e-4) << i << ' ' << j;
        });
        EXPECT_GT(seen, 500);
    }
}

// What a surface's function finds is one thing: places, derivatives and normals agree.
TEST_F(Displacement, GivesSurfacesDerivativesOfWhatWasMoved)
{
    long points = 0, onChords = 0;
    render([&] {
        turnUp();
        moveBy([](const Vec& p) { return static_cast<float>(lumps(p[0], p[1], p[2])) * unit(p); },
               0.5f);
        surface([&](ZebRow* row) {
            for (long k = 0; k < row->count; ++k) {
                const Vec n = unit(at(row->Ng, k)), p = place(row, k);
                if (std::fabs(p[1]) > 0.9f) continue;
                ++points;
                EXPECT_NEAR(dot(unit(at(row->dPdu, k)), n), 0, 1e-3);
                EXPECT_NEAR(dot(unit(at(row->dPdv, k)), n), 0, 1e-3);
                const double r = std::sqrt(dot(p, p));
                // At sides of grids some lie between others that are a micropolygon apart.
                const double beside = std::fabs(r - 1 - lumps(p[0], p[1], p[2]));
                EXPECT_LT(beside, 5e-3);
                if (beside > 1e-4) ++onChords;
                // Round the axis: dP/du = (2 pi) (axis x P + what the lumps add).
                const double angle = 2 * M_PI * double{row->u[k]}, h = 1e-4;
                const double ring = std::sqrt(1 - double{p[1]} * p[1] / (r * r));
                const auto around = [&](double a) {
                    const double x = ring * std::cos(a), z = -ring * std::sin(a);
                    const double y = p[1] / r, size = 1 + lumps(x, y, z);
                    return std::array{size * x, size * y, size * z};
                };
                const auto ahead = around(angle + h), behind = around(angle - h);
                for (std::size_t c = 0; c < 3; ++c) {
                    const double slope = 2 * M_PI * (ahead[c] - behind[c]) / (2 * h);
                    EXPECT_NEAR(row->dPdu[c][k], slope, 0.05) << row->u[k] << ' ' << row->v[k];
                }
            }
        });
        zebSphere(1, -1, 1, 360, 0);
    });
    EXPECT_GT(points, 1000);
    EXPECT_LT(onChords, points / 10);
}

// A surface in front of, or around, something that nobody shall see.
struct Cover {
    std::string name;
    Scene add, hidden;
    float reach;  // how far it may be moved
    float tilt;   // how far it may be tilted, in degrees
};

void ball(float radius, float z = 0)
{
    zebMatrixPush();
    zebTranslate(0, 0, z);
    zebSphere(radius, -radius, radius, 360, 0);
    zebMatrixPop();
}

void board(float x0, float y0, float x1, float y1, float z)
{
    polygon({{x0, y0, z}, {x1, y0, z}, {x1, y1, z}, {x0, y1, z}});
}

// A sheet of 3 x 3 squares, with the same normal at all vertices.
void addFaces(bool general)
{
    std::vector<Vec> points, normals;
    std::vector<long> sizes, indices, loops;
    for (int k = 0; k < 16; ++k) {
        points.push_back(
            {static_cast<float>(k % 4) / 1.5f - 1, static_cast<float>(k / 4) / 1.5f - 1, 0});
        normals.push_back({0, 0, 1});
    }
    for (long k = 0; k < 9; ++k) {
        const long a = k / 3 * 4 + k % 3;
        indices.insert(indices.end(), {a, a + 1, a + 5, a + 4});
        sizes.push_back(4);
        loops.push_back(1);
    }
    const unsigned short point = zebQuark("point"), normal = zebQuark("normal");
    if (general) {
        zebGeneralPolygonMesh(9, loops.data(), sizes.data(), indices.data(), point, points.data(),
                              normal, normals.data(), 0);
    } else {
        zebPolygonMesh(9, sizes.data(), indices.data(), point, points.data(), normal,
                       normals.data(), 0);
    }
}

// A sheet of n x n squares in two triangles each, which meet anywhere; every second square is
// narrower, to this part of it.
void addTriangles(long n, float width)
{
    std::mt19937 random(5);
    const auto astray = [&] { return 0.35f * (static_cast<float>(random() % 1000) / 500 - 1); };
    const auto place = [n](float k) { return 2 * k / static_cast<float>(n) - 1; };
    std::vector<Vec> points, normals;
    for (long j = 0; j <= n; ++j) {
        for (long i = 0; i <= n; ++i) {
            const bool isEdge = i == 0 || j == 0 || i == n || j == n;
            const float x = isEdge ? 0 : astray(), y = isEdge ? 0 : astray();
            const float narrow = i % 2 ? 1 - width : 0;
            points.push_back({place(static_cast<float>(i) + narrow + width * x),
                              place(static_cast<float>(j) + y), 0});
            normals.push_back({0, 0, 1});
        }
    }
    std::vector<long> corners;
    for (long j = 0; j < n; ++j) {
        for (long i = 0; i < n; ++i) {
            const long a = j * (n + 1) + i, b = a + 1, c = a + n + 1, d = c + 1;
            if (random() % 2) {
                corners.insert(corners.end(), {a, b, d, a, d, c});
            } else {
                corners.insert(corners.end(), {a, b, c, b, d, c});
            }
        }
    }
    const std::vector<long> sizes(corners.size() / 3, 3);
    zebPolygonMesh(static_cast<long>(sizes.size()), sizes.data(), corners.data(), zebQuark("point"),
                   points.data(), zebQuark("normal"), normals.data(), 0);
}

const Scene& family(const std::string& name)
{
    static std::map<std::string, Scene> scenes;
    for (const Family& f : families()) scenes[f.name] = [&f] { f.add(1); };
    return scenes.at(name);
}

const std::vector<Cover>& covers()
{
    static const Scene behind = [] { board(-0.4f, -0.4f, 0.4f, 0.4f, 0.9f); };
    static const std::vector<Cover> list = {
        {"sphere", [] { zebSphere(1, -1, 1, 360, 0); }, [] { ball(0.5f); }, 0.45f, 180},
        {"NURBS sphere", [] { nurbsSphere(1).add(); }, [] { ball(0.5f); }, 0.45f, 180},
        {"torus", [] { zebTorus(0.7f, 0.3f, 0, 360, 360, 0); },
         [] { zebTorus(0.7f, 0.1f, 0, 360, 360, 0); }, 0.15f, 180},
        {"NURBS torus", family("NURBS"), [] { zebTorus(0.7f, 0.1f, 0, 360, 360, 0); }, 0.15f, 180},
        {"patch mesh", family("patch mesh"), [] { zebTorus(0.63f, 0.05f, 0, 360, 360, 0); }, 0.08f,
         180},
        {"cube", family("polygon mesh"), [] { ball(0.25f); }, 0.3f, 180},
        {"cone",
         [] {
             turnUp();
             zebTranslate(0, 0, -0.8f);
             zebCone(1, 1.8f, 1.8f, 360, 0);
         },
         [] {
             turnUp();
             ball(0.2f, -0.2f);
         },
         0.2f, 15},
        {"cylinder",
         [] {
             turnUp();
             zebCylinder(0.8f, -1.2f, 1.2f, 360, 0);
         },
         [] {
             turnUp();
             ball(0.3f);
         },
         0.3f, 15},
        {"hyperboloid",
         [] {
             turnUp();
             const float a[3] = {0.7f, -0.5f, -1.2f}, b[3] = {0.7f, 0.5f, 1.2f};
             zebHyperboloid(a, b, 360, 0);
         },
         [] {
             turnUp();
             ball(0.25f);
         },
         0.3f, 15},
        {"paraboloid",
         [] {
             turnUp();
             zebTranslate(0, 0, -1);
             zebParaboloid(1, 0, 2, 360, 0);
         },
         [] {
             turnUp();
             ball(0.2f, 0.2f);
         },
         0.3f, 15},
        {"disk", [] { zebDisk(0, 1.2f, 360, 0); }, behind, 0.3f, 12},
        {"bilinear patch",
         [] {
             const float p[12] = {-1, -1, 0.1f, 1, -1, -0.2f, -1, 1, -0.1f, 1, 1, 0.2f};
             zebPatch(ZEB_BILINEAR, zebQuark("point"), p, 0);
         },
         behind, 0.3f, 12},
        {"bicubic patch", family("bicubic patch"), [] { board(-0.3f, -0.3f, 0.3f, 0.3f, 1.2f); },
         0.3f, 12},
        {"polygon", [] { board(-1, -1, 1, 1, 0); }, behind, 0.3f, 12},
        {"general polygon",
         [] {
             const float p[8][3] = {{-1, -1, 0},      {1, -1, 0},      {1, 1, 0},
                                    {0, 1.1f, 0},     {-1, 1, 0},      {-0.8f, 0.8f, 0},
                                    {-0.8f, 0.9f, 0}, {-0.7f, 0.9f, 0}};
             const long loops[2] = {5, 3};
             zebGeneralPolygon(2, loops, zebQuark("point"), p, 0);
         },
         [] { board(-0.2f, -0.4f, 0.4f, 0.2f, 0.9f); }, 0.25f, 10},
        {"faces", [] { addFaces(false); }, behind, 0.3f, 12},
        {"general faces", [] { addFaces(true); }, behind, 0.3f, 12},
        {"triangles", [] { addTriangles(24, 1); }, behind, 0.3f, 12},
        {"slivers", [] { addTriangles(6, 0.02f); }, behind, 0.3f, 12},
    };
    return list;
}

class Closed : public Displacement
{
protected:
    // How much is seen of what cannot be seen, and of what can.
    std::pair<double, double> look(
        const Cover& cover, unsigned view, const Scene& move, const Scene& options = [] {})
    {
        std::mt19937 random(view * 7 + 1);
        const auto between = [&random](float lo, float hi) {
            return lo + (hi - lo) * static_cast<float>(random() % 65536) / 65535;
        };
        const float turn = between(-180, 180), x = between(-1, 1), y = between(-1, 1);
        const float tilt = between(-cover.tilt, cover.tilt), spin = between(-180, 180);
        render(
            [&] {
                zebSurface(zebQuark("constant"), 0);
                zebTranslate(x * 0.05f, y * 0.05f, 0);
                zebRotate(turn, 0, 0, 1);
                zebRotate(tilt, 1, y, 0);
                if (cover.tilt > 90) zebRotate(spin, x, y, 1);
                zebAttributePush();
                zebtest::color(1, 0, 0);
                zebShadingRate(0.25f * std::exp2(static_cast<float>(view % 9)));
                move();
                cover.add();
                zebAttributePop();
                zebtest::color(0, 1, 0);
                cover.hidden();
            },
            [&] {
                zebSampleUniform(3, 3);
                zebSampleJitter(0.5f);
                options();
            });
        return {picture.sum(1), picture.sum(0)};
    }
    // At some views.
    void expectClosed(
        const Cover& cover, const Scene& move, unsigned views, const Scene& options = [] {})
    {
        for (unsigned view = 0; view < views; ++view) {
            const auto [leaks, seen] = look(cover, view, move, options);
            EXPECT_EQ(leaks, 0) << cover.name << " at view " << view;
            EXPECT_GT(seen, 100) << cover.name << " at view " << view;
        }
    }
};

// Smooth, but steep.
Vec waves(const Vec& p, float length, float often)
{
    const auto wave = [&](float x) { return 0.57f * length * std::sin(often * x); };
    return {wave(p[0] + 2 * p[1] - p[2]), wave(1.3f * p[1] - p[2]), wave(1.7f * p[2] + p[0])};
}

TEST_F(Closed, UnderWaves)
{
    for (const Cover& cover : covers()) {
        expectClosed(
            cover,
            [&] {
                const float reach = cover.reach;
                moveBy([reach](const Vec& p) { return waves(p, reach, 4); }, reach);
            },
            6);
    }
    EXPECT_TRUE(reports.empty());
}

// A bilinear patch that is cut into one grid on the left and two on the right of its middle.
TEST_F(Closed, WhereOneGridMeetsTwo)
{
    for (const float often : {4.0f, 12.0f, 60.0f}) {
        render(
            [often] {
                zebSurface(zebQuark("constant"), 0);
                zebtest::color(1, 0, 0);
                zebAttributePush();
                zebShadingRate(32);
                zebBoundDisplacement(0.25f);
                displacement([often](ZebRow* row) {
                    for (long k = 0; k < row->count; ++k) {
                        row->P[0][k] += 0.25f * std::sin(often * (row->P[0][k] + row->P[1][k]));
                    }
                });
                const float corners[12] = {-1.4f, -1, 0, 1.4f, -1, 0, -0.02f, 1, 0, 0.02f, 1, 0};
                zebPatch(ZEB_BILINEAR, zebQuark("point"), corners, 0);
                zebAttributePop();
                zebtest::color(0, 1, 0);
                rectangle(-0.35f, -0.65f, 0.35f, -0.15f, 0.9f);
            },
            [] {
                zebRasterViewport(0, 128, 0, 128);
                zebSampleUniform(4, 4);
            });
        EXPECT_GT(picture.sum(0), 1000);
        EXPECT_EQ(picture.sum(1), 0) << often;
    }
}

// Also finer than micropolygons are, which follow it by chance.
TEST_F(Closed, UnderNoise)
{
    for (const std::size_t which : {0u, 1u, 2u, 5u, 7u, 10u, 11u, 12u, 14u, 15u, 17u, 18u}) {
        for (const float often : {3.0f, 60.0f}) {
            SCOPED_TRACE(often);
            const Cover& cover = covers()[which];
            const float reach = cover.reach;
            const Scene move = [reach, often] {
                zebBoundDisplacement(reach);
                displacement([reach, often](ZebRow* row) {
                    const Planes places(row);
                    float* const by = zebRowPlane(row);
                    each(row, [&](long k, int c) { places[c][k] = often * row->P[c][k]; });
                    zebRowNoise(row, 3, places, nullptr, by);
                    for (long k = 0; k < row->count; ++k) {
                        put(row->P, k, at(row->P, k) + reach * by[k] * unit(at(row->N, k)));
                    }
                });
            };
            expectClosed(cover, move, which == 1 ? 46 : 9);
        }
    }
    EXPECT_TRUE(reports.empty());
}

// What is left out of a sphere shows.
TEST_F(Closed, ButForHoles)
{
    Cover open = covers()[0];
    open.add = [] { zebSphere(1, -1, 1, 300, 0); };
    double most = 0;
    for (unsigned view = 0; view < 6; ++view) {
        most = std::max(most, look(open, view, [] {
                                  moveBy([](const Vec& p) { return waves(p, 0.3f, 4); }, 0.3f);
                              }).first);
    }
    EXPECT_GT(most, 1);
}

TEST_F(Closed, UnderAllOptions)
{
    const std::vector<Scene> options = {
        [] { zebSampleAdaptive(0.01f); },
        [] { zebTune(5, 7, 9); },
        [] { zebTune(64, 64, 64); },
        [] { zebHider(ZEB_HIDER_HIDDEN), zebThreads(3); },
        [] { zebDepthNearest(1); },
        [] { zebFilter(ZEB_FILTER_GAUSSIAN), zebFilterWidth(2, 2); },
        [] { zebImageCrop(0.2f, 0.9f, 0.1f, 0.7f); },
    };
    for (const Scene& option : options) {
        SCOPED_TRACE("option " + std::to_string(&option - options.data()));
        for (const std::size_t which : {0u, 2u, 5u, 10u, 14u}) {
            const Cover& cover = covers()[which];
            expectClosed(
                cover,
                [&] {
                    const float reach = cover.reach;
                    moveBy([reach](const Vec& p) { return waves(p, reach, 4); }, reach);
                },
                2, option);
        }
    }
}

TEST_F(Closed, UnderAllAttributes)
{
    const std::vector<Scene> attributes = {
        [] { zebShadingModel(ZEB_CONSTANT); },
        [] { zebOrientation(ZEB_INSIDE); },
        [] { zebOrientation(ZEB_REVERSE); },
        [] { zebScale(-1, 1, 1); },
        [] { zebScale(1, 1, -1), zebOrientation(ZEB_RIGHT_HANDED); },
        [] { zebFlatness(4); },
        [] { zebBackface(2); },
        [] {
            const float box[6] = {-2, 2, -2, 2, -2, 2};
            zebBound(box);
        },
    };
    for (const Scene& attribute : attributes) {
        SCOPED_TRACE("attribute " + std::to_string(&attribute - attributes.data()));
        for (const std::size_t which : {0u, 2u, 5u, 10u, 14u}) {
            const Cover& cover = covers()[which];
            expectClosed(
                cover,
                [&] {
                    const float reach = cover.reach;
                    attribute();
                    moveBy([reach](const Vec& p) { return waves(p, reach, 4); }, reach);
                },
                2);
        }
    }
}

// Backs are those of the moved surface: of a closed one only the front is seen anyway.
TEST_F(Closed, WithoutItsBacks)
{
    for (const short side : {ZEB_OUTSIDE, ZEB_INSIDE}) {
        for (const std::size_t which : {0u, 1u, 2u, 5u}) {
            const Cover& cover = covers()[which];
            const auto with = [&](short sides) {
                return words([&] {
                    zebOrientation(side);
                    zebBackface(sides);
                    zebSurface(zebQuark("constant"), 0);
                    zebRotate(50, 1, 1, 0);
                    swell([](const Vec& p) { return 0.1f * std::sin(4 * p[0] + 2 * p[1]); }, 0.1f);
                    cover.add();
                });
            };
            with(1);
            const double one = picture.sum(3);
            with(2);
            const double two = picture.sum(3);
            EXPECT_GT(two, 500);
            EXPECT_NEAR(one, two, 0.01 * two) << cover.name << ", side " << side;
        }
    }
}

TEST_F(Displacement, IsNothingWithoutABound)
{
    const Scene sphere = [] {
        zebSurface(zebQuark("constant"), 0);
        zebSphere(1, -1, 1, 360, 0);
    };
    const Words still = words(sphere);
    for (const bool unset : {true, false}) {
        const Words moved = words([&] {
            if (!unset) zebBoundDisplacement(0);
            displacement([](ZebRow* row) {
                for (long k = 0; k < row->count; ++k) row->P[0][k] += 0.5f;
            });
            sphere();
            zebTranslate(0.1f, 0, 0);
            zebSphere(0.5f, -0.5f, 0.5f, 360, 0);
        });
        EXPECT_EQ(moved, still);
        ASSERT_EQ(reports.size(), 1u) << "for each function";
        EXPECT_EQ(reports[0].code, 10);
        EXPECT_EQ(reports[0].message.rfind("zebCustomDisplacement: ", 0), 0u) << reports[0].message;
        reports.clear();
    }
}

TEST_F(Displacement, ThatIsTooLargeIsCutToItsBound)
{
    const auto with = [this](float by, float bound) {
        return words([=] {
            moveBy([by](const Vec&) { return Vec{0, 0, by}; }, bound);
            zebSurface(zebQuark("constant"), 0);
            rectangle(-1, -1, 1, 1, 0);
        });
    };
    const Words exact = with(-0.5f, 0.5f);
    EXPECT_TRUE(reports.empty());
    EXPECT_NEAR(depth(32, 32), -0.5, 1e-5);
    for (const float by : {-0.75f, -100.0f, -1e30f}) {
        with(by, 0.5f);
        ASSERT_EQ(reports.size(), 1u) << by;
        EXPECT_EQ(reports[0].code, 10);
        reports.clear();
        EXPECT_NEAR(depth(32, 32), -0.5, 1e-4) << by;
        EXPECT_EQ(picture.sum(0), 40 * 40);
    }
}

// It is cut where the surface lies in object space.
TEST_F(Displacement, BoundsAreThoseOfObjectSpace)
{
    for (const float scale : {0.1f, 1.0f, 3.0f}) {
        render([=] {
            zebScale(scale, scale, scale);
            moveBy([](const Vec&) { return Vec{0, 0, -100}; }, 0.5f);
            zebSurface(zebQuark("constant"), 0);
            rectangle(-1 / scale, -1 / scale, 1 / scale, 1 / scale, 0);
        });
        EXPECT_NEAR(depth(32, 32), -0.5 * double{scale}, 1e-4);
        EXPECT_EQ(reports.size(), 1u);
        reports.clear();
    }
}

TEST_F(Displacement, IsCutInObjectSpaceEvenIfThatIsStretched)
{
    const unsigned short eye = zebQuark("eye");
    for (const Vec way : {Vec{1, 0, 0}, Vec{0, 1, 0}, Vec{0, 0, 1}}) {
        double farthest = 0;
        render([&] {
            zebRotate(30, 1, 1, 1);
            zebScale(0.5f, 1, 2);
            moveBy([way](const Vec&) { return 100 * way; }, 0.25f);
            surface([&](ZebRow* row) {
                const Planes model(row);
                zebRowTransform(row, eye, 0, ZEB_TRANSFORM_POINT, row->P, model);
                for (long k = 0; k < row->count; ++k) {
                    const Vec p = {model[0][k] - row->u[k], model[1][k] - row->v[k], model[2][k]};
                    farthest = std::max(farthest, std::sqrt(dot(p, p)));
                    EXPECT_LE(std::sqrt(dot(p, p)), 0.2501);
                }
            });
            rectangle(-0.5f, -0.5f, 0.5f, 0.5f, 0);
        });
        reports.clear();
        EXPECT_GT(farthest, 0.249) << "and as far as it may be";
    }
}

TEST_F(Displacement, ShowsTheSameUnderAGenerousBound)
{
    for (const Cover& cover : covers()) {
        const auto with = [&](float bound) {
            return words(
                [&] {
                    zebRotate(25, 1, 2, 0);
                    zebShadingRate(4);
                    zebLightSource(zebQuark("distant"), 0);
                    moveBy([](const Vec& p) { return waves(p, 0.1f, 5); }, bound);
                    cover.add();
                },
                [] { zebViewPerspective(60); });
        };
        const Words exact = with(0.1f);
        EXPECT_GT(picture.sum(3), 50);
        EXPECT_EQ(with(0.5f), exact) << cover.name;
        EXPECT_EQ(with(1.7f), exact) << cover.name;
    }
    EXPECT_TRUE(reports.empty());
}

// From outside of the picture into all of its buckets.
TEST_F(Displacement, BringsSurfacesFromAnywhere)
{
    const auto with = [this](const Vec& way, bool moved) {
        return words([=] {
            zebSurface(zebQuark("constant"), 0);
            zebShadingRate(4);
            if (moved) {
                moveBy([way](const Vec&) { return way; }, 7);
                zebTranslate(-way[0], -way[1], -way[2]);
            }
            zebRotate(30, 1, 1, 1);
            addCube(1);
        });
    };
    for (const Vec way : {Vec{4, 0, 0}, Vec{-4, 0, 0}, Vec{0, 4, 0}, Vec{0, -4, 0}, Vec{3, 3, 3},
                          Vec{-2, 2, 0}, Vec{1, -1, 0}, Vec{0, 0, 6}, Vec{0, 0, -3.8f}}) {
        const Words still = with(way, false);
        const Words moved = with(way, true);
        long differing = 0;
        for (std::size_t k = 3; k < still.size(); k += 5) differing += still[k] != moved[k];
        EXPECT_GT(picture.sum(3), 500);
        EXPECT_LT(differing, 30) << way[0] << ' ' << way[1] << ' ' << way[2];
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(Displacement, BringsInstancesFromBeyondThePicture)
{
    render([] {
        moveBy([](const Vec&) { return Vec{4, 0, 0}; }, 4);
        zebSurface(zebQuark("constant"), 0);
        const void* const object = zebObjectBegin();
        rectangle(-0.5f, -0.5f, 0.5f, 0.5f, 0);
        zebObjectEnd();
        zebTranslate(-4, 0, 0);
        zebObjectCall(object);
    });
    EXPECT_TRUE(shown(32, 32));
    EXPECT_TRUE(reports.empty());
}

// A plain that goes on behind the eye, under a bound that reaches from there into the picture: near
// the eye micropolygons would be as many as those of huge surfaces.
TEST_F(Displacement, WhatIsBesideThePictureTakesFewPoints)
{
    long points = 0;
    render(
        [&] {
            zebBoundDisplacement(4);
            displacement([&](ZebRow* row) {
                points += row->count;
                for (long k = 0; k < row->count; ++k) row->P[1][k] += 0.25f;
            });
            zebSurface(zebQuark("constant"), 0);
            const float plain[12] = {-16, -1, -9, 16, -1, -9, -16, -1, 20, 16, -1, 20};
            zebPatch(ZEB_BILINEAR, zebQuark("point"), plain, 0);
        },
        [] { zebViewPerspective(50); });
    EXPECT_TRUE(shown(32, 60));
    EXPECT_FALSE(shown(32, 4));
    EXPECT_LT(points, 4000000);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Displacement, RefusesBoundsThatAreNotFinite)
{
    for (const float bad : {NAN, INFINITY, -INFINITY}) {
        zebBoundDisplacement(0.5f);
        EXPECT_TRUE(reports.empty());
        zebBoundDisplacement(bad);
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].code, 10);
        reports.clear();
        render([] {
            displacement([](ZebRow* row) {
                for (long k = 0; k < row->count; ++k) row->P[2][k] -= 0.4f;
            });
            rectangle(-1, -1, 1, 1, 0);
        });
        EXPECT_NEAR(depth(32, 32), -0.4, 1e-5) << "the bound before stays";
        EXPECT_TRUE(reports.empty());
        zebReset();
    }
}

TEST_F(Displacement, HugeBoundsDoNoHarm)
{
    for (const float bound : {10.0f, 1e5f, 1e10f, 1e30f}) {
        render([=] {
            moveBy([](const Vec&) { return Vec{0, 0, -0.5f}; }, bound);
            zebSurface(zebQuark("constant"), 0);
            zebSphere(1, -1, 1, 360, 0);
        });
        EXPECT_NEAR(depth(32, 32), -1.5, 3e-3) << bound;
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(Displacement, BoundsMayReachTheEye)
{
    for (const float bound : {4.1f, 10.0f}) {
        render(
            [=] {
                moveBy([](const Vec&) { return Vec{0, 0, -0.5f}; }, bound);
                zebSurface(zebQuark("constant"), 0);
                zebSphere(1, -1, 1, 360, 0);
            },
            [] { zebViewPerspective(50); });
        EXPECT_NEAR(depth(32, 32), -1.5, 3e-3) << bound;
        EXPECT_TRUE(reports.empty());
    }
}

TEST_F(Displacement, LeavesPointsThatBecomeNoNumbers)
{
    for (const float bad : {NAN, INFINITY, -INFINITY}) {
        for (int axis = 0; axis < 3; ++axis) {
            const auto with = [&](float by) {
                return words([=] {
                    moveBy(
                        [=](const Vec& p) {
                            Vec way = {0, 0, -0.3f};
                            if (p[0] > 0) way = {0, 0, 0};
                            if (p[0] > 0) way[static_cast<std::size_t>(axis)] = by;
                            return way;
                        },
                        0.3f);
                    zebSurface(zebQuark("constant"), 0);
                    zebSphere(1, -1, 1, 360, 0);
                });
            };
            const Words still = with(0);
            EXPECT_TRUE(reports.empty());
            EXPECT_EQ(with(bad), still);
            ASSERT_EQ(reports.size(), 1u);
            EXPECT_EQ(reports[0].code, 15);
            EXPECT_EQ(reports[0].message.rfind("zebCustomDisplacement: ", 0), 0u)
                << reports[0].message;
            reports.clear();
        }
    }
}

TEST_F(Displacement, HasNoColorsAndNoLight)
{
    long rows = 0;
    render([&] {
        zebLightSource(zebQuark("distant"), 0);
        zebLightSource(zebQuark("ambient"), 0);
        zebBoundDisplacement(1);
        displacement(
            [&](ZebRow* row) {
                if (rows++) return;
                for (int c = 0; c < 3; ++c) {
                    for (float* none : {row->Ci[c], row->Oi[c], row->L[c], row->Cl[c], row->Ol[c]})
                        EXPECT_EQ(none, nullptr);
                    for (float* plane : {row->P[c], row->N[c], row->Ng[c], row->I[c], row->dPdu[c],
                                         row->dPdv[c], row->Cs[c], row->Os[c]})
                        EXPECT_NE(plane, nullptr);
                }
                for (float* plane : {row->u, row->v, row->s, row->t, row->du, row->dv})
                    EXPECT_NE(plane, nullptr);
                const Planes a(row), b(row), c(row);
                const std::vector<std::pair<const char*, Scene>> calls = {
                    {"zebRowAmbient", [&] { zebRowAmbient(row, a); }},
                    {"zebRowDiffuse", [&] { zebRowDiffuse(row, row->N, a); }},
                    {"zebRowSpecular", [&] { zebRowSpecular(row, row->N, row->I, 0.1f, a); }},
                    {"zebRowPhong", [&] { zebRowPhong(row, row->N, row->I, 10, a); }},
                    {"zebRowLight", [&] { EXPECT_EQ(zebRowLight(row, 0, a, b, c), 0); }},
                };
                for (const auto& [name, call] : calls) {
                    const std::size_t before = reports.size();
                    call();
                    ASSERT_EQ(reports.size(), before + 1) << name;
                    EXPECT_EQ(reports.last().code, 8) << name;
                    EXPECT_EQ(reports.last().message.rfind(std::string(name) + ": ", 0), 0u)
                        << reports.last().message;
                }
                reports.clear();
            },
            0);
        zebSphere(1, -1, 1, 360, 0);
    });
    EXPECT_GT(rows, 1);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Displacement, RefusesOtherCalls)
{
    long refused = 0;
    const Scene scene = [] { zebSphere(1, -1, 1, 360, 0); };
    const float white[3] = {1, 1, 1};
    const Words words = this->words([&] {
        displacement(
            [&](ZebRow*) {
                if (refused) return;
                const std::vector<std::pair<const char*, Scene>> calls = {
                    {"zebColor", [&] { zebColor(white); }},
                    {"zebSphere", [] { zebSphere(1, -1, 1, 360, 0); }},
                    {"zebQuark", [] { EXPECT_EQ(zebQuark("color"), 0); }},
                    {"zebBoundDisplacement", [] { zebBoundDisplacement(3); }},
                    {"zebCustomDisplacement", [] { zebCustomDisplacement(nullptr); }},
                    {"zebReset", [] { zebReset(); }},
                    {"zebSceneEnd", [] { zebSceneEnd(); }},
                };
                for (const auto& [name, call] : calls) {
                    const std::size_t before = reports.size();
                    call();
                    ASSERT_EQ(reports.size(), before + 1) << name;
                    EXPECT_EQ(reports.last().code, 8) << name;
                    ++refused;
                }
                EXPECT_GT(zebVersion(), 0);
                reports.clear();
            },
            0);
        scene();
    });
    EXPECT_EQ(refused, 7);
    EXPECT_EQ(words, this->words(scene));
}

TEST_F(Displacement, IsAnAttribute)
{
    const auto with = [this](const Scene& scene) {
        return words([&] {
            zebSurface(zebQuark("constant"), 0);
            scene();
            zebSphere(1, -1, 1, 360, 0);
        });
    };
    const Scene move = [] { moveBy([](const Vec&) { return Vec{0.3f, 0, 0}; }, 0.3f); };
    const Words still = with([] {}), moved = with(move);
    EXPECT_NE(still, moved);
    EXPECT_EQ(with([&] {
                  zebAttributePush();
                  move();
                  zebAttributePop();
              }),
              still);
    EXPECT_EQ(with([&] {
                  move();
                  zebCustomDisplacement(nullptr);
              }),
              still);
    EXPECT_EQ(with([&] {
                  move();
                  zebBoundDisplacement(0.3f);
                  zebAttributePush();
                  zebBoundDisplacement(0);
                  zebCustomDisplacement(nullptr);
                  zebAttributePop();
              }),
              moved);
    EXPECT_TRUE(reports.empty());
    // Set before the world, too.
    render(
        [] {
            zebSurface(zebQuark("constant"), 0);
            zebSphere(1, -1, 1, 360, 0);
        },
        move);
    EXPECT_EQ(picture.words(), moved);
}

TEST_F(Displacement, OtherFlagsAreWithoutEffect)
{
    const auto with = [this](long flags) {
        return words([flags] {
            moveBy([](const Vec& p) { return waves(p, 0.2f, 5); }, 0.2f, flags);
            zebSphere(1, -1, 1, 360, 0);
        });
    };
    const Words plain = with(0);
    for (long flags = 1; flags < 8; ++flags) EXPECT_EQ(with(flags), plain) << flags;
    EXPECT_TRUE(reports.empty());
}

TEST_F(Displacement, RefusesWhatIsNoShaderAndFreesItAllTheSame)
{
    int frees = 0;
    ZebShader shader{};
    shader.data = &frees;
    shader.shade = [](void*, ZebRow*) {};
    shader.free = [](void* data) { ++*static_cast<int*>(data); };
    shader.flags = 8;
    zebCustomDisplacement(&shader);
    EXPECT_EQ(frees, 1);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports.last().code, 10);
    EXPECT_EQ(reports.last().message, "zebCustomDisplacement: unknown flags 8");
    shader.flags = 0;
    shader.shade = nullptr;
    zebCustomDisplacement(&shader);
    EXPECT_EQ(frees, 2);
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports.last().code, 10);
    EXPECT_EQ(reports.last().message, "zebCustomDisplacement: shader has no function");
    shader.shade = [](void*, ZebRow*) {};
    picture.attach();
    zebSceneBegin();
    zebObjectBegin();
    reports.clear();
    zebCustomDisplacement(&shader);
    EXPECT_EQ(frees, 3);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports.last().code, 6);
    EXPECT_EQ(reports.last().message, "zebCustomDisplacement");
    zebBoundDisplacement(1);
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports.last().code, 6);
    EXPECT_EQ(reports.last().message, "zebBoundDisplacement");
    zebObjectEnd();
    zebReset();
    EXPECT_EQ(frees, 3);
}

TEST_F(Displacement, IsFreedOnceWhenNothingUsesItAnyMore)
{
    int frees = 0;
    ZebShader shader{};
    shader.data = &frees;
    shader.shade = [](void*, ZebRow* row) {
        for (long k = 0; k < row->count; ++k) row->P[0][k] += 0.1f;
    };
    shader.free = [](void* data) { ++*static_cast<int*>(data); };
    shader.flags = ZEB_SHADE_ANYWHERE;
    zebAttributePush();
    zebCustomDisplacement(&shader);
    zebAttributePush();
    zebAttributePop();
    EXPECT_EQ(frees, 0);
    zebAttributePop();
    EXPECT_EQ(frees, 1);
    zebCustomDisplacement(&shader);
    zebCustomDisplacement(&shader);
    EXPECT_EQ(frees, 2);
    zebCustomDisplacement(nullptr);
    EXPECT_EQ(frees, 3);
    for (const long threads : {1, 3}) {
        frees = 0;
        render(
            [&] {
                zebAttributePush();
                zebBoundDisplacement(0.1f);
                zebCustomDisplacement(&shader);
                const void* object = zebObjectBegin();
                zebSphere(1, -1, 1, 360, 0);
                zebObjectEnd();
                zebObjectCall(object);
                zebAttributePop();
                EXPECT_EQ(frees, 0);
            },
            [=] { zebThreads(threads); });
        EXPECT_EQ(frees, 1);
    }
    EXPECT_TRUE(reports.empty());
}

// Before it is moved, a row is the surface's own: also beyond its edges.
TEST_F(Displacement, RowsAreOfTheSurfaceAsItWas)
{
    const unsigned short eye = zebQuark("eye"), model = zebQuark("model");
    const unsigned short heat = zebDeclare("a displaced row's heat", ZEB_VARYING, ZEB_FLOAT);
    const unsigned short number = zebDeclare("a displaced row's number", ZEB_UNIFORM, ZEB_INTEGER);
    const unsigned short text = zebDeclare("a displaced row's text", ZEB_UNIFORM, ZEB_STRING);
    const unsigned short level = zebDeclare("a displaced row's level", ZEB_UNIFORM, ZEB_FLOAT);
    const float heats[4] = {0, 1, 10, 11}, high = 7;
    const int seven = 7;
    long points = 0, beyond = 0;
    render([&] {
        zebRotate(30, 1, 2, 3);
        zebBoundDisplacement(0.1f);
        displacement(
            [&](ZebRow* row) {
                const Planes place(row), back(row);
                zebRowTransform(row, eye, model, ZEB_TRANSFORM_POINT, row->P, place);
                zebRowTransform(row, model, eye, ZEB_TRANSFORM_POINT, place, back);
                const float* const hot = zebRowVariable(row, heat, 0);
                const float* const uniform = zebRowVariable(row, level, 0);
                ASSERT_TRUE(hot && uniform && zebRowInteger(row, number));
                EXPECT_EQ(*zebRowInteger(row, number), 7);
                EXPECT_STREQ(zebRowString(row, text), "elm");
                for (long k = 0; k < row->count; ++k, ++points) {
                    const double angle = 2 * M_PI * double{row->u[k]};
                    EXPECT_NEAR(place[0][k], std::cos(angle), 1e-5);
                    EXPECT_NEAR(place[1][k], std::sin(angle), 1e-5);
                    EXPECT_NEAR(place[2][k], 2 * double{row->v[k]} - 1, 1e-5);
                    EXPECT_NEAR(hot[k], row->u[k] + 10 * row->v[k], 1e-4);
                    EXPECT_EQ(uniform[k], 7);
                    EXPECT_NEAR(row->s[k], 1 + row->u[k], 1e-5);
                    EXPECT_NEAR(row->t[k], 5 * row->v[k], 1e-5);
                    EXPECT_GT(row->du[k], 0);
                    EXPECT_GT(row->dv[k], 0);
                    beyond += row->v[k] < 0 || row->v[k] > 1;
                    for (int c = 0; c < 3; ++c) {
                        EXPECT_NEAR(back[c][k], row->P[c][k], 1e-5);
                        EXPECT_EQ(row->I[c][k], c == 2 ? row->I[2][k] : 0) << "orthographic";
                    }
                    const Vec n = unit(at(row->N, k));
                    EXPECT_NEAR(dot(n, unit(at(row->dPdu, k))), 0, 1e-4);
                    EXPECT_NEAR(dot(n, unit(at(row->dPdv, k))), 0, 1e-4);
                }
            },
            0);
        zebTextureCoordinates(1, 0, 2, 0, 1, 5, 2, 5);
        zebCylinder(1, -1, 1, 360, heat, heats, level, &high, number, &seven, text, "elm", 0);
    });
    EXPECT_GT(points, 1000);
    EXPECT_GT(beyond, 0);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Displacement, DifferencesAreThoseOfAMicropolygon)
{
    long points = 0;
    render([&] {
        zebBoundDisplacement(0.1f);
        displacement(
            [&](ZebRow* row) {
                float* const sum = zebRowPlane(row);
                float* const along1 = zebRowPlane(row);
                float* const along2 = zebRowPlane(row);
                const Planes n(row);
                for (long k = 0; k < row->count; ++k) sum[k] = 3 * row->u[k] + 7 * row->v[k];
                zebRowDifferences(row, sum, along1, along2);
                zebRowNormals(row, row->P, n);
                for (long k = 0; k < row->count; ++k, ++points) {
                    const float a = std::fabs(along1[k]), b = std::fabs(along2[k]);
                    EXPECT_NEAR(a, 3 * row->du[k], 1e-4);
                    EXPECT_NEAR(b, 7 * row->dv[k], 1e-4);
                    EXPECT_GT(dot(unit(at(n, k)), unit(at(row->Ng, k))), 0.999);
                }
            },
            0);
        turnUp();
        zebCylinder(1, -1, 1, 360, 0);
    });
    EXPECT_GT(points, 1000);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Displacement, FollowsImages)
{
    const float pixels[4] = {0, 0, 1, 1};
    const void* const image = zebImage(2, 2, 1, pixels, ZEB_IMAGE_CLAMP);
    render([&] {
        zebBoundDisplacement(1);
        displacement([image](ZebRow* row) {
            float* const height = zebRowPlane(row);
            zebRowImage(row, image, row->s, row->t, 0, &height);
            for (long k = 0; k < row->count; ++k) row->P[2][k] -= height[k];
        });
        zebSurface(zebQuark("constant"), 0);
        const float corners[12] = {-1, -1, 0, 1, -1, 0, -1, 1, 0, 1, 1, 0};
        zebPatch(ZEB_BILINEAR, zebQuark("point"), corners, 0);
    });
    zebImageFree(image);
    everywhere([&](double x, double y, long i, long j) {
        if (std::fabs(x) > 0.95 || std::fabs(y) > 0.95) return;
        if (std::fabs(std::fabs(y) - 0.5) < 0.05) return;
        const double height = std::clamp(y + 0.5, 0.0, 1.0);
        EXPECT_NEAR(depth(i, j), -height, 1e-3) << i << ' ' << j;
    });
    EXPECT_TRUE(reports.empty());
}

// All families, moved in several ways, lit, some see-through.
void addMany(unsigned number, long flags)
{
    const float from[3] = {1, 2, -3};
    zebLightSource(zebQuark("distant"), zebQuark("from"), from, 0);
    zebBoundDisplacement(0.15f);
    displacement(
        [](ZebRow* row) {
            const Planes at(row);
            float* const by = zebRowPlane(row);
            each(row, [&](long k, int c) { at[c][k] = 3 * row->P[c][k]; });
            zebRowTurbulence(row, 3, at, 4, 0.5f, 0, by);
            for (long k = 0; k < row->count; ++k) {
                const Vec p = zebtest::at(row->P, k), n = unit(zebtest::at(row->N, k));
                put(row->P, k, p + 0.14f * by[k] * n);
            }
        },
        flags);
    for (unsigned k = 0; k < 3; ++k) {
        const Cover& cover = covers()[(number * 3 + k) % covers().size()];
        zebAttributePush();
        zebtest::color(1, 0.3f * static_cast<float>(k), 0.5f);
        if ((number + k) % 5 == 0) opacity(0.5f, 0.6f, 0.7f);
        if ((number + k) % 7 == 0) zebMatteObject(1);
        zebShadingRate(static_cast<float>(1 + number % 5 * 2));
        zebShadingModel(number % 2 ? ZEB_SMOOTH : ZEB_CONSTANT);
        zebTranslate(0.5f * static_cast<float>(k) - 0.5f, 0.2f * static_cast<float>(k), 0);
        zebRotate(40 * static_cast<float>(number + k), 1, 2, static_cast<float>(k));
        zebScale(0.6f, 0.6f, 0.6f);
        cover.add();
        zebAttributePop();
    }
}

constexpr unsigned kScenes = 8;

Scene optionsOf(unsigned number)
{
    return [number] {
        zebTune(8, 16, 8);
        zebFilter(ZEB_FILTER_GAUSSIAN);
        zebFilterWidth(2, 2);
        zebSampleUniform(2, 2);
        zebSampleJitter(0.5f);
        if (number % 3 == 1) zebViewPerspective(60);
        if (number % 4 == 1) zebSampleAdaptive(0.02f);
        if (number % 4 == 2) zebHider(ZEB_HIDER_SEQUENCE);
    };
}

TEST_F(Displacement, ShowsTheSameWithAnyNumberOfThreads)
{
    for (unsigned number = 0; number < kScenes; ++number) {
        const auto with = [&](long threads, long flags) {
            return words([&] { addMany(number, flags); },
                         [&] { optionsOf(number)(), zebThreads(threads); });
        };
        const Words one = with(1, 0);
        EXPECT_GT(picture.sum(3), 20) << number;
        EXPECT_EQ(with(1, ZEB_SHADE_ANYWHERE), one) << number;
        for (const long threads : {2, 3}) {
            EXPECT_EQ(with(threads, 0), one) << number;
            EXPECT_EQ(with(threads, ZEB_SHADE_ANYWHERE), one) << number;
        }
    }
}

TEST_F(Displacement, IsCalledInTurnOnTheCallersThread)
{
    const auto caller = std::this_thread::get_id();
    const auto rows = [&](long threads) {
        std::vector<float> first;
        render(
            [&] {
                zebBoundDisplacement(0.5f);
                displacement(
                    [&](ZebRow* row) {
                        EXPECT_EQ(std::this_thread::get_id(), caller);
                        first.push_back(row->P[0][0]);
                    },
                    0);
                zebSphere(1, -1, 1, 360, 0);
            },
            [threads] { zebThreads(threads); });
        return first;
    };
    const std::vector<float> one = rows(1);
    EXPECT_GT(one.size(), 10u);
    for (int k = 0; k < 5; ++k) EXPECT_EQ(rows(3), one);
}

TEST_F(Displacement, ShowsTheSameThePlainWay)
{
    for (unsigned number = 0; number < kScenes; ++number) {
        const Scene scene = [&] { addMany(number, ZEB_SHADE_ANYWHERE); };
        renderPlainly(true);
        const Words plain = words(scene, optionsOf(number));
        renderPlainly(false);
        EXPECT_EQ(words(scene, optionsOf(number)), plain) << number;
    }
}

TEST_F(Displacement, ShowsTheSameInTiles)
{
    for (unsigned number = 0; number < kScenes; ++number) {
        const Scene scene = [&] { addMany(number, ZEB_SHADE_ANYWHERE); };
        const Words whole = words(scene, optionsOf(number));
        for (const auto& [x0, x1, y0, y1] : {std::array{0L, 16L, 0L, 64L},
                                             {16L, 64L, 0L, 32L},
                                             {16L, 48L, 32L, 40L},
                                             {48L, 64L, 32L, 64L}}) {
            const auto at = [](long border) {
                if (border == 0 || border == 64) return static_cast<float>(border / 64);
                return (static_cast<float>(border) - 0.5f) / 64;
            };
            const Words part = words(scene, [&] {
                optionsOf(number)();
                zebImageCrop(at(x0), at(x1), at(y0), at(y1));
            });
            long differing = 0;
            for (long y = y0; y < y1; ++y) {
                for (long k = (y * 64 + x0) * 5; k < (y * 64 + x1) * 5; ++k) {
                    const auto n = static_cast<std::size_t>(k);
                    differing += part[n] != whole[n];
                }
            }
            EXPECT_EQ(differing, 0) << number << ", at " << x0 << ' ' << y0;
        }
    }
}

TEST_F(Displacement, ShowsTheSameInStages)
{
    for (unsigned number = 0; number < kScenes; ++number) {
        const Scene scene = [&] { addMany(number, ZEB_SHADE_ANYWHERE); };
        const Words whole = words(scene, optionsOf(number));
        const Words staged = words(
            [&] {
                scene();
                zebRenderInit();
                while (zebRenderBucket()) continue;
            },
            optionsOf(number));
        EXPECT_EQ(staged, whole) << number;
    }
}

// Round surfaces may be split elsewhere, moved or not.
TEST_F(Displacement, ShowsTheSameOfInstancesAndProcedurals)
{
    for (unsigned which = 0; which < covers().size(); ++which) {
        const Cover& cover = covers()[which];
        // A definition takes neither transformations nor bases.
        const bool keeps = cover.name != "patch mesh" && (which < 6 || which > 9);
        const auto with = [&](const Scene& add) {
            return words([&] {
                zebLightSource(zebQuark("distant"), 0);
                zebShadingRate(4);
                zebRotate(30, 1, 2, 1);
                moveBy([](const Vec& p) { return waves(p, 0.2f, 4); }, 0.2f);
                add();
            });
        };
        const Words directly = with(cover.add);
        EXPECT_GT(picture.sum(3), 100) << cover.name;
        const auto expectSame = [&](const Words& found) {
            long differing = 0;
            for (std::size_t k = 4; k < found.size(); k += 5) {
                float one, other;
                std::memcpy(&one, &found[k], sizeof one);
                std::memcpy(&other, &directly[k], sizeof other);
                differing += std::fabs(one - other) > 0.01f;
            }
            EXPECT_LT(differing, 20) << cover.name;
            if (which == 5 || which > 12) {
                EXPECT_EQ(found, directly) << cover.name;
            }
        };
        if (keeps) {
            expectSame(with([&] {
                const void* const object = zebObjectBegin();
                cover.add();
                zebObjectEnd();
                zebObjectCall(object);
            }));
        }
        expectSame(with([&] {
            const float box[6] = {-3, 3, -3, 3, -3, 3};
            zebProcedural(
                const_cast<Cover*>(&cover), box,
                [](void* data, float) { static_cast<Cover*>(data)->add(); }, nullptr);
        }));
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(Displacement, HasTheSameDepthAlone)
{
    const Scene scene = [] { addMany(2, ZEB_SHADE_ANYWHERE); };
    render(scene);
    std::vector<std::uint32_t> depths;
    for (std::size_t k = 4; k < picture.words().size(); k += 5)
        depths.push_back(picture.words()[k]);
    picture.setChannels(1);
    render(scene, [] { zebOutputSamples(ZEB_SAMPLES_DEPTH); });
    EXPECT_EQ(picture.words(), depths);
}

TEST_F(Displacement, GivesMattesTheirShape)
{
    const auto with = [this](bool matte) {
        render([matte] {
            zebSurface(zebQuark("constant"), 0);
            moveBy([](const Vec& p) { return waves(p, 0.3f, 4); }, 0.3f);
            zebMatteObject(matte ? 1 : 0);
            zebSphere(0.8f, -0.8f, 0.8f, 360, 0);
            zebMatteObject(0);
            zebCustomDisplacement(nullptr);
            rectangle(-1.6f, -1.6f, 1.6f, 1.6f, 2);
        });
        std::vector<bool> shape;
        everywhere([&](double, double, long i, long j) {
            shape.push_back(matte ? !shown(i, j) : depth(i, j) < 1.9);
        });
        return shape;
    };
    EXPECT_EQ(with(true), with(false));
}

}  // namespace

}  // namespace zebtest
