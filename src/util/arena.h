// Memory that is taken piece by piece and given back all at once.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

namespace zeb
{

// Hands out memory from blocks, each new one as large as all before it. reset() makes all of it
// available again and keeps the blocks, so that a bucket's worth of hits costs no allocation once
// the first bucket has been rendered.
class Arena
{
public:
    template <class T, class... Args>
    T* make(Args&&... args)
    {
        static_assert(std::is_trivially_destructible_v<T>, "an arena runs no destructors");
        return new (take(sizeof(T), alignof(T))) T{std::forward<Args>(args)...};
    }

    template <class T>
    T* array(std::size_t count)
    {
        static_assert(std::is_trivially_destructible_v<T>, "an arena runs no destructors");
        T* first = static_cast<T*>(take(count * sizeof(T), alignof(T)));
        for (std::size_t i = 0; i < count; ++i) new (first + i) T();
        return first;
    }

    void reset()
    {
        fCurrent = 0;
        fUsed = 0;
    }

private:
    static constexpr std::size_t kLeast = 256 * 1024, kMost = 32 * 1024 * 1024;

    class Block
    {
    public:
        explicit Block(std::size_t bytes);
        std::size_t size() const { return fSize; }
        std::byte* bytes() const { return fBytes.get(); }

    private:
        struct Free {
            void operator()(std::byte* bytes) const;
        };
        std::size_t fSize;
        std::unique_ptr<std::byte, Free> fBytes;
    };

    void* take(std::size_t size, std::size_t alignment)
    {
        for (; fCurrent < fBlocks.size(); ++fCurrent, fUsed = 0) {
            const std::size_t start = (fUsed + alignment - 1) & ~(alignment - 1);
            if (start + size <= fBlocks[fCurrent].size()) {
                fUsed = start + size;
                return fBlocks[fCurrent].bytes() + start;
            }
        }
        fBlocks.emplace_back(std::max(size, std::clamp(fSize, kLeast, kMost)));
        fSize += fBlocks.back().size();
        fUsed = size;
        return fBlocks.back().bytes();
    }

    std::vector<Block> fBlocks;
    std::size_t fSize = 0;
    std::size_t fCurrent = 0;
    std::size_t fUsed = 0;
};

}  // namespace zeb
