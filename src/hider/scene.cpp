#include "hider/scene.h"

#include <algorithm>
#include <cmath>

#include "display/display.h"
#include "display/screen.h"
#include "geom/grid.h"
#include "math/shading_math.h"
#include "math/spaces.h"
#include "state/callback.h"
#include "state/error.h"
#include "state/host_shader.h"
#include "state/upcalls.h"
#include "util/cancel.h"
#include "util/number.h"

namespace zeb
{

Scene* gScene = nullptr;

namespace
{

// How many buckets ahead of delivery threads may render, each.
constexpr std::size_t kAhead = 16;

// How many of them make a task at most.
constexpr std::int64_t kTogether = 4;

}  // namespace

namespace upcall
{
void initScene() { gScene->init(); }
void flushScene() { gScene->flush(); }
void renderScene() { gScene->render(); }
void settleScene() { gScene->settleReports(); }
void defineObject(Object* object) { gScene->define(object); }
}  // namespace upcall

void Scene::init()
{
    flush();
    PrimitiveCommon::fCurSeq = 0;
    SeedScope::reset();
    fCounts = {};
    fLayout = std::make_unique<Layout>(*gOption, *gDisplay, gCameraToRaster);
    fFront = std::make_unique<Front>(*fLayout, static_cast<Delivery&>(*this), fCounts);
    fLayout->reportLimits(*gOption);
}

// What the host adds while a bucket is delivered belongs to those that are left.
void Scene::add(std::unique_ptr<Primitive> primitive)
{
    if (!fFront || fDelivered >= fLayout->buckets()) {
        if (gOption->hiderType != kHiderNull) error(kPrimitiveState, kError, nullptr);
        return;
    }
    if (!fFront->callsHost()) goBack();
    if (primitive->type() == kObject) {
        fHasInstances = true;
        if (!mayRunAhead()) endAhead();
    }
    fFront->add(std::move(primitive));
}

void Scene::renderInit()
{
    if (CallbackScope::active()) {
        error(kState, kError, nullptr);
        return;
    }
    if (!fLayout || fStarted) return;
    fStarted = true;
    if (fLayout->top(0) > 0) gDisplay->flush(0, fLayout->top(0) - 1);
}

short Scene::renderBucket()
{
    if (CallbackScope::active()) {
        error(kState, kError, nullptr);
        return 0;
    }
    return renderSome(false);
}

void Scene::render()
{
    if (CallbackScope::active()) {
        error(kState, kError, nullptr);
        return;
    }
    while (renderSome(true)) {
    }
}

// A bucket of the picture. Ahead is what nobody could tell from the bucket after the one before.
bool Scene::renderSome(bool ahead)
{
    if (!fLayout) return false;
    renderInit();
    // What a host left by a jump.
    fDelivering = false;
    offer();
    const Pool::Scope pool(fPool);
    try {
        checkCancelled();
        if (ahead && mayRunAhead()) {
            renderAhead();
        } else if (!fTasks.empty()) {
            deliver();
        } else {
            endAhead();
            renderNext();
        }
    } catch (const Cancelled&) {
        flush();
        error(kNoError, kInfo, "picture cancelled");
    }
    return fLayout != nullptr;
}

int Scene::threads() const
{
    return static_cast<int>(std::min<std::int64_t>(fLayout->frame().threads, fLayout->buckets()));
}

// As long as quirks are kept, the next instance of an object rewrites those that there are.
bool Scene::mayRunAhead() const
{
    return threads() > 1 && !(fLayout->frame().option.quirks && fHasInstances);
}

void Scene::renderNext()
{
    BucketQueue queue;
    fFront->walk(queue);
    const auto bucket = fLayout->makeBucket(fLayout->place(fDelivered));
    for (auto& entry : queue.pieces.entries()) bucket->add(std::move(entry.thing));
    queue = {};
    // A device, or a host that is handed events, may call in: what it adds belongs to the buckets
    // that are left.
    ++fDelivered;
    fScratch.counts = {};
    bucket->render(*gDisplay, fScratch);
    finishBucket(fScratch.counts);
}

bool Scene::hostMayCall() const
{
    const Option& option = fLayout->frame().option;
    return gDisplay->callsHost() || option.progress || !PixelFilter(option).builtIn() ||
           windowsCallHost() || hostHearsReports() || HostShader::anyInOrder();
}

void Scene::renderAhead()
{
    if (!fWorkers) fWorkers = std::make_unique<Workers>(threads());
    if (!fFront->isAhead()) fFront->beginAhead(*fWorkers);
    const auto threads = static_cast<std::size_t>(fWorkers->crew().threads());
    while (mayRunAhead() && fTasks.size() < kAhead * threads && !fFront->isDone()) {
        if (!fTasks.empty() && fTasks.front().task->isDone()) break;
        walkOn();
    }
    if (!fTasks.empty()) deliver();
}

// As many buckets as make a task: fewer where threads would go without.
void Scene::walkOn()
{
    const std::int64_t together = std::clamp<std::int64_t>(
        fLayout->buckets() / (8 * fWorkers->crew().threads()), 1, kTogether);
    const std::int64_t last = std::min(fFront->next() + together, fLayout->buckets());
    BucketQueue queue;
    while (fFront->next() < last && fFront->walk(queue)) {
        if (!fOpen) {
            fOpen = std::make_shared<RenderTask>(*fWorkers, *fLayout, hostMayCall(),
                                                 gDisplay->isLinear());
        }
        fTasks.push_back({fOpen, fOpen->size()});
        fOpen->add(fLayout->place(fFront->next() - 1), std::move(queue));
    }
    offer();
}

void Scene::offer()
{
    if (!fOpen) return;
    fOpen->leave(std::exchange(fGone, {}));
    const auto size = static_cast<std::int64_t>(fOpen->size());
    fWorkers->crew().put(2 * (fFront->next() - size) + 1, std::exchange(fOpen, nullptr));
}

void Scene::endAhead()
{
    if (!fWorkers) return;
    fWorkers->crew().clear();
    fFront->endAhead();
}

// Nobody but the library's own handlers hears of what is delivered then: otherwise it would have
// been before the host was called.
void Scene::settleReports()
{
    if (!fFront || !fFront->callsHost() || fDelivering) return;
    try {
        offer();
        while (!fTasks.empty()) deliver();
    } catch (const Cancelled&) {
        // No exception may pass the host's functions: the walk will notice, too.
    }
}

// The next bucket in turn.
void Scene::deliver()
{
    fDelivering = true;
    fUnderWay = fTasks.front();
    const auto& [task, bucket] = fUnderWay;
    fWorkers->crew().finish(*task);
    rethrowFailure(*task);
    fTasks.pop_front();
    ++fDelivered;
    task->deliver(bucket, *gDisplay);
    fDelivering = false;
    const Counts counts = task->counts(bucket);
    if (bucket + 1 == task->size()) fGone.push_back(std::move(fUnderWay.task));
    finishBucket(counts);
}

bool Scene::settle()
{
    if (!hostMayCall()) return true;
    const std::int64_t number = fFront->next();
    offer();
    while (!fTasks.empty()) deliver();
    return fFront->next() == number;
}

void Scene::goBack()
{
    const auto stays = [](const Ahead& ahead) { return ahead.task->stays(); };
    if (fFront->next() == fDelivered || !std::all_of(fTasks.begin(), fTasks.end(), stays)) return;
    fWorkers->crew().clear();
    std::int64_t number = fDelivered;
    for (const auto& [task, bucket] : fTasks) {
        fFront->restore(fLayout->place(number++), std::move(task->queue(bucket)));
    }
    fTasks.clear();
    fOpen.reset();
    fFront->goBack(fDelivered);
}

void Scene::finishBucket(const Counts& counts)
{
    fCounts.add(counts);
    ++fDone;
    updateWindows();
    tellProgress();
    if (fDone % fLayout->columns() == 0) finishRow();
}

void Scene::tellProgress()
{
    const Option& option = fLayout->frame().option;
    const auto percent = static_cast<long>(fDone * 100 / fLayout->buckets());
    if (!option.progress || percent == fPercent) return;
    fPercent = percent;
    CallbackScope scope;
    if (option.progress(option.progressData, percent)) gCancelled = true;
}

void Scene::finishRow()
{
    const long yres = gDisplay->yDim();
    const auto row = static_cast<long>(fDone / fLayout->columns());
    const long next = fLayout->top(row);
    gDisplay->flush(fLayout->top(row - 1), std::min(next, yres) - 1);
    if (row < fLayout->rows()) return;
    if (next < yres) gDisplay->flush(next, yres - 1);
    flush();
}

long Scene::progress() const
{
    if (!fLayout) return 0;
    return static_cast<long>(std::min<std::int64_t>((fDone * 100 + 100) / fLayout->buckets(), 100));
}

// The scene is without buckets before they go: the free functions of procedurals may call in.
void Scene::flush()
{
    if (fWorkers) fWorkers->crew().clear();
    const auto layout = std::move(fLayout);
    auto front = std::move(fFront);
    auto tasks = std::exchange(fTasks, {});
    auto gone = std::exchange(fGone, {});
    const auto underWay = std::exchange(fUnderWay, {});
    fOpen.reset();
    const auto workers = std::move(fWorkers);
    fScratch = {};
    fDone = fDelivered = 0;
    fPercent = 0;
    fStarted = false;
    fHasInstances = fDelivering = false;
    fUnread.clear();
    tasks.clear();
    gone.clear();
    front.reset();
    fPool.empty();
}

}  // namespace zeb
