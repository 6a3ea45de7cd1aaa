#include "geom/quadric.h"

#include <gtest/gtest.h>

#include <functional>

#include "geom/grid.h"
#include "state/state.h"
#include "support/quadrics.h"
#include "support/reports.h"

using namespace zeb;
using namespace zebtest;

namespace
{

Point unit(double x, double y, double z)
{
    const double l = std::sqrt(x * x + y * y + z * z);
    return {static_cast<float>(x / l), static_cast<float>(y / l), static_cast<float>(z / l)};
}

class QuadricTest : public testing::Test
{
protected:
    QuadricTest() { zebReset(); }
    ~QuadricTest() override
    {
        EXPECT_TRUE(reports.empty());
        zebReset();
    }

    // Surfaces of every family.
    static void each(int count, unsigned seed,
                     const std::function<void(const Sample&, Numbers&)>& visit)
    {
        Numbers numbers(seed);
        for (const Family family : gFamilies) {
            for (int i = 0; i < count; ++i) {
                const Sample sample = family(numbers);
                SCOPED_TRACE(sample.what);
                visit(sample, numbers);
                if (HasFailure()) return;
            }
        }
    }
    static void expectForm(const Sample& s, int n = 16)
    {
        SCOPED_TRACE(s.what);
        for (int j = 0; j <= n; ++j) {
            for (int i = 0; i <= n; ++i) {
                const float u = static_cast<float>(i) / static_cast<float>(n);
                const float v = static_cast<float>(j) / static_cast<float>(n);
                const Pointw p = s.surface->evalP(u, v);
                EXPECT_EQ(p.w, 1);
                ASSERT_LE(apart(exact(p), s.form(u, v)), 2e-6 * s.size) << at(u, v);
            }
        }
    }
    std::unique_ptr<Grid> dice(const Primitive& surface, unsigned short u, unsigned short v)
    {
        const RenderFrame frame{Option(), Matrix()};
        return surface.dice(Dicing{frame, u, v});
    }
    // Every vertex of a grid has the normal that is expected of it, whatever its length.
    void expectNormals(const Sample& s, unsigned short nu, unsigned short nv,
                       const std::function<Point(double u, double v)>& normal, float agree = 0.9f)
    {
        SCOPED_TRACE(s.what);
        const auto grid = dice(*s.surface, nu, nv);
        for (int j = 0; j <= nv; ++j) {
            for (int i = 0; i <= nu; ++i) {
                const Vertex& vertex = grid->vertex(i, j);
                const Point n = normalize(vertex.dPdu ^ vertex.dPdv);
                ASSERT_GT(length(n), 0.99f) << i << ", " << j << ": no normal";
                ASSERT_GT(dot(n, normal(double(i) / nu, double(j) / nv)), agree)
                    << i << ", " << j << ": " << n;
            }
        }
    }

    void expectTubeNormals(double R, double a)
    {
        for (const unsigned short steps : {4, 15, 32}) {
            const Sample s = torus(static_cast<float>(R), static_cast<float>(a), 0, 360, 360);
            expectNormals(s, steps, steps, [&](double u, double v) {
                const double phi = v * 2 * kHalfTurn, theta = u * 2 * kHalfTurn;
                const double sign = R + a * std::cos(phi) >= -1e-9 ? 1 : -1;
                return unit(sign * std::cos(phi) * std::cos(theta),
                            sign * std::cos(phi) * std::sin(theta), sign * std::sin(phi));
            });
        }
    }

    zebtest::Reports reports;
};

}  // namespace

TEST_F(QuadricTest, TypeCodes)
{
    EXPECT_EQ(sphere(1, -1, 1, 360).surface->type(), 8);
    EXPECT_EQ(cone(1, 1, 1, 360).surface->type(), 9);
    EXPECT_EQ(cylinder(1, 0, 1, 360).surface->type(), 10);
    EXPECT_EQ(hyperboloid({1, 0, 0}, {1, 1, 1}, 360).surface->type(), 11);
    EXPECT_EQ(paraboloid(1, 0, 1, 360).surface->type(), 12);
    EXPECT_EQ(disk(0, 1, 360).surface->type(), 13);
    EXPECT_EQ(torus(2, 1, 0, 360, 360).surface->type(), 14);
}

