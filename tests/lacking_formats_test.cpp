// What builds without a writer of some file format do.

#include <filesystem>
#include <string>

#include "support/scene.h"

namespace zebtest
{

namespace
{

class LackingFormats : public RasterTest
{
protected:
    // Renders to a file and expects the report that this build can't write it.
    void expectUnsupported(short kind, const char* name)
    {
        const std::string path = testing::TempDir() + name;
        reports.clear();
        zebReset();
        raster(8, 8);
        zebOutputFile(kind, path.c_str());
        beginFlat();
        rectangle(1, 1, 5, 5, 0.5f);
        zebSceneEnd();
        ASSERT_EQ(reports.size(), 1u);
        EXPECT_EQ(reports[0].code, 2);
        EXPECT_EQ(reports[0].severity, ZEB_ERROR);
        EXPECT_EQ(reports[0].message,
                  ("zebSceneBegin: this build has no writer for \"" + path + "\"").substr(0, 123));
        EXPECT_FALSE(std::filesystem::exists(path));
    }
};

}  // namespace

#if !ZEB_PNG
TEST_F(LackingFormats, PngIsReportedAsOptional)
{
    expectUnsupported(ZEB_FILE_PNG, "zeb-lacking");
    expectUnsupported(ZEB_FILE_PNG_INDEXED, "zeb-lacking");
    expectUnsupported(ZEB_FILE_AUTO, "zeb-lacking.png");
}
#endif

#if !ZEB_EXR
TEST_F(LackingFormats, OpenExrIsReportedAsOptional)
{
    expectUnsupported(ZEB_FILE_EXR, "zeb-lacking");
    expectUnsupported(ZEB_FILE_AUTO, "zeb-lacking.exr");
}
#endif

TEST_F(LackingFormats, PicturesGoToDevicesOfTheHostAllTheSame)
{
    raster(8, 8);
    beginFlat();
    rectangle(1, 1, 5, 5, 0.5f);
    zebSceneEnd();
    EXPECT_EQ(picture.closed, 1);
    EXPECT_TRUE(reports.empty());
}

}  // namespace zebtest
