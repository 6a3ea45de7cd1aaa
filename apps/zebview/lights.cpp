#include "lights.h"

#include <algorithm>

#include "zebcore/zebcore.h"

namespace zebview
{

namespace
{

void addDistantLight(const Vector& from, const Color& color)
{
    const ZebPoint start{static_cast<float>(from.x), static_cast<float>(from.y),
                         static_cast<float>(from.z)};
    const ZebPoint end{0, 0, 0};
    zebLightSource(zebQuark("distant"), zebQuark("color"), color.data(), zebQuark("from"), start,
                   zebQuark("to"), end, 0);
}

const Color kKeyColor{0.95f, 0.95f, 0.95f};

// From the upper left, where z points to the eye.
Vector keyFrom(double towardsEye) { return {-0.8, 1, towardsEye}; }

// A key light and a fill from the right.
void addOwnLights(double towardsEye, bool withKey)
{
    const Color fill{0.15f, 0.15f, 0.15f}, glow{0.04f, 0.04f, 0.04f};
    if (withKey) addDistantLight(keyFrom(towardsEye), kKeyColor);
    addDistantLight({1, 0.3, 0.7 * towardsEye}, fill);
    zebLightSource(zebQuark("ambient"), zebQuark("color"), glow.data(), 0);
}

void addLamp(const Lamp& lamp)
{
    const Vector aim = lamp.from + lamp.direction;
    const ZebPoint from{static_cast<float>(lamp.from.x), static_cast<float>(lamp.from.y),
                        static_cast<float>(lamp.from.z)};
    const ZebPoint to{static_cast<float>(aim.x), static_cast<float>(aim.y),
                      static_cast<float>(aim.z)};
    const auto cone = static_cast<float>(lamp.coneAngle);
    const auto delta = static_cast<float>(lamp.coneDeltaAngle);
    const float even = 0;
    switch (lamp.kind) {
        case Lamp::kAmbient:
            zebLightSource(zebQuark("ambient"), zebQuark("color"), lamp.color.data(), 0);
            break;
        case Lamp::kDistant:
            addDistantLight(-lamp.direction, lamp.color);
            break;
        case Lamp::kOmni:
            zebLightSource(zebQuark("omni"), zebQuark("color"), lamp.color.data(), zebQuark("from"),
                           from, 0);
            break;
        case Lamp::kSpot:
            zebLightSource(zebQuark("spot"), zebQuark("color"), lamp.color.data(), zebQuark("from"),
                           from, zebQuark("to"), to, zebQuark("coneangle"), &cone,
                           zebQuark("conedeltaangle"), &delta, zebQuark("beamdistribution"), &even,
                           0);
            break;
    }
}

bool hasLamps(const Settings& settings) { return settings.light || settings.environment.empty(); }

Vector fromCamera(const Camera& camera, const Vector& v)
{
    Vector result;
    for (unsigned axis = 0; axis < 3; ++axis) {
        const float* const row = camera.toCamera[axis];
        result[axis] = double{row[0]} * v.x + double{row[1]} * v.y + double{row[2]} * v.z;
    }
    return result;
}

}  // namespace

Shadows shadowsOf(const Stage& stage, const Camera& camera, const Settings& settings)
{
    Shadows result;
    if (!settings.shadows || !hasLamps(settings)) return result;
    if (settings.lightFor(!stage.lamps.empty()) == Light::kFile) {
        const auto isDistant = [](const Lamp& lamp) { return lamp.kind == Lamp::kDistant; };
        const auto count = std::count_if(stage.lamps.begin(), stage.lamps.end(), isDistant);
        for (const Lamp& lamp : stage.lamps) {
            if (!isDistant(lamp)) continue;
            result.push_back(
                makeShadow(-lamp.direction, lamp.color, settings, static_cast<std::size_t>(count)));
        }
    } else {
        const bool fixed = settings.light == Light::kModel;
        const Vector from = fixed ? keyFrom(1) : fromCamera(camera, keyFrom(-1));
        result.push_back(makeShadow(from, kKeyColor, settings, 1));
    }
    return result;
}

// Lights of the camera stand still as the eye goes around the model: what is seen is always well
// lit.
void addLights(const Stage& stage, const Camera& camera, const Settings& settings,
               const Shadows& shadows)
{
    if (!hasLamps(settings)) return;
    const bool all = shadows.empty();
    if (settings.lightFor(!stage.lamps.empty()) == Light::kFile) {
        for (const Lamp& lamp : stage.lamps) {
            if (all || lamp.kind != Lamp::kDistant) addLamp(lamp);
        }
    } else if (settings.light == Light::kModel) {
        addOwnLights(1, all);
    } else {
        zebMatrixPush();
        zebLoadIdentity();
        addOwnLights(-1, all);
        zebMatrixPop();
    }
    for (const auto& shadow : shadows) addShadowLight(shadow, camera);
}

}  // namespace zebview
