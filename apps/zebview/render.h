// One view of a model, rendered.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "camera.h"
#include "environment.h"
#include "model.h"
#include "settings.h"
#include "zebcore/zebcore.h"

namespace zebview
{

struct Destination {
    std::string name;                    // of an OpenEXR file
    const ZebDisplay* device = nullptr;  // which the picture goes to instead
    long number = 0, count = 1;          // of the view, among all
    bool isModelsLast = false;           // its meshes may be released on the way
};

// From now on rendering ends if the user interrupts it.
void listenToStops();

// Asked from time to time; false once the picture is given up, for good.
using GoesOn = std::function<bool()>;

// Renders to the destination. False if there can be no picture; then there is no file either.
//
// environment  null: there is none
bool renderPicture(Model& model, const Camera& camera, const Settings& settings,
                   const std::shared_ptr<const Environment>& environment,
                   const Destination& destination, const GoesOn& goesOn);

// Does so, and shows how far it is. If it is false, the user knows why.
bool renderView(Model& model, const Camera& camera, const Settings& settings,
                const std::shared_ptr<const Environment>& environment,
                const Destination& destination);

}  // namespace zebview
