// The entry point of zebcore.dll. Compiled into the DLL alone.
#include <windows.h>

#include "display/module.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID)
{
    static zeb::ModuleCount count;
    if (reason == DLL_PROCESS_ATTACH) count.attach(instance);
    if (reason == DLL_PROCESS_DETACH) count.detach();
    return TRUE;
}
