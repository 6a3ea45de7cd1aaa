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
#include "state/upcalls.h"
#include "util/cancel.h"
#include "util/number.h"

namespace zeb
{

Scene* gScene = nullptr;

namespace upcall
{
void initScene() { gScene->init(); }
void flushScene() { gScene->flush(); }
void renderScene() { gScene->render(); }
void defineObject(Object* object) { gScene->define(object); }
}  // namespace upcall

namespace
{

// Micropolygons along the sides of a grid that can't be made as fine as it should be.
constexpr unsigned short kCoarse = 8;

// How much larger than others grids are that have to end splitting.
constexpr float kLarge = 4;

// Samples of one bucket: what memory can be counted on to hold.
constexpr double kMaxBucketSamples = 1 << 22;

struct Pixels {
    long first, last;
};

// The pixels of a crop window along one axis.
Pixels croppedPixels(long resolution, float min, float max)
{
    const auto size = static_cast<float>(resolution);
    return {clampToLong(std::ceil(size * min), 0, resolution - 1),
            clampToLong(std::ceil(size * max - 1), 0, resolution - 1)};
}

// Those of a bucket of some sides.
double samplesIn(long width, long height, const Option& option)
{
    const auto across = [&option](long side, float filterWidth, float rate) {
        const double perPixel = option.adaptiveThreshold >= 1e-10 ? 10 : rate;
        return (static_cast<double>(side) + double{filterWidth}) * perPixel;
    };
    return across(width, option.filterXwidth, option.xsamples) *
           across(height, option.filterYwidth, option.ysamples);
}

bool isFiniteBound(const Boundw& b)
{
    return isFinite(b.xmin) && isFinite(b.xmax) && isFinite(b.ymin) && isFinite(b.ymax) &&
           isFinite(b.zmin) && isFinite(b.zmax) && isFinite(b.wmin) && isFinite(b.wmax);
}

// The bucket that a raster coordinate falls into, counted from an offset.
long bucketOf(float coordinate, float offset, long size)
{
    const double bucket = std::floor((double{coordinate} - offset) / static_cast<double>(size));
    return clampToLong(bucket, -1, 1L << 30);
}

}  // namespace

void Scene::init()
{
    flush();
    PrimitiveCommon::fCurSeq = 0;
    fCounts = {};
    const Option asked = *gOption;
    Option option = asked;
    const Pixels x = croppedPixels(gDisplay->xDim(), option.cropXmin, option.cropXmax);
    const Pixels y = croppedPixels(gDisplay->yDim(), option.cropYmin, option.cropYmax);
    fX0 = x.first;
    fX1 = x.last;
    fY0 = y.first;
    fY1 = y.last;
    const float rx = option.filterXwidth * 0.5f, ry = option.filterYwidth * 0.5f;
    fXmin = static_cast<float>(fX0) + 0.5f - rx;
    fXmax = static_cast<float>(fX1) + 0.5f + rx;
    fYmin = static_cast<float>(fY0) + 0.5f - ry;
    fYmax = static_cast<float>(fY1) + 0.5f + ry;

    limitSamples(option);
    fColumns = (fX1 - fX0) / fBucketWidth + 1;
    fRows = (fY1 - fY0) / fBucketHeight + 1;
    fBuckets.resize(static_cast<std::size_t>(fRows));
    fFrame = std::make_unique<RenderFrame>(option, gCameraToRaster);

    const long width = fBucketWidth, height = fBucketHeight;
    if (width < asked.tuning[1] || height < asked.tuning[2]) {
        error(kRange, kError, "bucket of %ld x %ld takes too many samples, using %ld x %ld",
              asked.tuning[1], asked.tuning[2], width, height);
    }
    if (option.xsamples < asked.xsamples || option.ysamples < asked.ysamples) {
        error(kRange, kError, "sampling rate of %g x %g takes too many samples, using %g x %g",
              double{asked.xsamples}, double{asked.ysamples}, double{option.xsamples},
              double{option.ysamples});
    }
}

void Scene::limitSamples(Option& option)
{
    fBucketWidth = option.tuning[1];
    fBucketHeight = option.tuning[2];
    const auto fits = [&] {
        return samplesIn(std::min(fBucketWidth, fX1 - fX0 + 1),
                         std::min(fBucketHeight, fY1 - fY0 + 1), option) <= kMaxBucketSamples;
    };
    while (!fits() && (fBucketWidth > 1 || fBucketHeight > 1)) {
        fBucketWidth = std::max(fBucketWidth / 2, 1L);
        fBucketHeight = std::max(fBucketHeight / 2, 1L);
    }
    // The widest filter takes few enough at one sample a pixel.
    while (!fits()) {
        option.xsamples = std::max(option.xsamples / 2, 1.0f);
        option.ysamples = std::max(option.ysamples / 2, 1.0f);
    }
}

std::unique_ptr<Bucket> Scene::makeBucket(long column, long row) const
{
    const long x0 = fX0 + column * fBucketWidth, y0 = fY0 + row * fBucketHeight;
    const long x1 = column + 1 == fColumns ? fX1 : x0 + fBucketWidth - 1;
    const long y1 = row + 1 == fRows ? fY1 : y0 + fBucketHeight - 1;
    if (fFrame->option.adaptiveThreshold >= 1e-10) {
        return std::make_unique<AdaptiveBucket>(*fFrame, x0, x1, y0, y1);
    }
    return std::make_unique<UniformBucket>(*fFrame, x0, x1, y0, y1);
}

Bucket& Scene::bucketAt(long column, long row)
{
    auto& buckets = fBuckets[static_cast<std::size_t>(row)];
    if (!buckets) buckets = std::make_unique<Row>(static_cast<std::size_t>(fColumns));
    auto& bucket = (*buckets)[static_cast<std::size_t>(column)];
    if (!bucket) bucket = makeBucket(column, row);
    return *bucket;
}

namespace
{

// The least that a linear form takes over a box: whatever its sign, every term has its own least.
double least(const double (&form)[4], const Boundw& b)
{
    const auto term = [](double factor, float min, float max) {
        return factor * double{factor > 0 ? min : max};
    };
    return term(form[0], b.xmin, b.xmax) + term(form[1], b.ymin, b.ymax) +
           term(form[2], b.zmin, b.zmax) + term(form[3], b.wmin, b.wmax);
}

}  // namespace

// In homogeneous form, so that nothing is divided. What can be seen has a positive w, and x no
// larger than w times that of the window's right border: the difference is linear in camera space,
// and where all of a box is beyond it, nothing of the box can be seen. The other borders likewise.
bool Scene::culled(const Boundw& camera) const
{
    const Option& option = fFrame->option;
    if (option.nearClip * camera.wmin > camera.zmax || option.farClip * camera.wmax < camera.zmin) {
        return true;
    }
    if (camera.xmax + kEpsilon < camera.xmin || camera.ymax + kEpsilon < camera.ymin ||
        camera.zmax + kEpsilon < camera.zmin) {
        return true;
    }
    const auto& m = fFrame->cameraToRaster.m;
    const auto beyond = [&](int axis, double border, double sign) {
        double form[4];
        for (int k = 0; k < 4; ++k) form[k] = sign * (m[k][axis] - border * m[k][3]);
        return least(form, camera) > 0;
    };
    return beyond(0, fXmax, 1) || beyond(0, fXmin, -1) || beyond(1, fYmax, 1) ||
           beyond(1, fYmin, -1);
}

// On the screen, with depths of the hider.
Bound Scene::screenBound(const Boundw& camera, Boundw raster) const
{
    // So near the eye nothing is known of it.
    if (raster.wmin < kEpsilon) return {};
    raster.homogenize();
    raster.zmin = -kInfinity;
    raster.zmax = kInfinity;
    if (!(camera.wmin > 0)) return raster;
    const float zmin = camera.zmin / (camera.zmin > 0 ? camera.wmax : camera.wmin);
    const float zmax = camera.zmax / (camera.zmax > 0 ? camera.wmin : camera.wmax);
    const double room = depthRounding(zmin, zmax);
    raster.zmin = fFrame->hiderDepth(static_cast<float>(double{zmin} - room));
    raster.zmax = fFrame->hiderDepth(static_cast<float>(double{zmax} + room));
    return raster;
}

// The first bucket counts from the centre of the first pixel, the last one from the edge of the
// sample window: a primitive is filed where a filter of up to two pixels first needs it.
void Scene::file(Primitive& primitive, const Boundw& camera, const Boundw& raster, long& column,
                 long& row) const
{
    const Option& option = fFrame->option;
    const float w1 = raster.wmin, w2 = raster.wmax;
    const auto first = [&](float min, float windowMin, float width, long size, long current,
                           long count) {
        const float early = option.quirks ? 0 : std::max(width * 0.5f - 1, 0.0f);
        const float offset = width * 0.5f + windowMin + early;
        return std::max(std::min(bucketOf(div(min, w2), offset, size), count - 1), current);
    };
    const auto last = [&](float max, float windowMin, long size, long count) {
        if (!(w1 > kEpsilon)) return count - 1;
        return std::min(bucketOf(div(max, max < 0 ? w2 : w1), windowMin, size), count - 1);
    };
    column = first(raster.xmin, fXmin, option.filterXwidth, fBucketWidth, fColumn, fColumns);
    row = first(raster.ymin, fYmin, option.filterYwidth, fBucketHeight, fRow, fRows);
    const bool front = w1 > 0 && raster.homogenizable();
    primitive.setFiled(front, front ? screenBound(camera, raster) : Bound(), w1,
                       last(raster.xmax, fXmin, fBucketWidth, fColumns),
                       last(raster.ymax, fYmin, fBucketHeight, fRows));
}

void Scene::add(std::unique_ptr<Primitive> primitive)
{
    if (!fFrame || fRow >= fRows) {
        if (gOption->hiderType != kHiderNull) error(kPrimitiveState, kError, nullptr);
        return;
    }
    const Boundw camera = primitive->hull();
    if (culled(camera)) return;
    const Boundw raster = camera * fFrame->cameraToRaster;
    if (!isFiniteBound(raster)) {
        giveUp(*primitive);
        return;
    }
    long column, row;
    file(*primitive, camera, raster, column, row);
    bucketAt(column, row).add(std::move(primitive));
}

void Scene::giveUp(const Primitive& primitive)
{
    if (primitive.common().fGivenUp.exchange(true)) return;
    error(kRange, kWarning, "surface takes too many splits, parts are coarse or missing");
}

// The column starts at the current one in later rows too: work only moves forward.
void Scene::dice(std::unique_ptr<Primitive> primitive, const Dicing& dicing)
{
    const long lastX = primitive->lastBucketX(), lastY = primitive->lastBucketY();
    const bool bounded = primitive->attrib().objectBound.finite;
    const auto piece =
        std::allocate_shared<Piece>(PoolAllocator<Piece>(), std::move(primitive), dicing);
    ++fScratch.counts.pieces;
    // What the host says of an object's size may be wrong: only the grid tells where it is. And
    // boxes much larger than the surface would be filed under many buckets for nothing.
    if (fFrame->plain || bounded || piece->isLoose()) piece->dice(fScratch.counts);
    if (fFrame->plain) piece->grid()->shade();
    const Option& option = fFrame->option;
    const Bound& box = piece->box();
    const auto first = [](float min, float windowMin, float width, long size, long current) {
        return std::max(bucketOf(min, windowMin + width, size) - 1, current);
    };
    const auto last = [](float max, float windowMin, long size, long bound) {
        return std::min(bucketOf(max, windowMin, size) + 1, bound);
    };
    const long column0 = first(box.xmin, fXmin, option.filterXwidth, fBucketWidth, fColumn);
    const long row0 = first(box.ymin, fYmin, option.filterYwidth, fBucketHeight, fRow);
    const long column1 = last(box.xmax, fXmin, fBucketWidth, lastX);
    const long row1 = last(box.ymax, fYmin, fBucketHeight, lastY);
    for (long row = row0; row <= row1; ++row) {
        for (long column = column0; column <= column1; ++column) {
            bucketAt(column, row).add(piece);
        }
    }
}

void Scene::process(std::unique_ptr<Primitive> primitive)
{
    const std::shared_ptr<PrimitiveCommon> common = primitive->shareCommon();
    const Attrib& attrib = *common->fAttrib;
    const AttribNamesScope names(attrib.object.text(), attrib.group.text());
    Dicing dicing{*fFrame, 1, 1};
    if (primitive->front() && primitive->diceable(dicing)) {
        dice(std::move(primitive), dicing);
    } else if (!primitive->canSplit()) {
        giveUp(*primitive);
    } else if (primitive->mayStillSplit(*fFrame, pixels())) {
        primitive->split(*this);
    } else {
        finish(std::move(primitive));
    }
}

// Of a surface that has taken many splits. At the edge of a very wide view or near a pole these
// leave slivers: how even their grids are matters no more, and they are split across.
void Scene::finish(std::unique_ptr<Primitive> primitive)
{
    Dicing dicing{*fFrame, 1, 1, false};
    const float size = kLarge * primitive->dicingLimit(*fFrame, -1);
    if (!primitive->keepsRest()) {
        giveUp(*primitive);
    } else if (primitive->front() && primitive->diceable(dicing, size)) {
        dice(std::move(primitive), dicing);
    } else if (primitive->mayStillSplitAcross()) {
        if (primitive->front()) {
            primitive->splitAcross(*this, *fFrame);
        } else {
            primitive->split(*this);
        }
    } else {
        giveUp(*primitive);
        if (primitive->front()) dice(std::move(primitive), Dicing{*fFrame, kCoarse, kCoarse});
    }
}

void Scene::renderInit()
{
    if (CallbackScope::active()) {
        error(kState, kError, nullptr);
        return;
    }
    if (!fFrame || fStarted) return;
    fStarted = true;
    if (fY0 > 0) gDisplay->flush(0, fY0 - 1);
    fColumn = fRow = 0;
}

short Scene::renderBucket()
{
    if (CallbackScope::active()) {
        error(kState, kError, nullptr);
        return 0;
    }
    if (!fFrame) return 0;
    renderInit();
    const Pool::Scope pool(fPool);
    try {
        renderNext();
    } catch (const Cancelled&) {
        flush();
        error(kNoError, kInfo, "picture cancelled");
    }
    return fFrame ? 1 : 0;
}

void Scene::renderNext()
{
    checkCancelled();
    Bucket& current = bucketAt(fColumn, fRow);
    while (auto primitive = current.takePrimitive()) {
        process(std::move(primitive));
        checkCancelled();
    }

    const auto row = static_cast<std::size_t>(fRow);
    std::unique_ptr<Bucket> bucket = std::move((*fBuckets[row])[static_cast<std::size_t>(fColumn)]);
    // A device, or a host that is handed events, may call in: what it adds belongs to the buckets
    // that are left.
    if (++fColumn == fColumns) {
        fBuckets[row].reset();
        fColumn = 0;
        ++fRow;
    }
    bucket->render(*gDisplay, fScratch);
    fCounts = fScratch.counts;
    bucket.reset();
    ++fDone;
    updateWindows();
    tellProgress();
    if (fColumn == 0) finishRow();
}

void Scene::tellProgress()
{
    const Option& option = fFrame->option;
    const auto percent = static_cast<long>(fDone * 100 / (std::int64_t{fRows} * fColumns));
    if (!option.progress || percent == fPercent) return;
    fPercent = percent;
    CallbackScope scope;
    if (option.progress(option.progressData, percent)) gCancelled = true;
}

void Scene::finishRow()
{
    const long yres = gDisplay->yDim();
    const long next = fY0 + fRow * fBucketHeight;
    gDisplay->flush(next - fBucketHeight, std::min(next, yres) - 1);
    if (fRow < fRows) return;
    if (next < yres) gDisplay->flush(next, yres - 1);
    flush();
}

void Scene::render()
{
    renderInit();
    while (renderBucket()) {
    }
}

long Scene::progress() const
{
    if (!fFrame) return 0;
    const std::int64_t buckets = std::int64_t{fRows} * fColumns;
    return static_cast<long>(std::min<std::int64_t>((fDone * 100 + 100) / buckets, 100));
}

// The scene is without buckets before they go: the free functions of procedurals may call in.
void Scene::flush()
{
    const auto frame = std::move(fFrame);
    auto buckets = std::move(fBuckets);
    fBuckets.clear();
    fScratch = {};
    fColumn = fRow = 0;
    fDone = 0;
    fPercent = 0;
    fStarted = false;
    fUnread.clear();
    buckets.clear();
    fPool.empty();
}

}  // namespace zeb
