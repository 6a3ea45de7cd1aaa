// Memory for arrays that come and go by the thousand, in sizes that repeat.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "util/arena.h"

namespace zeb
{

// Keeps what is given back for the next who takes as much; all goes when the pool does, at the
// price of a few large blocks. That is several times as fast as the heap, which joins and parts
// its neighbours every time. One thread at a time.
class Pool
{
public:
    // Aligned for everything.
    void* take(std::size_t bytes);
    // What take() gave for as many bytes.
    void give(void* memory, std::size_t bytes) noexcept;

private:
    // In cache lines; arrays that are larger than most go to the heap. Sizes of a class differ by
    // an eighth at most: what one leaves fits many others.
    static constexpr std::size_t kLine = 64, kMost = 64 * 1024;
    struct Class {
        std::size_t index, lines;
    };
    static Class classOf(std::size_t bytes);
    struct alignas(kLine) Line {
        Line() {}  // leaves the bytes as they are
        std::byte bytes[kLine];
    };
    struct Free {
        Free* next;
    };

    Arena fArena;
    std::vector<Free*> fFree = std::vector<Free*>(classOf(kMost).index + 1);
};

struct PoolDelete {
    Pool* pool = nullptr;
    std::size_t bytes = 0;

    void operator()(void* memory) const noexcept
    {
        if (pool) {
            pool->give(memory, bytes);
        } else {
            ::operator delete(memory);
        }
    }
};

// From a pool that outlives it, or from the heap.
template <class T>
using PoolArray = std::unique_ptr<T[], PoolDelete>;

template <class T>
PoolArray<T> makeArray(Pool* pool, std::size_t count)
{
    static_assert(std::is_trivially_destructible_v<T>, "a pool runs no destructors");
    const std::size_t bytes = count * sizeof(T);
    PoolArray<T> array(static_cast<T*>(pool ? pool->take(bytes) : ::operator new(bytes)),
                       PoolDelete{pool, bytes});
    std::uninitialized_default_construct_n(array.get(), count);
    return array;
}

}  // namespace zeb
