#include "geom/patch_mesh.h"

#include <gtest/gtest.h>

#include "state/quark.h"
#include "state/state.h"
#include "support/bases.h"
#include "support/reports.h"
#include "support/sampling.h"

using namespace zeb;
using namespace zebtest;

namespace
{

constexpr long gSteps[] = {3, 1, 1, 2, 4, 1};

struct Shape {
    short type = ZEB_BICUBIC;
    long nu = 4;
    short uwrap = ZEB_NONPERIODIC;
    long nv = 4;
    short vwrap = ZEB_NONPERIODIC;

    bool cubic() const { return type == ZEB_BICUBIC; }
    std::string name() const
    {
        return std::string(cubic() ? "bicubic " : "bilinear ") + std::to_string(nu) +
               (uwrap == ZEB_PERIODIC ? "p x " : " x ") + std::to_string(nv) +
               (vwrap == ZEB_PERIODIC ? "p" : "");
    }
    static long patches(bool cubic, long n, short wrap, long step)
    {
        if (!cubic) return wrap == ZEB_PERIODIC ? n : n - 1;
        return wrap == ZEB_PERIODIC ? n / step : (n - 4) / step + 1;
    }
};

// A mesh and an evaluation of its own.
struct Net {
    Shape shape;
    int ubasis, vbasis;
    std::vector<Point> points;

    // Makes the bases those in force.
    Net(const Shape& s, int ub, int vb, Numbers& n) : shape(s), ubasis(ub), vbasis(vb)
    {
        points = randomPoints(n, static_cast<std::size_t>(s.nu * s.nv));
        setBasis(ub, ZEB_APPLY_U);
        setBasis(vb, ZEB_APPLY_V);
    }
    long patchesU() const
    {
        return Shape::patches(shape.cubic(), shape.nu, shape.uwrap, gSteps[ubasis]);
    }
    long patchesV() const
    {
        return Shape::patches(shape.cubic(), shape.nv, shape.vwrap, gSteps[vbasis]);
    }
    const Point& point(long i, long j) const
    {
        return points[static_cast<std::size_t>((j % shape.nv) * shape.nu + i % shape.nu)];
    }
    // On patch (i, j) at (u, v).
    Exact at(long i, long j, double u, double v) const
    {
        Exact sum;
        const long order = shape.cubic() ? 4 : 2;
        const Weights a = shape.cubic() ? gBases[ubasis](u) : Weights{1 - u, u};
        const Weights b = shape.cubic() ? gBases[vbasis](v) : Weights{1 - v, v};
        const long i0 = i * (shape.cubic() ? gSteps[ubasis] : 1);
        const long j0 = j * (shape.cubic() ? gSteps[vbasis] : 1);
        for (long l = 0; l < order; ++l) {
            for (long k = 0; k < order; ++k) {
                const double w = a[static_cast<std::size_t>(k)] * b[static_cast<std::size_t>(l)];
                const Point& p = point(i0 + k, j0 + l);
                sum.x += w * p.x;
                sum.y += w * p.y;
                sum.z += w * p.z;
            }
        }
        return sum;
    }
};

bool verify(const Shape& s, const std::vector<Point>& points)
{
    const unsigned short token = kQPoint;
    void* const value = const_cast<Point*>(points.data());
    return PatchMesh::verify(s.type, s.nu, s.uwrap, s.nv, s.vwrap, 1, &token, &value);
}

// Checked and built, as the interface does it.
std::unique_ptr<PatchMesh> make(const Shape& s, const std::vector<unsigned short>& tokens,
                                const std::vector<void*>& values)
{
    const long n = static_cast<long>(tokens.size());
    if (!PatchMesh::verify(s.type, s.nu, s.uwrap, s.nv, s.vwrap, n, tokens.data(), values.data())) {
        return nullptr;
    }
    return std::make_unique<PatchMesh>(s.type, s.nu, s.uwrap, s.nv, s.vwrap, n, tokens.data(),
                                       values.data());
}

std::unique_ptr<PatchMesh> make(const Net& net)
{
    return make(net.shape, {kQPoint}, {const_cast<Point*>(net.points.data())});
}

class PatchMeshTest : public testing::Test
{
protected:
    PatchMeshTest() { zebReset(); }
    ~PatchMeshTest() override { zebReset(); }

