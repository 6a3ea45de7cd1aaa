// The rectangles of pixels that a picture is rendered in.
#pragma once

#include <memory>
#include <vector>

#include "display/display.h"
#include "hider/cell_kernel.h"
#include "hider/hits.h"
#include "hider/locate_kernel.h"
#include "hider/pixel_filter.h"
#include "hider/seams.h"
#include "util/arena.h"

namespace zeb
{

// What buckets share while one after the other is rendered.
struct BucketScratch {
    Arena arena;  // samples and hits of the bucket under way
    // Of a row of pixels.
    std::vector<FilteredPixel> pixels;
    std::vector<float> colors;
    std::vector<std::uint32_t> words;
    Counts counts;
};

// The grid of a piece, if it may be seen in the bucket.
struct SeenPiece {
    const Grid* grid = nullptr;
};

class Bucket
{
public:
    // The pixels x0 ... x1 of rows y0 ... y1.
    Bucket(const RenderFrame& frame, long x0, long x1, long y0, long y1);
    virtual ~Bucket() = default;
    Bucket(const Bucket&) = delete;
    Bucket& operator=(const Bucket&) = delete;

    void add(std::shared_ptr<Piece> piece) { fPieces.push_back(std::move(piece)); }
    void render(Display& display, BucketScratch& scratch);

    // The same in steps: first find the samples, which stay in the scratch, and are a host's to
    // weigh if it has given a filter of its own. Then ask for the words of any row of pixels.
    void sample(BucketScratch& scratch);
    bool filtersByHost() const { return !fFilter.builtIn(); }
    void fillRow(long y, bool linear, BucketScratch& scratch, std::uint32_t* words) const;
    // The pixels of the columns x0() to x1() and the rows y0() to y1().
    long x0() const { return fX0; }
    long x1() const { return fX1; }
    long y0() const { return fY0; }
    long y1() const { return fY1; }
    std::size_t rowWords() const
    {
        return static_cast<std::size_t>(fX1 - fX0 + 1) * fFrame.option.sampleCount;
    }

    // The positions of samples that can touch the bucket's pixels.
    struct Window {
        float xmin, xmax, ymin, ymax;
        bool misses(const Bound& b) const { return rectangle().misses(b); }
        Bound rectangle() const { return {xmin, xmax, ymin, ymax, 0, 0}; }
    };
    Window sampleWindow() const;

protected:
    // Places and evaluates the samples of the window.
    virtual void generate(const Pieces& pieces, const Window& window, BucketScratch& scratch) = 0;
    // The pixel centred at (x, y).
    virtual FilteredPixel filter(float x, float y, const Window& window) const = 0;
    // Its depth by its own samples alone.
    virtual double nearestDepth(float x, float y, const Window& window) const = 0;

    bool culled(const Grid& grid, double facing) const
    {
        return facing > 0 && grid.fAttrib->sides <= 1;
    }
    Hits hits(const Pieces& pieces, Arena& arena) const;
    // A piece, and what orders its hits at least.
    struct Ranked {
        SampleOrder least;
        std::uint32_t rank;
    };
    // Those that may be seen in the window.
    std::vector<Ranked> nearestFirst(const Pieces& pieces, const Window& window) const;
    // Whether a gap by a side would show what is not hidden, nor hit already: as something of the
    // same layer.
    bool isSeen(const SamplePoint& point, SampleOrder cover, const Seams::Near& near) const;
    // Closes the gaps that a sample lies in.
    void closeGaps(SamplePoint& point, Seams::Near* list, const Pieces& pieces, const Seams& seams,
                   const Hits& hits, Counts& counts) const;
    // What orders the hits of a grid's cell, or of all within a box, is at least this.
    SampleOrder leastOf(const Bound& box, const Grid& grid) const
    {
        if (fBySequence) return -static_cast<double>(grid.fSeq);
        return double{box.zmin} - depthRounding(box.zmin, box.zmax);
    }

    const RenderFrame& fFrame;
    const PixelFilter fFilter;
    const bool fBySequence;

private:
    void exposeRow(float inverseGamma, BucketScratch& scratch) const;

    std::vector<std::shared_ptr<Piece>> fPieces;  // one goes with the last bucket that has it
    long fX0, fX1, fY0, fY1;
};

// A jittered lattice of samples.
class UniformBucket : public Bucket
{
public:
    using Bucket::Bucket;

protected:
    void generate(const Pieces& pieces, const Window& window, BucketScratch& scratch) override;
    FilteredPixel filter(float x, float y, const Window& window) const override;
    double nearestDepth(float x, float y, const Window& window) const override;

private:
    // Samples are looked at by squares of so many a side.
    static constexpr long kTile = 4;
    struct Tile {
        SampleOrder most = std::numeric_limits<SampleOrder>::infinity();  // of its covers
        bool known = true;
    };
    // The samples of a box: columns i0 ... i1 of rows j0 ... j1.
    struct Range {
        long i0, i1, j0, j1;
    };

