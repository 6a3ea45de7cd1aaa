// Functions that shade, for tests.
#pragma once

#include <functional>
#include <utility>

#include "zebcore/zebcore.h"

namespace zebtest
{

// A shader that calls a function, and frees it in the end.
inline ZebShader shader(std::function<void(ZebRow*)> function, long flags = 0)
{
    using Function = std::function<void(ZebRow*)>;
    ZebShader made{};
    made.data = new Function(std::move(function));
    made.shade = [](void* data, ZebRow* row) { (*static_cast<Function*>(data))(row); };
    made.free = [](void* data) { delete static_cast<Function*>(data); };
    made.flags = flags;
    return made;
}

inline void surface(std::function<void(ZebRow*)> function, long flags = 0)
{
    const ZebShader made = shader(std::move(function), flags);
    zebCustomSurface(&made);
}

inline void atmosphere(std::function<void(ZebRow*)> function, long flags = 0)
{
    const ZebShader made = shader(std::move(function), flags);
    zebCustomAtmosphere(&made);
}

inline const void* light(std::function<void(ZebRow*)> function, long flags = 0)
{
    const ZebShader made = shader(std::move(function), flags);
    return zebCustomLight(&made);
}

// Three planes of a row.
struct Planes {
    float* planes[3];

    explicit Planes(const ZebRow* row)
    {
        for (float*& plane : planes) plane = zebRowPlane(row);
    }
    operator float* const*() const { return planes; }
    float* operator[](int axis) const { return planes[axis]; }
};

// Calls visit(point, axis) for all points and axes.
template <class Visit>
void each(const ZebRow* row, const Visit& visit)
{
    for (long k = 0; k < row->count; ++k) {
        for (int axis = 0; axis < 3; ++axis) visit(k, axis);
    }
}

// Ci as the surface "constant" has it.
inline void shine(ZebRow* row)
{
    each(row, [row](long k, int c) { row->Ci[c][k] = row->Os[c][k] * row->Cs[c][k]; });
}

}  // namespace zebtest
