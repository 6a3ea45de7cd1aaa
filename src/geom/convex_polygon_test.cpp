#include "geom/convex_polygon.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "geom/triangle.h"
#include "state/quark.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

using Floats = std::vector<float>;

struct Pieces : PrimitiveSink {
    void add(std::unique_ptr<Primitive> piece) override { list.push_back(std::move(piece)); }
    const Polygon& polygon(std::size_t i) const
    {
        return dynamic_cast<const Polygon&>(*list.at(i));
    }
    bool triangle(std::size_t i) const { return dynamic_cast<Triangle*>(list.at(i).get()); }
    // The x coordinates of a piece's corners.
    Floats xs(std::size_t i) const
    {
        Floats result;
        for (long k = 0; k < polygon(i).nVertices(); ++k) result.push_back(polygon(i).vertex(k).x);
        return result;
    }
    std::vector<std::unique_ptr<Primitive>> list;
};

class ConvexPolygonTest : public testing::Test
{
protected:
    ConvexPolygonTest() { zebReset(); }
    ~ConvexPolygonTest() override { zebReset(); }

    static ConvexPolygon make(const Floats& points)
    {
        const unsigned short token = kQPoint;
        void* const value = const_cast<float*>(points.data());
        return {static_cast<long>(points.size() / 3), 1, &token, &value};
    }
    static std::pair<long, long> diagonal(const Floats& points)
    {
        const auto d = make(points).bestDiagonal();
        return {d.from, d.to};
    }
    // A convex polygon with corners at the angles, on an ellipse.
    static Floats onEllipse(const std::vector<double>& angles, double ry)
    {
        Floats points;
        for (double a : angles) {
            points.insert(points.end(), {static_cast<float>(std::cos(a)),
                                         static_cast<float>(ry * std::sin(a)), 0.0f});
        }
        return points;
    }

    zebtest::Reports reports;
};

const Floats kSquare{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};

}  // namespace

TEST_F(ConvexPolygonTest, IsAlwaysSplit)
{
    const ConvexPolygon p = make(kSquare);
    const RenderFrame frame{Option(), Matrix()};
    Dicing dicing{frame};
    EXPECT_FALSE(p.diceable(dicing, 1000));
    EXPECT_TRUE(p.canSplit());
    EXPECT_EQ(p.type(), 1);
}

TEST_F(ConvexPolygonTest, TakesItsPositionsOutOfTheVariables)
{
    const ConvexPolygon p = make(kSquare);
    EXPECT_EQ(p.args().find(kQPoint), nullptr);
    EXPECT_EQ(p.nVertices(), 4);
    EXPECT_EQ(p.vertex(2), Point(1, 1, 0));
}

TEST_F(ConvexPolygonTest, TheBoundIsInCameraSpace)
{
    zebTranslate(10, 0, 5);
    zebScale(2, -1, 1);
    const Boundw b = make(kSquare).bound();
    EXPECT_EQ(static_cast<const Bound&>(b), Bound(10, 12, -1, 0, 5, 5));
    EXPECT_EQ(b.wmin, 1);
    EXPECT_EQ(b.wmax, 1);
}

TEST_F(ConvexPolygonTest, TheBoundIsClippedByTheBoundAttribute)
{
    zebTranslate(10, 0, 0);
    const float box[6] = {0.25f, 5, -5, 0.75f, -1, 1};
    zebBound(box);
    EXPECT_EQ(static_cast<const Bound&>(make(kSquare).bound()), Bound(10.25f, 11, 0, 0.75f, 0, 0));
}

TEST_F(ConvexPolygonTest, CosMinAngleIsTheLargestCosineOfFour)
{
    const ConvexPolygon square = make(kSquare);
    EXPECT_NEAR(square.cosMinAngle(0, 2), std::sqrt(0.5), 1e-6);
    // A 3 by 4 rectangle: its diagonal leaves a corner of cosine 4/5.
    const ConvexPolygon rectangle = make({0, 0, 0, 4, 0, 0, 4, 3, 0, 0, 3, 0});
    EXPECT_NEAR(rectangle.cosMinAngle(0, 2), 0.8, 1e-6);
    EXPECT_NEAR(rectangle.cosMinAngle(1, 3), 0.8, 1e-6);
}

TEST_F(ConvexPolygonTest, ASquareIsCutAlongItsFirstDiagonal)
{
    EXPECT_EQ(diagonal(kSquare), std::pair(0L, 2L));
}

TEST_F(ConvexPolygonTest, AQuadrilateralIsCutWhereTheSmallestAngleIsLargest)
{
    // A kite, long along x: across is better.
    EXPECT_EQ(diagonal({-5, 0, 0, 0, -1, 0, 5, 0, 0, 0, 1, 0}), std::pair(1L, 3L));
    EXPECT_EQ(diagonal({0, -1, 0, 5, 0, 0, 0, 1, 0, -5, 0, 0}), std::pair(0L, 2L));
}

