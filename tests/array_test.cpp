// Arrays that the host has described: too short ones are refused, others are read wherever their
// elements lie.

#include <functional>

#include "support/scene.h"

namespace zebtest
{

namespace
{

// The elements of a row, each behind so much else.
template <std::size_t Width>
std::vector<float> spread(const std::vector<float>& values, std::size_t step)
{
    std::vector<float> result(values.size() / Width * step, -1e30f);
    for (std::size_t i = 0; i < values.size(); ++i) {
        result[i / Width * step + i % Width] = values[i];
    }
    return result;
}

class Arrays : public RasterTest
{
protected:
    void begin()
    {
        zebReset();
        raster(20, 20);
        beginFlat();
    }
    std::vector<std::uint32_t> words()
    {
        zebSceneEnd();
        EXPECT_TRUE(reports.empty()) << reports.last().message;
        EXPECT_GT(picture.sum(3), 50) << "something is seen";
        return picture.words();
    }
    // Exactly as many elements will do, one less is refused with both numbers.
    void expectRefused(const char* name, const void* array, long needed,
                       const std::function<void()>& call)
    {
        SCOPED_TRACE(name);
        zebArray(array, needed, 0);
        call();
        EXPECT_TRUE(reports.empty()) << reports.last().message;
        reports.clear();
        zebArray(array, needed - 1, 0);
        call();
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].code, 11);
        EXPECT_EQ(reports[0].severity, ZEB_ERROR);
        const std::string tail = std::string("\"") + name + "\": " + std::to_string(needed - 1) +
                                 " elements where " + std::to_string(needed) + " are read";
        EXPECT_TRUE(reports[0].message.ends_with(tail)) << reports[0].message;
        reports.clear();
        call();
        EXPECT_TRUE(reports.empty()) << "the next call knows nothing of it";
    }

    const std::vector<float> corners{2, 2, 0.5f, 18, 3, 0.5f, 17, 18, 0.5f, 1, 15, 0.5f};
    const std::vector<float> colors{1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 1, 0};
    const unsigned short point = zebQuark("point"), color = zebQuark("color");
};

}  // namespace

