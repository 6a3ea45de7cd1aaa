// Buckets that are rendered ahead of their turn, on any thread.
#pragma once

#include <memory>
#include <vector>

#include "hider/bucket_queue.h"
#include "hider/layout.h"
#include "hider/worker.h"

namespace zeb
{

class RenderTask : public Task
{
public:
    // A bucket for which the walk has filed all that it needs. What was filed stays, if the walk
    // may go back.
    RenderTask(Workers& workers, const Layout& layout, BucketPlace place, BucketQueue queue,
               bool stays, bool linear);

    // Hands the picture and all reports over, in the bucket's turn: calls the host.
    void deliver(Display& display);
    bool stays() const { return fStays; }
    BucketQueue& queue() { return fQueue; }
    const Counts& counts() const { return fCounts; }

private:
    void run(int worker) override;

    Workers& fWorkers;
    BucketQueue fQueue;
    const bool fStays, fLinear;
    std::unique_ptr<Bucket> fBucket;
    std::unique_ptr<BucketScratch> fScratch;  // for a host that filters
    std::vector<std::uint32_t> fWords;
    ReportLog fReports;
    Counts fCounts;
};

}  // namespace zeb
