// The rectangles of pixels that a picture is rendered in.
#pragma once

#include <memory>
#include <vector>

#include "display/display.h"
#include "geom/primitive.h"
#include "hider/pixel_filter.h"
#include "hider/seams.h"
#include "util/arena.h"
#include "util/list.h"

namespace zeb
{

// What buckets share while one after the other is rendered.
struct BucketScratch {
    Arena arena;  // samples and hits of the bucket under way
    std::vector<std::uint32_t> row;
    std::uint64_t samples = 0;  // placed so far
};

class Bucket
{
public:
    // The pixels x0 ... x1 of rows y0 ... y1.
    Bucket(const RenderFrame& frame, long x0, long x1, long y0, long y1);
    virtual ~Bucket() = default;
    Bucket(const Bucket&) = delete;
    Bucket& operator=(const Bucket&) = delete;

    void add(std::unique_ptr<Primitive> primitive) { fPrimitives.add(std::move(primitive)); }
    void add(std::shared_ptr<const Grid> grid);
    // The primitive added last; null if there is none left.
    std::unique_ptr<Primitive> takePrimitive();
    void render(Display& display, BucketScratch& scratch);

    // The positions of samples that can touch the bucket's pixels.
    struct Window {
        float xmin, xmax, ymin, ymax;
        bool misses(const Bound& b) const
        {
            return b.xmin > xmax || b.xmax < xmin || b.ymin > ymax || b.ymax < ymin;
        }
    };
    Window sampleWindow() const;

protected:
    // Places and evaluates the samples of the window.
    virtual void generate(const Window& window, BucketScratch& scratch) = 0;
    // The pixel centred at (x, y).
    virtual FilteredPixel filter(float x, float y, const Window& window) const = 0;
    // Its depth by its own samples alone.
    virtual double nearestDepth(float x, float y, const Window& window) const = 0;

    bool culled(const Grid& grid, double facing) const
    {
        return facing > 0 && grid.fAttrib->sides <= 1;
    }

    const RenderFrame& fFrame;
    const PixelFilter fFilter;
    const bool fBySequence;
    Grids fGrids;

private:
    // Colours are raised to the power inverseGamma.
    void renderRow(long y, const Window& window, float inverseGamma, std::uint32_t* words) const;

    List<std::unique_ptr<Primitive>> fPrimitives;
    long fX0, fX1, fY0, fY1;
};

// A jittered lattice of samples.
class UniformBucket : public Bucket
{
public:
    using Bucket::Bucket;

protected:
    void generate(const Window& window, BucketScratch& scratch) override;
    FilteredPixel filter(float x, float y, const Window& window) const override;
    double nearestDepth(float x, float y, const Window& window) const override;

private:
    void placeSamples(const Window& window, Arena& arena);
    void sampleGrid(const Grid& grid, const Window& window, Arena& arena);
    void closeSeams(const Window& window, Arena& arena);
    template <class Visit>
    void eachSample(const Bound& bound, const Window& window, const Visit& visit) const;
    template <class Visit>
    void eachNear(float x, float y, float rx, float ry, const Window& window,
                  const Visit& visit) const;
    Sample& at(long i, long j) { return fSamples[j * fColumns + i]; }

    long fColumns = 0, fRows = 0;
    float fJitter = 0;  // half the width a sample strays in
    Sample* fSamples = nullptr;
    PackedSample* fPacked = nullptr;
};

// Rounds of eight samples a pixel, until its colour is known well enough.
class AdaptiveBucket : public Bucket
{
public:
    AdaptiveBucket(const RenderFrame& frame, long x0, long x1, long y0, long y1);

    static constexpr int kRounds = 12;
    // The variance up to which a pixel is done, after each round, for the threshold v: lower
    // quantiles of the chi-square distribution, so that few samples must agree better than many.
    static void maxVariance(float v, float (&chiSquare)[kRounds]);

protected:
    void generate(const Window& window, BucketScratch& scratch) override;
    FilteredPixel filter(float x, float y, const Window& window) const override;
    double nearestDepth(float x, float y, const Window& window) const override;

private:
    // A cell that may cover some of a pixel's square.
    struct Candidate {
        MicroPolygon cell;
        Bound bound;
    };
    struct Reference {
        const Candidate* candidate;
        Reference* next;
    };
    // The side of a cell by which some of a pixel's square may see through a gap.
    struct SideReference {
        const Seams::Side* side;
        SideReference* next;
    };
    // The resolved samples of one pixel.
    struct MultiSample {
        PackedSample* samples = nullptr;
        int count = 0;
        Reference *first = nullptr, *last = nullptr;
        SideReference* sides = nullptr;
    };

    template <class Visit>
    void eachPixel(const Bound& bound, const Window& window, const Visit& visit);
    template <class Visit>
    void eachNear(float x, float y, float rx, float ry, const Window& window,
                  const Visit& visit) const;
    void collect(const Grid& grid, const Window& window, Arena& arena);
    void samplePixel(MultiSample& pixel, float left, float top, const Seams& seams,
                     Arena& arena) const;
    MultiSample& at(long i, long j) { return fPixels[j * fColumns + i]; }

    float fChiSquare[kRounds];
    long fColumns = 0, fRows = 0;
    MultiSample* fPixels = nullptr;
};

}  // namespace zeb