    void placeSamples(const Window& window, Arena& arena);
    void hide(const Pieces& pieces, const Hits& hits, const Window& window, Counts& counts);
    void shade(const Pieces& pieces, const Hits& hits, BucketScratch& scratch) const;
    // Samples that may lie in cells of a grid.
    struct Candidates : LocateBlock {
        long sample[kMost];
        VertexPlace cell[kMost];
    };
    // A grid on its way through the bucket.
    struct Hiding {
        const Grid& grid;
        std::uint32_t rank;
        const Hits& hits;
        Counts& counts;
        Candidates& candidates;
    };
    void hideGrid(const Hiding& hiding, const Window& window);
    void hideCell(const Hiding& hiding, const CellRow& cells, int n, VertexPlace cell);
    void hideCandidates(const Hiding& hiding);
    void closeSeams(const Pieces& pieces, const Hits& hits, const Window& window,
                    BucketScratch& scratch);
    bool openSamples(const Pieces& pieces, Seams& seams, const Window& window, Lines& lines);

    Range samplesIn(const Bound& box, const Window& window) const;
    // Whether all samples of a box are covered by what is nearer than this.
    bool hidden(const Bound& box, SampleOrder least, const Window& window) const;
    // Whether some of its samples may not be.
    bool anyOpen(const Bound& box, SampleOrder least, const Window& window) const;
    void learn(Tile& tile) const;
    template <class Is>
    bool anyTile(const Bound& box, const Window& window, const Is& is) const;
    template <class Visit>
    void eachSample(const Bound& box, const Window& window, const Visit& visit) const;
    template <class Visit>
    void eachNear(float x, float y, float rx, float ry, const Window& window,
                  const Visit& visit) const;
    // Most of what is asked is near enough: no jumps, but at the end.
    bool isIn(const Bound& box, long k) const
    {
        const float x = fX[k], y = fY[k];
        return !((x < box.xmin) | (x > box.xmax) | (y < box.ymin) | (y > box.ymax));
    }
    Tile& tileOf(long k) const
    {
        return fTiles[k / fColumns / kTile * fTileColumns + k % fColumns / kTile];
    }

    // The plain way uses one lane.
    const CellKernel fCells = fFrame.plain ? cellKernel(1) : cellKernel();
    const LocateKernel fLocate = fFrame.plain ? nullptr : locateKernel();
    long fColumns = 0, fRows = 0, fTileColumns = 0;
    float fJitter = 0;  // half the width a sample strays in
    // Without pieces no sample is placed: what a filter of ours makes of them is nothing, as deep
    // as the far clipping plane, to the last bit.
    bool fEmpty = false;
    bool fCovered = false;  // some sample is
    SamplePoint* fSamples = nullptr;
    // What cells look at first: where the samples are, and their covers.
    float *fX = nullptr, *fY = nullptr;
    SampleOrder* fCovers = nullptr;
    bool* fOpen = nullptr;  // whether a gap may show there that no surface closes
    Tile* fTiles = nullptr;
    SeenPiece* fSeen = nullptr;
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
    void generate(const Pieces& pieces, const Window& window, BucketScratch& scratch) override;
    FilteredPixel filter(float x, float y, const Window& window) const override;
    double nearestDepth(float x, float y, const Window& window) const override;

private:
    // A cell that may cover some of a pixel's square.
    struct Candidate {
        MicroPolygon cell;
        Bound bound;
        SampleOrder least;  // what orders its hits is not less
        std::uint32_t rank;
    };
    struct Reference {
        const Candidate* candidate;
        SampleOrder least;  // of its piece: does not fall along a list
        Reference* next;
    };
    // The side of a cell by which some of a pixel's square may see through a gap.
    struct SideReference {
        Seams::Side* side;
        SampleOrder least;  // what orders its hits is not less
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
    void collect(const Grid& grid, const Ranked& ranked, const Window& window, Arena& arena);
    bool isOpen(const SamplePoint& point, const MultiSample& pixel, const Seams& seams) const;
    void hide(SamplePoint& point, const MultiSample& pixel, const Pieces& pieces,
              const Seams& seams, const Hits& hits, Counts& counts) const;
    void samplePixel(MultiSample& pixel, float left, float top, const Pieces& pieces,
                     const Seams& seams, const Hits& hits, Wants& wants,
                     BucketScratch& scratch) const;
    MultiSample& at(long i, long j) { return fPixels[j * fColumns + i]; }

    float fChiSquare[kRounds];
    long fColumns = 0, fRows = 0;
    MultiSample* fPixels = nullptr;
};

}  // namespace zeb
