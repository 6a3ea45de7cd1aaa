// Shadows of distant lamps: each lamp looks at the model first, and keeps how far away what it sees
// is.
#pragma once

#include <memory>
#include <vector>

#include "camera.h"
#include "row.h"
#include "settings.h"

namespace zebview
{

// What a lamp sees of the unit sphere, which the model fills, from a distance of 2.
struct Shadow {
    Color color;
    Vector right, up, ahead;  // the directions of the map, in the model's world
    long size;                // of the map, across and down
    std::vector<float> depth;
    // Of tiles of the map, the least depth in reach of their points' soft edges: most points need
    // no closer look.
    long tiles;
    std::vector<float> nearest;
};

// How far a soft edge reaches to each side, at most.
constexpr float kWidestEdge = 0.12f;

using Shadows = std::vector<std::shared_ptr<Shadow>>;

// towards  where the lamp is
// count    how many lamps there are, which share the memory
std::shared_ptr<Shadow> makeShadow(const Vector& towards, const Color& color,
                                   const Settings& settings, std::size_t count);

// Begins the frame whose scene is to be all that throws shadows.
void beginShadow(Shadow& shadow, const Settings& settings);

// Whether any part of what is made of a material may throw a shadow.
bool throwsShadow(const Material& material);

// Adds the lamp. Its opacity is 1 but for what the shadow takes of its light.
void addShadowLight(std::shared_ptr<const Shadow> shadow, const Camera& camera);

}  // namespace zebview
