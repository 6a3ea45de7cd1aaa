// Reports that wait to be told.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zeb
{

// What is reported where the host may not be called, on other threads: kept until it may be.
class ReportLog
{
public:
    // While one lives, reports of this thread go to its log.
    class Scope
    {
    public:
        explicit Scope(ReportLog& log);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        ReportLog* const fOuter;
    };
    // The log of this thread; null where reports are told at once.
    static ReportLog* current();

    bool empty() const { return fEntries.empty(); }
    void keep(long code, long severity, const char* message);
    // What is told here unless it has been told elsewhere.
    void add(std::shared_ptr<ReportLog> log);
    // On the thread of the host, once: what is in it has been told before the handlers hear it, so
    // that it is gone if one of them leaves by a jump.
    void tell();

private:
    using Text = std::optional<std::string>;
    struct Entry {
        long code = 0, severity = 0;
        Text message, object, group;
        std::shared_ptr<ReportLog> log;
    };
    std::vector<Entry> fEntries;
};

// Adds what was kept to the log of this thread, or tells it at once where there is none.
void tellInTurn(const std::shared_ptr<ReportLog>& log);

// Calls work(), and keeps what it reports if reports are kept on this thread; null if there is
// nothing to keep.
template <class Work>
std::shared_ptr<ReportLog> keepingReports(const Work& work)
{
    if (!ReportLog::current()) {
        work();
        return nullptr;
    }
    ReportLog log;
    {
        const ReportLog::Scope scope(log);
        work();
    }
    return log.empty() ? nullptr : std::make_shared<ReportLog>(std::move(log));
}

}  // namespace zeb
