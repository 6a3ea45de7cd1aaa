// The hider's front end: files primitives under buckets and renders the buckets in order.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "geom/object.h"
#include "geom/procedural.h"
#include "hider/front.h"
#include "hider/render_task.h"

namespace zeb
{

class Scene : public PrimitiveSink, private Delivery
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
    // Has the reports told of all that the walk over the buckets has left behind.
    void settleReports();
    // What the picture has taken so far; kept until the next one begins.
    const Counts& counts() const { return fCounts; }

    // What the buckets are laid out for; null without buckets.
    const RenderFrame* frame() const { return fLayout ? &fLayout->frame() : nullptr; }
    long columns() const { return fLayout ? fLayout->columns() : 0; }
    long rows() const { return fLayout ? fLayout->rows() : 0; }

private:
    // Whether a bucket is left after the next one. May call the host.
    bool renderSome(bool ahead);
    bool mayRunAhead() const;
    // The next bucket in turn, alone. May throw Cancelled, as all of these.
    void renderNext();
    // The same, with others under way on other threads.
    void renderAhead();
    void walkOn();
    // Lets threads have the task that buckets are being added to.
    void offer();
    void deliver();
    bool settle() override;
    // Whether the host hears or does anything between one bucket and the next.
    bool hostMayCall() const;
    int threads() const;
    void endAhead();
    // To what is delivered, if what was filed from there on is still known.
    void goBack();
    void finishBucket(const Counts& counts);
    void tellProgress();
    void finishRow();
    // In the object that is being defined, if there is one, or in the picture.
    void keep(std::unique_ptr<Primitive> primitive);
    template <class Build>
    void build(unsigned short blocks, long nargs, const unsigned short* tokens, const Build& make);
    // An info for each of the variables that the surface in force reads nothing from, once a
    // picture.
    void tellUnread(bool positioned, long nargs, const unsigned short* tokens);

    std::unique_ptr<Layout> fLayout;  // null without buckets
    std::unique_ptr<Front> fFront;
    Pool fPool;
    std::unique_ptr<Workers> fWorkers;
    // Buckets that the walk has left behind, from the next one to be delivered on.
    struct Ahead {
        std::shared_ptr<RenderTask> task;
        std::size_t bucket = 0;  // of the task
    };
    std::deque<Ahead> fTasks;
    Ahead fUnderWay;  // being delivered: kept here, where a host's jump does not lose it
    std::shared_ptr<RenderTask> fOpen;         // that the last of them belong to and others may
    std::vector<std::shared_ptr<Task>> fGone;  // of which all is delivered
    std::int64_t fDelivered = 0;               // buckets, the one under way included
    std::int64_t fDone = 0;                    // without it; more than a long may hold
    long fPercent = 0;                         // what the host has heard of them
    bool fHasInstances = false;                // of objects
    bool fDelivering = false;
    bool fStarted = false;
    Object* fDefining = nullptr;
    std::set<std::pair<const char*, unsigned short>> fUnread;  // surfaces and variables told of
    BucketScratch fScratch;
    Counts fCounts;
};

extern Scene* gScene;

}  // namespace zeb