TEST_F(Arrays, AreReadWithinTheirLengthAlone)
{
    static const long three[] = {3, 3}, indices[] = {0, 1, 2, 0, 2, 3}, one[] = {1, 1};
    static const float knots[] = {0, 0, 1, 1}, box[] = {-1, 1, -1, 1, -1, 1};
    static float matrix[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    static const float p[] = {1, 2, 3}, q[] = {3, 2, 5};
    static ZebPoint places[2] = {{1, 2, 3}, {4, 5, 6}};
    static const float space[] = {1, 1, 1, 1, 1, 1};
    const unsigned short kd = zebQuark("kd"), diffuse = zebQuark("diffuse");
    const float half = 0.5f;
    const float *const P = corners.data(), *const C = colors.data();
    const unsigned short tokens[] = {point, color};
    void* const values[] = {const_cast<float*>(P), const_cast<float*>(C)};

    expectRefused("ntorgb", space, 6, [&] { zebColorSpace(2, space, space); });
    begin();
    const float* const points = corners.data();
    expectRefused("point", P, 4, [&] { zebPolygon(4, point, P, color, C, 0); });
    expectRefused("color", C, 4, [&] { zebPolygon(4, point, P, color, C, 0); });
    expectRefused("tokens", tokens, 2, [&] { zebPolygonV(4, 2, tokens, values); });
    expectRefused("values", values, 2, [&] { zebPolygonV(4, 2, tokens, values); });
    expectRefused("vertex counts", three, 1, [&] { zebGeneralPolygon(1, three, point, P, 0); });
    const auto mesh = [&] { zebPolygonMesh(2, three, indices, point, P, 0); };
    expectRefused("vertex counts", three, 2, mesh);
    expectRefused("vertex indices", indices, 6, mesh);
    expectRefused("point", P, 4, mesh);
    const auto general = [&] { zebGeneralPolygonMesh(2, one, three, indices, point, P, 0); };
    expectRefused("loop counts", one, 2, general);
    expectRefused("vertex counts", three, 2, general);
    expectRefused("vertex indices", indices, 6, general);
    expectRefused("point", P, 4, [&] { zebPatch(ZEB_BILINEAR, point, P, color, C, 0); });
    expectRefused("color", C, 4, [&] { zebPatch(ZEB_BILINEAR, point, P, color, C, 0); });
    expectRefused("point", P, 4, [&] {
        zebPatchMesh(ZEB_BILINEAR, 2, ZEB_NONPERIODIC, 2, ZEB_NONPERIODIC, point, P, 0);
    });
    expectRefused("knots", knots, 4,
                  [&] { zebNurb(2, knots, 0, 1, 2, knots, 0, 1, point, points, 0); });
    expectRefused("point", P, 4,
                  [&] { zebNurbMesh(2, 2, knots, 0, 1, 2, 2, knots, 0, 1, point, points, 0); });
    expectRefused("color", C, 4, [&] { zebSphere(1, -1, 1, 360, color, C, 0); });
    expectRefused("centers", P, 4, [&] { zebSpheres(4, P, C, 0); });
    expectRefused("radii", C, 4, [&] { zebSpheres(4, P, C, 0); });
    expectRefused("point 1", p, 3, [&] { zebHyperboloid(p, q, 360, 0); });
    expectRefused("point 2", q, 3, [&] { zebHyperboloid(p, q, 360, 0); });
    expectRefused("bound", box, 6, [&] {
        zebProcedural(
            nullptr, box, [](void*, float) {}, nullptr);
    });
    expectRefused("bound", box, 6, [&] { zebBound(box); });
    expectRefused("color", p, 3, [&] { zebColor(p); });
    expectRefused("color", p, 3, [&] { zebOpacity(p); });
    expectRefused("kd", &half, 1, [&] { zebSurface(diffuse, kd, &half, 0); });
    expectRefused("matrix", matrix, 16, [&] { zebMultMatrix(matrix); });
    expectRefused("matrix", matrix, 16, [&] { zebLoadMatrix(matrix); });
    expectRefused("matrix", matrix, 16, [&] { zebCustomBasis(ZEB_APPLY_U, matrix, 1); });
    expectRefused("eye", p, 3, [&] { zebLookAt(p, q, space); });
    expectRefused("place", q, 3, [&] { zebLookAt(p, q, space); });
    expectRefused("up direction", space, 3, [&] { zebLookAt(p, q, space); });
    const unsigned short world = zebQuark("world");
    expectRefused("points", places, 2, [&] { zebProjectPoints(world, world, 2, places); });
    zebSceneEnd();
}

TEST_F(Arrays, MayHaveOtherThingsBetweenTheirElements)
{
    begin();
    zebPolygon(4, point, corners.data(), color, colors.data(), 0);
    const auto dense = words();

    // One array of structs, with something else in front and in between.
    std::vector<float> mixed;
    for (std::size_t i = 0; i < 4; ++i) {
        mixed.insert(mixed.end(), &colors[3 * i], &colors[3 * i] + 3);
        mixed.push_back(1e30f);
        mixed.insert(mixed.end(), &corners[3 * i], &corners[3 * i] + 3);
    }
    begin();
    zebArray(&mixed[4], 4, 7 * sizeof(float));
    zebArray(&mixed[0], 4, 7 * sizeof(float));
    zebPolygon(4, zebQuark("point"), &mixed[4], zebQuark("color"), &mixed[0], 0);
    EXPECT_EQ(words(), dense);

    // Backwards.
    std::vector<float> reversed;
    for (std::size_t i = 4; i-- > 0;) {
        reversed.insert(reversed.end(), &corners[3 * i], &corners[3 * i] + 3);
    }
    begin();
    zebArray(&reversed[9], 4, -3 * static_cast<long>(sizeof(float)));
    zebPolygon(4, point, &reversed[9], color, colors.data(), 0);
    EXPECT_EQ(words(), dense);
}

TEST_F(Arrays, OfNumbersMayLieApartToo)
{
    const std::vector<float> knots{0, 0, 0.4f, 1, 1};
    std::vector<float> net;
    for (int j = 0; j < 3; ++j) {
        for (int i = 0; i < 3; ++i) {
            for (const float x : {2.0f + 7 * i, 3.0f + 6 * j, 0.2f + 0.1f * i * j, 1.0f}) {
                net.push_back(x * (i == 1 ? 2 : 1));
            }
        }
    }
    const unsigned short pointw = zebQuark("pointw");
    begin();
    zebNurbMesh(3, 2, knots.data(), 0, 1, 3, 2, knots.data(), 0.1f, 1, pointw, net.data(), 0);
    const auto dense = words();
    const std::vector<float> farKnots = spread<1>(knots, 3), farNet = spread<4>(net, 5);
    begin();
    zebArray(farKnots.data(), 5, 3 * sizeof(float));
    zebArray(farNet.data(), 9, 5 * sizeof(float));
    zebNurbMesh(3, 2, farKnots.data(), 0, 1, 3, 2, farKnots.data(), 0.1f, 1, pointw, farNet.data(),
                0);
    EXPECT_EQ(words(), dense);

    const long counts[] = {3, -7, 3, -7}, indices[] = {0, -9, 1, -9, 2, -9, 0, -9, 2, -9, 3, -9};
    const long denseCounts[] = {3, 3}, denseIndices[] = {0, 1, 2, 0, 2, 3}, loops[] = {1, -5, 1};
    constexpr long kStep = 2 * sizeof(long);
    begin();
    zebPolygonMesh(2, denseCounts, denseIndices, point, corners.data(), 0);
    const auto mesh = words();
    begin();
    zebArray(counts, 2, kStep);
    zebArray(indices, 6, kStep);
    zebPolygonMesh(2, counts, indices, point, corners.data(), 0);
    EXPECT_EQ(words(), mesh);
    begin();
    zebArray(counts, 2, kStep);
    zebArray(indices, 6, kStep);
    zebArray(loops, 2, kStep);
    zebGeneralPolygonMesh(2, loops, counts, indices, point, corners.data(), 0);
    EXPECT_EQ(words(), mesh);
    begin();
    const long square[] = {4, -1};
    zebArray(square, 1, kStep);
    zebGeneralPolygon(1, square, point, corners.data(), 0);
    words();

    const std::vector<float> radii{3, 2, 4, 1};
    begin();
    zebScale(1, 1, 0.05f);
    zebTranslate(0, 0, 9);
    zebSpheres(4, corners.data(), radii.data(), color, colors.data(), 0);
    const auto spheres = words();
    const std::vector<float> farCenters = spread<3>(corners, 4), farRadii = spread<1>(radii, 2),
                             farColors = spread<3>(colors, 8);
    begin();
    zebScale(1, 1, 0.05f);
    zebTranslate(0, 0, 9);
    zebArray(farCenters.data(), 4, 4 * sizeof(float));
    zebArray(farRadii.data(), 4, 2 * sizeof(float));
    zebArray(farColors.data(), 4, 8 * sizeof(float));
    zebSpheres(4, farCenters.data(), farRadii.data(), color, farColors.data(), 0);
    EXPECT_EQ(words(), spheres);
}

TEST_F(Arrays, OneArrayServesReadersOfSeveralLengths)
{
    // Twice the same knots: linear in u, quadratic in v, which reads more of them.
    const std::vector<float> knots{0, 0, 0.4f, 1, 1.3f, 1.7f};
    const std::vector<float> far = spread<1>(knots, 2);
    std::vector<float> net;
    for (int j = 0; j < 3; ++j) {
        for (int i = 0; i < 2; ++i) {
            for (const float x : {2.0f + 14 * i, 22.0f * j - 10, 0.5f}) net.push_back(x);
        }
    }
    const auto draw = [&](const float* k) {
        zebNurbMesh(2, 2, k, 0, 0.4f, 3, 3, k, 0.4f, 1, point, net.data(), 0);
    };
    begin();
    draw(knots.data());
    const auto dense = words();
    begin();
    zebArray(far.data(), 6, 2 * sizeof(float));
    draw(far.data());
    EXPECT_EQ(words(), dense);
}

TEST_F(Arrays, ACallFromAHandlerLeavesThoseOfTheCallUnderWay)
{
    // Knots out of order are reported, and read after that.
    const std::vector<float> knots{0, 0, 1, 0.9f};
    const std::vector<float> far = spread<1>(knots, 2);
    const std::vector<float> net{2, 2, 0.5f, 18, 3, 0.5f, 1, 15, 0.5f, 17, 18, 0.5f};
    const auto draw = [&](const float* u) {
        zebNurb(2, u, 0, 1, 2, u, 0, 1, point, net.data(), 0);
        zebSceneEnd();
    };
    static int heard;
    heard = 0;
    static const auto handler = [](long, long, const char*) {
        ++heard;
        static const float red[3] = {1, 0, 0};
        zebArray(red, 3, 0);
        zebColor(red);
    };
    begin();
    zebCustomErrorHandler(ZEB_ALL, handler);
    draw(knots.data());
    const auto dense = picture.words();
    const int calls = heard;
    EXPECT_GT(calls, 0);
    begin();
    zebCustomErrorHandler(ZEB_ALL, handler);
    zebArray(far.data(), 4, 2 * sizeof(float));
    draw(far.data());
    EXPECT_EQ(picture.words(), dense);
    EXPECT_EQ(heard, 2 * calls);
}

TEST_F(Arrays, LastDescribedCounts)
{
    begin();
    zebArray(corners.data(), 2, 0);
    zebArray(corners.data(), 4, 0);
    zebPolygon(4, point, corners.data(), 0);
    EXPECT_TRUE(reports.empty());
    zebArray(corners.data(), 4, 0);
    zebArray(corners.data(), 2, 0);
    zebPolygon(4, point, corners.data(), 0);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 11);
    zebSceneEnd();
}

