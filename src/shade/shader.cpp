#include "shade/shader.h"

#include <algorithm>

#include "shade/light.h"
#include "shade/surface.h"
#include "shade/volume.h"
#include "state/attrib.h"
#include "state/upcalls.h"
#include "util/report.h"

namespace zeb
{

namespace
{

void tellUnread(const ParmList& parameters, const char* shader, const ArgList& args)
{
    for (const ArgAssoc& assoc : args) {
        const char* const name = Quark::getString(assoc.token);
        if (!name || parameters.has(assoc.token)) continue;
        error(kRange, kInfo, "\"%s\" does not read \"%s\"", shader, name);
    }
}

}  // namespace

void upcall::tellUnread(Surface& surface, const ArgList& args)
{
    zeb::tellUnread(surface.parameters(), surface.name(), args);
}

void upcall::tellUnread(Light& light, const ArgList& args)
{
    zeb::tellUnread(light.parameters(), light.name(), args);
}

void upcall::tellUnread(Volume& volume, const ArgList& args)
{
    zeb::tellUnread(volume.parameters(), volume.name(), args);
}

const char* upcall::surfaceName(const Surface& surface)
{
    return surface.host() ? "custom" : surface.name();
}

bool upcall::surfaceReads(const Surface& surface, unsigned short token)
{
    return surface.host() || surface.clone()->parameters().has(token);
}

void upcall::findHostShading(Attrib& attrib)
{
    attrib.hostShading = HostShading::kNone;
    const auto add = [&](const HostShader* host) {
        if (host) attrib.hostShading = std::max(attrib.hostShading, host->kind());
    };
    const auto addShader = [&](const Shader* shader) { add(shader ? shader->host() : nullptr); };
    const Surface* const surface = attrib.surfaceShader.get();
    addShader(surface);
    addShader(attrib.atmosphereShader.get());
    for (const auto& light : attrib.lights) addShader(light.get());
    attrib.colorsByHost = attrib.hostShading != HostShading::kNone;
    add(attrib.displacementShader.get());
    attrib.opacityByHost = surface && surface->host() && surface->host()->setsOpacity();
}

}  // namespace zeb
