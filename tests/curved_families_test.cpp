// One shape given in several ways gives one picture.

#include <functional>

#include "support/surfaces.h"

namespace zebtest
{

namespace
{

constexpr long kSize = 96;
constexpr float kNear = 1, kFar = 9;

using Build = std::function<void()>;
// Of closed surfaces: the far side does not show through the gaps between grids.
constexpr short kOutside = 1;

using Grid4 = std::array<Vec, 16>;

// The control points of a cubic surface in another basis than Bezier's.
Grid4 inBasis(const Grid4& bezier, const float (*basis)[4])
{
    using Square = std::array<std::array<double, 4>, 4>;
    static constexpr float kBezier[4][4] = {
        {-1, 3, -3, 1}, {3, -6, 3, 0}, {-3, 3, 0, 0}, {1, 0, 0, 0}};
    // Solves basis x = Bezier by elimination.
    Square a{}, x{};
    for (std::size_t i = 0; i < 4; ++i) {
        for (std::size_t j = 0; j < 4; ++j) {
            a[i][j] = double{basis[i][j]};
            x[i][j] = double{kBezier[i][j]};
        }
    }
    for (std::size_t c = 0; c < 4; ++c) {
        std::size_t pivot = c;
        for (std::size_t r = c; r < 4; ++r) {
            if (std::fabs(a[r][c]) > std::fabs(a[pivot][c])) pivot = r;
        }
        std::swap(a[c], a[pivot]);
        std::swap(x[c], x[pivot]);
        for (std::size_t r = 0; r < 4; ++r) {
            if (r == c) continue;
            const double f = a[r][c] / a[c][c];
            for (std::size_t k = 0; k < 4; ++k) {
                a[r][k] -= f * a[c][k];
                x[r][k] -= f * x[c][k];
            }
        }
    }
    Grid4 result{};
    for (std::size_t j = 0; j < 4; ++j) {
        for (std::size_t i = 0; i < 4; ++i) {
            for (std::size_t l = 0; l < 4; ++l) {
                for (std::size_t k = 0; k < 4; ++k) {
                    const double w = x[i][k] / a[i][i] * x[j][l] / a[j][j];
                    for (std::size_t c = 0; c < 3; ++c) {
                        result[4 * j + i][c] +=
                            static_cast<float>(w * double{bezier[4 * l + k][c]});
                    }
                }
            }
        }
    }
    return result;
}

Grid4 wave()
{
    Grid4 points;
    for (std::size_t k = 0; k < 16; ++k) {
        const auto i = static_cast<float>(k % 4), j = static_cast<float>(k / 4);
        points[k] = {(i - 1.5f) / 1.5f, (j - 1.5f) / 1.5f,
                     0.6f * std::sin(2 * i + 1) * std::cos(1.5f * j)};
    }
    return points;
}

class CurvedFamilies : public testing::Test
{
protected:
    ~CurvedFamilies() override { zebReset(); }

    static void render(Picture& picture, const Build& build)
    {
        zebReset();
        zebQuirks(0);
        zebRasterViewport(0, kSize, 0, kSize);
        zebViewPerspective(40);
        zebClip(kNear, kFar);
        zebOutputSamples(ZEB_SAMPLES_RGBAZ);
        zebFilter(ZEB_FILTER_BOX);
        zebFilterWidth(1, 1);
        zebSampleUniform(12, 12);
        zebShadingModel(ZEB_SMOOTH);
        picture.attachFloat();
        zebTranslate(0, 0, 4);
        zebRotate(-50, 1, 0.2f, 0);
        zebRotate(25, 0, 0, 1);
        zebSceneBegin();
        const float from[3] = {0, 0, 0}, to[3] = {1, -2, 1.5f}, faint = 0.2f;
        zebLightSource(zebQuark("ambient"), zebQuark("intensity"), &faint, 0);
        zebLightSource(zebQuark("distant"), zebQuark("from"), from, zebQuark("to"), to, 0);
        zebSurface(zebQuark("plastic"), 0);
        build();
        zebSceneEnd();
    }

