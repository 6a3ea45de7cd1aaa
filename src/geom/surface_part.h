// The place of a piece on its surface.
#pragma once

namespace zeb
{

// Where a piece lies in the parameters of its surface: at its corners, u fastest. Of polygons they
// are x and y in object space, and there are three corners.
struct SurfacePart {
    float u[4] = {0, 1, 0, 1}, v[4] = {0, 0, 1, 1};
};

}  // namespace zeb
