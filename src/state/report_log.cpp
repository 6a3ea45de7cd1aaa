#include "state/report_log.h"

#include <utility>

#include "state/error.h"

namespace zeb
{

namespace
{

thread_local ReportLog* gLog = nullptr;

std::optional<std::string> copied(const char* text)
{
    return text ? std::optional<std::string>(text) : std::nullopt;
}

const char* textOf(const std::optional<std::string>& copy)
{
    return copy ? copy->c_str() : nullptr;
}

}  // namespace

ReportLog::Scope::Scope(ReportLog& log) : fOuter(std::exchange(gLog, &log)) {}

ReportLog::Scope::~Scope() { gLog = fOuter; }

ReportLog* ReportLog::current() { return gLog; }

void ReportLog::keep(long code, long severity, const char* message)
{
    fEntries.push_back({code, severity, copied(message), copied(Error::fAttribName),
                        copied(Error::fShadingGroup), nullptr});
}

void ReportLog::add(std::shared_ptr<ReportLog> log)
{
    fEntries.emplace_back().log = std::move(log);
}

void ReportLog::tell()
{
    const auto entries = std::exchange(fEntries, {});
    for (const Entry& entry : entries) {
        if (entry.log) {
            entry.log->tell();
            continue;
        }
        setAttribNames(textOf(entry.object), textOf(entry.group));
        report(entry.code, entry.severity, textOf(entry.message));
        setAttribNames(nullptr, nullptr);
    }
}

void tellInTurn(const std::shared_ptr<ReportLog>& log)
{
    if (gLog) {
        gLog->add(log);
    } else {
        log->tell();
    }
}

}  // namespace zeb