    // Outlines agree to a hundredth of a pixel; away from them, depths to 1e-4 of a unit and
    // colours to half a step of 8 bits.
    void same(const Build& one, const Build& other, short sides = 2)
    {
        Picture a(5), b(5);
        render(a, [&] { zebBackface(sides), one(); });
        render(b, [&] { zebBackface(sides), other(); });
        EXPECT_TRUE(reports.empty());
        double covered = 0, edge = 0, difference = 0;
        const auto whole = [&](long x, long y) {
            for (long v = y - 2; v <= y + 2; ++v) {
                for (long u = x - 2; u <= x + 2; ++u) {
                    if (u < 0 || v < 0 || u >= kSize || v >= kSize) return false;
                    if (a.value(u, v, 3) < 1 || b.value(u, v, 3) < 1) return false;
                    // Not across a fold of the surface either.
                    if (std::fabs(a.value(u, v, 4) - a.value(x, y, 4)) > 0.02f) return false;
                }
            }
            return true;
        };
        long compared = 0;
        for (long y = 0; y < kSize; ++y) {
            for (long x = 0; x < kSize; ++x) {
                const float p = a.value(x, y, 3), q = b.value(x, y, 3);
                covered += double{p};
                edge += p > 0 && p < 1;
                difference += std::fabs(double{p} - double{q});
                EXPECT_NEAR(p, q, 0.06) << "coverage of " << x << ' ' << y;
                if (!whole(x, y)) continue;
                ++compared;
                EXPECT_NEAR(a.value(x, y, 4) * (kFar - kNear), b.value(x, y, 4) * (kFar - kNear),
                            1e-4)
                    << "depth of " << x << ' ' << y;
                for (int c = 0; c < 3; ++c) {
                    EXPECT_NEAR(a.value(x, y, c), b.value(x, y, c), 0.5 / 255)
                        << "colour of " << x << ' ' << y;
                }
            }
        }
        EXPECT_GT(covered, 500);
        EXPECT_GT(compared, 100);
        EXPECT_LE(difference, 0.01 * edge);
    }

    Reports reports;
};

void addBicubic(const Grid4& points) { zebPatch(ZEB_BICUBIC, zebQuark("point"), points.data(), 0); }

// z = x y over the unit square of (x, y), of any degree, weights growing by a factor.
void addSaddle(long degree, float factor)
{
    std::vector<float> knots(static_cast<std::size_t>(2 * degree + 2), 0.0f);
    for (long k = 0; k <= degree; ++k) knots[static_cast<std::size_t>(degree + 1 + k)] = 1;
    std::vector<std::array<float, 4>> points;
    const auto d = static_cast<float>(degree);
    for (long j = 0; j <= degree; ++j) {
        for (long i = 0; i <= degree; ++i) {
            const float x = static_cast<float>(i) / d, y = static_cast<float>(j) / d;
            const float w = std::pow(factor, static_cast<float>(i));
            points.push_back({w * x, w * y, w * x * y, w});
        }
    }
    zebNurb(degree + 1, knots.data(), 0, 1, degree + 1, knots.data(), 0, 1, zebQuark("pointw"),
            points.data(), 0);
}

void addBilinearSaddle()
{
    const Vec corners[4] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 1}};
    zebPatch(ZEB_BILINEAR, zebQuark("point"), corners, 0);
}

}  // namespace

TEST_F(CurvedFamilies, RationalSplinesAreExactSpheres)
{
    same([] { zebSphere(1, -1, 1, 360, 0); }, [] { nurbsSphere(1).add(); }, kOutside);
}

TEST_F(CurvedFamilies, RationalSplinesAreExactCylinders)
{
    same([] { zebCylinder(0.7f, -0.8f, 0.8f, 360, 0); },
         [] { nurbsLine(0.7f, -0.8f, 0.7f, 0.8f).add(); }, kOutside);
}

TEST_F(CurvedFamilies, RationalSplinesAreExactCones)
{
    same([] { zebCone(0.8f, 1.2f, 1.2f, 360, 0); }, [] { nurbsLine(0.8f, 0, 0, 1.2f).add(); });
}

TEST_F(CurvedFamilies, RationalSplinesAreExactTori)
{
    same([] { zebTorus(0.7f, 0.3f, 0, 360, 360, 0); }, [] { nurbsTorus(0.7f, 0.3f).add(); },
         kOutside);
}

