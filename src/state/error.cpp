#include "state/error.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "state/callback.h"
#include "state/report_log.h"
#include "state/upcalls.h"
#include "util/format.h"

namespace zeb
{

ErrorHandler Error::fInfoHandler = zebErrorIgnore;
ErrorHandler Error::fWarningHandler = zebErrorPrint;
ErrorHandler Error::fErrorHandler = zebErrorPrint;
ErrorHandler Error::fSevereHandler = zebErrorAbort;
PrintHandler Error::fPrintHandler = upcall::printMessage;
bool Error::fEnding = false;
long Error::fLastError = 0;
std::atomic<std::new_handler> Error::fStoredNewHandler = nullptr;
thread_local const char* Error::fFuncName = nullptr;
thread_local const char* Error::fAttribName = nullptr;
thread_local const char* Error::fShadingGroup = nullptr;
thread_local const void* CallbackScope::fInnermost = nullptr;
thread_local bool CallbackScope::fShades = false;

namespace
{

constexpr int kMessageSize = 124;

const char* codeText(long code)
{
    switch (code) {
        case 0:
            return "";
        case 1:
            return " Out of memory.";
        case 2:
            return " Optional ZEB feature.";
        case 3:
            return " Probably a bug in renderer.";
        case 4:
            return " Bad begin-end nesting.";
        case 5:
            return " Invalid state for parameters.";
        case 6:
            return " Invalid state for attribs.";
        case 7:
            return " Invalid state for primitives.";
        case 8:
            return " Invalid state.";
        case 9:
            return " Invalid enumerator for request.";
        case 10:
            return " Parameter out of range.";
        case 11:
            return " Parameters inconsistent.";
        case 12:
            return " Bad object/light handle.";
        case 13:
            return " Required parameters not provided.";
        case 14:
            return " Declare type syntax error.";
        case 15:
            return " Undefined mathematical operation.";
        default:
            return nullptr;
    }
}

const char* severityWord(long severity)
{
    switch (severity) {
        case kInfo:
            return "info:";
        case kWarning:
            return "warning:";
        case kSevere:
            return "severe error:";
        default:
            return "error:";
    }
}

bool builtIn(ErrorHandler handler)
{
    return handler == zebErrorIgnore || handler == zebErrorPrint || handler == zebErrorAbort;
}

void printLine(const char* line)
{
    if (!Error::fPrintHandler) return;
    if (Error::fPrintHandler == upcall::printMessage) {
        Error::fPrintHandler(line);
    } else {
        CallbackScope scope;
        Error::fPrintHandler(line);
    }
}

// Prints the parts in one line. Takes no memory for a line of usual length, and cuts longer ones
// when there is none.
void printLine(std::initializer_list<std::string_view> parts)
{
    std::size_t size = 0;
    for (const std::string_view part : parts) size += part.size();
    std::array<char, 512> room;
    const MallocMemory more(size < room.size() ? nullptr : std::malloc(size + 1));
    char* const line = more ? static_cast<char*>(more.get()) : room.data();
    std::size_t left = more ? size : std::min(size, room.size() - 1);
    char* end = line;
    for (const std::string_view part : parts) {
        const std::size_t count = std::min(part.size(), left);
        end = std::copy_n(part.data(), count, end);
        left -= count;
    }
    *end = 0;
    printLine(line);
}

}  // namespace

[[gnu::noinline]] const void* CallbackScope::stackPosition() { return __builtin_frame_address(0); }

bool CallbackScope::allowsCalls()
{
    if (!fShades) return true;
    error(kState, kError, nullptr);
    return false;
}

void report(long code, long severity, const char* message)
{
    if (ReportLog* const log = ReportLog::current()) {
        log->keep(code, severity, message);
        return;
    }
    upcall::settleScene();
    const ErrorHandler handler = severity == kInfo      ? Error::fInfoHandler
                                 : severity == kWarning ? Error::fWarningHandler
                                 : severity == kError   ? Error::fErrorHandler
                                                        : Error::fSevereHandler;
    if (!handler) return;
    if (builtIn(handler)) {
        handler(code, severity, message);
    } else {
        CallbackScope scope;
        handler(code, severity, message);
    }
}

void error(long code, long severity, const char* format, ...)
{
    if (!format) {
        report(code, severity, Error::fFuncName);
        return;
    }
    std::va_list args;
    va_start(args, format);
    verror(code, severity, format, args);
    va_end(args);
}

void verror(long code, long severity, const char* format, std::va_list args)
{
    char message[kMessageSize];
    int used = 0;
    if (Error::fFuncName) {
        used = std::snprintf(message, kMessageSize, "%s: ", Error::fFuncName);
        if (used >= kMessageSize) used = kMessageSize - 1;
    }
    formatMessage(message + used, static_cast<std::size_t>(kMessageSize - used), format, args);
    report(code, severity, message);
}

bool hostHearsReports()
{
    const auto ours = [](ErrorHandler handler) { return !handler || builtIn(handler); };
    return !ours(Error::fInfoHandler) || !ours(Error::fWarningHandler) ||
           !ours(Error::fErrorHandler) || !ours(Error::fSevereHandler) ||
           (Error::fPrintHandler && Error::fPrintHandler != upcall::printMessage);
}

void setErrorHandler(short mask, short kind)
{
    switch (kind) {
        case kIgnoreReports:
            setErrorHandler(mask, zebErrorIgnore);
            break;
        case kPrintReports:
            setErrorHandler(mask, zebErrorPrint);
            break;
        case kAbortOnReports:
            setErrorHandler(mask, zebErrorAbort);
            break;
        default:
            error(kRange, kError, "unknown error handler %d", kind);
    }
}

void setErrorHandler(short mask, ErrorHandler handler)
{
    constexpr int kBits = 0xF;  // of the severities; the rest is their family
    if ((mask & ~kBits) != (kInfo & ~kBits)) {
        error(kRange, kError, "unknown severity mask %ld", static_cast<long>(mask));
        return;
    }
    const auto selects = [mask](Severity severity) { return (mask & severity & kBits) != 0; };
    if (selects(kInfo)) Error::fInfoHandler = handler;
    if (selects(kWarning)) Error::fWarningHandler = handler;
    if (selects(kError)) Error::fErrorHandler = handler;
    if (selects(kSevere)) Error::fSevereHandler = handler;
}

void setErrorPrinter(PrintHandler printer) { Error::fPrintHandler = printer; }

const char* setErrorFuncName(const char* name)
{
    const char* previous = Error::fFuncName;
    Error::fFuncName = name;
    if (!name) {
        if (previous) guardFreeStore(false);
    } else if (!previous) {
        guardFreeStore(true);
    }
    return previous;
}

void setAttribNames(const char* object, const char* group)
{
    Error::fAttribName = object;
    Error::fShadingGroup = group;
}

void zebErrorIgnore(long code, long, const char*) { Error::fLastError = code; }

void zebErrorPrint(long code, long severity, const char* message)
{
    Error::fLastError = code;
    if (!upcall::displayPrints(severity)) return;

    const std::string_view word = severityWord(severity), text = message ? message : "";
    const std::string_view blank = message ? " " : "";
    if (const char* known = codeText(code)) {
        printLine({word, known, blank, text});
    } else {
        char digits[24];
        const char* const end = std::to_chars(digits, digits + sizeof digits, code).ptr;
        const std::string_view number(digits, static_cast<std::size_t>(end - digits));
        printLine({word, " Error code: ", number, blank, text});
    }

    const char *object = Error::fAttribName, *group = Error::fShadingGroup;
    if (severity <= kInfo || (!object && !group)) return;
    printLine({"While rendering ", object ? "object " : "", object ? object : "",
               object && group ? "; " : "", group ? "shading group " : "", group ? group : ""});
}

void zebErrorAbort(long code, long severity, const char* message)
{
    Error::fEnding = severity > kInfo;
    zebErrorPrint(code, severity, message);
    if (Error::fEnding) std::abort();
}

}  // namespace zeb
