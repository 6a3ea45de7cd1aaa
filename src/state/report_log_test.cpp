#include "state/report_log.h"

#include <gtest/gtest.h>

#include "state/error.h"
#include "support/reports.h"

using namespace zeb;

namespace
{

class ReportLogTest : public testing::Test
{
protected:
    void keep(ReportLog& log, const char* message)
    {
        const ReportLog::Scope scope(log);
        error(kRange, kError, "%s", message);
    }

    zebtest::Reports reports;
};

}  // namespace

TEST_F(ReportLogTest, ReportsAreToldLaterInTheirOrder)
{
    ReportLog log;
    keep(log, "first");
    keep(log, "second");
    EXPECT_TRUE(reports.empty());
    error(kRange, kError, "outside");
    ASSERT_EQ(reports.size(), 1u);
    log.tell();
    ASSERT_EQ(reports.size(), 3u);
    EXPECT_EQ(reports[1].message, "first");
    EXPECT_EQ(reports[2].message, "second");
    EXPECT_EQ(reports[2].code, kRange);
    EXPECT_EQ(reports[2].severity, kError);
}

TEST_F(ReportLogTest, AReportIsToldOnceWhereverItsLogIs)
{
    const auto shared = std::make_shared<ReportLog>();
    keep(*shared, "shared");
    ReportLog one, other;
    keep(one, "before");
    one.add(shared);
    keep(one, "after");
    other.add(shared);
    one.tell();
    other.tell();
    one.tell();
    ASSERT_EQ(reports.size(), 3u);
    EXPECT_EQ(reports[0].message, "before");
    EXPECT_EQ(reports[1].message, "shared");
    EXPECT_EQ(reports[2].message, "after");
}

TEST_F(ReportLogTest, TheNameOfTheCallMayBeTheWholeMessage)
{
    ReportLog log;
    {
        const ReportLog::Scope scope(log);
        error(kState, kError, nullptr);
    }
    log.tell();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].message, "(null)");
}

// Of the object being rendered, when the report was made.
TEST_F(ReportLogTest, NamesAreThoseOfTheReport)
{
    static std::string object, group;
    zebCustomErrorHandler(ZEB_ERROR, [](long, long, const char*) {
        object = Error::fAttribName ? Error::fAttribName : "none";
        group = Error::fShadingGroup ? Error::fShadingGroup : "none";
    });
    ReportLog log;
    {
        const AttribNamesScope names("ball", "");
        keep(log, "named");
    }
    log.tell();
    EXPECT_EQ(object, "ball");
    EXPECT_EQ(group, "none");
    EXPECT_EQ(Error::fAttribName, nullptr);
}

TEST_F(ReportLogTest, WorkIsKeptOnlyWhereReportsAre)
{
    const auto work = [] { error(kRange, kError, "work"); };
    EXPECT_EQ(keepingReports(work), nullptr);
    EXPECT_EQ(reports.size(), 1u);

    ReportLog log;
    std::shared_ptr<ReportLog> kept;
    {
        const ReportLog::Scope scope(log);
        EXPECT_EQ(keepingReports([] {}), nullptr);
        kept = keepingReports(work);
        ASSERT_NE(kept, nullptr);
        EXPECT_TRUE(log.empty());
        tellInTurn(kept);
        EXPECT_FALSE(log.empty());
    }
    EXPECT_EQ(reports.size(), 1u);
    tellInTurn(kept);
    EXPECT_EQ(reports.size(), 2u);
    log.tell();
    EXPECT_EQ(reports.size(), 2u);
}
