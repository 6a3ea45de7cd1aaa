// Free-form surfaces, handed to the renderer as they are: they are never made polygons.
#pragma once

#include "material.h"
#include "obj_surfaces.h"
#include "stage.h"

namespace zebview
{

// A rational B-spline surface where it belongs.
struct FreeForm {
    struct Way {
        long count, order;
        std::vector<float> knots;
        float min, max;
    };
    Way u, v;
    std::vector<float>
        net;  // a control point: w x, w y, w z, w; or x, y, z where all weights are 1
    bool isRational = false;
    // Two a control point, y upwards, if the material needs them.
    std::vector<float> coordinates;
    std::vector<float> colors;  // three a control point, light; or none
    Material material;
    std::vector<float> points;  // on it, three each: what it takes up
};

// Points on a surface, the same number along each of its spans (L. Piegl, W. Tiller, 1997).
//
// most  how many there are, about
std::vector<Vector> pointsOn(const ObjSurface& surface, double most);

// points  on it, in the file's space. Throws a Failure if it reaches too far for the renderer.
FreeForm placeSurface(const ObjSurface& surface, const std::vector<Vector>& points,
                      const Place& place, const Material& material);

}  // namespace zebview