    // Meshes of both kinds, in every basis and wrap, with counts that fit.
    static void each(unsigned seed, const std::function<void(const Net&, Numbers&)>& visit)
    {
        Numbers n(seed);
        for (const short type : {ZEB_BILINEAR, ZEB_BICUBIC}) {
            for (int k = 0; k < 36; ++k) {
                Shape s;
                s.type = type;
                s.uwrap = n.unit() < 0.5f ? ZEB_PERIODIC : ZEB_NONPERIODIC;
                s.vwrap = n.unit() < 0.5f ? ZEB_PERIODIC : ZEB_NONPERIODIC;
                s.nu = count(type, s.uwrap, gSteps[k % 6], n.integer(1, 5));
                s.nv = count(type, s.vwrap, gSteps[k / 6], n.integer(1, 5));
                const Net net(s, k % 6, k / 6, n);
                SCOPED_TRACE(s.name() + ", bases " + std::to_string(k % 6) + ", " +
                             std::to_string(k / 6));
                visit(net, n);
                if (HasFailure()) return;
            }
        }
    }
    static long count(short type, short wrap, long step, long patches)
    {
        if (type == ZEB_BILINEAR) return wrap == ZEB_PERIODIC ? patches + 1 : patches + 1;
        if (wrap == ZEB_PERIODIC) return std::max(step * patches, 4 / step * step + step);
        return step * (patches - 1) + 4;
    }

    zebtest::Reports reports;
};

}  // namespace

TEST_F(PatchMeshTest, IsNeverDiced)
{
    Numbers n(1);
    const Net net({}, 0, 0, n);
    const auto mesh = make(net);
    ASSERT_NE(mesh, nullptr);
    const RenderFrame frame{Option(), Matrix()};
    Dicing dicing{frame};
    EXPECT_FALSE(mesh->diceable(dicing, 1e9f));
    EXPECT_FALSE(mesh->diceable(dicing, -1));
    EXPECT_EQ(mesh->type(), 6);
    EXPECT_FALSE(mesh->rational());
}

TEST_F(PatchMeshTest, AMeshOfOnePatchSplitsOnceIntoIt)
{
    Numbers n(2);
    for (const short type : {ZEB_BILINEAR, ZEB_BICUBIC}) {
        Shape s;
        s.type = type;
        if (!s.cubic()) s.nu = s.nv = 2;
        const Net net(s, 0, 0, n);
        const Variables variables(s.nu * s.nv);
        const auto mesh = make(s, variables.tokens(kQPoint), variables.values(net.points.data()));
        Pieces pieces = split(*mesh);
        ASSERT_EQ(pieces.size(), 1u);
        EXPECT_EQ(pieces[0].type(), 5);
        EXPECT_EQ(dynamic_cast<BicubicPatch*>(&pieces[0]) != nullptr, s.cubic());
        EXPECT_EQ(dynamic_cast<BilinearPatch*>(&pieces[0]) != nullptr, !s.cubic());
        variables.expectRange(pieces[0], 0, 1, 0, 1);
        for (int i = 0; i < 30; ++i) {
            const float u = n.unit(), v = n.unit();
            EXPECT_LE(apart(exact(pieces[0].evalP(u, v)), net.at(0, 0, u, v)), 1e-5);
        }
        EXPECT_EQ(split(pieces[0]).size(), 4u);
    }
}

