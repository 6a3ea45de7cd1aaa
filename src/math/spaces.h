// The frame's camera matrices and the named coordinate spaces.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "math/matrix.h"

namespace zeb
{

// Set when the camera is fixed, at the start of a world block.
extern Matrix gWorldToCamera;
extern Matrix gCameraToScreen;
extern Matrix gScreenToRaster;
extern Matrix gCameraToRaster;

void setCameraToScreen(const Matrix& projection);

// What the named spaces need of the state in force; defined in state/state.cpp.
struct SpaceContext {
    const Matrix& model;
    float nearClip, farClip;
};
SpaceContext spaceContext();

// The spaces that were marked up to a moment: what is marked later does not show.
class MarkedSpaces
{
public:
    static std::shared_ptr<const MarkedSpaces> current();
    // To camera space; null without the space.
    const Matrix* find(unsigned short token) const;

private:
    std::vector<std::pair<unsigned short, Matrix>> fSpaces;
};

// Gives the current coordinate system a name.
void markSpace(unsigned short token);
// Raster 0, image 1, eye 2, all others 3; an unknown space is reported and answered with -1.
long spaceLevel(unsigned short token);
// To the next level down.
const Matrix& spaceMatrix(unsigned short token);
// In place. x and y go through the whole chain; in z the projection is replaced by the clipping
// range. Null if a space is unknown or a matrix singular.
float (*projectPoints(unsigned short from, unsigned short to, long n, float (*points)[3]))[3];

}  // namespace zeb
