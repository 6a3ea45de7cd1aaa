#include "display/module.h"

namespace zeb
{

std::unique_ptr<Module> gModule;

void ModuleCount::attach(void* instance)
{
    if (fAttached++ == 0) gModule = std::make_unique<Module>(instance);
}

void ModuleCount::detach()
{
    if (fAttached > 0 && --fAttached == 0) gModule.reset();
}

}  // namespace zeb