TEST_F(PatchMeshTest, ExtraControlPointsAreReportedAndIgnored)
{
    Numbers n(3);
    const struct {
        long nu, nv;
        std::size_t patches;
        std::vector<const char*> reports;
    } cases[] = {{7, 4, 2, {}},
                 {8, 4, 2, {"extra control points in u will be ignored"}},
                 {9, 4, 2, {"extra control points in u will be ignored"}},
                 {10, 4, 3, {}},
                 {4, 7, 2, {}},
                 {4, 8, 2, {"extra control points in v will be ignored"}},
                 {6,
                  5,
                  1,
                  {"extra control points in u will be ignored",
                   "extra control points in v will be ignored"}},
                 {8, 7, 4, {"extra control points in u will be ignored"}}};
    for (const auto& c : cases) {
        Shape s;
        s.nu = c.nu;
        s.nv = c.nv;
        SCOPED_TRACE(s.name());
        const Net net(s, 0, 0, n);
        reports.clear();
        const auto mesh = make(net);
        ASSERT_NE(mesh, nullptr);
        ASSERT_EQ(reports.size(), c.reports.size());
        for (std::size_t i = 0; i < c.reports.size(); ++i) {
            EXPECT_EQ(reports[i], (zebtest::Report{10, 2820, c.reports[i]}));
        }
        reports.clear();
        const auto patches = leaves(*mesh);
        EXPECT_EQ(patches.size(), c.patches);
        EXPECT_TRUE(reports.empty()) << "pieces have nothing to report";
        for (const auto& patch : patches) EXPECT_EQ(patch->type(), 5);
        const long last = (net.patchesU() - 1) * net.patchesV();
        EXPECT_LE(apart(exact(mesh->evalP(1, 0)), net.at(last / net.patchesV(), 0, 1, 0)), 1e-5);
    }
}

TEST_F(PatchMeshTest, PeriodicMeshesReportNoExtraPoints)
{
    Numbers n(4);
    for (const long nu : {6, 7, 8, 9}) {
        Shape s;
        s.uwrap = ZEB_PERIODIC;
        s.nu = nu;
        SCOPED_TRACE(s.name());
        reports.clear();
        const auto mesh = make(Net(s, 0, 0, n));
        ASSERT_NE(mesh, nullptr);
        EXPECT_TRUE(reports.empty()) << (reports.empty() ? "" : reports.last().message);
        EXPECT_EQ(leaves(*mesh).size(), static_cast<std::size_t>(nu / 3));
    }
}

TEST_F(PatchMeshTest, PeriodicIndicesWrapAtTheNumberOfPoints)
{
    // 7 points in steps of 3: the last of two patches ends on the last point.
    Numbers n(20);
    for (const long nu : {4, 5, 7, 8}) {
        Shape s;
        s.uwrap = ZEB_PERIODIC;
        s.nu = nu;
        SCOPED_TRACE(s.name());
        const Net net(s, 0, 0, n);
        const auto patches = leaves(*make(net));
        ASSERT_EQ(patches.size(), static_cast<std::size_t>(nu / 3));
        EXPECT_LE(apart(exact(patches.back()->evalP(0.5f, 0.5f)), net.at(nu / 3 - 1, 0, 0.5, 0.5)),
                  1e-5);
    }
}

TEST_F(PatchMeshTest, BadKindsAndWrapsAreRefused)
{
    Numbers n(5);
    const auto points = randomPoints(n, 16);
    const auto refused = [&](const Shape& s, const std::string& message) {
        reports.clear();
        EXPECT_FALSE(verify(s, points));
        ASSERT_EQ(reports.size(), 1u) << message;
        EXPECT_EQ(reports[0], (zebtest::Report{10, 2820, message}));
    };
    Shape s;
    s.type = 5;
    refused(s, "unknown patch type 5");
    s.uwrap = 7;
    refused(s, "unknown patch type 5");
    s.type = ZEB_BICUBIC;
    refused(s, "unknown wrap treatment 7");
    s.vwrap = 8;
    refused(s, "unknown wrap treatment 7");
    s.uwrap = ZEB_PERIODIC;
    refused(s, "unknown wrap treatment 8");
    s.vwrap = ZEB_BICUBIC;
    refused(s, "unknown wrap treatment 1793");
}

TEST_F(PatchMeshTest, ExactlyOneTokenGivesPositions)
{
    Numbers n(6);
    const auto points = randomPoints(n, 16);
    const float heights[16] = {};
    void* const p = const_cast<Point*>(points.data());
    void* const h = const_cast<float*>(heights);
    EXPECT_NE(make({}, {kQPoint}, {p}), nullptr);
    EXPECT_NE(make({}, {kQHeight}, {h}), nullptr);
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(make({}, {}, {}), nullptr);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports.last(), (zebtest::Report{13, 2820, "required argument missing"}));
    EXPECT_EQ(make({}, {kQPoint, kQHeight}, {p, h}), nullptr);
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports.last(), (zebtest::Report{11, 2820, "required argument specified 2 times"}));
}