TEST_F(QuadricTest, AreNotRationalAndMaySplit)
{
    each(1, 1, [](const Sample& s, Numbers&) {
        EXPECT_FALSE(s.surface->rational());
        EXPECT_TRUE(s.surface->canSplit());
    });
}

TEST_F(QuadricTest, LieOnTheirClosedForms)
{
    each(150, 2, [](const Sample& s, Numbers&) { expectForm(s); });
}

TEST_F(QuadricTest, SatisfyTheirImplicitEquations)
{
    Numbers n(3);
    for (int k = 0; k < 3000; ++k) {
        const float u = n.unit(), v = n.unit();
        const auto place = [&](const Sample& s) { return exact(s.surface->evalP(u, v)); };
        Exact p = place(sphere(3, -2, 2.5f, 200));
        EXPECT_NEAR(p.x * p.x + p.y * p.y + p.z * p.z, 9, 1e-5);
        EXPECT_TRUE(p.z > -2.00001 && p.z < 2.50001);
        p = place(cone(3, 6, 4, -200));
        EXPECT_NEAR(std::hypot(p.x, p.y), 3 * (1 - p.z / 6), 1e-5);
        EXPECT_TRUE(p.z > -0.00001 && p.z < 4.00001);
        p = place(paraboloid(2, -1, -4, 360));
        EXPECT_NEAR(p.x * p.x + p.y * p.y, 4 * p.z / -4, 1e-5);
        p = place(torus(3, 1, 30, 300, 270));
        EXPECT_NEAR(std::pow(std::hypot(p.x, p.y) - 3, 2) + p.z * p.z, 1, 1e-5);
        p = place(disk(1, 3, 45));
        EXPECT_EQ(p.z, 0);
        EXPECT_TRUE(std::hypot(p.x, p.y) > 0.99999 && std::hypot(p.x, p.y) < 3.00001);
    }
}

TEST_F(QuadricTest, DerivativesAreThoseOfTheSurface)
{
    each(120, 4, [](const Sample& s, Numbers& n) {
        // Away from the tip of a paraboloid, where it is upright.
        const bool tip = s.surface->type() == kParaboloid;
        for (int k = 0; k < 10; ++k) {
            const float u = n.uniform(0.05f, 0.95f), v = n.uniform(tip ? 0.3f : 0.05f, 0.95f);
            const double z = s.form(u, v).z;
            if (tip && std::fabs(z) < 0.25 * s.size) continue;
            expectDerivatives(*s.surface, u, v, 2e-4 * s.size);
        }
    });
}

TEST_F(QuadricTest, AllAtOnceIsTheSameAsOneByOne)
{
    each(20, 5, [](const Sample& s, Numbers& n) {
        const float u = n.unit(), v = n.uniform(0.1f, 1);
        const Differential all = s.surface->evaluate(u, v);
        EXPECT_EQ(rounded(all.P), s.surface->evalP(u, v));
        EXPECT_EQ(rounded(all.dPdu), s.surface->evaldPdu(u, v));
        EXPECT_EQ(rounded(all.dPdv), s.surface->evaldPdv(u, v));
    });
}

TEST_F(QuadricTest, TheBoundHoldsTheSurface)
{
    each(150, 6, [](const Sample& s, Numbers&) { expectBoundHolds(*s.surface, 40); });
}

TEST_F(QuadricTest, TheBoundHoldsTheSurfaceUnderAnyTransformation)
{
    Numbers n(7);
    for (int i = 0; i < 60; ++i) {
        zebLoadIdentity();
        applyRandomTransformation(n);
        each(2, 100 + static_cast<unsigned>(i),
             [](const Sample& s, Numbers&) { expectBoundHolds(*s.surface, 40); });
    }
}

