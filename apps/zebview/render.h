// One view of a model, rendered.
#pragma once

#include <string>

#include "camera.h"
#include "model.h"
#include "settings.h"
#include "zebcore/zebcore.h"

namespace zebview
{

struct Destination {
    std::string name;                    // of an OpenEXR file or a window
    const ZebDisplay* device = nullptr;  // which the picture goes to instead
    long number = 0, count = 1;          // of the view, among all
    bool isModelsLast = true;            // its meshes may be released on the way
};

// From now on rendering ends if the user interrupts it.
void listenToStops();

// Renders to the destination; a window stays until the user closes it. False if there can be no
// picture; then there is no file either, and the user knows why.
bool renderView(Model& model, const Camera& camera, const Settings& settings,
                const Destination& destination);

}  // namespace zebview