TEST_F(ConvexPolygonTest, TheDiagonalIsTheFirstBestOfTheNearlyOpposite)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> unit(0, 1);
    for (int round = 0; round < 300; ++round) {
        const long n = 4 + round % 7;
        std::vector<double> angles;
        for (long i = 0; i < n; ++i) {
            angles.push_back(2 * M_PI * (static_cast<double>(i) + 0.8 * unit(random)) /
                             static_cast<double>(n));
        }
        const ConvexPolygon p = make(onEllipse(angles, 0.2 + unit(random)));
        const long h = n / 2, odd = n % 2;
        std::pair<long, long> best(0, h);
        float least = 1;
        const auto attempt = [&](long i, long j) {
            const float c = p.cosMinAngle(i, j);
            if (c < least) {
                least = c;
                best = {i, j};
            }
        };
        for (long i = 0; i < h + odd; ++i) {
            if (h + i < n) attempt(i, h + i);
            if (odd && h + i + 1 < n) attempt(i, h + i + 1);
        }
        const auto found = p.bestDiagonal();
        EXPECT_EQ(std::pair(found.from, found.to), best) << n;
    }
}

TEST_F(ConvexPolygonTest, EveryDiagonalOfAPentagonIsTried)
{
    // One corner stretched far out: the cut must run between its neighbours. A corner k stretched
    // leaves the diagonal (k - 1, k + 1).
    const std::pair<long, long> expected[] = {{1, 4}, {0, 2}, {1, 3}, {2, 4}, {0, 3}};
    for (int k = 0; k < 5; ++k) {
        Floats points;
        for (int i = 0; i < 5; ++i) {
            const double a = 2 * M_PI * i / 5, r = i == k ? 1.6 : 1;
            points.insert(points.end(), {static_cast<float>(r * std::cos(a)),
                                         static_cast<float>(r * std::sin(a)), 0.0f});
        }
        const ConvexPolygon p = make(points);
        float least = 1;
        std::pair<long, long> best(0, 2);
        for (const auto& [i, j] : {std::pair(0L, 2L), {0, 3}, {1, 3}, {1, 4}, {2, 4}}) {
            const float c = p.cosMinAngle(i, j);
            if (c < least) {
                least = c;
                best = {i, j};
            }
        }
        EXPECT_EQ(best, expected[k]) << "the shape proves the diagonal";
        EXPECT_EQ(diagonal(points), best) << k;
    }
}

TEST_F(ConvexPolygonTest, CollinearVerticesAreCutInTheMiddle)
{
    EXPECT_EQ(diagonal({0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0, 0, 5, 0, 0}), std::pair(0L, 3L));
}

TEST_F(ConvexPolygonTest, ThreeVerticesMakeOneTriangle)
{
    ConvexPolygon p = make({0, 0, 0, 1, 0, 0, 2, 1, 0});
    Pieces pieces;
    p.split(pieces);
    ASSERT_EQ(pieces.list.size(), 1u);
    EXPECT_TRUE(pieces.triangle(0));
    EXPECT_EQ(pieces.xs(0), (Floats{0, 1, 2}));
}

TEST_F(ConvexPolygonTest, ASquareSplitsIntoTwoTriangles)
{
    ConvexPolygon p = make({0, 0, 0, 1, 0, 0, 1.25f, 1, 0, 0.25f, 1, 0});
    const auto d = p.bestDiagonal();
    Pieces pieces;
    p.split(pieces);
    ASSERT_EQ(pieces.list.size(), 2u);
    EXPECT_TRUE(pieces.triangle(0));
    EXPECT_TRUE(pieces.triangle(1));
    const Floats x{0, 1, 1.25f, 0.25f};
    const auto at = [&](long i) { return x[static_cast<std::size_t>(i % 4)]; };
    EXPECT_EQ(pieces.xs(0), (Floats{at(d.from), at(d.from + 1), at(d.to)}));
    EXPECT_EQ(pieces.xs(1), (Floats{at(d.to), at(d.to + 1), at(d.from)}));
}

TEST_F(ConvexPolygonTest, PartsRunFromTheDiagonalsStartAndFromItsEnd)
{
    Floats points;
    for (int i = 0; i < 6; ++i) {
        points.insert(points.end(),
                      {static_cast<float>((1 + 0.01 * i) * std::cos(M_PI * i / 3)),
                       static_cast<float>((1 + 0.01 * i) * std::sin(M_PI * i / 3)), 0.0f});
    }
    ConvexPolygon p = make(points);
    const auto d = p.bestDiagonal();
    Pieces pieces;
    p.split(pieces);
    ASSERT_EQ(pieces.list.size(), 2u);
    Floats first, second;
    for (long i = d.from; i <= d.to; ++i) first.push_back(p.vertex(i).x);
    for (long i = d.to; i <= d.from + 6; ++i) second.push_back(p.vertex(i % 6).x);
    EXPECT_EQ(pieces.xs(0), first);
    EXPECT_EQ(pieces.xs(1), second);
    EXPECT_EQ(pieces.list[0]->type(), 1);
    EXPECT_EQ(pieces.list[1]->type(), 1);
}

