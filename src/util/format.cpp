#include "util/format.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>

namespace zeb
{

namespace
{

class Text
{
public:
    Text(char* buffer, std::size_t size) : fNext(buffer), fEnd(buffer + size - 1) {}
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    ~Text() { *fNext = 0; }

    // What has no room is left out with all that follows, a character of several bytes in UTF-8
    // as a whole.
    void add(std::string_view text)
    {
        auto size = std::min(text.size(), static_cast<std::size_t>(fEnd - fNext));
        const auto continues = [&](std::size_t i) { return (text[i] & 0xC0) == 0x80; };
        const bool full = size < text.size();
        while (full && size > 0 && continues(size)) --size;
        fNext = std::copy_n(text.data(), size, fNext);
        if (full) fEnd = fNext;
    }
    template <class... Arguments>
    void addNumber(Arguments... arguments)
    {
        char digits[32];
        const auto result = std::to_chars(digits, digits + sizeof digits, arguments...);
        add({digits, static_cast<std::size_t>(result.ptr - digits)});
    }

private:
    char* fNext;
    char* fEnd;
};

std::string_view orNull(const char* text) { return text ? text : "(null)"; }

}  // namespace

void formatMessage(char* buffer, std::size_t size, const char* format, std::va_list args)
{
    Text text(buffer, size);
    for (; *format; ++format) {
        if (*format != '%') {
            text.add({format, 1});
            continue;
        }
        const bool wide = *++format == 'l';
        if (wide) ++format;
        switch (*format) {
            case 'd':
                text.addNumber(wide ? va_arg(args, long) : long{va_arg(args, int)});
                break;
            case 'u':
                text.addNumber(wide ? va_arg(args, unsigned long)
                                    : static_cast<unsigned long>(va_arg(args, unsigned)));
                break;
            case 'p':
                text.add("0x");
                text.addNumber(reinterpret_cast<std::uintptr_t>(va_arg(args, const void*)), 16);
                break;
            case 'g':
                text.addNumber(va_arg(args, double), std::chars_format::general, 6);
                break;
            case 's':
                text.add(orNull(va_arg(args, const char*)));
                break;
            case 0:
                return;
            default:
                text.add({format, 1});
        }
    }
}

}  // namespace zeb
