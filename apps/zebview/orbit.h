// Where the eye of a window is, as its user moves it.
#pragma once

#include "camera.h"
#include "vector.h"

namespace zebview
{

// The eye goes around a point: the model's middle, where its coordinates begin.
class Orbit
{
public:
    // start   what is seen first; of a camera that has the model's middle behind it, the point lies
    //         in front of it instead
    // radius  of the model
    Orbit(const Camera& start, double radius);

    // Goes to the right and up, in degrees: up to straight above and below.
    void turn(double right, double up);
    // Looks from an azimuth and an elevation, in degrees, upright.
    void lookFrom(double azimuth, double elevation);
    // Looks the same way as another one.
    void lookLike(const Orbit& other);
    // Makes what is seen larger by a factor, by going nearer if there is perspective.
    void zoom(double factor);
    // Moves the model across the picture, in heights of its shorter side.
    void pan(double right, double up);

    // In degrees, as settings have them.
    double azimuth() const;
    double elevation() const;
    Camera camera(long width, long height) const;

private:
    // The picture's directions in the model's space.
    struct Directions {
        Vector right, up, back;
    };
    Directions directions() const;

    Camera fStart;
    double fRadius;
    Directions fFirst;                       // before any turn
    double fTurnedRight = 0, fTurnedUp = 0;  // in degrees
    Vector fPivot;
    Vector fPlace;      // of the pivot: right of the eye, above it, in front of it
    double fScale = 1;  // of what is shown without perspective
};

}  // namespace zebview