TEST_F(ConvexPolygonTest, PiecesKeepTheValuesOfTheirVertices)
{
    const unsigned short own = zebDeclare("convex test: heat", 0xD02, 0xE01);
    const Floats heat{0, 1, 2, 3};
    const unsigned short tokens[] = {kQPoint, own};
    void* const values[] = {const_cast<float*>(kSquare.data()), const_cast<float*>(heat.data())};
    ConvexPolygon p(4, 2, tokens, values);
    Pieces pieces;
    p.split(pieces);
    ASSERT_EQ(pieces.list.size(), 2u);
    const ArgAssoc* second = pieces.list[1]->args().find(own);
    ASSERT_NE(second, nullptr);
    ASSERT_EQ(second->count(), 3);
    EXPECT_EQ(second->words()[0], 2);
    EXPECT_EQ(second->words()[1], 3);
    EXPECT_EQ(second->words()[2], 0);
}

TEST_F(ConvexPolygonTest, AMeshGivesTrianglesAndPolygonsFaceByFace)
{
    const Floats points{0, 0, 0, 1, 0, 0, 2, 1, 0, 3, 2, 0, 4, 0, 0};
    const unsigned short token = kQPoint;
    void* const value = const_cast<float*>(points.data());
    const long sizes[] = {3, 4, 3}, indices[] = {0, 1, 2, 4, 3, 2, 1, 2, 4, 0};
    ConvexPolygonMesh mesh(3, sizes, indices, 1, &token, &value);
    EXPECT_EQ(mesh.type(), 3);
    const RenderFrame frame{Option(), Matrix()};
    Dicing dicing{frame};
    EXPECT_FALSE(mesh.diceable(dicing, 1000));
    Pieces pieces;
    mesh.split(pieces);
    ASSERT_EQ(pieces.list.size(), 3u);
    EXPECT_TRUE(pieces.triangle(0));
    EXPECT_EQ(pieces.list[1]->type(), 1);
    EXPECT_TRUE(pieces.triangle(2));
    EXPECT_EQ(pieces.xs(0), (Floats{0, 1, 2}));
    EXPECT_EQ(pieces.xs(1), (Floats{4, 3, 2, 1}));
    EXPECT_EQ(pieces.xs(2), (Floats{2, 4, 0}));
}

// Takes what begins below a limit along x.
class SinkWithALimit : public Pieces
{
public:
    explicit SinkWithALimit(float limit) : fLimit(limit) {}
    Sight sight(const Primitive&, const Boundw& bound) const override
    {
        ++asked;
        if (bound.xmin >= fLimit) return Sight::kNone;
        return bound.xmax < fLimit ? Sight::kAll : Sight::kSome;
    }
    mutable int asked = 0;

private:
    const float fLimit;
};

// In the order of its faces, wherever they are.
TEST_F(ConvexPolygonTest, AMeshMakesNoFacesThatAreOutOfSight)
{
    constexpr int kFaces = 2000;
    Floats points;
    std::vector<long> sizes(kFaces, 3), indices;
    std::vector<float> expected;
    for (int k = 0; k < kFaces; ++k) {
        const auto x = static_cast<float>(k * 777 % kFaces);
        points.insert(points.end(), {x, 0, 1, x + 1, 0, 1, x, 1, 1});
        for (int corner = 0; corner < 3; ++corner) indices.push_back(3 * k + corner);
        if (x < 300) expected.push_back(x);
    }
    const unsigned short token = kQPoint;
    void* const value = points.data();
    ConvexPolygonMesh mesh(kFaces, sizes.data(), indices.data(), 1, &token, &value);
    SinkWithALimit some(300);
    mesh.split(some);
    ASSERT_EQ(some.list.size(), expected.size());
    for (std::size_t k = 0; k < expected.size(); ++k) {
        EXPECT_EQ(some.xs(k).front(), expected[k]) << k;
    }
    EXPECT_LT(some.asked, 250);
    SinkWithALimit all(1e6f), none(0);
    mesh.split(all);
    EXPECT_EQ(all.list.size(), static_cast<std::size_t>(kFaces));
    mesh.split(none);
    EXPECT_TRUE(none.list.empty());
    EXPECT_EQ(mesh.parts(), 0);
}

TEST_F(ConvexPolygonTest, APolygonNeedsItsPointsOnce)
{
    void* const values[] = {const_cast<float*>(kSquare.data()), const_cast<float*>(kSquare.data())};
    const unsigned short twice[] = {kQPoint, kQPoint};
    EXPECT_TRUE(ConvexPolygon::verify(4, 1, twice, values));
    EXPECT_TRUE(reports.empty());
    EXPECT_FALSE(ConvexPolygon::verify(4, 0, nullptr, nullptr));
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0], (zebtest::Report{13, 0xB04, "required argument missing"}));
    EXPECT_FALSE(ConvexPolygon::verify(4, 2, twice, values));
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[1], (zebtest::Report{11, 0xB04, "required argument specified 2 times"}));
}
