// Buckets that are rendered ahead of their turn, on any thread.
#pragma once

#include <memory>
#include <vector>

#include "hider/bucket_queue.h"
#include "hider/layout.h"
#include "hider/worker.h"

namespace zeb
{

// A few that follow each other: neighbours share pieces.
class RenderTask : public Task
{
public:
    // What was filed stays, if the walk may go back.
    RenderTask(Workers& workers, const Layout& layout, bool stays, bool linear)
        : fWorkers(workers), fLayout(layout), fStays(stays), fLinear(linear)
    {
    }

    // A bucket for which the walk has filed all that it needs.
    void add(BucketPlace place, BucketQueue queue);
    std::size_t size() const { return fParts.size(); }
    // What nobody needs any more goes while the task runs.
    void leave(std::vector<std::shared_ptr<Task>> done) { fDone = std::move(done); }

    bool stays() const { return fStays; }
    BucketQueue& queue(std::size_t bucket) { return fParts[bucket].queue; }
    // Hands the picture and all reports over, in the bucket's turn: calls the host.
    void deliver(std::size_t bucket, Display& display);
    const Counts& counts(std::size_t bucket) const { return fParts[bucket].counts; }

private:
    struct Part {
        BucketQueue queue;
        bool waits = false;  // for its turn: functions of the host's shade in order
        std::unique_ptr<Bucket> bucket;
        std::unique_ptr<BucketScratch> scratch;  // for a host that filters
        std::vector<std::uint32_t> words;
        ReportLog reports;
        Counts counts;
    };

    void run(int worker) override;
    void takePieces(Part& part);
    void render(Part& part, BucketScratch& scratch);
    static bool shadesInOrder(Part& part);

    Workers& fWorkers;
    const Layout& fLayout;
    const bool fStays, fLinear;
    std::vector<Part> fParts;
    std::vector<std::shared_ptr<Task>> fDone;
};

}  // namespace zeb