TEST_F(QuadricTest, TheBoundOfAPieceHoldsThePiece)
{
    each(12, 8, [](const Sample& s, Numbers& n) {
        Pieces pieces = split(*s.surface);
        for (int depth = 0; depth < 5; ++depth) {
            Primitive& piece = pieces[static_cast<std::size_t>(n.integer(0, 3))];
            expectBoundHolds(piece, 12);
            pieces = split(piece);
        }
    });
}

TEST_F(QuadricTest, BoundsShrinkWithThePieces)
{
    each(8, 9, [](const Sample& s, Numbers& n) {
        Pieces pieces = split(*s.surface);
        for (int depth = 0; depth < 11; ++depth) {
            pieces = split(pieces[static_cast<std::size_t>(n.integer(0, 3))]);
        }
        EXPECT_LE(extent(pieces[0].bound()), 0.1 * s.size);
    });
}

// Whether a sweep passes an axis, and not one axis more.
TEST_F(QuadricTest, TheBoundOfASweepIsNoLargerThanItNeedBe)
{
    Numbers n(16);
    for (int k = 0; k < 600; ++k) {
        // Whole and half quarters, and anything.
        const float theta =
            k % 2 ? n.uniform(-400, 400) : 45.0f * static_cast<float>(n.integer(-9, 9));
        const Point from(n.uniform(-2, 2), k % 3 ? n.uniform(-2, 2) : 0, 0);
        const Point to(from.x, from.y, 1);
        const Sample s = hyperboloid(from, to, theta);
        std::unique_ptr<Primitive> piece = s.surface->copy(true);
        for (long depth = n.integer(0, 6); depth > 0; --depth) {
            Pieces pieces = split(*piece);
            piece = std::move(pieces.list[static_cast<std::size_t>(n.integer(0, 3))]);
        }
        SCOPED_TRACE(s.what);
        expectBoundHolds(*piece, 100);
        Bound seen = Bound::empty();
        for (int i = 0; i <= 2000; ++i) {
            const Pointw p = piece->evalP(static_cast<float>(i) / 2000, 0);
            seen.add({p.x, p.y, p.z});
        }
        const Boundw found = piece->bound();
        const float room = 1e-5f;
        EXPECT_GT(found.xmin, seen.xmin - room);
        EXPECT_LT(found.xmax, seen.xmax + room);
        EXPECT_GT(found.ymin, seen.ymin - room);
        EXPECT_LT(found.ymax, seen.ymax + room);
        if (HasFailure()) return;
    }
}

// Down to pieces whose ends differ in their last digits alone, on either side of an axis.
TEST_F(QuadricTest, BoundsShrinkWithThePiecesAroundAnAxis)
{
    Numbers n(17);
    for (int k = 0; k < 300; ++k) {
        const Point from(n.uniform(-2, 2), n.uniform(-2, 2), 0);
        const Point to(from.x, from.y, 1);
        const Sample s = hyperboloid(from, to, 360);
        const auto isBeyond = [k](const Primitive& piece, float u) {
            const Pointd p = homogenized(piece.pointAt(u, 0));
            return (k % 2 ? p.x : p.y) > 0;
        };
        std::unique_ptr<Primitive> piece = s.surface->copy(true);
        for (int depth = 1; depth < 58; ++depth) {
            Pieces pieces = split(*piece);
            const bool first = isBeyond(pieces[0], 0) != isBeyond(pieces[0], 1);
            piece = std::move(pieces.list[first ? 0 : 1]);
            const Boundw b = piece->bound();
            const float most = 4 * 6.3f / std::exp2(static_cast<float>(depth)) + 1e-5f;
            ASSERT_LT(b.xmax - b.xmin, most) << depth;
            ASSERT_LT(b.ymax - b.ymin, most) << depth;
        }
    }
}

TEST_F(QuadricTest, TheBoundAttributeClips)
{
    const float box[6] = {-100, 0.5f, -0.25f, 100, -100, 100};
    zebTranslate(10, 20, 30);
    zebBound(box);
    each(10, 10, [](const Sample& s, Numbers&) {
        const Boundw b = s.surface->bound();
        EXPECT_LE(b.xmax, 10.5f);
        EXPECT_GE(b.ymin, 19.75f);
    });
    const Boundw b = sphere(1, -1, 1, 360).surface->bound();
    EXPECT_LE(b.xmin, 9);
    EXPECT_EQ(b.xmax, 10.5f);
    EXPECT_EQ(b.ymin, 19.75f);
    EXPECT_GE(b.ymax, 21);
}

