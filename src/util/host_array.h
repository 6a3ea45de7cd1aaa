// Arrays of the host's, of which it has said how long they are.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace zeb
{

// What the host has said of the arrays of a call: how many elements each holds, and how far apart
// they lie. Arrays that nothing was said of are taken to be long enough, element beside element.
class HostArrays
{
public:
    // Of the arrays of the call that comes next.
    static void describe(const void* array, long count, long stride);

    // Where `count` elements, each of `width` values, can be read one beside the other. Null if the
    // host has said that there are fewer, which is reported under the array's name.
    template <class T>
    static const T* read(const char* name, const T* array, long count, long width = 1)
    {
        return static_cast<const T*>(gather(name, array, count, sizeof(T) * width));
    }
    // Sixteen floats, wherever they lie.
    static auto readMatrix(const float (*m)[4]) -> const float (*)[4]
    {
        return reinterpret_cast<const float(*)[4]>(read("matrix", &m[0][0], 16));
    }
    // The same for arrays that are not copied: they have to lie that way.
    static bool readInPlace(const char* name, const void* array, long count, std::size_t size);
    // What read() answered for an array.
    template <class T>
    static const T* dense(const T* array, long width = 1)
    {
        return static_cast<const T*>(gathered(array, sizeof(T) * width));
    }

    // While one lives, the call under way has the arrays that were described before it.
    class Call;

private:
    // Elements of so many bytes, gathered.
    struct Copy {
        std::size_t size;
        long count;
        std::unique_ptr<std::byte[]> bytes;
    };
    struct Array {
        const void* start;
        long count, stride;
        std::vector<Copy> copies;
    };
    using Arrays = std::vector<Array>;

    static Array* find(const void* array);
    static const void* gather(const char* name, const void* array, long count, std::size_t size);
    static const void* gathered(const void* array, std::size_t size);

    static Arrays fNext;
    static Arrays* fCurrent;
};

class HostArrays::Call
{
public:
    Call() : fOuter(fCurrent)
    {
        fArrays.swap(fNext);
        fCurrent = &fArrays;
    }
    ~Call() { fCurrent = fOuter; }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

private:
    Arrays fArrays;
    Arrays* const fOuter;
};

}  // namespace zeb
