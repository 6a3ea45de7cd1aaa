// What waits for a bucket.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "hider/refine_task.h"

namespace zeb
{

// Things in the order in which the walk over the buckets filed them. It may go back, and take back
// what it filed from some bucket on.
template <class T>
class Filed
{
public:
    struct Entry {
        T thing;
        std::int64_t from;  // the number of the bucket that the walk was at
    };

    void add(T thing, std::int64_t from) { fEntries.push_back({std::move(thing), from}); }
    void takeBack(std::int64_t from)
    {
        while (!fEntries.empty() && fEntries.back().from >= from) fEntries.pop_back();
    }
    std::vector<Entry>& entries() { return fEntries; }
    bool isEmpty() const { return fEntries.empty(); }

private:
    std::vector<Entry> fEntries;
};

// A primitive, several on their way through other threads, or a piece.
struct QueueItem {
    std::unique_ptr<Primitive> primitive;
    std::shared_ptr<RefineTask> task;
    RefineTask::FiledPiece piece;
    bool alone = false;  // a primitive that only its turn can refine
};

struct PassedQueue;

struct BucketQueue {
    Filed<QueueItem> items;  // the last is the first to be refined
    Filed<std::shared_ptr<Piece>> pieces;
    std::vector<PassedQueue> before;  // that the walk has passed on its way here
};

// Of a bucket that is not rendered, between the one that has it and the one rendered before.
struct PassedQueue {
    BucketPlace place;
    BucketQueue queue;
};

}  // namespace zeb