TEST_F(QuadricTest, SplitsIntoFourQuarters)
{
    each(40, 11, [](const Sample& s, Numbers&) { expectQuarters(*s.surface, 2e-6 * s.size); });
}

TEST_F(QuadricTest, PiecesOfPiecesLieOnTheSurface)
{
    each(10, 12, [](const Sample& s, Numbers& n) {
        std::unique_ptr<Primitive> piece = s.surface->copy(true);
        float u = 0, v = 0, size = 1;
        for (int depth = 0; depth < 10; ++depth) {
            const long i = n.integer(0, 3);
            Pieces pieces = split(*piece);
            piece = std::move(pieces.list[static_cast<std::size_t>(i)]);
            size /= 2;
            u += i % 2 ? size : 0;
            v += i / 2 ? size : 0;
        }
        expectPart(*piece, *s.surface, u, u + size, v, v + size, 1e-6 * s.size);
        // Corners are exact multiples: neighbours from different depths meet in them.
        EXPECT_EQ(piece->evalP(0, 0), s.surface->evalP(u, v));
        EXPECT_EQ(piece->evalP(1, 1), s.surface->evalP(u + size, v + size));
    });
}

TEST_F(QuadricTest, DerivativesOfAPieceAreScaled)
{
    each(20, 13, [](const Sample& s, Numbers&) {
        Pieces pieces = split(*s.surface);
        const Pointw whole = s.surface->evaldPdu(0.75f, 0.75f);
        const Pointw part = pieces[3].evaldPdu(0.5f, 0.5f);
        EXPECT_LE(apart3(exact(whole * 0.5f), exact(part)), 1e-5 * s.size);
        const Pointw wholeV = s.surface->evaldPdv(0.75f, 0.75f);
        const Pointw partV = pieces[3].evaldPdv(0.5f, 0.5f);
        EXPECT_LE(apart3(exact(wholeV * 0.5f), exact(partV)), 1e-5 * s.size);
    });
}

TEST_F(QuadricTest, PiecesTakeTheirShareOfTheVariables)
{
    const Variables variables(4);  // a quadric has its corners for control points
    const auto tokens = variables.tokens(0);
    const auto values = variables.values(nullptr);
    Sphere surface(SphereCurve(1, -1, 1), 360, 5, tokens.data(), values.data());
    variables.expectRange(surface, 0, 1, 0, 1);
    Pieces pieces = split(surface);
    ASSERT_EQ(pieces.size(), 4u);
    variables.expectRange(pieces[0], 0, 0.5f, 0, 0.5f);
    variables.expectRange(pieces[1], 0.5f, 1, 0, 0.5f);
    variables.expectRange(pieces[2], 0, 0.5f, 0.5f, 1);
    variables.expectRange(pieces[3], 0.5f, 1, 0.5f, 1);
    Pieces quarters = split(pieces[2]);
    variables.expectRange(quarters[1], 0.25f, 0.5f, 0.5f, 0.75f);
    variables.expectRange(*surface.copy(true), 0, 1, 0, 1);
}

TEST_F(QuadricTest, ACopyIsTheSameSurface)
{
    each(5, 14, [](const Sample& s, Numbers& n) {
        const auto copy = s.surface->copy(true);
        EXPECT_EQ(copy->type(), s.surface->type());
        for (int k = 0; k < 20; ++k) {
            const float u = n.unit(), v = n.unit();
            EXPECT_EQ(copy->evalP(u, v), s.surface->evalP(u, v));
        }
    });
}

