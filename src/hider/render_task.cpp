#include "hider/render_task.h"

#include "display/display.h"
#include "hider/refine_task.h"
#include "state/callback.h"
#include "util/cancel.h"

namespace zeb
{

RenderTask::RenderTask(Workers& workers, const Layout& layout, BucketPlace place, BucketQueue queue,
                       bool stays, bool linear)
    : fWorkers(workers),
      fQueue(std::move(queue)),
      fStays(stays),
      fLinear(linear),
      fBucket(layout.makeBucket(place))
{
}

void RenderTask::run(int worker)
{
    const Workers::Scope scope(fWorkers, worker, fReports);
    checkCancelled();
    if (fBucket->filtersByHost()) fScratch = std::make_unique<BucketScratch>();
    BucketScratch& scratch = fScratch ? *fScratch : fWorkers.scratch(worker);
    scratch.counts = {};
    for (const auto& filed : fQueue.pieces.entries()) fBucket->add(filed.thing);
    if (!fStays) fQueue = {};
    fBucket->sample(scratch);
    fCounts = scratch.counts;
    if (fScratch) return;
    const std::size_t size = fBucket->rowWords();
    fWords.resize(size * static_cast<std::size_t>(fBucket->y1() - fBucket->y0() + 1));
    std::uint32_t* words = fWords.data();
    for (long y = fBucket->y0(); y <= fBucket->y1(); ++y, words += size) {
        checkCancelled();
        fBucket->fillRow(y, fLinear, scratch, words);
    }
}

void RenderTask::deliver(Display& display)
{
    fReports.tell();
    const std::size_t size = fBucket->rowWords();
    if (fScratch) fWords.resize(size);
    std::uint32_t* words = fWords.data();
    for (long y = fBucket->y0(); y <= fBucket->y1(); ++y) {
        checkCancelled();
        if (fScratch) {
            const CallbackScope filter;
            fBucket->fillRow(y, fLinear, *fScratch, words);
        }
        display.span(fBucket->x0(), fBucket->x1(), y, words);
        if (!fScratch) words += size;
    }
}

}  // namespace zeb
