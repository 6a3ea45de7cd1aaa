#include "util/host_array.h"

#include <cstring>

#include "util/report.h"

namespace zeb
{

HostArrays::Arrays HostArrays::fNext;
HostArrays::Arrays* HostArrays::fCurrent = nullptr;

void HostArrays::describe(const void* array, long count, long stride)
{
    if (!array || count < 0) {
        error(kRange, kError, array ? "an array of %ld elements" : "array is null", count);
        return;
    }
    for (Array& known : fNext) {
        if (known.start != array) continue;
        known.count = count;
        known.stride = stride;
        return;
    }
    fNext.push_back({array, count, stride, {}});
}

HostArrays::Array* HostArrays::find(const void* array)
{
    if (!fCurrent) return nullptr;
    for (Array& known : *fCurrent) {
        if (known.start == array) return &known;
    }
    return nullptr;
}

const void* HostArrays::gather(const char* name, const void* array, long count, std::size_t size)
{
    Array* const known = find(array);
    if (!known) return array;
    if (known->count < count) {
        error(kInconsistent, kError, "\"%s\": %ld elements where %ld are read", name, known->count,
              count);
        return nullptr;
    }
    if (known->stride == 0 || known->stride == static_cast<long>(size)) return array;
    for (const Copy& copy : known->copies) {
        if (copy.size == size && copy.count >= count) return copy.bytes.get();
    }
    Copy copy{size, count, std::unique_ptr<std::byte[]>(new std::byte[size * count])};
    const std::byte* from = static_cast<const std::byte*>(array);
    for (long i = 0; i < count; ++i) {
        std::memcpy(&copy.bytes[i * size], from + std::ptrdiff_t{i} * known->stride, size);
    }
    known->copies.push_back(std::move(copy));
    return known->copies.back().bytes.get();
}

bool HostArrays::readInPlace(const char* name, const void* array, long count, std::size_t size)
{
    const Array* const known = find(array);
    if (known && known->stride != 0 && known->stride != static_cast<long>(size)) {
        error(kRange, kError, "\"%s\": elements cannot lie %ld bytes apart", name, known->stride);
        return false;
    }
    return gather(name, array, count, size) != nullptr || !array;
}

// The longest copy: one reader may have needed more of it than another.
const void* HostArrays::gathered(const void* array, std::size_t size)
{
    const Array* const known = find(array);
    if (!known) return array;
    const Copy* best = nullptr;
    for (const Copy& copy : known->copies) {
        if (copy.size == size && (!best || copy.count > best->count)) best = &copy;
    }
    return best ? best->bytes.get() : array;
}

}  // namespace zeb
