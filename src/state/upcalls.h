// What the graphics state asks of the layers above it. Each function is defined in the layer named.
#pragma once

#include <memory>

#include "math/transform.h"

namespace zeb
{

class ArgList;
class Attrib;
class HostShader;
class Light;
class Object;
class Surface;
class Volume;

namespace upcall
{

// display/display.cpp
void printMessage(const char* line);
bool displayPrints(long severity);
struct DeviceDefaults {
    long xres, yres;
    float aspect;
};
// Makes the device that the options choose, in place of the one before.
DeviceDefaults createDisplay();
void openDisplay();
// Closes the device and forgets it.
void closeDisplay();

// hider/scene.cpp
void initScene();
void flushScene();
void renderScene();
// Before a report, or a question about reports: has those told that come first, of buckets that
// were rendered ahead.
void settleScene();
// The object that new primitives go into; null for the scene.
void defineObject(Object* object);

// geom/object.cpp
std::shared_ptr<Object> makeObject();

// shade/; null for an unknown name
std::shared_ptr<Light> makeLight(unsigned short name, std::shared_ptr<const Transform> transform,
                                 const ArgList& args, bool quirks);
std::shared_ptr<Surface> makeSurface(unsigned short name,
                                     std::shared_ptr<const Transform> transform,
                                     const ArgList& args);
std::shared_ptr<Volume> makeVolume(unsigned short name, std::shared_ptr<const Transform> transform,
                                   const ArgList& args);
// The same by a function of the host's.
std::shared_ptr<Light> makeLight(std::shared_ptr<const HostShader> shader);
std::shared_ptr<Surface> makeSurface(std::shared_ptr<const HostShader> shader);
std::shared_ptr<Volume> makeVolume(std::shared_ptr<const HostShader> shader);
// Sets what attributes know of the host's functions among their shaders.
void findHostShading(Attrib& attrib);
// An info for each of the arguments that is no parameter of the shader.
void tellUnread(Surface& surface, const ArgList& args);
void tellUnread(Light& light, const ArgList& args);
void tellUnread(Volume& volume, const ArgList& args);
const char* surfaceName(const Surface& surface);
// Whether a variable of a primitive can be one of the surface's parameters.
bool surfaceReads(const Surface& surface, unsigned short token);

}  // namespace upcall
}  // namespace zeb
