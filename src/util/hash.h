// A chained hash table over elements that begin with a token.
#pragma once

#include <memory>
#include <vector>

#include "util/list.h"

namespace zeb
{

// T has a 16-bit member `token`, whose remainder chooses the bucket, and an operator==.
template <class T>
class Hash
{
public:
    explicit Hash(unsigned short buckets) : fBuckets(buckets) {}

    short add(T value)
    {
        auto& list = bucket(value);
        if (!list) list = std::make_unique<List<T>>();
        return list->add(std::move(value));
    }

    T* find(const T& value) const
    {
        const auto& list = fBuckets[value.token % fBuckets.size()];
        return list ? list->find(value) : nullptr;
    }

    short detach(const T& value)
    {
        auto& list = bucket(value);
        const short found = list ? list->detach(value) : short{0};
        if (list && list->empty()) list.reset();
        return found;
    }

    bool hasBucket(unsigned short index) const { return fBuckets[index] != nullptr; }

private:
    auto& bucket(const T& value) { return fBuckets[value.token % fBuckets.size()]; }
    std::vector<std::unique_ptr<List<T>>> fBuckets;
};

}  // namespace zeb
