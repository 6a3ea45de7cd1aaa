// The block nesting and the stacks it saves and restores.
#pragma once

#include <memory>

#include "math/transform.h"
#include "state/attrib.h"
#include "state/option.h"
#include "util/report.h"
#include "util/stack.h"

namespace zeb
{

class Light;
class Object;

// The record in force.
extern Transform* gTransform;

class State
{
public:
    ~State();

    // Starts, or starts anew: outside any block, with the defaults, the scene empty and the picture
    // under way given up.
    void init();
    // What the interface calls: init, but refused from inside a callback.
    void reset();

    short verify(unsigned short mask, long code);
    unsigned short block() { return *fModes.top(); }

    short frameBegin();
    short frameEnd();
    short sceneBegin();
    short sceneEnd();
    short attributePush();
    short attributePop();
    short matrixPush();
    short matrixPop();
    short solidBegin();
    short solidEnd();
    Object* objectBegin();
    short objectEnd();
    short motionBegin(long n);
    short motionEnd();

    // Snapshots of the records in force.
    std::shared_ptr<const Transform> getTransform() { return gTransform->snapshot(); }
    std::shared_ptr<const Attrib> getAttrib() { return gAttrib->snapshot(); }

    // Lights and objects belong to the innermost frame or world block.
    void own(std::shared_ptr<Light> light) { fLights.top()->add(std::move(light)); }
    // Null for a handle that is not, or no longer, one.
    std::shared_ptr<Light> liveLight(const void* handle) const;
    std::shared_ptr<Object> liveObject(const void* handle) const;

    // While a procedural builds, or a reset lets things go: a world block of its own under the
    // attributes and transformation given. Whatever blocks the host leaves open in it are closed at
    // the end.
    class ProceduralScope
    {
    public:
        ProceduralScope(State& state, const Attrib& attrib, const Transform& transform);
        ~ProceduralScope();

    private:
        State& fState;
        long fDepth;
        unsigned short fMotionFirst;
        Object* fObject;
    };

private:
    using Lights = List<std::shared_ptr<Light>>;
    using Objects = List<std::shared_ptr<Object>>;

    short open(unsigned short mask, unsigned short block, bool attributes, bool transformation);
    void close();
    // Closes what is open above a depth of blocks.
    void closeTo(long depth);
    void define(Object* object);
    void point();
    void fixCamera();
    // What the innermost lists held: it goes when the caller is done with it. The free functions of
    // procedurals in objects may call in.
    struct Doomed {
        Lights lights;
        Objects objects;
    };
    Doomed takeLightAndObj();
    Doomed popLightAndObj();

    Stack<unsigned short> fModes;
    long fDepth = 0;  // of fModes
    CopyStack<Transform> fTransforms;
    CopyStack<Attrib> fAttribs;
    CopyStack<Option> fOptions;
    Stack<Lights> fLights;
    Stack<Objects> fObjects;
    unsigned short fMotionFirst = 0;
    Object* fObject = nullptr;  // being defined
};

extern State* gState;

}  // namespace zeb