TEST_F(Arrays, NamesMayBeAskedForInBetween)
{
    begin();
    zebArray(corners.data(), 3, 0);
    zebQuark("point");
    zebDeclare("heat", ZEB_UNIFORM, ZEB_FLOAT);
    zebPolygon(4, zebQuark("point"), corners.data(), 0);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 11);
    reports.clear();
    zebArray(corners.data(), 3, 0);
    zebShadingRate(1);  // as anything else does: forgets
    zebPolygon(4, zebQuark("point"), corners.data(), 0);
    EXPECT_TRUE(reports.empty());
    zebSceneEnd();
}

TEST_F(Arrays, ListsAndPointsThatAreWrittenLieTogether)
{
    static ZebPoint places[4] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {1, 1, 1}};
    const unsigned short world = zebQuark("world");
    zebArray(places, 2, 6 * sizeof(float));
    EXPECT_EQ(zebProjectPoints(world, world, 2, places), nullptr);
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].code, 10);
    EXPECT_TRUE(reports[0].message.ends_with("\"points\": elements cannot lie 24 bytes apart"));
    reports.clear();
    zebArray(places, 2, 3 * sizeof(float));
    EXPECT_NE(zebProjectPoints(world, world, 2, places), nullptr);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Arrays, WithoutAPlaceOrALengthAreNoArrays)
{
    zebArray(nullptr, 3, 0);
    zebArray(corners.data(), -1, 0);
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].code, 10);
    EXPECT_EQ(reports[0].message, "zebArray: array is null");
    EXPECT_EQ(reports[1].code, 10);
    EXPECT_EQ(reports[1].message, "zebArray: an array of -1 elements");
    reports.clear();
    begin();
    zebPolygon(4, point, corners.data(), 0);
    words();
}

}  // namespace zebtest
