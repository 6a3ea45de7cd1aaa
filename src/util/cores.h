// How many cores the process may use.
#pragma once

#if !defined(_WIN32)
#include <sched.h>

#include <string>
#endif

namespace zeb
{

constexpr long kMaxCores = 256;

// The cores that this thread may run on, or as many as the limits of its control groups pay for: 1
// to kMaxCores. Both may change while the process runs.
long usableCores();

#if !defined(_WIN32)

// How many cores a mask of affinity holds, or the machine, if none can be had.
// get  sched_getaffinity, or what stands for it
long affinityCores(int (*get)(pid_t, std::size_t, cpu_set_t*));

// How many cores the least limit of the process's control groups is, rounded up; kMaxCores without
// a limit.
// proc, sys  /proc and /sys, or folders that stand for them
long groupCores(const std::string& proc, const std::string& sys);

#endif

}  // namespace zeb
