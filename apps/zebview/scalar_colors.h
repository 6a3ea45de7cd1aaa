// A model's scalar as colors.
#pragma once

#include <memory>
#include <optional>

#include "camera.h"
#include "colormap.h"
#include "mesh.h"
#include "model.h"
#include "row.h"

namespace zebview
{

// The name of the variable that holds places on the map. It has to be asked for once before
// anything is rendered.
unsigned short scalarToken();

class ScalarColors
{
public:
    // Of primitives that have the variable.
    explicit ScalarColors(std::shared_ptr<const Colormap> map) : fMap(std::move(map)) {}
    // Of a model that shows a scalar.
    ScalarColors(std::shared_ptr<const Colormap> map, const Model& model, const Camera& camera);

    // Of a vertex at a place of the model, as light.
    const Color& at(const Mesh& mesh, std::size_t vertex, const Vector& point) const;
    // Of a row's points, as light.
    void find(const ZebRow& row, const Planes& colors) const;

private:
    // Where points of a space lie on the map.
    struct Slope {
        Vector way;
        double offset;

        float at(const Vector& p) const { return static_cast<float>(way * p + offset); }
    };

    std::shared_ptr<const Colormap> fMap;
    // Of places along an axis, in the model's space and in that of the camera.
    std::optional<Slope> fInModel, fInCamera;
};

}  // namespace zebview
