// Light from all around, as a picture of all directions holds it.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "camera.h"
#include "light_picture.h"
#include "row.h"
#include "settings.h"
#include "sphere_map.h"

namespace zebview
{

class Environment
{
public:
    // turn    degrees to the right
    // factor  of all light
    Environment(const LightPicture& picture, double turn, double factor);

    // What a white matt surface shows, by its normal, of unit length in the model's world.
    Color scattered(const std::array<float, 3>& normal) const;
    // What arrives around a direction, of unit length.
    //
    // rough   that of the surface that mirrors it; 0: the picture itself
    // spread  how wide what is looked at is, in radians
    Color mirrored(const std::array<float, 3>& way, float rough, float spread) const;

private:
    // As surfaces of one roughness mirror it.
    struct Level {
        float rough;
        SphereMap map;
    };
    float across(const std::array<float, 3>& way) const;
    Color sharp(float across, float angle, float width) const;

    float fTurn;
    std::vector<SphereMap> fPicture;  // each half as large as the one before
    std::vector<Level> fLevels;
    SphereMap fScattered;
};

// The environment as a camera sees it, for functions that shade.
struct Around {
    std::shared_ptr<const Environment> environment;
    float toCamera[3][3];  // row vectors

    // The directions are those of camera space.
    Color scattered(const Planes& N, long k) const { return environment->scattered(toWorld(N, k)); }
    Color mirrored(const Planes& way, long k, float rough, float spread) const
    {
        return environment->mirrored(toWorld(way, k), rough, spread);
    }

private:
    std::array<float, 3> toWorld(const Planes& way, long k) const;
};

// How far directions, of unit length, are from those of the neighbours.
float* spreadOf(const ZebRow& row, const Planes& ways);

// What a surface of tiny mirrors sends on of a constant environment: the first for every unit of
// what it mirrors of light that comes straight at it, the second of what it mirrors at its rim.
//
// cosine  between its normal and the way to the eye
std::array<float, 2> mirrorShares(float rough, float cosine);

// What the settings ask for; null if nothing. Throws a Failure.
std::shared_ptr<const Environment> readEnvironment(const Settings& settings);

std::shared_ptr<const Around> lookAround(std::shared_ptr<const Environment> environment,
                                         const Camera& camera);

// The surface of what follows is the environment itself, as the eye sees it.
void setSky(std::shared_ptr<const Around> around);

}  // namespace zebview
