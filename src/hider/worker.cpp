#include "hider/worker.h"

#include <cstdlib>

namespace zeb
{

void rethrowFailure(const Task& task)
{
    if (!task.failure()) return;
    try {
        std::rethrow_exception(task.failure());
    } catch (const std::bad_alloc&) {
        endWithoutMemory();
    }
}

Workers::Workers(int threads) : fCrew(threads)
{
    // For tests: how work falls must not matter.
    if (const char* const seed = std::getenv("ZEBCORE_DELAYS")) {
        Crew::delay(static_cast<std::uint32_t>(std::atol(seed)));
    }
    for (int worker = 0; worker < fCrew.threads(); ++worker) {
        fOwn.push_back(std::make_unique<Own>());
    }
}

Workers::~Workers() { fCrew.clear(); }

Workers::Scope::Scope(Workers& workers, int worker, ReportLog& log)
    : fReports(log),
      fPool(workers.fOwn[static_cast<std::size_t>(worker)]->pool),
      fBefore(std::exchange(Error::fFuncName, workers.fCallersName))
{
}

Workers::Scope::~Scope() { Error::fFuncName = fBefore; }

}  // namespace zeb
