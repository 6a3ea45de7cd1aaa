// The entry point of zebcore.dll. Compiled into the DLL alone.
#include <windows.h>

#include "display/module.h"
#include "display/screen.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID processEnds)
{
    static zeb::ModuleCount count;
    if (reason == DLL_PROCESS_ATTACH) count.attach(instance);
    if (reason == DLL_PROCESS_DETACH) {
        // A process that ends has lost its windows already.
        if (!processEnds) zeb::closeWindows();
        count.detach();
    }
    return TRUE;
}
