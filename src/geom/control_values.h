// Colours that a surface has at its control points.
#pragma once

#include <memory>
#include <vector>

#include "geom/power_form.h"
#include "math/color.h"
#include "state/args.h"

namespace zeb
{

// Colours as functions of a surface's parameters, interpolated as its points are. Null members are
// not given.
struct ColorForms {
    std::shared_ptr<const PowerForm> color, opacity;
};

// The colours of a piece: of a rectangle of its surface's parameters.
struct PieceColors {
    std::shared_ptr<const ColorForms> forms;
    double umin = 0, umax = 1, vmin = 0, vmax = 1;

    bool hasColor() const { return forms && forms->color; }
    bool hasOpacity() const { return forms && forms->opacity; }
    Color color(float u, float v) const { return at(*forms->color, u, v); }
    Color opacity(float u, float v) const { return at(*forms->opacity, u, v); }

private:
    Color at(const PowerForm& form, double u, double v) const
    {
        const Pointd c =
            homogenized(form.point((1 - u) * umin + u * umax, (1 - v) * vmin + v * vmax));
        return {static_cast<float>(c.x), static_cast<float>(c.y), static_cast<float>(c.z)};
    }
};

// The colours at the control points themselves; empty where none are given. They have the type of
// the points: homogeneous ones weigh as much as the points do.
template <class ControlPoint>
class ControlValues
{
public:
    ControlValues() = default;
    // Takes them out of a list.
    ControlValues(ArgList& args, const std::vector<ControlPoint>& points);

    // What makeForm() makes of the colours, as it does of points; null if there are none.
    template <class MakeForm>
    std::shared_ptr<const ColorForms> forms(const MakeForm& makeForm) const
    {
        if (fColors.empty() && fOpacities.empty()) return nullptr;
        ColorForms result;
        if (!fColors.empty()) {
            result.color = std::make_shared<const PowerForm>(makeForm(fColors));
        }
        if (!fOpacities.empty()) {
            result.opacity = std::make_shared<const PowerForm>(makeForm(fOpacities));
        }
        return std::make_shared<const ColorForms>(std::move(result));
    }

private:
    std::vector<ControlPoint> fColors, fOpacities;
};

}  // namespace zeb
