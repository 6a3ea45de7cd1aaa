// What infos tell those who listen: names that nothing knows, values that nothing reads.

#include "support/scene.h"

namespace zebtest
{

namespace
{

class Info : public RasterTest
{
protected:
    Info()
    {
        reports.hearInfos();
        zebReset();
        raster(20, 20);
        zebSceneBegin();
    }
    void expectInfo(const char* message, long code = 10)
    {
        ASSERT_EQ(reports.size(), 1u) << message;
        EXPECT_EQ(reports[0], (Report{code, ZEB_INFO, message}));
        reports.clear();
    }

    const float value[12] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
    const std::vector<float> corners{2, 2, 0.5f, 18, 3, 0.5f, 17, 18, 0.5f, 1, 15, 0.5f};
    const unsigned short point = zebQuark("point"), kd = zebQuark("kd"), ks = zebQuark("ks");
    const unsigned short heat = zebDeclare("heat", ZEB_UNIFORM, ZEB_FLOAT);
};

}  // namespace

TEST_F(Info, NamesParametersThatAShaderLacks)
{
    zebSurface(zebQuark("plastic"), zebQuark("Kd"), value, kd, value, 0);
    expectInfo("zebSurface: \"plastic\" does not read \"Kd\"");
    zebSurface(zebQuark("diffuse"), kd, value, ks, value, 0);
    expectInfo("zebSurface: \"diffuse\" does not read \"ks\"");
    zebLightSource(zebQuark("distant"), zebQuark("fro"), value, zebQuark("from"), value, 0);
    expectInfo("zebLightSource: \"distant\" does not read \"fro\"");
    zebAtmosphere(zebQuark("fog"), kd, value, 0);
    expectInfo("zebAtmosphere: \"fog\" does not read \"kd\"");
    zebSurface(zebQuark("constant"), heat, value, 0);
    expectInfo("zebSurface: \"constant\" does not read \"heat\"");
}

TEST_F(Info, NamesSurfacesThatThereAreNot)
{
    zebSurface(zebQuark("matte"), kd, value, 0);
    expectInfo("zebSurface: \"matte\" is not a surface");
    // It is plastic: that reads ks.
    zebSurface(zebQuark("matte"), ks, value, 0);
    expectInfo("zebSurface: \"matte\" is not a surface");
    zebSurface(zebQuark("plastic"), 0);
    EXPECT_TRUE(reports.empty());
}

TEST_F(Info, GoesBeforeTheNumberOfAnUnknownName)
{
    const unsigned short bulb = zebQuark("bulb"), mist = zebQuark("mist");
    zebLightSource(bulb, 0);
    zebAtmosphere(mist, 0);
    ASSERT_EQ(reports.size(), 4u);
    EXPECT_EQ(reports[0], (Report{10, ZEB_INFO, "zebLightSource: \"bulb\" is not a light source"}));
    EXPECT_EQ(reports[1], (Report{10, ZEB_ERROR,
                                  "zebLightSource: unknown light source " + std::to_string(bulb)}));
    EXPECT_EQ(reports[2], (Report{10, ZEB_INFO, "zebAtmosphere: \"mist\" is not an atmosphere"}));
    EXPECT_EQ(reports[3],
              (Report{10, ZEB_ERROR, "zebAtmosphere: unknown atmosphere " + std::to_string(mist)}));
}

TEST_F(Info, GoesBeforeAMissingArgument)
{
    const float knots[] = {0, 0, 1, 1};
    zebPolygon(3, kd, value, 0);
    zebPatch(ZEB_BILINEAR, kd, value, 0);
    zebNurb(2, knots, 0, 1, 2, knots, 0, 1, kd, value, 0);
    ASSERT_EQ(reports.size(), 6u);
    const char* const infos[] = {"zebPolygon: \"point\" is not given",
                                 "zebPatch: none of \"point\", \"height\" is given",
                                 "zebNurb: none of \"point\", \"height\", \"pointw\" is given"};
    for (std::size_t k = 0; k < 3; ++k) {
        EXPECT_EQ(reports[2 * k], (Report{13, ZEB_INFO, infos[k]}));
        EXPECT_EQ(reports[2 * k + 1].code, 13);
        EXPECT_EQ(reports[2 * k + 1].severity, ZEB_ERROR);
        EXPECT_TRUE(reports[2 * k + 1].message.ends_with(": required argument missing"));
    }
}

TEST_F(Info, NamesVariablesThatNothingReadsOnceAPicture)
{
    const auto draw = [&] {
        zebSurface(zebQuark("diffuse"), 0);
        for (int k = 0; k < 3; ++k) {
            zebPolygon(4, point, corners.data(), heat, value, zebQuark("color"), value, kd, value,
                       zebQuark("normal"), value, zebQuark("vertexcolor"), value,
                       zebQuark("vertexopacity"), value, 0);
        }
    };
    draw();
    expectInfo("zebPolygon: \"diffuse\" does not read \"heat\"");
    // By another surface, once more.
    zebSurface(zebQuark("constant"), 0);
    zebSphere(1, -1, 1, 360, heat, value, zebQuark("opacity"), value, 0);
    expectInfo("zebSphere: \"constant\" does not read \"heat\"");
    zebSphere(1, -1, 1, 360, point, value, 0);
    expectInfo("zebSphere: \"constant\" does not read \"point\"");
    zebSpheres(2, value, value, ks, value, 0);
    expectInfo("zebSpheres: \"constant\" does not read \"ks\"");
    zebSceneEnd();
    zebSceneBegin();
    draw();
    expectInfo("zebPolygon: \"diffuse\" does not read \"heat\"");
    zebSceneEnd();
}

TEST_F(Info, SaysNothingOfObjectsWhoseSurfaceIsNotKnownYet)
{
    zebSurface(zebQuark("constant"), 0);
    zebObjectBegin();
    zebPolygon(4, point, corners.data(), kd, value, 0);
    zebObjectEnd();
    EXPECT_TRUE(reports.empty());
    zebSceneEnd();
}

TEST_F(Info, IsOffUnlessAskedFor)
{
    zebErrorHandler(ZEB_INFO, ZEB_ERROR_IGNORE);
    zebErrorHandler(ZEB_ERROR, ZEB_ERROR_IGNORE);
    zebPolygon(3, 0);
    EXPECT_EQ(zebLastError(), 13);
    zebSurface(zebQuark("matte"), zebQuark("Kd"), value, 0);
    zebPolygon(4, point, corners.data(), heat, value, 0);
    EXPECT_EQ(zebLastError(), 13) << "an info nobody hears is no last report";
    EXPECT_TRUE(reports.empty());
    zebSceneEnd();
}

}  // namespace zebtest
