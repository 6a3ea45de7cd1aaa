#include "util/cores.h"

#include <algorithm>

#if defined(_WIN32)

#include <windows.h>

#include <bit>

namespace zeb
{

long usableCores()
{
    DWORD_PTR own = 0, all = 0;
    // The mask is empty for a process in several groups of 64.
    const bool known = GetProcessAffinityMask(GetCurrentProcess(), &own, &all) && own != 0;
    const auto cores = known ? static_cast<long>(std::popcount(own))
                             : static_cast<long>(GetActiveProcessorCount(ALL_PROCESSOR_GROUPS));
    return std::clamp(cores, 1L, kMaxCores);
}

}  // namespace zeb

#else

#include <cerrno>
#include <charconv>
#include <fstream>
#include <thread>
#include <vector>

namespace zeb
{

namespace
{

// Where the system is asked for masks of so many times 1024 CPUs in vain, it is for another reason.
constexpr std::size_t kMostMasks = 1024;

// The words of a file, if there are so many of them and no more; none otherwise.
std::vector<std::string> words(const std::string& path, std::size_t count)
{
    std::ifstream file(path);
    std::vector<std::string> found;
    for (std::string word; found.size() <= count && file >> word;) found.push_back(word);
    if (found.size() != count) found.clear();
    return found;
}

// 0 for all that is no positive number.
long long positive(const std::string& word)
{
    long long value = 0;
    const char* const end = word.data() + word.size();
    const auto [stop, failed] = std::from_chars(word.data(), end, value);
    return failed == std::errc() && stop == end ? std::max(value, 0LL) : 0;
}

// quota  how much time of cores there is in a period; "max", -1 and what is garbled are no limit
long coresOf(const std::string& quota, const std::string& period)
{
    const long long time = positive(quota), length = positive(period);
    if (time == 0 || length == 0) return kMaxCores;
    return static_cast<long>(std::min<long long>(time / length + (time % length != 0), kMaxCores));
}

// The limit of one group, in version 2 and in version 1.
long limitOf(const std::string& group)
{
    const auto limit = words(group + "/cpu.max", 2);
    return limit.empty() ? kMaxCores : coresOf(limit[0], limit[1]);
}

long oldLimitOf(const std::string& group)
{
    const auto quota = words(group + "/cpu.cfs_quota_us", 1);
    const auto period = words(group + "/cpu.cfs_period_us", 1);
    return quota.empty() || period.empty() ? kMaxCores : coresOf(quota[0], period[0]);
}

// The least limit from a group up to the root. In a container the group may have no folder, while
// its limit is that of the root.
long leastLimit(const std::string& root, std::string group, long (*limit)(const std::string&))
{
    // Outside of what is mounted there.
    if (group == "/.." || group.starts_with("/../")) return kMaxCores;
    long least = kMaxCores;
    while (!group.empty()) {
        least = std::min(least, limit(root + group));
        group.resize(group.rfind('/'));
    }
    return std::min(least, limit(root));
}

}  // namespace

long affinityCores(int (*get)(pid_t, std::size_t, cpu_set_t*))
{
    for (std::vector<cpu_set_t> mask(1); mask.size() <= kMostMasks; mask.resize(2 * mask.size())) {
        const std::size_t size = mask.size() * sizeof(cpu_set_t);
        if (get(0, size, mask.data()) == 0) return std::max(1, CPU_COUNT_S(size, mask.data()));
        if (errno != EINVAL) break;
    }
    return std::max(1L, static_cast<long>(std::thread::hardware_concurrency()));
}

long groupCores(const std::string& proc, const std::string& sys)
{
    const std::string top = sys + "/fs/cgroup";
    long least = kMaxCores;
    std::ifstream groups(proc + "/self/cgroup");
    // Number, controllers, and the path of the group, which may hold further colons.
    for (std::string line; std::getline(groups, line);) {
        const std::size_t first = line.find(':');
        const std::size_t second = line.find(":/", first + 1);
        if (first == std::string::npos || second == std::string::npos) continue;
        const std::string controllers = line.substr(first + 1, second - first - 1);
        const std::string group = line.substr(second + 1);
        if (controllers.empty()) {
            least = std::min(least, leastLimit(top, group, limitOf));
        } else if ((',' + controllers + ',').find(",cpu,") != std::string::npos) {
            // Mounted under the names of all controllers, or of this one alone.
            for (const std::string& folder : {'/' + controllers, std::string("/cpu")}) {
                least = std::min(least, leastLimit(top + folder, group, oldLimitOf));
            }
        }
    }
    return least;
}

long usableCores()
{
    return std::min(affinityCores(sched_getaffinity), groupCores("/proc", "/sys"));
}

}  // namespace zeb

#endif
