// Where in a picture its buckets are, and which of them a primitive concerns. Whether all of the
// picture is rendered or a crop window on borders of its buckets, these are the same: what is filed
// passes through those before the window too, so that the walk over them settles the same order.
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

    bool operator==(const BucketPlace&) const = default;
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
    // Of the buckets that are rendered, which are numbered row by row.
    long columns() const { return fX.shown(); }
    long rows() const { return fY.shown(); }
    std::int64_t buckets() const { return std::int64_t{rows()} * columns(); }
    BucketPlace place(std::int64_t number) const
    {
        return {fX.first + static_cast<long>(number % columns()),
                fY.first + static_cast<long>(number / columns())};
    }
    // Of the first that is rendered from a place on.
    std::int64_t number(BucketPlace place) const;
    // Whether none that is rendered is in its row or column, or further on.
    bool isBeyond(BucketPlace place) const { return place.column > fX.last || place.row > fY.last; }
    // The last that is rendered.
    BucketPlace last() const { return {fX.last, fY.last}; }
    // Of all that the buckets are laid out over.
    double pixels() const
    {
        return static_cast<double>(fX.pixels()) * static_cast<double>(fY.pixels());
    }
    // The first row of pixels of a row of buckets that are rendered; where the one after the last
    // would begin, too.
    long top(long row) const { return fY.border(fY.first + row); }

    std::unique_ptr<Bucket> makeBucket(BucketPlace place) const;

    // Whether nothing in a box can be seen, nor so many pixels beyond it.
    bool culled(const Boundw& camera, float room) const;
    // Whether nothing in a box is culled.
    bool holds(const Boundw& camera) const;
    // Tells a primitive what is known of its place on the screen, and answers the first bucket that
    // needs it, no earlier than one column and row.
    BucketPlace file(Primitive& primitive, const Boundw& camera, const Boundw& raster,
                     BucketPlace earliest) const;
    // Where a piece of the primitive may be seen, of what is rendered: from one column and row on,
    // up to a last one.
    BucketRange range(const Piece& piece, BucketPlace earliest, BucketPlace last) const;

private:
    // Along one side of the picture.
    struct Axis {
        long pixel0 = 0, pixel1 = 0;      // that the buckets are laid out over
        long cropped0 = 0, cropped1 = 0;  // that are rendered
        long size = 1;                    // of a bucket
        long count = 1;                   // of buckets
        long first = 0, last = 0;         // that are rendered
        // Of the positions of all samples, and of those that are rendered.
        float min = 0, max = 0, croppedMin = 0, croppedMax = 0;

        void layOut(long resolution, float filterWidth);
        long shown() const { return last - first + 1; }
        long pixels() const { return pixel1 - pixel0 + 1; }
        long border(long bucket) const { return pixel0 + bucket * size; }
        long end(long bucket) const { return bucket == last ? cropped1 : border(bucket + 1) - 1; }
    };

    // Settles the sides of buckets, and the sampling rates, so that no bucket takes more samples
    // than there may be.
    Option limited(const Option& asked, const Display& device);
    Bound screenBound(const Boundw& camera, Boundw raster) const;

    Axis fX, fY;
    const RenderFrame fFrame;
};

}  // namespace zeb
