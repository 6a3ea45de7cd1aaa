// Renders the plain way: everything diced and shaded, and nothing left out.
#pragma once

#include <cstdlib>

namespace zebtest
{

// Of the worlds that are opened from now on.
inline void renderPlainly(bool on)
{
#ifdef _WIN32
    _putenv_s("ZEBCORE_PLAIN", on ? "1" : "");
#else
    on ? setenv("ZEBCORE_PLAIN", "1", 1) : unsetenv("ZEBCORE_PLAIN");
#endif
}

}  // namespace zebtest
