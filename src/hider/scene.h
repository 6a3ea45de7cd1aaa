// The hider's front end: files primitives under buckets and renders the buckets in order.
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "geom/object.h"
#include "geom/procedural.h"
#include "hider/bucket.h"

namespace zeb
{

class Scene : public PrimitiveSink
{
public:
    ~Scene() override { flush(); }

    // Lays out the buckets for the options in force.
    void init();
    // Files a primitive under the first bucket it can be seen in; one that can't be seen is
    // dropped. While a picture is rendered, never under a bucket that is done.
    void add(std::unique_ptr<Primitive> primitive) override;

    void renderInit();
    // Renders the next bucket; 0 when there is none left.
    short renderBucket();
    // Renders all that is left.
    void render();
    // Percent done, the bucket under way included; 0 without buckets.
    long progress() const;
    // Drops everything unrendered.
    void flush();

    // The builders of the interface: each asks whether it is legal now, checks its arguments, and
    // adds a primitive to the object being defined, or to the scene.
    void polygon(long n, long nargs, const unsigned short* tokens, void* const* values);
    void generalPolygon(long nloops, const long* nverts, long nargs, const unsigned short* tokens,
                        void* const* values);
    void polygonMesh(long npolys, const long* nverts, const long* verts, long nargs,
                     const unsigned short* tokens, void* const* values);
    void generalPolygonMesh(long npolys, const long* nloops, const long* nverts, const long* verts,
                            long nargs, const unsigned short* tokens, void* const* values);
    void patch(short type, long nargs, const unsigned short* tokens, void* const* values);
    void patchMesh(short type, long nu, short uwrap, long nv, short vwrap, long nargs,
                   const unsigned short* tokens, void* const* values);
    void nurb(long nu, const float* uknot, float umin, float umax, long nv, const float* vknot,
              float vmin, float vmax, long nargs, const unsigned short* tokens,
              void* const* values);
    void nurbMesh(long nu, long uorder, const float* uknot, float umin, float umax, long nv,
                  long vorder, const float* vknot, float vmin, float vmax, long nargs,
                  const unsigned short* tokens, void* const* values);
    void sphere(float radius, float zmin, float zmax, float thetamax, long nargs,
                const unsigned short* tokens, void* const* values);
    void spheres(long n, const float* centers, const float* radii, long nargs,
                 const unsigned short* tokens, void* const* values);
    void cone(float radius, float height, float cutheight, float thetamax, long nargs,
              const unsigned short* tokens, void* const* values);
    void cylinder(float radius, float zmin, float zmax, float thetamax, long nargs,
                  const unsigned short* tokens, void* const* values);
    void hyperboloid(const float* point1, const float* point2, float thetamax, long nargs,
                     const unsigned short* tokens, void* const* values);
    void paraboloid(float rmax, float zmin, float zmax, float thetamax, long nargs,
                    const unsigned short* tokens, void* const* values);
    void disk(float innerradius, float radius, float thetamax, long nargs,
              const unsigned short* tokens, void* const* values);
    void torus(float majorradius, float minorradius, float phimin, float phimax, float thetamax,
               long nargs, const unsigned short* tokens, void* const* values);
    void procedural(void* data, const float* bound, SubdivideFunction subdivide,
                    FreeFunction release);
    void objectInstance(const void* handle);

    void define(Object* object) { fDefining = object; }
    // What the picture has taken so far; kept until the next one begins.
    const Counts& counts() const { return fCounts; }

    // What the buckets are laid out for; null without buckets.
    const RenderFrame* frame() const { return fFrame.get(); }
    long columns() const { return fColumns; }
    long rows() const { return fRows; }

private:
    using Row = std::vector<std::unique_ptr<Bucket>>;

    // Settles the sides of buckets, and the sampling rates, so that no bucket takes more samples
    // than there may be.
    void limitSamples(Option& option);
    bool culled(const Boundw& camera) const;
    void file(Primitive& primitive, const Boundw& camera, const Boundw& raster, long& column,
              long& row) const;
    Bound screenBound(const Boundw& camera, Boundw raster) const;
    Bucket& bucketAt(long column, long row);
    std::unique_ptr<Bucket> makeBucket(long column, long row) const;
    // May throw Cancelled.
    void renderNext();
    void tellProgress();
    void process(std::unique_ptr<Primitive> primitive);
    void finish(std::unique_ptr<Primitive> primitive);
    // Files what becomes one grid.
    void dice(std::unique_ptr<Primitive> primitive, const Dicing& dicing);
    void giveUp(const Primitive& primitive);
    // Of the crop window.
    double pixels() const
    {
        return static_cast<double>(fX1 - fX0 + 1) * static_cast<double>(fY1 - fY0 + 1);
    }
    void finishRow();
    // In the object that is being defined, if there is one, or in the picture.
    void keep(std::unique_ptr<Primitive> primitive);
    template <class Build>
    void build(unsigned short blocks, long nargs, const unsigned short* tokens, const Build& make);
    // An info for each of the variables that the surface in force reads nothing from, once a
    // picture.
    void tellUnread(bool positioned, long nargs, const unsigned short* tokens);

    std::unique_ptr<RenderFrame> fFrame;
    Pool fPool;
    std::vector<std::unique_ptr<Row>> fBuckets;  // rows and buckets are made when first needed
    long fColumns = 0, fRows = 0;
    long fColumn = 0, fRow = 0;  // the bucket to be rendered next
    std::int64_t fDone = 0;      // buckets; more than a long may hold
    long fPercent = 0;           // what the host has heard of them
    long fX0 = 0, fX1 = 0, fY0 = 0, fY1 = 0;
    long fBucketWidth = 1, fBucketHeight = 1;
    float fXmin = 0, fXmax = 0, fYmin = 0, fYmax = 0;  // of all sample positions
    bool fStarted = false;
    Object* fDefining = nullptr;
    std::set<std::pair<const char*, unsigned short>> fUnread;  // surfaces and variables told of
    BucketScratch fScratch;
    Counts fCounts;
};

extern Scene* gScene;

}  // namespace zeb
