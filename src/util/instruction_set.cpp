#include "util/instruction_set.h"

#include <cstdlib>
#include <initializer_list>

namespace zeb
{

bool hasLanes(int lanes)
{
    switch (lanes) {
        case 1:
        case 4:
            return true;
#if defined(__x86_64__) || defined(__i386__)
        case 8:
            return __builtin_cpu_supports("avx2") != 0;
        case 16:
            return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
                   __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512bw");
#endif
        default:
            return false;
    }
}

int bestLanes()
{
    static const int best = [] {
        const char* const asked = std::getenv("ZEBCORE_LANES");
        const int most = asked ? std::atoi(asked) : 16;
        for (const int lanes : {16, 8, 4}) {
            if (lanes <= most && hasLanes(lanes)) return lanes;
        }
        return 1;
    }();
    return best;
}

}  // namespace zeb