TEST_F(PatchMeshTest, HeightsStandOnTheUnitSquare)
{
    float heights[15];
    for (int i = 0; i < 15; ++i) heights[i] = static_cast<float>(i);
    Shape s;
    s.type = ZEB_BILINEAR;
    s.nu = 5;
    s.nv = 3;
    const auto mesh = make(s, {kQHeight}, {heights});
    ASSERT_NE(mesh, nullptr);
    EXPECT_EQ(mesh->evalP(0, 0), Pointw(0, 0, 0, 1));
    EXPECT_EQ(mesh->evalP(0.25f, 0.5f), Pointw(0.25f, 0.5f, 6, 1));
    EXPECT_EQ(mesh->evalP(1, 1), Pointw(1, 1, 14, 1));
    EXPECT_EQ(leaves(*mesh).size(), 8u);
}

TEST_F(PatchMeshTest, IsHalvedIntoQuadrants)
{
    Numbers n(7);
    Shape s;
    s.type = ZEB_BILINEAR;
    s.nu = 4;
    s.nv = 3;  // 3 x 2 patches
    const Net net(s, 0, 0, n);
    const Variables variables(12);
    const auto mesh = make(s, variables.tokens(kQPoint), variables.values(net.points.data()));
    variables.expectRange(*mesh, 0, 1, 0, 1);
    Pieces pieces = split(*mesh);
    ASSERT_EQ(pieces.size(), 4u);
    const float third = 1.0f / 3;
    variables.expectRange(pieces[0], 0, third, 0, 0.5f);
    variables.expectRange(pieces[1], third, 1, 0, 0.5f);
    variables.expectRange(pieces[2], 0, third, 0.5f, 1);
    variables.expectRange(pieces[3], third, 1, 0.5f, 1);
    const unsigned short types[] = {5, 6, 5, 6};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(pieces[i].type(), types[i]) << i;
    Pieces right = split(pieces[3]);  // 2 x 1: no halves in v
    ASSERT_EQ(right.size(), 2u);
    variables.expectRange(right[0], third, 2 * third, 0.5f, 1);
    variables.expectRange(right[1], 2 * third, 1, 0.5f, 1);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(right[i].type(), 5);
        for (int k = 0; k < 10; ++k) {
            const float u = n.unit(), v = n.unit();
            EXPECT_LE(apart(exact(right[i].evalP(u, v)), net.at(1 + static_cast<long>(i), 1, u, v)),
                      1e-5);
        }
    }
}

TEST_F(PatchMeshTest, MeshesOneSpanWideAreHalvedTheOtherWay)
{
    Numbers n(8);
    Shape s;
    s.nv = 4 + 3 * 4;  // 1 x 5 patches
    const Net net(s, 0, 0, n);
    const Variables variables(s.nu * s.nv);
    const auto mesh = make(s, variables.tokens(kQPoint), variables.values(net.points.data()));
    Pieces pieces = split(*mesh);
    ASSERT_EQ(pieces.size(), 2u);
    variables.expectRange(pieces[0], 0, 1, 0, 0.4f);
    variables.expectRange(pieces[1], 0, 1, 0.4f, 1);
    EXPECT_EQ(split(pieces[0]).size(), 2u);
    EXPECT_EQ(leaves(pieces[1]).size(), 3u);
}

TEST_F(PatchMeshTest, EvaluatesTheWholeMesh)
{
    each(9, [](const Net& net, Numbers& n) {
        const auto mesh = make(net);
        ASSERT_NE(mesh, nullptr);
        const long nu = net.patchesU(), nv = net.patchesV();
        for (int k = 0; k < 20; ++k) {
            const long i = n.integer(0, nu - 1), j = n.integer(0, nv - 1);
            const float s = n.uniform(0.01f, 0.99f), t = n.uniform(0.01f, 0.99f);
            const float u = (static_cast<float>(i) + s) / static_cast<float>(nu);
            const float v = (static_cast<float>(j) + t) / static_cast<float>(nv);
            EXPECT_LE(apart(exact(mesh->evalP(u, v)), net.at(i, j, s, t)), 3e-4) << at(u, v);
        }
    });
}