TEST_F(QuadricTest, AGridIsTheSurfaceInCameraSpace)
{
    zebTranslate(1, 2, 3);
    zebScale(2, 1, 1);
    each(10, 15, [this](const Sample& s, Numbers&) {
        const auto grid = dice(*s.surface, 7, 5);
        EXPECT_EQ(grid->fUSize, 7);
        EXPECT_EQ(grid->fVSize, 5);
        EXPECT_FALSE(grid->fTransposed);
        for (int j = 0; j <= 5; ++j) {
            for (int i = 0; i <= 7; ++i) {
                const Exact p = s.form(i / 7.0, j / 5.0);
                const Point found = grid->vertex(i, j).P;
                EXPECT_NEAR(found.x, 2 * p.x + 1, 4e-6 * (s.size + 1));
                EXPECT_NEAR(found.y, p.y + 2, 4e-6 * (s.size + 1));
                EXPECT_NEAR(found.z, p.z + 3, 4e-6 * (s.size + 1));
            }
        }
    });
}

TEST_F(QuadricTest, ASphereOfFullHeightReachesBothPoles)
{
    for (const float limit : {2.0f, 5.0f}) {
        const Sample s = sphere(2, -limit, limit, 360);
        EXPECT_LE(apart(exact(s.surface->evalP(0.3f, 0)), {0, 0, -2, 1}), 1e-6);
        EXPECT_LE(apart(exact(s.surface->evalP(0.3f, 1)), {0, 0, 2, 1}), 1e-6);
        expectForm(s);
    }
}

TEST_F(QuadricTest, SphereLimitsThatTheSphereDoesNotReach)
{
    for (const auto& limits : {std::pair(3.0f, 4.0f), std::pair(-4.0f, -3.0f),
                               std::pair(3.0f, -3.0f), std::pair(2.0f, 2.0f)}) {
        const Sample s = sphere(2, limits.first, limits.second, 360);
        SCOPED_TRACE(s.what);
        expectBoundHolds(*s.surface, 8);
        for (float v = 0; v <= 1; v += 0.125f) {
            const Exact p = exact(s.surface->evalP(0.3f, v));
            EXPECT_NEAR(p.x * p.x + p.y * p.y + p.z * p.z, 4, 1e-5);
            EXPECT_TRUE(finite(s.surface->evaldPdu(0.3f, v)));
            EXPECT_TRUE(finite(s.surface->evaldPdv(0.3f, v)));
        }
    }
}

TEST_F(QuadricTest, ASphereWithoutRadiusIsThePointAtTheOrigin)
{
    for (const float limit : {0.0f, 1.0f, -1.0f}) {
        const Sample s = sphere(0, limit, 1, 360);
        for (float v = 0; v <= 1; v += 0.25f) {
            EXPECT_LE(apart(exact(s.surface->evalP(v, v)), {0, 0, 0, 1}), 1e-30);
            EXPECT_TRUE(finite(s.surface->evaldPdv(v, v)));
        }
        expectBoundHolds(*s.surface, 4);
    }
}

TEST_F(QuadricTest, ASphereOfNegativeRadiusKeepsItsLimitsInside)
{
    // Limits are compared with -r and r as they are: none of these cuts.
    for (const auto& limits : {std::pair(-1.0f, 1.0f), std::pair(-2.0f, 2.0f),
                               std::pair(2.0f, -2.0f), std::pair(1.0f, -1.5f)}) {
        const Sample s = sphere(-2, limits.first, limits.second, 90);
        expectForm(s);
        expectBoundHolds(*s.surface, 8);
        EXPECT_NEAR(s.surface->evalP(0, 0).z, 2, 1e-6);
    }
    const Sample below = sphere(-2, -1, -3, 90);
    EXPECT_TRUE(finite(below.surface->evalP(0.5f, 1)));
    expectBoundHolds(*below.surface, 8);
}

TEST_F(QuadricTest, SweepsEndAtAFullTurn)
{
    for (const float theta : {360.0f, 720.0f, 1e30f}) {
        const Sample a = cylinder(1, 0, 1, theta), b = cylinder(1, 0, 1, 360);
        for (float u = 0; u <= 1; u += 0.0625f) {
            EXPECT_EQ(a.surface->evalP(u, 0.5f), b.surface->evalP(u, 0.5f));
        }
        expectForm(cone(1, 2, 2, -theta));
        expectForm(torus(2, 1, 0, theta, theta));
    }
    // No sweep at all is a curve, and nothing to trip over.
    expectForm(sphere(1, -1, 1, 0));
    expectBoundHolds(*sphere(1, -1, 1, 0).surface, 8);
}

