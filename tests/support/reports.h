// Collects reports, for tests that look at messages.
#pragma once

#include <string>
#include <vector>

#include "zebcore/zebcore.h"

namespace zebtest
{

struct Report {
    long code, severity;
    std::string message;
    bool operator==(const Report&) const = default;
};

// While it lives, every report lands in the list instead of on standard error; infos are dropped as
// ever until they are asked for.
class Reports
{
public:
    Reports()
    {
        list().clear();
        zebCustomErrorHandler(kAllButInfos, keep);
    }
    ~Reports()
    {
        zebErrorHandler(static_cast<short>(0xB01), ZEB_ERROR_IGNORE);
        zebErrorHandler(static_cast<short>(0xB06), ZEB_ERROR_PRINT);
        zebErrorHandler(static_cast<short>(0xB08), ZEB_ERROR_ABORT);
    }
    Reports(const Reports&) = delete;
    Reports& operator=(const Reports&) = delete;

    void hearInfos() { zebCustomErrorHandler(ZEB_INFO, keep); }
    std::size_t size() const { return list().size(); }
    bool empty() const { return list().empty(); }
    const Report& operator[](std::size_t i) const { return list()[i]; }
    const Report& last() const { return list().back(); }
    void clear() { list().clear(); }

private:
    static constexpr short kAllButInfos = 0xB0E;
    static void keep(long code, long severity, const char* message)
    {
        list().push_back({code, severity, message ? message : "(null)"});
    }
    static std::vector<Report>& list()
    {
        static std::vector<Report> reports;
        return reports;
    }
};

}  // namespace zebtest