TEST_F(PatchMeshTest, PatchesCoverTheMeshOnceInItsParameters)
{
    each(10, [](const Net& net, Numbers& n) {
        const Variables variables(static_cast<long>(net.points.size()));
        const auto mesh =
            make(net.shape, variables.tokens(kQPoint), variables.values(net.points.data()));
        ASSERT_NE(mesh, nullptr);
        const long nu = net.patchesU(), nv = net.patchesV();
        const auto patches = leaves(*mesh);
        ASSERT_EQ(patches.size(), static_cast<std::size_t>(nu * nv));
        std::vector<int> seen(patches.size(), 0);
        for (const auto& patch : patches) {
            const auto r = variables.range(*patch);
            const long i = std::lround(r[0] * static_cast<float>(nu));
            const long j = std::lround(r[2] * static_cast<float>(nv));
            ASSERT_TRUE(i >= 0 && i < nu && j >= 0 && j < nv);
            ++seen[static_cast<std::size_t>(j * nu + i)];
            const float fu = static_cast<float>(nu), fv = static_cast<float>(nv);
            variables.expectRange(*patch, static_cast<float>(i) / fu,
                                  static_cast<float>(i + 1) / fu, static_cast<float>(j) / fv,
                                  static_cast<float>(j + 1) / fv);
            for (int k = 0; k < 6; ++k) {
                const float s = n.unit(), t = n.unit();
                EXPECT_LE(apart(exact(patch->evalP(s, t)), net.at(i, j, s, t)), 3e-5)
                    << i << ", " << j;
            }
        }
        for (const int times : seen) EXPECT_EQ(times, 1);
    });
}

TEST_F(PatchMeshTest, PeriodicMeshesClose)
{
    Numbers n(11);
    for (const int basis : {0, 1, 2}) {
        Shape s;
        s.uwrap = s.vwrap = ZEB_PERIODIC;
        s.nu = 9;
        s.nv = 6;
        const Net net(s, basis, basis, n);
        const auto mesh = make(net);
        for (float v = 0; v <= 1; v += 0.125f) {
            EXPECT_LE(apart(exact(mesh->evalP(0, v)), exact(mesh->evalP(1, v))), 1e-5);
            EXPECT_LE(apart(exact(mesh->evalP(v, 0)), exact(mesh->evalP(v, 1))), 1e-5);
        }
    }
    Shape s;
    s.type = ZEB_BILINEAR;
    s.uwrap = ZEB_PERIODIC;
    s.nu = 3;
    s.nv = 2;
    const Net net(s, 0, 0, n);
    const auto patches = leaves(*make(net));
    ASSERT_EQ(patches.size(), 3u);
    EXPECT_EQ(patches[2]->evalP(0, 0), Pointw(net.points[2]));
    EXPECT_EQ(patches[2]->evalP(1, 0), Pointw(net.points[0]));
    EXPECT_EQ(patches[2]->evalP(1, 1), Pointw(net.points[3]));
}

TEST_F(PatchMeshTest, IndicesWrapRoundAsOftenAsItTakes)
{
    Numbers n(18);
    for (const int basis : {0, 1, 2, 3, 4}) {
        for (long count = 1; count <= 5; ++count) {
            if (count > gSteps[basis] && count % gSteps[basis]) continue;
            Shape s;
            s.uwrap = ZEB_PERIODIC;
            s.nu = count;
            const Net net(s, basis, 0, n);
            SCOPED_TRACE(s.name() + ", basis " + std::to_string(basis));
            reports.clear();
            const auto mesh = make(net);
            if (net.patchesU() == 0) {
                EXPECT_EQ(mesh, nullptr);
                EXPECT_EQ(reports.size(), 1u);
                continue;
            }
            ASSERT_NE(mesh, nullptr);
            const auto patches = leaves(*mesh);
            ASSERT_EQ(patches.size(), static_cast<std::size_t>(net.patchesU()));
            for (std::size_t i = 0; i < patches.size(); ++i) {
                EXPECT_LE(apart(exact(patches[i]->evalP(0.3f, 0.7f)),
                                net.at(static_cast<long>(i), 0, 0.3f, 0.7f)),
                          1e-5);
            }
        }
    }
}

