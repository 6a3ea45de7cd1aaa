// What is reported while a picture is rendered, and when memory runs out.

#include "support/scene.h"

#if !defined(_WIN32)
#include <sys/resource.h>
#endif

namespace zebtest
{

namespace
{

using Lines = std::vector<std::string>;

Lines gLines;

void printToStandardError(const char* line) { std::fprintf(stderr, "%s\n", line); }

// Collects the lines of printed reports.
class ReportTest : public RasterTest
{
protected:
    ReportTest()
    {
        gLines.clear();
        zebErrorHandler(ZEB_ALL, ZEB_ERROR_PRINT);
        zebErrorPrinter([](const char* line) { gLines.emplace_back(line); });
    }
    ~ReportTest() override { zebErrorPrinter(printToStandardError); }

    // A world with a sphere that no split makes flat enough.
    void begin()
    {
        raster(12, 12);
        beginFlat();
        zebTranslate(6, 6, 0.5f);
        zebFlatness(1e-9f);
    }
    static void addSphere() { zebSphere(2, -2, 2, 360, 0); }

    const std::string warning =
        "warning: Parameter out of range. zebSceneEnd: surface takes too many splits, parts are "
        "coarse or missing";
};

using ReportDeathTest = ReportTest;

}  // namespace

TEST_F(ReportTest, APictureNamesTheObjectAndTheGroupThatItReportsOn)
{
    const struct {
        const char *object, *group, *line;
    } cases[] = {{"pot", "clay", "While rendering object pot; shading group clay"},
                 {"pot", nullptr, "While rendering object pot"},
                 {nullptr, "clay", "While rendering shading group clay"},
                 {"null", "null", "While rendering object null; shading group null"},
                 {nullptr, nullptr, nullptr}};
    for (const auto& c : cases) {
        zebReset();
        gLines.clear();
        begin();
        zebObjectName("another");
        zebGroupName("another");
        zebObjectName(c.object);
        zebGroupName(c.group);
        addSphere();
        zebObjectName("later");
        zebGroupName("later");
        zebSceneEnd();
        Lines expected{warning};
        if (c.line) expected.emplace_back(c.line);
        EXPECT_EQ(gLines, expected);
    }
}

TEST_F(ReportTest, NoObjectIsNamedOnceItIsRendered)
{
    begin();
    zebObjectName("pot");
    addSphere();
    zebRenderInit();
    zebRenderBucket();
    EXPECT_EQ(gLines.size(), 2u);
    gLines.clear();
    zebShadingRate(-1);
    EXPECT_EQ(gLines, (Lines{"error: Parameter out of range. zebShadingRate: shading rate -1 too "
                             "small"}));
    zebSceneEnd();
}

TEST_F(ReportTest, ABucketIsReportedOnInTheNameOfTheWorldsEnd)
{
    for (const bool staged : {false, true}) {
        zebReset();
        gLines.clear();
        begin();
        addSphere();
        if (staged) {
            zebRenderInit();
            zebRenderBucket();
            EXPECT_EQ(gLines, Lines{warning});
        }
        zebSceneEnd();
        EXPECT_EQ(gLines, Lines{warning});
    }
}

// As a short, 0x8B04 is 0x8B04 - 0x10000.
TEST_F(ReportTest, AMaskIsRefusedForItsHighestBit)
{
    zebErrorHandler(static_cast<short>(0x8B04), ZEB_ERROR_IGNORE);
    zebCustomErrorHandler(static_cast<short>(0x8B04), nullptr);
    const std::string refused = ": unknown severity mask -29948";
    EXPECT_EQ(gLines, (Lines{"error: Parameter out of range. zebErrorHandler" + refused,
                             "error: Parameter out of range. zebCustomErrorHandler" + refused}));
}

#if !defined(_WIN32) && !defined(ZEB_SANITIZED)
TEST_F(ReportDeathTest, MemoryThatRunsOutInACallIsSevereAndEndsTheProcess)
{
    const auto exhaust = [this] {
        zebErrorPrinter(printToStandardError);
        raster(12, 12);
        beginFlat();
        rlimit limit{};
        limit.rlim_cur = limit.rlim_max = rlim_t{1} << 28;
        setrlimit(RLIMIT_AS, &limit);
        for (;;) rectangle(2, 2, 6, 6, 0.5f);
    };
    EXPECT_DEATH(exhaust(), "^severe error: Out of memory\\. zebPolygon: free store exhausted\n$");
}
#endif

}  // namespace zebtest