TEST_F(QuadricTest, AConesCutLiesBetweenItsBaseAndItsApex)
{
    const auto top = [](float h, float c) { return cone(2, h, c, 360).surface->evalP(0, 1); };
    EXPECT_EQ(top(4, 2), Pointw(1, 0, 2, 1));
    EXPECT_EQ(top(4, 9), Pointw(0, 0, 4, 1));
    EXPECT_EQ(top(4, -1), Pointw(2, 0, 0, 1));
    EXPECT_EQ(top(4, 0), Pointw(2, 0, 0, 1));
}

TEST_F(QuadricTest, OnlyConesOfPositiveHeightAreCut)
{
    for (const float h : {-4.0f, -1e-12f, 0.0f, 9e-11f}) {
        for (const float c : {-9.0f, -2.0f, 0.0f, 1.0f}) {
            const Sample s = cone(2, h, c, 360);
            expectForm(s);
            EXPECT_EQ(s.surface->evalP(0, 1), Pointw(0, 0, h, 1)) << s.what;
            EXPECT_EQ(s.surface->evalP(0, 0.5f), Pointw(1, 0, h / 2, 1)) << s.what;
        }
    }
    EXPECT_FLOAT_EQ(cone(2, 2e-10f, 1e-10f, 360).surface->evalP(0, 1).x, 1);
}

TEST_F(QuadricTest, DisksKeepTheirHoleInside)
{
    expectForm(disk(3, 2, 360));
    EXPECT_EQ(disk(3, 2, 360).surface->evalP(0, 1), Pointw(2, 0, 0, 1));
    EXPECT_EQ(disk(-3, 2, 360).surface->evalP(0, 1), Pointw(0, 0, 0, 1));
    EXPECT_EQ(disk(0.5f, 2, 360).surface->evalP(0, 0), Pointw(2, 0, 0, 1));
    EXPECT_EQ(disk(0.5f, 2, 360).surface->evalP(0, 1), Pointw(0.5f, 0, 0, 1));
}

TEST_F(QuadricTest, ADiskOfNegativeRadiusIsThePointAtTheOrigin)
{
    for (const float inner : {-3.0f, 0.0f, 3.0f}) {
        const Sample s = disk(inner, -2, 360);
        for (float u = 0; u <= 1; u += 0.25f) {
            const Pointw p = s.surface->evalP(u, 1 - u);
            EXPECT_EQ(std::fabs(p.x) + std::fabs(p.y) + std::fabs(p.z), 0);
        }
        expectBoundHolds(*s.surface, 4);
    }
}

TEST_F(QuadricTest, ATorusBringsItsAnglesIntoOneTurn)
{
    const struct {
        float phimin, phimax;
        double from, to;
    } cases[] = {{370, 380, 10, 20},     {-370, -380, -10, -20}, {350, 380, -10, 20},
                 {-350, -380, 10, -20},  {0, 720, 0, 360},       {90, 1000, -270, 90},
                 {-90, -1000, 270, -90}, {0, 360, 0, 360},       {-180, 180, -180, 180},
                 {730, 725, 10, 5}};
    for (const auto& c : cases) {
        const TorusCurve curve(3, 1, c.phimin, c.phimax);
        EXPECT_NEAR(curve.phimin, c.from / 180 * kHalfTurn, 1e-6) << c.phimin;
        EXPECT_NEAR(curve.phimax, c.to / 180 * kHalfTurn, 1e-6) << c.phimin;
        expectForm(torus(3, 1, c.phimin, c.phimax, 360));
    }
}

TEST_F(QuadricTest, AParaboloidsTipHasFiniteDerivatives)
{
    for (const float zmax : {1.0f, -2.0f, 1e-9f, 1e9f}) {
        const Sample s = paraboloid(1, 0, zmax, 360);
        SCOPED_TRACE(s.what);
        expectForm(s);
        EXPECT_TRUE(finite(s.surface->evaldPdu(0.5f, 0)));
        EXPECT_TRUE(finite(s.surface->evaldPdv(0.5f, 0)));
    }
    EXPECT_TRUE(finite(paraboloid(1, 2, 1, 360).surface->evaldPdv(0.5f, 0)));
}

