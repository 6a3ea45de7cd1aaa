// How primitives look.
#pragma once

#include <memory>

#include "math/bound.h"
#include "math/color.h"
#include "math/matrix.h"
#include "math/transform.h"
#include "state/basis.h"
#include "state/host_shader.h"
#include "util/list.h"
#include "util/string.h"

namespace zeb
{

class Light;
class Surface;
class Volume;

enum : unsigned short { kConstantShading = 0x500, kSmoothShading = 0x501 };

// What primitives capture when they are made. The setters are those of the interface: each asks
// whether it is legal now, reports last and marks the record as changed.
class Attrib
{
public:
    Color surfaceColor = gWhite;
    Color surfaceOpacity = gWhite;
    float textureS[4] = {0, 1, 0, 1};
    float textureT[4] = {0, 0, 1, 1};
    // Says which lights are on; the frame or world block owns them.
    List<std::shared_ptr<Light>> lights;
    std::shared_ptr<Surface> surfaceShader;
    std::shared_ptr<Volume> atmosphereShader;
    float micropolygonSide = 0.5f;  // the square root of the shading rate
    unsigned short interpolation = kConstantShading;
    bool matte = false;
    Bound objectBound;  // infinite unless set
    float detailLimits[4] = {0, 0, 1e38f, 1e38f};
    float flatnessLimit = 0.5f;
    Matrix ubasis = zebBezierBasis, vbasis = zebBezierBasis;
    long ustep = 3, vstep = 3;
    unsigned short orientationSide = kOutside;
    long sides = 2;
    float displacementBound = 0;
    std::shared_ptr<const HostShader> displacementShader;
    String object, group;
    // Of a copy that is kept: how functions of the host's may be called that displace or shade, and
    // what those find that shade.
    HostShading hostShading = HostShading::kNone;
    bool colorsByHost = false, opacityByHost = false;

    // The defaults.
    void init();

    void color(const float* samples);
    void opacity(const float* samples);
    void textureCoordinates(float s1, float t1, float s2, float t2, float s3, float t3, float s4,
                            float t4);
    const void* lightSource(unsigned short name, long n, const unsigned short* tokens,
                            void* const* values);
    // Area lights shine as points.
    const void* areaLightSource(unsigned short name, long n, const unsigned short* tokens,
                                void* const* values);
    void lightSwitch(const void* light, short on);
    void surface(unsigned short name, long n, const unsigned short* tokens, void* const* values);
    void atmosphere(unsigned short name, long n, const unsigned short* tokens, void* const* values);
    // The same by functions of the host's.
    void customSurface(const ZebShader* shader);
    void customAtmosphere(const ZebShader* shader);
    const void* customLight(const ZebShader* shader);
    void customDisplacement(const ZebShader* shader);
    // These four are accepted and without effect.
    void interior(unsigned short name, long n, const unsigned short* tokens, void* const* values);
    void exterior(unsigned short name, long n, const unsigned short* tokens, void* const* values);
    void displacement(unsigned short name, long n, const unsigned short* tokens,
                      void* const* values);
    void trimCurve();
    void shadingRate(float rate);
    void shadingModel(short model);
    void matteObject(short on);
    void bound(const float* b);
    void detail(const float* b);
    void detailRange(float minvis, float lowtran, float uptran, float maxvis);
    void flatness(float value);
    void orientation(short o);
    void backface(short value);
    void basis(short basis, short application);
    void customBasis(short application, const float (*m)[4], long step);
    void boundDisplacement(float amount);
    void objectName(const char* name);
    void groupName(const char* name);

    bool changed() const { return fChanged; }
    // A copy that primitives may keep; the same one until the record changes.
    std::shared_ptr<const Attrib> snapshot();

private:
    const void* switchOn(std::shared_ptr<Light> light);
    void setBasis(const Matrix& matrix, long step, short application);

    bool fChanged = true;
    std::shared_ptr<const Attrib> fSnapshot;
};

// The record in force.
extern Attrib* gAttrib;

}  // namespace zeb
