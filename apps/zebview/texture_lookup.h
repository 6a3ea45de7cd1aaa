// Textures at the points of a row.
#pragma once

#include "material.h"
#include "row.h"

namespace zebview
{

// The name of the variable that holds a channel of texture coordinates. It has to be asked for once
// before anything is rendered.
unsigned short coordinateToken(unsigned channel);

// Where points lie on a picture that covers 0 to 1 by 0 to 1, from the top, and goes on beyond.
struct Coordinates {
    float *s, *t;
};

Coordinates coordinatesOf(const ZebRow& row, const Texture& texture);

// results  as many planes as the map's image has channels, set: 1 where there is no picture
void look(const ZebRow& row, const Map& map, float* const* results);

// Turns unit normals as a map of normals says.
void bendNormals(const ZebRow& row, const Map& map, float scale, const Planes& normals);

}  // namespace zebview
