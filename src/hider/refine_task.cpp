#include "hider/refine_task.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

#include "util/cancel.h"

namespace zeb
{

RefineTask::Kind RefineTask::kindOf(const Primitive& primitive)
{
    if (primitive.callsHost()) return kCall;
    return primitive.type() == kObject || primitive.parts() > 1 ? kExpand : kSplit;
}

RefineTask::RefineTask(Workers& workers, const Layout& layout, BucketPlace bucket, Kind kind)
    : fWorkers(workers), fLayout(layout), fBucket(bucket), fKind(kind)
{
}

void RefineTask::add(std::unique_ptr<Primitive> primitive)
{
    fInputs.push_back({std::move(primitive), {}});
}

void RefineTask::offer(Crew& crew)
{
    if (fKind != kCall) crew.put(2 * fLayout.number(fBucket), shared_from_this());
}

void RefineTask::run(int worker)
{
    const Workers::Scope scope(fWorkers, worker, fReports);
    checkCancelled();
    Refiner refiner(fLayout, *this, fCounts);
    refiner.moveTo(fBucket);
    try {
        if (fKind == kExpand) {
            expand(refiner);
        } else {
            refine(refiner);
        }
    } catch (const OutOfTurn&) {
        fOutOfTurn = true;
    }
    if (fKind == kSplit && !fReports.empty()) fOutOfTurn = true;
    if (fOutOfTurn) {
        fStack.clear();
        fPieces.clear();
        fLater.clear();
        fSplits.clear();
        fReports = {};
        return;
    }
    for (const auto& task : fLater) task->offer(fWorkers.crew());
    for (const auto& task : fParts) task->offer(fWorkers.crew());
    if (fWhole && --fWhole->fPartsLeft == 0) fWhole->groupParts();
}

void RefineTask::refine(Refiner& refiner)
{
    for (auto input = fInputs.rbegin(); input != fInputs.rend(); ++input) {
        checkCancelled();
        fInput = &*input;
        refiner.refine(input->primitive);
        fInput = nullptr;
        while (!fStack.empty()) {
            std::unique_ptr<Primitive> piece = std::move(fStack.back());
            fStack.pop_back();
            refiner.refine(piece);
        }
    }
}

void RefineTask::expand(Refiner& refiner)
{
    if (fWhole) {
        fWhole->fInputs.front().primitive->splitPart(refiner, fPart);
        return;
    }
    Primitive& primitive = *fInputs.front().primitive;
    if (!maySplit(primitive)) return;
    if (primitive.parts() == 1) {
        primitive.split(refiner);
        return;
    }
    primitive.prepareParts(refiner);
    for (long part = 0; part < primitive.parts(); ++part) {
        auto& task = fParts.emplace_back(make(fWorkers, fLayout, fBucket, kExpand));
        task->fWhole = this;
        task->fPart = part;
    }
    fPartsLeft = primitive.parts();
}

// Faces come in any order: those of one bucket, wherever they are in the mesh, are worth a task.
void RefineTask::groupParts()
{
    std::map<std::pair<long, long>, RefineTask*> latest;
    for (const auto& part : fParts) {
        for (Filed& filed : part->fFiled) {
            const Kind kind = kindOf(*filed.primitive);
            RefineTask*& task = latest[{filed.place.row, filed.place.column}];
            if (!task || kind != kSplit || task->isFull()) {
                fLater.push_back(make(fWorkers, fLayout, filed.place, kind));
                task = fLater.back().get();
            }
            task->add(std::move(filed.primitive));
        }
        Several<Filed>().swap(part->fFiled);
    }
    for (const auto& task : fLater) task->offer(fWorkers.crew());
}

void RefineTask::file(std::unique_ptr<Primitive> primitive, BucketPlace place)
{
    if (fKind == kSplit && place == fBucket) {
        fStack.push_back(std::move(primitive));
        return;
    }
    if (fWhole) {
        fFiled.push_back({std::move(primitive), place});
        return;
    }
    // Among the latest: others are not worth a search.
    constexpr std::ptrdiff_t kLatest = 8;
    const Kind kind = kindOf(*primitive);
    const auto end = fLater.rbegin() + std::min(std::ssize(fLater), kLatest);
    const auto known = std::find_if(fLater.rbegin(), end,
                                    [&](const auto& task) { return task->fBucket == place; });
    if (known != end && !(*known)->isFull() && kind == kSplit) {
        (*known)->add(std::move(primitive));
        return;
    }
    fLater.push_back(make(fWorkers, fLayout, place, kind));
    fLater.back()->add(std::move(primitive));
}

void RefineTask::file(std::shared_ptr<Piece> piece, const BucketRange& range)
{
    if (fInput) fInput->piece = {piece, range};
    fPieces.push_back({std::move(piece), range});
}

void RefineTask::giveUp(const std::shared_ptr<PrimitiveCommon>& surface)
{
    if (fKind == kSplit) throw OutOfTurn();
    fGivenUp.push_back(surface);
}

bool RefineTask::maySplit(Primitive& primitive)
{
    const bool may =
        primitive.maySplitAhead(fLayout.frame(), fLayout.pixels(), fSplits) || fKind == kExpand;
    if (!may) throw OutOfTurn();
    return true;
}

bool RefineTask::takeTurn(Counts& counts)
{
    if (fOutOfTurn) return false;
    for (auto splits = fSplits.begin(); splits != fSplits.end(); ++splits) {
        if (splits->take()) continue;
        std::for_each(fSplits.begin(), splits, [](const SplitsAhead& s) { s.giveBack(); });
        return false;
    }
    fTaken = true;
    if (!fCounted) counts.add(fCounts);
    fCounted = true;
    return true;
}

void RefineTask::leaveTurn()
{
    if (!fTaken) return;
    for (const SplitsAhead& splits : fSplits) splits.giveBack();
    for (const auto& part : fParts) part->leaveTurn();
    fTaken = false;
}

}  // namespace zeb
