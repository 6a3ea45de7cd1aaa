// Shapes that lie in the picture, in front of everything.
#pragma once

#include <array>
#include <vector>

#include "camera.h"
#include "color.h"

namespace zebview
{

// In halves of the picture's shorter side from its lower left corner.
struct Spot {
    double x, y;
};

using Point = std::array<float, 3>;

void addPolygon(const std::vector<Point>& corners);

// What follows is of one color that nothing lights.
void setPaint(const Color& color);

// The camera with room for drawings before the model.
Camera roomForDrawings(Camera camera);

// Depths are from 0 to 1, the nearest of the model.
class Drawing
{
public:
    // camera  with room for drawings
    explicit Drawing(const Camera& camera);
    ~Drawing();
    Drawing(const Drawing&) = delete;
    Drawing& operator=(const Drawing&) = delete;

    // The picture's upper right corner.
    Spot end() const;
    void line(Spot from, Spot to, double width, double depth) const;
    void ball(Spot center, double radius, double depth) const;
    Point point(Spot spot, double depth) const;

private:
    const Camera& fCamera;
    const double fUnit;
};

}  // namespace zebview