TEST_F(PatchMeshTest, StepsMayLeavePointsOut)
{
    Numbers n(19);
    Shape s;
    s.nu = 11;
    const Net net(s, 5, 0, n);
    zebCustomBasis(ZEB_APPLY_U, gCustom, 7);
    const auto mesh = make(net);
    ASSERT_NE(mesh, nullptr);
    EXPECT_TRUE(reports.empty());
    const auto patches = leaves(*mesh);
    ASSERT_EQ(patches.size(), 2u);
    // In steps of 1 these are patches 0 and 7.
    EXPECT_LE(apart(exact(patches[0]->evalP(0.2f, 0.6f)), net.at(0, 0, 0.2f, 0.6f)), 1e-5);
    EXPECT_LE(apart(exact(patches[1]->evalP(0.2f, 0.6f)), net.at(7, 0, 0.2f, 0.6f)), 1e-5);
}

TEST_F(PatchMeshTest, NeighboursJoinToTheLastBit)
{
    Numbers n(12);
    for (int k = 0; k < 30; ++k) {
        const int basis = k % 2 * 2;  // those that join in a control point
        Shape s;
        s.nu = 4 + gSteps[basis];
        s.nv = 4 + gSteps[basis];
        const auto patches = leaves(*make(Net(s, basis, basis, n)));
        ASSERT_EQ(patches.size(), 4u);
        expectJoinAlongU(*patches[0], *patches[1]);
        expectJoinAlongU(*patches[2], *patches[3]);
        expectJoinAlongV(*patches[0], *patches[2]);
        expectJoinAlongV(*patches[1], *patches[3]);
    }
}

TEST_F(PatchMeshTest, BSplinesJoinAsWellAsTheirBasisIsRounded)
{
    Numbers n(17);
    Shape s;
    s.nu = 5;
    for (int k = 0; k < 30; ++k) {
        const auto patches = leaves(*make(Net(s, 1, 1, n)));
        ASSERT_EQ(patches.size(), 2u);
        for (float v = 0; v <= 1; v += 0.0625f) {
            EXPECT_LE(apart(exact(patches[0]->evalP(1, v)), exact(patches[1]->evalP(0, v))), 1e-6);
        }
    }
}

TEST_F(PatchMeshTest, TheBoundHoldsEveryPatch)
{
    Numbers transformations(13);
    each(14, [&](const Net& net, Numbers& n) {
        zebLoadIdentity();
        if (n.unit() < 0.5f) applyRandomTransformation(transformations);
        const auto mesh = make(net);
        ASSERT_NE(mesh, nullptr);
        expectBoundHolds(*mesh, 50);
        const Boundw bound = mesh->bound(), hull = mesh->hull();
        EXPECT_TRUE(hull.xmin >= bound.xmin && hull.xmax <= bound.xmax);
        for (const auto& patch : leaves(*mesh)) {
            for (int k = 0; k < 20; ++k) {
                const Exact p = exact(patch->evalP(n.unit(), n.unit())) * mesh->matrix();
                EXPECT_LE(outside(bound, p), 1e-4);
                EXPECT_LE(outside(hull, p), 1e-4);
            }
        }
        Pieces pieces = split(*mesh);
        for (auto& piece : pieces.list) expectBoundHolds(*piece, 20);
    });
}

TEST_F(PatchMeshTest, TheBoundAttributeClips)
{
    Numbers n(15);
    const float box[6] = {-1, 1, -2, 2, -1000, 1000};
    zebTranslate(10, 0, 0);
    zebBound(box);
    const auto mesh = make(Net({}, 0, 0, n));
    EXPECT_GE(mesh->bound().xmin, 9);
    EXPECT_LE(mesh->bound().xmax, 11);
    EXPECT_GE(mesh->bound().ymin, -2);
    EXPECT_LE(mesh->bound().ymax, 2);
}

TEST_F(PatchMeshTest, ACopyIsWhole)
{
    each(16, [](const Net& net, Numbers& n) {
        const auto mesh = make(net);
        const auto copy = mesh->copy(true);
        EXPECT_EQ(copy->type(), 6);
        for (int i = 0; i < 5; ++i) {
            const float u = n.unit(), v = n.unit();
            EXPECT_EQ(copy->evalP(u, v), mesh->evalP(u, v));
        }
        EXPECT_EQ(leaves(*copy).size(), leaves(*mesh).size());
    });
}
