#include "util/pool.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <utility>

namespace zeb
{

namespace
{

using Free = Pool::Free;

// Memory that is cut into parts of one size: a page into blocks, a region into pages. Lies at the
// start of it.
struct Chunk {
    // Of those that have parts left.
    Chunk *next = nullptr, *previous = nullptr;
    Chunk*& first;       // of them
    Chunk* const whole;  // that this is a part of
    Free* free = nullptr;
    const std::size_t start, size;  // of the parts
    std::size_t used = 0, rest;     // parts that somebody has, and that nobody has had yet

    Chunk(Chunk*& list, Chunk* region, std::size_t bytes, std::size_t from, std::size_t part)
        : first(list), whole(region), start(from), size(part), rest((bytes - from) / part)
    {
        add();
    }

    void* take()
    {
        ++used;
        void* const part = free ? static_cast<void*>(std::exchange(free, free->next))
                                : reinterpret_cast<std::byte*>(this) + start + --rest * size;
        if (isFull()) remove();
        return part;
    }
    // Whether all is back.
    bool give(void* part)
    {
        if (isFull()) add();
        free = new (part) Free{free};
        if (--used > 0) return false;
        remove();
        return true;
    }

private:
    bool isFull() const { return !free && !rest; }
    void add()
    {
        next = first;
        previous = nullptr;
        if (next) next->previous = this;
        first = this;
    }
    void remove()
    {
        (previous ? previous->next : first) = next;
        if (next) next->previous = previous;
    }
};

// Pages are aligned to their size, so that a block tells its page.
constexpr std::size_t kPage = 16 * 1024, kRegion = 64 * kPage;
constexpr std::size_t kHeader = (sizeof(Chunk) + Pool::kUnit - 1) / Pool::kUnit * Pool::kUnit;

class Pages
{
public:
    // Adds so many blocks to a list, or fewer, but one at least; answers how many.
    std::uint32_t take(std::size_t units, std::uint32_t most, Free*& list)
    {
        std::unique_lock lock(fMutex);
        if (!fPages[units]) addPage(units, lock);
        std::uint32_t count = 0;
        for (; count < most && fPages[units]; ++count) {
            list = new (fPages[units]->take()) Free{list};
        }
        return count;
    }
    void give(std::size_t count, Free*& list) noexcept
    {
        const std::lock_guard lock(fMutex);
        for (; count > 0; --count) {
            Free* const block = std::exchange(list, list->next);
            const auto address = reinterpret_cast<std::uintptr_t>(block);
            auto* const page = reinterpret_cast<Chunk*>(address & ~(kPage - 1));
            Chunk* const region = page->whole;
            if (page->give(block) && region->give(page)) {
                ::operator delete(region, std::align_val_t(kPage));
                --fCount;
            }
        }
    }
    std::size_t regions()
    {
        const std::lock_guard lock(fMutex);
        return fCount;
    }

private:
    // Without memory the host's functions are called, which may take or give some: not under the
    // lock.
    void addPage(std::size_t units, std::unique_lock<std::mutex>& lock)
    {
        if (!fRegions) {
            lock.unlock();
            void* const memory = ::operator new(kRegion, std::align_val_t(kPage));
            lock.lock();
            new (memory) Chunk(fRegions, nullptr, kRegion, kPage, kPage);
            ++fCount;
        }
        Chunk* const region = fRegions;
        new (region->take()) Chunk(fPages[units], region, kPage, kHeader, units * Pool::kUnit);
    }

    std::mutex fMutex;
    Chunk* fPages[Pool::kMost / Pool::kUnit + 1] = {};
    Chunk* fRegions = nullptr;
    std::size_t fCount = 0;  // of regions
};

// Stays: blocks may be given back until the process has ended.
Pages& allPages()
{
    static Pages* const pages = new Pages;
    return *pages;
}

thread_local Pool* gPool = nullptr;  // in force on this thread

// How many blocks go to a pool, or back, at once.
std::uint32_t batch(std::size_t units)
{
    return static_cast<std::uint32_t>(std::clamp<std::size_t>(256 / units, 4, 32));
}

std::size_t unitsOf(std::size_t bytes)
{
    return std::max<std::size_t>((bytes + Pool::kUnit - 1) / Pool::kUnit, 1);
}

}  // namespace

Pool::Scope::Scope(Pool& pool) : fBefore(std::exchange(gPool, &pool)) {}

Pool::Scope::~Scope() { gPool = fBefore; }

void* Pool::take(std::size_t bytes)
{
    if (bytes > kMost || kFromHeap) return ::operator new(bytes);
    const std::size_t units = unitsOf(bytes);
    Pool* const pool = gPool;
    if (!pool) {
        Free* block = nullptr;
        allPages().take(units, 1, block);
        return block;
    }
    Shelf& shelf = pool->fShelves[units];
    if (!shelf.first) pool->restock(shelf, units);
    ++shelf.room;
    return std::exchange(shelf.first, shelf.first->next);
}

void Pool::give(void* memory, std::size_t bytes) noexcept
{
    if (bytes > kMost || kFromHeap) {
        ::operator delete(memory);
        return;
    }
    if (!memory) return;
    const std::size_t units = unitsOf(bytes);
    Pool* const pool = gPool;
    if (!pool) {
        Free* block = new (memory) Free{nullptr};
        allPages().give(1, block);
        return;
    }
    Shelf& shelf = pool->fShelves[units];
    if (shelf.room == 0) pool->clear(shelf, units);
    --shelf.room;
    shelf.first = new (memory) Free{shelf.first};
}

void Pool::restock(Shelf& shelf, std::size_t units)
{
    const std::uint32_t count = batch(units);
    Free* blocks = nullptr;
    const std::uint32_t taken = allPages().take(units, count, blocks);
    if (shelf.first) {
        // What the host did meanwhile has left some there.
        allPages().give(taken, blocks);
    } else {
        shelf = {blocks, 2 * count - taken};
    }
}

void Pool::clear(Shelf& shelf, std::size_t units) noexcept
{
    const std::uint32_t count = batch(units);
    shelf.room = shelf.first ? count : 2 * count;
    if (shelf.first) allPages().give(count, shelf.first);
}

void Pool::empty() noexcept
{
    for (std::size_t units = 1; units < fShelves.size(); ++units) {
        Shelf& shelf = fShelves[units];
        if (shelf.first) allPages().give(2 * batch(units) - shelf.room, shelf.first);
        shelf.room = 0;
    }
}

std::size_t Pool::regions() { return allPages().regions(); }

}  // namespace zeb