TEST_F(CurvedFamilies, RationalSplinesAreExactDisks)
{
    same([] { zebDisk(0, 0.9f, 360, 0); }, [] { nurbsLine(0.9f, 0, 0, 0).add(); });
}

TEST_F(CurvedFamilies, RationalSplinesAreExactHyperboloids)
{
    const float p[3] = {0.6f, 0.5f, -0.8f}, q[3] = {0.6f, -0.5f, 0.8f};
    // Turned to start at the x axis, the profile is a hyperbola; the lines across it are straight.
    Nurbs s{9, 3, 2, 2, circleKnots(), {0, 0, 1, 1}, {}};
    for (const float* end : {p, q}) {
        for (const ProfilePoint& c : circle()) {
            s.points.push_back({end[0] * c[0] - end[1] * c[1], end[1] * c[0] + end[0] * c[1],
                                end[2] * c[2], c[2]});
        }
    }
    same([&] { zebHyperboloid(p, q, 360, 0); }, [&] { s.add(); }, kOutside);
}

TEST_F(CurvedFamilies, QuadraticSplinesAreExactParaboloids)
{
    // Half a parabola from the tip to (0.8, 1). Micropolygons are small, because the one surface's
    // crowd at the tip and the other's don't.
    same([] { zebShadingRate(1.0f / 16), zebParaboloid(0.8f, 0, 1, 360, 0); },
         [] {
             zebShadingRate(1.0f / 16);
             revolution({{0, 0, 1}, {0.4f, 0, 1}, {0.8f, 1, 1}}, 3, {0, 0, 0, 1, 1, 1}).add();
         },
         kOutside);
}

