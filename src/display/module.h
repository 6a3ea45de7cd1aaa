// The loaded library as the operating system knows it.
#pragma once

#include <memory>

namespace zeb
{

// Made for the instance handle of the library: what the resources of the library are found by.
class Module
{
public:
    explicit Module(void* instance) : fInstance(instance) {}
    void* instance() const { return fInstance; }

private:
    void* fInstance;
};

// Null where nothing has attached: always where the library is no DLL.
extern std::unique_ptr<Module> gModule;

// Counts those who are attached. The first makes gModule, and with the last it goes.
class ModuleCount
{
public:
    void attach(void* instance);
    void detach();

private:
    long fAttached = 0;
};

}  // namespace zeb
