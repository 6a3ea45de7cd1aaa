#include "stage.h"

#include <assimp/camera.h>
#include <assimp/light.h>
#include <assimp/scene.h>
#include <assimp/version.h>

#include <algorithm>
#include <numbers>

#include "failure.h"
#include "material.h"

namespace zebview
{

namespace
{

constexpr double kDegrees = 180 / std::numbers::pi;
// Lamps in the middle of the model would be infinitely bright there.
constexpr double kClosestLamp = 0.5;

Matrix placeOf(const Pose& pose, const aiString& name, const Matrix& otherwise)
{
    const Matrix* const found = pose.find(name.C_Str());
    return found ? *found : otherwise;
}

Vector asVector(const aiVector3D& v) { return {v.x, v.y, v.z}; }

// What a matrix does to a direction.
Vector turned(const Matrix& m, const aiVector3D& v)
{
    return direction(m * asVector(v) - m * Vector());
}

// Up to 5.2, assimp takes the upright angle of glTF times the picture's shape for the level one.
bool multipliesAngles()
{
    return aiGetVersionMajor() < 5 || (aiGetVersionMajor() == 5 && aiGetVersionMinor() <= 2);
}

double tangentOfHalf(double angle) { return std::tan(std::min(angle, 3.0) / 2); }

// gltf  what assimp gives as the position is the node's own, once more
FileCamera readCamera(const aiCamera& source, const Matrix& toWorld, const Place& place, bool gltf)
{
    FileCamera camera;
    camera.name = source.mName.C_Str();
    camera.eye = place.point(toWorld * (gltf ? Vector() : asVector(source.mPosition)));
    camera.back = -turned(toWorld, source.mLookAt);
    camera.right = direction(turned(toWorld, source.mUp) ^ camera.back);
    camera.up = camera.back ^ camera.right;
    // Of those that do not know the shape of their picture the angle is taken for both ways.
    const double aspect = source.mAspect > 0 ? source.mAspect : 1;
    camera.perspective = source.mHorizontalFOV > 0;
    if (!camera.perspective) {
        camera.halfWidth = std::max(source.mOrthographicWidth, 1e-6f) / place.radius;
    } else if (gltf && multipliesAngles()) {
        camera.halfWidth = tangentOfHalf(source.mHorizontalFOV / aspect) * aspect;
    } else {
        camera.halfWidth = tangentOfHalf(source.mHorizontalFOV);
    }
    camera.halfHeight = camera.halfWidth / aspect;
    return camera;
}

bool isUsable(const FileCamera& camera)
{
    return isFinite(camera.eye) && camera.back != Vector() && camera.right != Vector() &&
           std::isfinite(camera.halfWidth) && std::isfinite(camera.halfHeight);
}

// How much of a lamp's colour arrives at a distance, in the file's units.
double attenuation(const aiLight& source, double distance)
{
    const double sum = source.mAttenuationConstant + source.mAttenuationLinear * distance +
                       source.mAttenuationQuadratic * distance * distance;
    return sum > 0 ? 1 / sum : 1;
}

// gltf  assimp passes angles on as they are: from the axis
void readCone(const aiLight& source, bool gltf, Lamp& lamp)
{
    const double scale = gltf ? kDegrees : kDegrees / 2;
    lamp.coneAngle = std::clamp(source.mAngleOuterCone * scale, 0.1, 90.0);
    lamp.coneDeltaAngle =
        lamp.coneAngle - std::clamp(source.mAngleInnerCone * scale, 0.0, lamp.coneAngle);
}

// The brightest channel of what a lamp sends to the middle of the model.
double brightnessOf(const Lamp& lamp)
{
    const double most = *std::max_element(lamp.color.begin(), lamp.color.end());
    if (lamp.kind == Lamp::kAmbient || lamp.kind == Lamp::kDistant) return most;
    const double distance = std::max(lamp.from.Length(), kClosestLamp);
    return most / (distance * distance);
}

Lamp readLamp(const aiLight& source, const Matrix& toWorld, const Place& place, bool gltf)
{
    Lamp lamp;
    lamp.from = place.point(toWorld * asVector(source.mPosition));
    lamp.direction = turned(toWorld, source.mDirection);
    double scale = 1;
    switch (source.mType) {
        case aiLightSource_AMBIENT:
            lamp.kind = Lamp::kAmbient;
            break;
        case aiLightSource_DIRECTIONAL:
            lamp.kind = Lamp::kDistant;
            break;
        default: {
            lamp.kind = source.mType == aiLightSource_SPOT ? Lamp::kSpot : Lamp::kOmni;
            const double distance = std::max(lamp.from.Length(), kClosestLamp);
            scale = attenuation(source, distance * place.radius) * distance * distance;
        }
    }
    if (lamp.kind == Lamp::kSpot) readCone(source, gltf, lamp);
    const aiColor3D& color = lamp.kind == Lamp::kAmbient && !source.mColorAmbient.IsBlack()
                                 ? source.mColorAmbient
                                 : source.mColorDiffuse;
    lamp.color = {static_cast<float>(color.r * scale), static_cast<float>(color.g * scale),
                  static_cast<float>(color.b * scale)};
    return lamp;
}

bool isUsable(const Lamp& lamp)
{
    const double bright = brightnessOf(lamp);
    const bool aims = lamp.kind == Lamp::kDistant || lamp.kind == Lamp::kSpot;
    return isFinite(lamp.from) && bright > 0 && std::isfinite(bright) &&
           (!aims || lamp.direction != Vector());
}

}  // namespace

Stage readStage(const aiScene& scene, const Pose& pose, const Place& place, double& brightness)
{
    Stage stage;
    const bool gltf = holdsLight(scene);
    for (unsigned i = 0; i < scene.mNumCameras; ++i) {
        const aiCamera& source = *scene.mCameras[i];
        const FileCamera camera =
            readCamera(source, placeOf(pose, source.mName, place.turn), place, gltf);
        if (isUsable(camera)) stage.cameras.push_back(camera);
    }
    double sum = 0;
    for (unsigned i = 0; i < scene.mNumLights; ++i) {
        const aiLight& source = *scene.mLights[i];
        if (source.mType == aiLightSource_UNDEFINED) continue;
        const Lamp lamp =
            readLamp(source, placeOf(pose, source.mName, place.turn), place, holdsLight(scene));
        if (!isUsable(lamp)) continue;
        stage.lamps.push_back(lamp);
        sum += brightnessOf(lamp);
    }
    if (brightness == 0) brightness = sum;
    for (Lamp& lamp : stage.lamps) {
        for (float& c : lamp.color) c = static_cast<float>(c / brightness);
    }
    return stage;
}

const FileCamera& findCamera(const Stage& stage, const std::string& wanted)
{
    if (stage.cameras.empty()) throw Failure("it has no cameras");
    for (const FileCamera& camera : stage.cameras) {
        if (camera.name == wanted) return camera;
    }
    for (std::size_t i = 0; i < stage.cameras.size(); ++i) {
        if (std::to_string(i) == wanted) return stage.cameras[i];
    }
    throw Failure("it has no camera '" + wanted + "': --camera list names those it has");
}

}  // namespace zebview
