// Processes that run out of memory.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

#include "memory.h"
#include "support/posix.h"

namespace zebtest
{

// How a process ends that runs a function, and what it writes to its standard error.
struct End {
    int status;
    std::string words;
};

inline End endOf(const std::function<int()>& function)
{
    int ends[2];
    if (pipe(ends) != 0) return {-1, ""};
    End end;
    end.status = inChild([&] {
        dup2(ends[1], STDERR_FILENO);
        close(ends[0]);
        close(ends[1]);
        return function();
    });
    close(ends[1]);
    char bytes[4096];
    for (ssize_t n = 1; n > 0; end.words.append(bytes, static_cast<std::size_t>(n))) {
        n = std::max(read(ends[0], bytes, sizeof bytes), ssize_t{0});
    }
    close(ends[0]);
    return end;
}

inline bool aborted(const End& end)
{
    return WIFSIGNALED(end.status) && WTERMSIG(end.status) == SIGABRT;
}

inline void nothing() {}

// Takes the memory away from the first, the second ... time on that a call asks for it, until it
// asks no more; in the end ever fewer of them.
inline void starve(const std::string& name, const std::function<void()>& call,
                   const std::function<void()>& prepare = nothing,
                   const std::function<void()>& checkAfterwards = nothing)
{
    const std::string words = "severe error: Out of memory. " + name + "free store exhausted\n";
    long times = 0;
    for (long n = 0;; n += 1 + n / 8) {
        const End end = endOf([&] {
            prepare();
            starved::refuseAllFromNew(n);
            call();
            starved::refuseNone();
            return 0;
        });
        if (end.status == 0) break;
        ++times;
        ASSERT_TRUE(aborted(end)) << end.status << ", " << name << n << ": " << end.words;
        ASSERT_EQ(end.words, words) << n;
        checkAfterwards();
    }
    EXPECT_GT(times, 0) << name << "asks for nothing";
}

}  // namespace zebtest
