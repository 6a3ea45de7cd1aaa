// Tasks for tests of crews.
#pragma once

#include <functional>
#include <limits>
#include <memory>
#include <utility>

#include "util/crew.h"

namespace zeb
{

constexpr std::int64_t kAll = std::numeric_limits<std::int64_t>::max();

class Job final : public Task
{
public:
    explicit Job(std::function<void(int)> work) : fWork(std::move(work)) {}

private:
    void run(int worker) override { fWork(worker); }

    const std::function<void(int)> fWork;
};

// What takes no argument need not know of workers.
template <class Work>
std::shared_ptr<Task> job(Work work)
{
    if constexpr (std::is_invocable_v<Work, int>) {
        return std::make_shared<Job>(std::move(work));
    } else {
        return std::make_shared<Job>([work = std::move(work)](int) { work(); });
    }
}

}  // namespace zeb
