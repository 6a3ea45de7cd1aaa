// The walk over the buckets in which everything is filed: serial, on the caller's thread. It takes
// those that are not rendered on the way to the next one that is.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "hider/bucket_queue.h"
#include "hider/refiner.h"
#include "hider/worker.h"

namespace zeb
{

// Delivers what the walk has left behind.
class Delivery
{
public:
    virtual ~Delivery() = default;
    // All of it, so that the host may be called in its turn. False if what it did meanwhile took
    // the walk back.
    virtual bool settle() = 0;
};

// Refines bucket by bucket what is filed, alone, or with threads that run ahead. Both file the same
// in the same order.
class Front : private Filing
{
public:
    Front(const Layout& layout, Delivery& delivery, Counts& counts);

    // The number of the bucket that the walk is at, or on its way to.
    std::int64_t next() const { return fNext; }
    bool isDone() const { return fNext >= fLayout.buckets(); }
    // Files what the host adds: for the bucket under way, or later ones.
    void add(std::unique_ptr<Primitive> primitive) { fRefiner.add(std::move(primitive)); }
    // Whether it is called from the walk.
    bool callsHost() const { return fCallsHost; }

    // Lets others run ahead from now on, or nobody.
    void beginAhead(Workers& workers);
    void endAhead() { fAhead = false; }
    bool isAhead() const { return fAhead; }
    // Refines all that the next bucket needs, and moves on with what is filed under it; false if
    // the walk was taken back on the way. May throw Cancelled, or what a thread has met with.
    bool walk(BucketQueue& queue);
    // Goes back to a bucket, before anything was filed from there. The queues of those from there
    // on have to be restored first.
    void restore(BucketPlace place, BucketQueue queue);
    void goBack(std::int64_t number);

private:
    using Row = std::vector<std::unique_ptr<BucketQueue>>;

    BucketQueue& queueAt(BucketPlace place);
    BucketQueue* queueIfAny(BucketPlace place) const;
    BucketQueue takeQueue(BucketPlace place);
    // The one that is rendered before.
    BucketPlace before(std::int64_t number) const;
    // From a place on, the next that anything is filed under; no further than the aim.
    BucketPlace nextFiled(BucketPlace from, BucketPlace aim) const;
    // That threads look at ahead of the walk.
    std::int64_t buckets() const;
    // Of what is filed now.
    std::int64_t from() const { return fWalking ? fNext : fNext - 1; }
    void begin();
    bool refineAll();
    void lookAhead(std::int64_t number);
    // Makes tasks of primitives that were filed one after the other.
    void share(std::vector<Filed<QueueItem>::Entry>& entries, BucketPlace place);
    void shareStack();
    // False if the walk was taken back.
    bool refine(QueueItem item);
    bool merge(RefineTask& task);
    bool mergeExpanded(RefineTask& task);
    bool call(std::unique_ptr<Primitive>& primitive);
    void fileLater(const RefineTask& task);

    void file(std::unique_ptr<Primitive> primitive, BucketPlace place) override;
    void file(std::shared_ptr<Piece> piece, const BucketRange& range) override;
    void giveUp(const std::shared_ptr<PrimitiveCommon>& surface) override;
    bool maySplit(Primitive& primitive) override
    {
        return primitive.mayStillSplit(fLayout.frame(), fLayout.pixels());
    }

    const Layout& fLayout;
    Delivery& fDelivery;
    Counts& fCounts;
    Refiner fRefiner;
    std::vector<std::unique_ptr<Row>> fRows;  // rows and queues are made when first needed
    std::int64_t fNext = 0;
    BucketPlace fHere;                 // where the walk is, or where it was last
    std::vector<PassedQueue> fBefore;  // left behind on the way
    bool fWalking = false;
    bool fCallsHost = false;
    std::vector<QueueItem> fStack;  // of the bucket under way
    Workers* fWorkers = nullptr;    // null before there are some
    bool fAhead = false;
};

}  // namespace zeb
