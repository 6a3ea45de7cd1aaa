// What each of the threads that render a picture has of its own.
#pragma once

#include <memory>
#include <vector>

#include "hider/bucket.h"
#include "state/error.h"
#include "state/report_log.h"
#include "util/crew.h"
#include "util/float_environment.h"
#include "util/pool.h"

namespace zeb
{

// Throws what a task has met with; running out of memory becomes the library's report.
void rethrowFailure(const Task& task);

class Workers
{
public:
    // For the interface function under way, which reports are made for.
    explicit Workers(int threads);
    ~Workers();

    Crew& crew() { return fCrew; }
    BucketScratch& scratch(int worker) { return fOwn[static_cast<std::size_t>(worker)]->scratch; }

    // On the thread of a worker, while it runs a task: memory comes from its pool, reports go to
    // the log, and running out of memory is an exception. The owner of the crew has modes and a
    // pool in force already.
    class Scope
    {
    public:
        Scope(Workers& workers, int worker, ReportLog& log);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        const FloatEnvironment fEnvironment;
        const ThrowingFreeStoreScope fMemory;
        const ReportLog::Scope fReports;
        const Pool::Scope fPool;
        const char* const fBefore;
    };

private:
    struct Own {
        Pool pool;
        BucketScratch scratch;
    };
    const char* const fCallersName = Error::fFuncName;
    std::vector<std::unique_ptr<Own>> fOwn;
    Crew fCrew;
};

}  // namespace zeb
