// Memory for small things that come and go by the thousand.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

namespace zeb
{

// Small blocks lie in pages of the heap, each full of blocks of one size; a page goes back to the
// heap with the last of its blocks. All threads take from the same pages, under a lock, and any may
// give back what another took. A pool keeps a few blocks of every size at hand for the thread that
// it is in force on, which rarely needs the lock then; blocks are in no pool's debt, and outlive
// it. That is several times as fast as the heap, which parts and joins its neighbours every time.
// Large blocks are the heap's own; and all are under the address sanitizer, which finds what is
// done to them once they have been given back.
class Pool
{
public:
    // Sizes of blocks are multiples of the first, up to the second.
    static constexpr std::size_t kUnit = 16, kMost = 1024;
#if defined(__SANITIZE_ADDRESS__)
    static constexpr bool kFromHeap = true;
#elif defined(__has_feature)
    static constexpr bool kFromHeap = __has_feature(address_sanitizer);
#else
    static constexpr bool kFromHeap = false;
#endif

    Pool() = default;
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;
    ~Pool() { empty(); }

    // Puts a pool in force on this thread; it must be in force on no other.
    class Scope
    {
    public:
        explicit Scope(Pool& pool);
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        Pool* const fBefore;
    };

    // Aligned as the heap does.
    static void* take(std::size_t bytes);
    // What take() gave for as many bytes.
    static void give(void* memory, std::size_t bytes) noexcept;
    // Gives back what is at hand.
    void empty() noexcept;

    // A block that nobody has.
    struct Free {
        Free* next;
    };
    // What all pages are in, 1 MiB each.
    static std::size_t regions();

private:
    struct Shelf {
        Free* first = nullptr;
        std::uint32_t room = 0;  // for so many more; for none before the first
    };
    void restock(Shelf& shelf, std::size_t units);
    void clear(Shelf& shelf, std::size_t units) noexcept;

    std::array<Shelf, kMost / kUnit + 1> fShelves;
};

// Takes objects from there that are made with new.
struct Pooled {
    static void* operator new(std::size_t bytes) { return Pool::take(bytes); }
    static void operator delete(void* memory, std::size_t bytes) noexcept
    {
        Pool::give(memory, bytes);
    }
};

template <class T>
struct PoolAllocator {
    using value_type = T;

    PoolAllocator() = default;
    template <class Other>
    PoolAllocator(const PoolAllocator<Other>&)
    {
    }
    T* allocate(std::size_t count) { return static_cast<T*>(Pool::take(count * sizeof(T))); }
    void deallocate(T* array, std::size_t count) noexcept { Pool::give(array, count * sizeof(T)); }
    bool operator==(const PoolAllocator&) const { return true; }
};

struct PoolDelete {
    std::size_t bytes = 0;

    void operator()(void* memory) const noexcept { Pool::give(memory, bytes); }
};

template <class T>
using PoolArray = std::unique_ptr<T[], PoolDelete>;

template <class T>
PoolArray<T> makeArray(std::size_t count)
{
    static_assert(std::is_trivially_destructible_v<T>, "a pool runs no destructors");
    const std::size_t bytes = count * sizeof(T);
    PoolArray<T> array(static_cast<T*>(Pool::take(bytes)), PoolDelete{bytes});
    std::uninitialized_default_construct_n(array.get(), count);
    return array;
}

}  // namespace zeb
