#pragma once

#include <algorithm>
#include <functional>

#include "model.h"
#include "settings.h"

namespace zebview
{

// A camera that shows all of a model, with a margin: as large as the picture allows, or so that it
// would fit whichever side it is seen from.
struct Camera {
    float toCamera[4][4];  // row vectors: x right, y up, z away from the eye
    float fov;             // degrees; 0 without perspective
    // Of the picture, where half the field of view makes 1; without perspective, distances.
    float halfWidth, halfHeight;
    float nearest, farthest;  // distances along z, the model being between them
};

// How large a pixel is, by the distance along z.
class PixelSize
{
public:
    PixelSize(const Camera& camera, const Settings& settings);

    double at(double distance) const
    {
        return fHasPerspective ? fSize * std::max(distance, fNearest) : fSize;
    }

private:
    const bool fHasPerspective;
    const double fNearest, fSize;
};

// Sets where a camera is and where it looks.
//
// right, up, depth  the picture's directions
// offset            of the origin: right of the eye, above it, in front of it
void setMatrix(const Vector& right, const Vector& up, const Vector& depth, const Vector& offset,
               Camera& camera);

// The same for all frames of a model that moves, but for the azimuth.
//
// azimuth  where the eye is, instead of what the settings say
Camera frameModel(const Model& model, double azimuth, const Settings& settings);

// A camera of the file: what it shows is shown whole.
//
// turn  how far it goes to the right around the model first, in degrees
Camera lookThrough(const FileCamera& source, double turn, const Model& model,
                   const Settings& settings);

// The points of a model: of one that moves, of those in all frames the farthest; of very many
// copies what bounds them; of surfaces so many that there is hardly anything beyond.
void everyPoint(const Model& model, const std::function<void(const Vector&)>& visit);

// Of the sphere around the origin that holds all of a model.
double radiusOf(const Model& model);

// The camera that the settings ask for.
//
// turned  how far to the right of where they have it, in degrees
Camera chooseCamera(const Model& model, double turned, const Settings& settings);

}  // namespace zebview
