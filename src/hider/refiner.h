// What a primitive becomes: pieces, small enough for one grid each.
#pragma once

#include <memory>

#include "hider/layout.h"

namespace zeb
{

// Takes what becomes of primitives.
class Filing
{
public:
    virtual ~Filing() = default;
    virtual void file(std::unique_ptr<Primitive> primitive, BucketPlace place) = 0;
    virtual void file(std::shared_ptr<Piece> piece, const BucketRange& range) = 0;
    // Of what no number of splits does justice to.
    virtual void giveUp(const std::shared_ptr<PrimitiveCommon>& surface) = 0;
    // Whether a primitive may be split now.
    virtual bool maySplit(Primitive& primitive) = 0;
};

// Works for one bucket at a time: nothing is filed under those that are done.
class Refiner : public PrimitiveSink
{
public:
    Refiner(const Layout& layout, Filing& filing, Counts& counts)
        : fLayout(layout), fFilingTo(filing), fCounts(counts)
    {
    }

    void moveTo(BucketPlace bucket) { fBucket = bucket; }
    // Files a primitive under the first bucket it can be seen in; one that can't be seen is
    // dropped.
    void add(std::unique_ptr<Primitive> primitive) override;
    Sight sight(const Primitive& primitive, const Boundw& camera) const override;
    // Splits it, files it as a piece, or gives it up. It is left to the caller if it was split.
    void refine(std::unique_ptr<Primitive>& primitive);

private:
    bool isBehind(const Primitive& primitive, const Boundw& hull) const;
    void makeCoarse(Primitive& primitive, const Boundw& hull) const;
    void finish(std::unique_ptr<Primitive>& primitive);
    // Files what becomes one grid.
    void dice(std::unique_ptr<Primitive> primitive, Dicing dicing);
    void giveUp(const Primitive& primitive) { fFilingTo.giveUp(primitive.shareCommon()); }

    const Layout& fLayout;
    Filing& fFilingTo;
    Counts& fCounts;
    BucketPlace fBucket;
};

}  // namespace zeb
