#include "util/pool.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace zeb
{

// Nothing takes a line, too. Those of up to 16 lines are exact; of larger sizes the first four bits
// count.
Pool::Class Pool::classOf(std::size_t bytes)
{
    const std::size_t lines = std::max<std::size_t>((bytes + kLine - 1) / kLine, 1);
    if (lines <= 16) return {lines, lines};
    const auto shift = static_cast<std::size_t>(std::bit_width(lines - 1)) - 4;
    const std::size_t first = ((lines - 1) >> shift) + 1;  // 9 ... 16
    return {shift * 8 + first, first << shift};
}

void* Pool::take(std::size_t bytes)
{
    if (bytes > kMost) return ::operator new(bytes);
    const auto [index, lines] = classOf(bytes);
    Free*& free = fFree[index];
    return free ? std::exchange(free, free->next) : static_cast<void*>(fArena.array<Line>(lines));
}

void Pool::give(void* memory, std::size_t bytes) noexcept
{
    if (bytes > kMost) {
        ::operator delete(memory);
        return;
    }
    Free*& free = fFree[classOf(bytes).index];
    free = new (memory) Free{free};
}

}  // namespace zeb
