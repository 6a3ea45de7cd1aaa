#include "hider/render_task.h"

#include "display/display.h"
#include "hider/refine_task.h"
#include "state/callback.h"
#include "util/cancel.h"

namespace zeb
{

void RenderTask::add(BucketPlace place, BucketQueue queue)
{
    Part& part = fParts.emplace_back();
    part.queue = std::move(queue);
    part.bucket = fLayout.makeBucket(place);
}

void RenderTask::run(int worker)
{
    for (Part& part : fParts) {
        const Workers::Scope scope(fWorkers, worker, part.reports);
        fDone.clear();
        checkCancelled();
        part.waits = shadesInOrder(part);
        if (part.waits) continue;
        if (part.bucket->filtersByHost()) part.scratch = std::make_unique<BucketScratch>();
        render(part, part.scratch ? *part.scratch : fWorkers.scratch(worker));
    }
}

bool RenderTask::shadesInOrder(Part& part)
{
    if (!HostShader::anyInOrder()) return false;
    for (const auto& filed : part.queue.pieces.entries()) {
        if (filed.thing->hostShading() == HostShading::kInOrder) return true;
    }
    return false;
}

void RenderTask::takePieces(Part& part)
{
    for (const auto& filed : part.queue.pieces.entries()) part.bucket->add(filed.thing);
    if (!fStays) part.queue = {};
}

void RenderTask::render(Part& part, BucketScratch& scratch)
{
    Bucket& bucket = *part.bucket;
    scratch.counts = {};
    takePieces(part);
    bucket.sample(scratch);
    part.counts = scratch.counts;
    if (part.scratch) return;
    const std::size_t size = bucket.rowWords();
    part.words.resize(size * static_cast<std::size_t>(bucket.y1() - bucket.y0() + 1));
    std::uint32_t* words = part.words.data();
    for (long y = bucket.y0(); y <= bucket.y1(); ++y, words += size) {
        checkCancelled();
        bucket.fillRow(y, fLinear, scratch, words);
    }
}

void RenderTask::deliver(std::size_t number, Display& display)
{
    Part& part = fParts[number];
    const Bucket& bucket = *part.bucket;
    part.reports.tell();
    if (part.waits) {
        BucketScratch& scratch = fWorkers.scratch(0);
        scratch.counts = {};
        takePieces(part);
        part.bucket->render(display, scratch);
        part.counts = scratch.counts;
        return;
    }
    const std::size_t size = bucket.rowWords();
    if (part.scratch) part.words.resize(size);
    std::uint32_t* words = part.words.data();
    for (long y = bucket.y0(); y <= bucket.y1(); ++y) {
        checkCancelled();
        if (part.scratch) {
            const CallbackScope filter;
            bucket.fillRow(y, fLinear, *part.scratch, words);
        }
        display.span(bucket.x0(), bucket.x1(), y, words);
        if (!part.scratch) words += size;
    }
    part.scratch.reset();
}

}  // namespace zeb
