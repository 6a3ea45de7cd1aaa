// Where in a picture its buckets are, and which of them a primitive concerns.
#pragma once

#include <cstdint>
#include <memory>

#include "geom/primitive.h"
#include "hider/bucket.h"

namespace zeb
{

// A bucket by its column and row. Buckets are rendered row by row.
struct BucketPlace {
    long column = 0, row = 0;
};

// All columns of all rows from the first to the last.
struct BucketRange {
    BucketPlace first, last;
};

// Never changes once it is made: any thread may look.
class Layout
{
public:
    // For the options, and a device that has a size.
    Layout(const Option& option, const Display& device, const Matrix& cameraToRaster);

    // Reports what would take more samples than the options ask for.
    void reportLimits(const Option& asked) const;

    const RenderFrame& frame() const { return fFrame; }
    long columns() const { return fColumns; }
    long rows() const { return fRows; }
    std::int64_t buckets() const { return std::int64_t{fRows} * fColumns; }
    std::int64_t number(BucketPlace place) const
    {
        return std::int64_t{place.row} * fColumns + place.column;
    }
    BucketPlace place(std::int64_t number) const
    {
        return {static_cast<long>(number % fColumns), static_cast<long>(number / fColumns)};
    }
    // Of the crop window.
    double pixels() const
    {
        return static_cast<double>(fX1 - fX0 + 1) * static_cast<double>(fY1 - fY0 + 1);
    }
    // The first row of pixels of a row of buckets; where the one after the last would begin, too.
    long top(long row) const { return fY0 + row * fBucketHeight; }

    std::unique_ptr<Bucket> makeBucket(BucketPlace place) const;

    // Whether nothing in a box can be seen.
    bool culled(const Boundw& camera) const;
    // Tells a primitive what is known of its place on the screen, and answers the first bucket that
    // needs it, no earlier than one column and row.
    BucketPlace file(Primitive& primitive, const Boundw& camera, const Boundw& raster,
                     BucketPlace earliest) const;
    // Where a piece of the primitive may be seen: from one column and row on, up to a last one.
    BucketRange range(const Piece& piece, BucketPlace earliest, BucketPlace last) const;

private:
    // Settles the sides of buckets, and the sampling rates, so that no bucket takes more samples
    // than there may be.
    Option limited(const Option& asked, const Display& device);
    Bound screenBound(const Boundw& camera, Boundw raster) const;

    long fX0 = 0, fX1 = 0, fY0 = 0, fY1 = 0;
    long fBucketWidth = 1, fBucketHeight = 1;
    const RenderFrame fFrame;
    long fColumns = 0, fRows = 0;
    float fXmin = 0, fXmax = 0, fYmin = 0, fYmax = 0;  // of all sample positions
};

}  // namespace zeb