TEST_F(QuadricTest, ASpheresNormalsPointOutwards)
{
    for (const unsigned short steps : {1, 4, 16, 33}) {
        const Sample s = sphere(2, -2, 2, 360);
        expectNormals(s, steps, steps, [&](double u, double v) {
            const Exact p = s.form(u, v);
            return unit(p.x, p.y, p.z);
        });
        const Sample tiny = sphere(1e-3f, -1e-3f, 1e-3f, 90);
        expectNormals(tiny, steps, steps, [&](double u, double v) {
            const Exact p = tiny.form(u, v);
            return unit(p.x, p.y, p.z);
        });
        const Sample backwards = sphere(2, -2, 2, -270);
        expectNormals(backwards, steps, steps, [&](double u, double v) {
            const Exact p = backwards.form(u, v);
            return unit(-p.x, -p.y, -p.z);
        });
    }
}

TEST_F(QuadricTest, AConesApexHasTheNormalsOfItsSides)
{
    for (const float h : {4.0f, -4.0f}) {
        const Sample s = cone(2, h, 4, 360);
        expectNormals(s, 12, 8, [&](double u, double) {
            const double sign = h > 0 ? 1 : -1, a = u * 2 * kHalfTurn;
            return unit(sign * 4 * std::cos(a), sign * 4 * std::sin(a), 2);
        });
    }
}

TEST_F(QuadricTest, ADiskFacesUpEvenInItsCentre)
{
    expectNormals(
        disk(0, 2, 360), 12, 8, [](double, double) { return Point(0, 0, 1); }, 0.999f);
    expectNormals(
        disk(0, 2, -90), 3, 5, [](double, double) { return Point(0, 0, -1); }, 0.999f);
}

TEST_F(QuadricTest, AParaboloidsTipFacesAwayFromItsBowl)
{
    for (const float zmax : {1.0f, 3.0f}) {
        expectNormals(paraboloid(2, 0, zmax, 360), 12, 16, [&](double u, double v) {
            const double a = u * 2 * kHalfTurn, z = v * double{zmax};
            const double rho = 2 * std::sqrt(z / zmax), slope = 2 / double{zmax};
            // The gradient of x^2 + y^2 - 4 z / zmax.
            return unit(rho * std::cos(a), rho * std::sin(a), -slope);
        });
    }
}

TEST_F(QuadricTest, ATorusHasTheNormalsOfItsTube)
{
    // The last crosses itself: inside the spindle the surface is turned round.
    expectTubeNormals(3, 1);
    expectTubeNormals(-3, 1);
    expectTubeNormals(1, 2.5);
}

TEST_F(QuadricTest, ATorusWithoutAHoleHasNormalsWhereItTouchesItself) { expectTubeNormals(1, 1); }

TEST_F(QuadricTest, ATorusThatIsASphereHasTheNormalsOfOne)
{
    // Half a turn of a tube about its own centre, from pole to pole.
    const Sample s = torus(0, 2, -90, 90, 360);
    expectNormals(s, 8, 8, [&](double u, double v) {
        const Exact p = s.form(u, v);
        return unit(p.x, p.y, p.z);
    });
}

TEST_F(QuadricTest, PolesOfPiecesHaveNormalsToo)
{
    const Sample s = sphere(2, -2, 2, 360);
    Pieces pieces = split(*s.surface);
    for (int depth = 0; depth < 8; ++depth) {
        const auto grid = dice(pieces[0], 4, 4);
        for (int i = 0; i <= 4; ++i) {
            const Vertex& pole = grid->vertex(i, 0);
            const Point n = normalize(pole.dPdu ^ pole.dPdv);
            EXPECT_LT(n.z, -0.9f) << "depth " << depth << ", " << n;
        }
        pieces = split(pieces[0]);
    }
}
