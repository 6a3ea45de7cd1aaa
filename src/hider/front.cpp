#include "hider/front.h"

#include <algorithm>

#include "state/error.h"
#include "util/cancel.h"

namespace zeb
{

namespace
{

// How many buckets ahead of the walk threads may refine, each.
constexpr std::int64_t kAhead = 16;

// So many buckets more at once.
constexpr std::int64_t kStep = 8;

constexpr BucketPlace kBeforeAll{-1, 0};

BucketPlace after(BucketPlace place) { return {place.column + 1, place.row}; }

}  // namespace

Front::Front(const Layout& layout, Delivery& delivery, Counts& counts)
    : fLayout(layout),
      fDelivery(delivery),
      fCounts(counts),
      fRefiner(layout, *this, counts),
      fRows(static_cast<std::size_t>(layout.last().row + 1)),
      fHere(kBeforeAll)
{
}

BucketQueue& Front::queueAt(BucketPlace place)
{
    auto& row = fRows[static_cast<std::size_t>(place.row)];
    if (!row) row = std::make_unique<Row>(static_cast<std::size_t>(fLayout.last().column + 1));
    auto& queue = (*row)[static_cast<std::size_t>(place.column)];
    if (!queue) queue = std::make_unique<BucketQueue>();
    return *queue;
}

BucketQueue* Front::queueIfAny(BucketPlace place) const
{
    const auto& row = fRows[static_cast<std::size_t>(place.row)];
    return row ? (*row)[static_cast<std::size_t>(place.column)].get() : nullptr;
}

BucketQueue Front::takeQueue(BucketPlace place)
{
    auto& row = *fRows[static_cast<std::size_t>(place.row)];
    const auto queue = std::move(row[static_cast<std::size_t>(place.column)]);
    return std::move(*queue);
}

BucketPlace Front::before(std::int64_t number) const
{
    return number > 0 ? fLayout.place(number - 1) : kBeforeAll;
}

BucketPlace Front::nextFiled(BucketPlace from, BucketPlace aim) const
{
    for (; from.row < aim.row; from = {0, from.row + 1}) {
        if (!fRows[static_cast<std::size_t>(from.row)]) continue;
        for (; from.column <= fLayout.last().column; ++from.column) {
            const BucketQueue* const queue = queueIfAny(from);
            if (queue && !queue->items.isEmpty()) return from;
        }
    }
    for (; from.column < aim.column; ++from.column) {
        const BucketQueue* const queue = queueIfAny(from);
        if (queue && !queue->items.isEmpty()) return from;
    }
    return aim;
}

void Front::beginAhead(Workers& workers)
{
    fWorkers = &workers;
    fAhead = true;
    const std::int64_t most = buckets() + kStep;
    for (std::int64_t n = 0; n < most; ++n) lookAhead(fNext + n);
    workers.crew().open(2 * (fNext + most));
}

std::int64_t Front::buckets() const { return kAhead * fWorkers->crew().threads(); }

// What is filed later under a bucket that was looked at already is shared when its turn comes.
void Front::lookAhead(std::int64_t number)
{
    if (number >= fLayout.buckets()) return;
    const BucketPlace aim = fLayout.place(number);
    BucketPlace place = before(number);
    while (place != aim) {
        place = nextFiled(after(place), aim);
        if (BucketQueue* const queue = queueIfAny(place)) share(queue->items.entries(), place);
    }
}

void Front::share(std::vector<Filed<QueueItem>::Entry>& entries, BucketPlace place)
{
    std::vector<Filed<QueueItem>::Entry> shared;
    std::vector<std::shared_ptr<RefineTask>> made;
    for (auto& entry : entries) {
        auto& primitive = entry.thing.primitive;
        if (!primitive) {
            shared.push_back(std::move(entry));
            continue;
        }
        const RefineTask::Kind kind = RefineTask::kindOf(*primitive);
        const bool fits = kind == RefineTask::kSplit && !made.empty() && !made.back()->isFull() &&
                          shared.back().thing.task == made.back() &&
                          shared.back().from == entry.from;
        if (!fits) {
            made.push_back(RefineTask::make(*fWorkers, fLayout, place, kind));
            shared.push_back({{nullptr, made.back(), {}}, entry.from});
        }
        made.back()->add(std::move(primitive));
    }
    entries = std::move(shared);
    for (const auto& task : made) task->offer(fWorkers->crew());
}

// The primitives on top of the stack.
void Front::shareStack()
{
    std::vector<Filed<QueueItem>::Entry> entries;
    while (!fStack.empty() && fStack.back().primitive && !fStack.back().alone) {
        entries.push_back({std::move(fStack.back()), 0});
        fStack.pop_back();
    }
    std::reverse(entries.begin(), entries.end());
    share(entries, fHere);
    for (auto& entry : entries) fStack.push_back(std::move(entry.thing));
}

void Front::begin()
{
    long passed = fHere.row;
    fHere = nextFiled(after(fHere), fLayout.place(fNext));
    for (; passed < fHere.row; ++passed) fRows[static_cast<std::size_t>(passed)].reset();
    fRefiner.moveTo(fHere);
    fWalking = true;
    auto& entries = queueAt(fHere).items.entries();
    if (fAhead) {
        share(entries, fHere);
        for (const auto& entry : entries) fStack.push_back({nullptr, entry.thing.task, {}});
    } else {
        for (auto& entry : entries) fStack.push_back(std::move(entry.thing));
        entries.clear();
    }
}

bool Front::walk(BucketQueue& queue)
{
    const BucketPlace aim = fLayout.place(fNext);
    if (!refineAll()) return false;
    while (fHere != aim) {
        fBefore.push_back({fHere, takeQueue(fHere)});
        if (!refineAll()) return false;
    }
    queue = takeQueue(aim);
    queue.before = std::exchange(fBefore, {});
    ++fNext;
    // What the host adds now is for what is rendered next.
    fRefiner.moveTo(fLayout.place(fNext));
    if (fAhead && fNext % kStep == 0) {
        for (std::int64_t n = 0; n < kStep; ++n) lookAhead(fNext + buckets() + n);
        fWorkers->crew().open(2 * (fNext + buckets() + kStep));
    }
    return true;
}

// What is filed under one bucket; false if the walk was taken back.
bool Front::refineAll()
{
    if (!fWalking) begin();
    while (!fStack.empty()) {
        checkCancelled();
        const QueueItem& top = fStack.back();
        if (fAhead && top.primitive && !top.alone) shareStack();
        QueueItem item = std::move(fStack.back());
        fStack.pop_back();
        if (!refine(std::move(item))) return false;
    }
    fWalking = false;
    return true;
}

bool Front::refine(QueueItem item)
{
    if (item.task) return merge(*item.task);
    if (item.piece.piece) {
        item.piece.piece->tellReports();
        file(std::move(item.piece.piece), item.piece.range);
        return true;
    }
    if (item.primitive->callsHost()) return call(item.primitive);
    fRefiner.refine(item.primitive);
    return true;
}

bool Front::call(std::unique_ptr<Primitive>& primitive)
{
    if (!fDelivery.settle()) return false;
    std::unique_ptr<Primitive> procedural = std::move(primitive);
    fCallsHost = true;
    fRefiner.refine(procedural);
    fCallsHost = false;
    return true;
}

bool Front::merge(RefineTask& task)
{
    if (task.kind() == RefineTask::kCall) return call(task.inputs().front().primitive);
    fWorkers->crew().finish(task);
    rethrowFailure(task);
    if (task.kind() == RefineTask::kExpand) return mergeExpanded(task);
    if (task.takeTurn(fCounts)) {
        for (const auto& [piece, range] : task.pieces()) file(piece, range);
        fileLater(task);
        return true;
    }
    if (!fDelivery.settle()) return false;
    for (auto& input : task.inputs()) {
        if (input.piece.piece) input.piece.piece->countAgain(fCounts);
        fStack.push_back({std::move(input.primitive), nullptr, std::move(input.piece), true});
    }
    return true;
}

bool Front::mergeExpanded(RefineTask& task)
{
    task.takeTurn(fCounts);
    if (!task.reports().empty() || !task.givenUp().empty()) {
        if (!fDelivery.settle()) return false;
        const Attrib& attrib = task.whole().attrib();
        const AttribNamesScope names(attrib.object.text(), attrib.group.text());
        fCallsHost = true;
        task.reports().tell();
        for (const auto& surface : task.givenUp()) giveUp(surface);
        fCallsHost = false;
    }
    for (const auto& part : task.parts()) {
        if (!merge(*part)) return false;
    }
    fileLater(task);
    return true;
}

void Front::fileLater(const RefineTask& task)
{
    for (const auto& later : task.later()) {
        if (later->bucket() == fHere) {
            fStack.push_back({nullptr, later, {}});
        } else {
            queueAt(later->bucket()).items.add({nullptr, later, {}}, from());
        }
    }
}

void Front::restore(BucketPlace place, BucketQueue queue)
{
    for (auto& [earlier, of] : std::exchange(queue.before, {})) restore(earlier, std::move(of));
    queueAt(place) = std::move(queue);
}

void Front::goBack(std::int64_t number)
{
    for (auto& [place, queue] : std::exchange(fBefore, {})) restore(place, std::move(queue));
    fStack.clear();
    fWalking = false;
    fNext = number;
    fHere = before(number);
    fRefiner.moveTo(fLayout.place(number));
    for (auto row = static_cast<std::size_t>(fHere.row); row < fRows.size(); ++row) {
        if (!fRows[row]) continue;
        for (const auto& queue : *fRows[row]) {
            if (!queue) continue;
            for (const auto& entry : queue->items.entries()) {
                if (entry.thing.task) entry.thing.task->leaveTurn();
            }
            queue->items.takeBack(number);
            queue->pieces.takeBack(number);
        }
    }
}

void Front::file(std::unique_ptr<Primitive> primitive, BucketPlace place)
{
    QueueItem item{std::move(primitive), nullptr, {}};
    if (fWalking && place == fHere) {
        fStack.push_back(std::move(item));
    } else {
        queueAt(place).items.add(std::move(item), from());
    }
}

void Front::file(std::shared_ptr<Piece> piece, const BucketRange& range)
{
    for (long row = range.first.row; row <= range.last.row; ++row) {
        for (long column = range.first.column; column <= range.last.column; ++column) {
            queueAt({column, row}).pieces.add(piece, from());
        }
    }
}

void Front::giveUp(const std::shared_ptr<PrimitiveCommon>& surface)
{
    if (surface->fGivenUp.exchange(true)) return;
    error(kRange, kWarning, "surface takes too many splits, parts are coarse or missing");
}

}  // namespace zeb