TEST_F(CurvedFamilies, TheBasisMakesNoDifference)
{
    static constexpr float kBSpline[4][4] = {{-1.0f / 6, 0.5f, -0.5f, 1.0f / 6},
                                             {0.5f, -1, 0.5f, 0},
                                             {-0.5f, 0, 0.5f, 0},
                                             {1.0f / 6, 2.0f / 3, 1.0f / 6, 0}};
    static constexpr float kCatmullRom[4][4] = {
        {-0.5f, 1.5f, -1.5f, 0.5f}, {1, -2.5f, 2, -0.5f}, {-0.5f, 0, 0.5f, 0}, {0, 1, 0, 0}};
    static constexpr float kHermite[4][4] = {
        {2, 1, -2, 1}, {-3, -2, 3, -1}, {0, 1, 0, 0}, {1, 0, 0, 0}};
    static constexpr float kPower[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    const struct {
        short name;
        const float (*matrix)[4];
    } bases[] = {{ZEB_BASIS_BSPLINE, kBSpline},
                 {ZEB_BASIS_CATMULL_ROM, kCatmullRom},
                 {ZEB_BASIS_HERMITE, kHermite},
                 {ZEB_BASIS_POWER, kPower}};
    const Grid4 bezier = wave();
    for (const auto& basis : bases) {
        SCOPED_TRACE(basis.name);
        const Grid4 points = inBasis(bezier, basis.matrix);
        same([&] { addBicubic(bezier); },
             [&] {
                 zebBasis(basis.name, ZEB_APPLY_BOTH);
                 addBicubic(points);
             });
    }
}

TEST_F(CurvedFamilies, AFlatBilinearPatchIsTwoTriangles)
{
    const Vec p[4] = {
        {-0.9f, -0.7f, 0.1f}, {0.8f, -0.9f, 0.1f}, {-0.6f, 0.8f, 0.1f}, {0.9f, 0.7f, 0.1f}};
    same([&] { zebPatch(ZEB_BILINEAR, zebQuark("point"), p, 0); },
         [&] {
             polygon({p[0], p[1], p[3]});
             polygon({p[0], p[3], p[2]});
         });
}

TEST_F(CurvedFamilies, ABSplineMeshIsASplineOfUniformKnots)
{
    std::vector<Vec> points;
    for (int k = 0; k < 42; ++k) {
        const int i = k % 7, j = k / 7;
        points.push_back({-1.2f + 0.4f * static_cast<float>(i), -1 + 0.4f * static_cast<float>(j),
                          0.3f * static_cast<float>((i * 5 + j * 3) % 4)});
    }
    const float uknots[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    same(
        [&] {
            zebBasis(ZEB_BASIS_BSPLINE, ZEB_APPLY_BOTH);
            zebPatchMesh(ZEB_BICUBIC, 7, ZEB_NONPERIODIC, 6, ZEB_NONPERIODIC, zebQuark("point"),
                         points.data(), 0);
        },
        [&] {
            zebNurbMesh(7, 4, uknots, 3, 7, 6, 4, uknots, 3, 6, zebQuark("point"), points.data(),
                        0);
        });
}

TEST_F(CurvedFamilies, TheDegreeMakesNoDifference)
{
    for (long degree = 1; degree <= 9; ++degree) {
        SCOPED_TRACE(degree);
        same(addBilinearSaddle, [=] { addSaddle(degree, 1); });
    }
}

TEST_F(CurvedFamilies, WeightsOfAnyRatioMoveTheParametersAlone)
{
    for (const float factor : {0.1f, 100.0f}) {
        SCOPED_TRACE(factor);
        same(addBilinearSaddle, [=] { addSaddle(2, factor); });
    }
}

TEST_F(CurvedFamilies, RepeatedKnotsFoldAndEmptySpansVanish)
{
    // A roof: two flat strips that meet in a double knot of degree 1, and in a triple of degree 2.
    const Vec roof[6] = {{-0.8f, -0.6f, 0}, {0, -0.6f, 0.7f}, {0.8f, -0.6f, 0},
                         {-0.8f, 0.6f, 0},  {0, 0.6f, 0.7f},  {0.8f, 0.6f, 0}};
    const float line[] = {0, 0, 1, 1};
    const Build mesh = [&] {
        zebPatchMesh(ZEB_BILINEAR, 3, ZEB_NONPERIODIC, 2, ZEB_NONPERIODIC, zebQuark("point"), roof,
                     0);
    };
    const float knots1[] = {0, 0, 0.3f, 0.3f, 1, 1};
    std::vector<Vec> folded;
    for (const int k : {0, 1, 1, 2, 3, 4, 4, 5}) folded.push_back(roof[k]);
    same(mesh, [&] {
        zebNurbMesh(4, 2, knots1, 0, 1, 2, 2, line, 0, 1, zebQuark("point"), folded.data(), 0);
    });
    const float knots2[] = {0, 0, 0, 0.3f, 0.3f, 0.3f, 1, 1, 1};
    std::vector<Vec> smooth;
    for (int j = 0; j < 2; ++j) {
        const Vec *a = &roof[3 * j], *b = a + 1, *c = a + 2;
        const auto half = [](const Vec& p, const Vec& q) {
            return Vec{(p[0] + q[0]) / 2, (p[1] + q[1]) / 2, (p[2] + q[2]) / 2};
        };
        for (const Vec& p : {*a, half(*a, *b), *b, *b, half(*b, *c), *c}) smooth.push_back(p);
    }
    same(mesh, [&] {
        zebNurbMesh(6, 3, knots2, 0, 1, 2, 2, line, 0, 1, zebQuark("point"), smooth.data(), 0);
    });
}

TEST_F(CurvedFamilies, LimitsInsideTheKnotsTrim)
{
    // x = 2 u - 1 on the whole, of three spans in u.
    const float knots[] = {0, 0, 0.25f, 0.5f, 1, 1}, line[] = {0, 0, 1, 1};
    const Vec plane[8] = {{-1, -0.8f, 0}, {-0.5f, -0.8f, 0}, {0, -0.8f, 0}, {1, -0.8f, 0},
                          {-1, 0.8f, 0},  {-0.5f, 0.8f, 0},  {0, 0.8f, 0},  {1, 0.8f, 0}};
    same(
        [] {
            polygon({{-0.7f, -0.4f, 0}, {0.6f, -0.4f, 0}, {0.6f, 0.8f, 0}, {-0.7f, 0.8f, 0}});
        },
        [&] {
            zebNurbMesh(4, 2, knots, 0.15f, 0.8f, 2, 2, line, 0.25f, 1, zebQuark("point"), plane,
                        0);
        });
}

}  // namespace zebtest
