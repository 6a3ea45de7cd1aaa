// Scenes that are drawn at random.
#pragma once

#include <functional>
#include <random>
#include <vector>

#include "support/families.h"
#include "support/picture.h"

namespace zebtest
{

// A scene of a few surfaces that cross, coincide and pass through the eye, under options and
// attributes that are drawn. The same number gives the same scene, with every compiler: no two
// draws are arguments of one call.
class RandomScene
{
public:
    explicit RandomScene(unsigned number) : fRandom(number) {}

    // What zebBound says of some surfaces is not true, but for a host that never lies.
    void tellTheTruth() { fLies = false; }

    // Options that more() sets go before the scene's own.
    void render(Picture& picture, const std::function<void()>& more = {})
    {
        zebReset();
        options(picture);
        if (more) more();
        zebSceneBegin();
        lights();
        const int count = 2 + draw(6);
        for (int k = 0; k < count; ++k) surface();
        zebSceneEnd();
    }

private:
    int draw(int n) { return static_cast<int>(fRandom() % static_cast<unsigned>(n)); }
    bool oneIn(int n) { return draw(n) == 0; }
    float between(float lo, float hi)
    {
        return lo + (hi - lo) * static_cast<float>(fRandom() % 65536) / 65535;
    }

    void options(Picture& picture)
    {
        zebRasterViewport(0, 40, 0, 30);
        zebQuirks(static_cast<short>(draw(2)));
        static const short samples[] = {0x301, 0x302, 0x303, 0x304, 0x305, 0x306, 0x307};
        static const int channels[] = {3, 1, 4, 1, 4, 2, 5};
        const int k = draw(7);
        zebOutputSamples(samples[k]);
        picture.setChannels(channels[k]);
        picture.attachFloat();
        if (oneIn(3)) {
            zebViewOrthographic();
        } else {
            zebViewPerspective(between(20, 120));
        }
        if (oneIn(4)) {
            const float near = between(0.1f, 3), far = between(4, 8);
            zebClip(near, far);
        }
        if (oneIn(5)) zebHider(ZEB_HIDER_SEQUENCE);
        if (oneIn(4)) {
            zebSampleAdaptive(0.05f);
        } else {
            const int xrate = 1 + draw(3), yrate = 1 + draw(3);
            zebSampleUniform(static_cast<float>(xrate), static_cast<float>(yrate));
        }
        if (oneIn(3)) zebSampleJitter(0);
        if (oneIn(3)) {
            const float width = between(1, 4), height = between(1, 4);
            zebFilterWidth(width, height);
        }
        if (oneIn(4)) zebDepthNearest(1);
        if (oneIn(3)) zebFilter(static_cast<short>(0x100 + draw(5)));
        zebTranslate(0, 0, oneIn(6) ? between(-0.5f, 1) : between(2, 5));
    }

    void lights()
    {
        const float from[3] = {between(-3, 3), between(-3, 3), -3}, dim = 0.3f;
        zebLightSource(zebQuark("ambient"), zebQuark("intensity"), &dim, 0);
        static const char* const kinds[] = {"distant", "omni", "spot"};
        zebLightSource(zebQuark(kinds[draw(3)]), zebQuark("from"), from, 0);
    }

    void attributes()
    {
        static const char* const surfaces[] = {"constant", "diffuse", "metal", "plastic"};
        zebSurface(zebQuark(surfaces[draw(4)]), 0);
        zebShadingModel(oneIn(2) ? ZEB_SMOOTH : ZEB_CONSTANT);
        zebShadingRate(oneIn(3) ? between(0.3f, 2) : between(2, 40));
        zebBackface(static_cast<short>(1 + draw(2)));
        const float color[3] = {between(0, 1), between(0, 1), between(0, 1)};
        zebColor(color);
        static const float opacities[] = {0, 0.3f, 0.5f, 1, 1, 1, 1, 1.4f};
        const float opacity[3] = {opacities[draw(8)], opacities[draw(8)], opacities[draw(8)]};
        static const float opaque[3] = {1, 1, 1};
        zebOpacity(oneIn(3) ? opacity : opaque);
        if (oneIn(8)) zebMatteObject(1);
        if (oneIn(8)) zebAtmosphere(zebQuark("fog"), zebQuark("distance"), &kFog, 0);
        if (oneIn(8)) {
            const float bound[6] = {-0.5f, 0.5f, -0.5f, 0.5f, -0.5f, 0.5f};
            if (fLies) zebBound(bound);
        }
    }

    void add()
    {
        const auto& all = families();
        if (oneIn(8)) {
            static const float values[12] = {0, 0, 0, 0.5f, 1, 1, 1, 1, 1, 1.5f, 1, 0};
            zebSphere(0.8f, -0.8f, 0.8f, 360, zebQuark(oneIn(2) ? "opacity" : "color"), values, 0);
        } else if (oneIn(6)) {
            const float half = oneIn(4) ? 60.0f : 1.0f;
            const Vec p[4] = {
                {-half, -half, 0}, {half, -half, 0}, {half, half, 0}, {-half, half, 0}};
            zebPolygon(4, zebQuark("point"), p, 0);
        } else {
            all[static_cast<std::size_t>(draw(static_cast<int>(all.size())))].add(
                between(0.2f, 1.2f));
        }
    }

    void place()
    {
        // Some stay where others are.
        if (!oneIn(5)) {
            const float x = between(-1, 1), y = between(-1, 1), z = between(-1.5f, 2);
            zebTranslate(x, y, z);
        }
        if (!oneIn(4)) {
            const float angle = between(0, 360), x = between(-1, 1), y = between(-1, 1);
            zebRotate(angle, x, y, 1);
        }
    }

    void surface()
    {
        zebAttributePush();
        attributes();
        zebMatrixPush();
        place();
        const std::mt19937 before = fRandom;
        add();
        // Coincides with what was just added.
        if (oneIn(5)) {
            fRandom = before;
            attributes();
            fRandom = before;
            add();
        }
        zebMatrixPop();
        zebAttributePop();
    }

    static constexpr float kFog = 5;
    std::mt19937 fRandom;
    bool fLies = true;
};

}  // namespace zebtest
