// The free-form surfaces of Wavefront OBJ files, read as they stand there and made B-splines,
// exactly.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "spline_kind.h"
#include "vector.h"

namespace zebview
{

// Its control points come in rows, u running fastest.
struct ObjSurface {
    std::size_t line = 0;  // of the file
    SplineWay u, v;
    std::vector<Vector> points;
    std::vector<double> weights;
    std::vector<float> coordinates;  // two a control point; or none
    std::vector<float> colors;       // three, as they are shown; or none
    std::string material;            // its name; or none
};

struct ObjSurfaces {
    std::vector<ObjSurface> surfaces;
    std::string rest;  // of the file: polygons, groups and the names of materials
};

// None if it is not an OBJ file, or has no free-form surfaces and curves. Those that are not well
// formed are left out, with a line on standard error for each.
std::optional<ObjSurfaces> readObjSurfaces(const std::string& file);

}  // namespace zebview
