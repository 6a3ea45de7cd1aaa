// Colours, and variables of the host's, that a surface has at its control points.
#pragma once

#include <memory>
#include <vector>

#include "geom/power_form.h"
#include "math/color.h"
#include "state/args.h"

namespace zeb
{

// Values as functions of a surface's parameters, interpolated as its points are. Null members are
// not given.
struct ControlForms {
    struct Variable {
        unsigned short token;
        long width;
        PowerForm form;
    };
    std::shared_ptr<const PowerForm> color, opacity;
    std::vector<Variable> variables;
};

// The values of a piece: of a rectangle of its surface's parameters.
struct PieceValues {
    std::shared_ptr<const ControlForms> forms;
    double umin = 0, umax = 1, vmin = 0, vmax = 1;

    bool hasColor() const { return forms && forms->color; }
    bool hasOpacity() const { return forms && forms->opacity; }
    Color color(float u, float v) const { return colorAt(*forms->color, u, v); }
    Color opacity(float u, float v) const { return colorAt(*forms->opacity, u, v); }
    // Null for a variable that is not given at control points.
    const ControlForms::Variable* find(unsigned short token) const
    {
        if (!forms) return nullptr;
        for (const ControlForms::Variable& variable : forms->variables) {
            if (variable.token == token) return &variable;
        }
        return nullptr;
    }
    Pointd at(const PowerForm& form, double u, double v) const
    {
        return homogenized(form.point((1 - u) * umin + u * umax, (1 - v) * vmin + v * vmax));
    }

private:
    Color colorAt(const PowerForm& form, double u, double v) const
    {
        const Pointd c = at(form, u, v);
        return {static_cast<float>(c.x), static_cast<float>(c.y), static_cast<float>(c.z)};
    }
};

// The values at the control points themselves; empty where none are given. They have the type of
// the points, of which floats and pairs use one and two coordinates: homogeneous ones weigh as much
// as the points do.
template <class ControlPoint>
class ControlValues
{
public:
    ControlValues() = default;
    // Takes colours out of a list; variables stay there, too.
    ControlValues(ArgList& args, const std::vector<ControlPoint>& points);

    // What makeForm() makes of the values, as it does of points; null if there are none.
    template <class MakeForm>
    std::shared_ptr<const ControlForms> forms(const MakeForm& makeForm) const
    {
        if (fColors.empty() && fOpacities.empty() && fVariables.empty()) return nullptr;
        ControlForms result;
        if (!fColors.empty()) {
            result.color = std::make_shared<const PowerForm>(makeForm(fColors));
        }
        if (!fOpacities.empty()) {
            result.opacity = std::make_shared<const PowerForm>(makeForm(fOpacities));
        }
        result.variables.reserve(fVariables.size());
        for (const Variable& variable : fVariables) {
            result.variables.push_back({variable.token, variable.width, makeForm(variable.values)});
        }
        return std::make_shared<const ControlForms>(std::move(result));
    }

private:
    struct Variable {
        unsigned short token;
        long width;
        std::vector<ControlPoint> values;
    };
    std::vector<ControlPoint> fColors, fOpacities;
    std::vector<Variable> fVariables;
};

}  // namespace zeb
