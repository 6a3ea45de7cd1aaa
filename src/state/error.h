// Error reporting.
#pragma once

#include <atomic>
#include <cstdarg>
#include <initializer_list>
#include <new>

#include "state/free_store.h"
#include "util/report.h"

namespace zeb
{

using ErrorHandler = void (*)(long code, long severity, const char* message);
using PrintHandler = void (*)(const char* line);

struct Error {
    static ErrorHandler fInfoHandler, fWarningHandler, fErrorHandler, fSevereHandler;
    static PrintHandler fPrintHandler;
    static bool fEnding;  // the process ends with the report that is being printed
    // The code of the last report that reached a built-in handler.
    static long fLastError;
    // Read by any thread that runs out of memory.
    static std::atomic<std::new_handler> fStoredNewHandler;
    // Of the thread that reports: the interface function under way, and the object and shading
    // group being rendered.
    static thread_local const char* fFuncName;
    static thread_local const char* fAttribName;
    static thread_local const char* fShadingGroup;
};

void verror(long code, long severity, const char* format, std::va_list args);
// Hands a whole message, or null for none, to the handler of the severity; where reports of this
// thread are kept, to their log.
void report(long code, long severity, const char* message);

// The built-in handlers.
enum HandlerKind : short { kIgnoreReports = 0xC00, kPrintReports, kAbortOnReports };
void setErrorHandler(short mask, short kind);
void setErrorHandler(short mask, ErrorHandler handler);
void setErrorPrinter(PrintHandler printer);
// Answers the previous name. While a name is set, running out of memory is a severe report.
const char* setErrorFuncName(const char* name);
void setAttribNames(const char* object, const char* group);

void zebErrorIgnore(long code, long severity, const char* message);
void zebErrorPrint(long code, long severity, const char* message);
// Aborts the process after printing, but for an info.
void zebErrorAbort(long code, long severity, const char* message);

// Whether anybody hears infos. Those that take some looking for are not made otherwise.
inline bool infosHeard() { return Error::fInfoHandler && Error::fInfoHandler != zebErrorIgnore; }

// Whether reports go to handlers or a printer of the host.
bool hostHearsReports();

// Names the object being rendered for the messages of a scope. Empty names count as none.
class AttribNamesScope
{
public:
    AttribNamesScope(const char* object, const char* group)
    {
        setAttribNames(*object ? object : nullptr, *group ? group : nullptr);
    }
    ~AttribNamesScope() { setAttribNames(nullptr, nullptr); }
    AttribNamesScope(const AttribNamesScope&) = delete;
    AttribNamesScope& operator=(const AttribNamesScope&) = delete;
};

// A host value and its name, for the report if it is not a number.
struct NamedValue {
    const char* name;
    float value;
};

inline bool finiteArguments(std::initializer_list<NamedValue> values)
{
    for (const NamedValue& v : values) {
        if (v.value - v.value == 0) continue;
        error(kRange, kError, "%s %g is not finite", v.name, static_cast<double>(v.value));
        return false;
    }
    return true;
}

template <class... Values>
bool finiteArguments(Values... values)
{
    return finiteArguments({values...});
}

}  // namespace zeb
