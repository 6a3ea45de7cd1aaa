#include "util/string.h"

#include <cstdint>
#include <cstring>
#include <ostream>

#include "util/report.h"

namespace zeb
{

String::String(const char* text) : fLength(text ? std::strlen(text) : 0)
{
    fText.reset(new char[fLength + 1]);
    if (text) std::memcpy(fText.get(), text, fLength);
    fText[fLength] = 0;
}

String& String::operator+=(const String& other)
{
    std::unique_ptr<char[]> joined(new char[fLength + other.fLength + 1]);
    std::memcpy(joined.get(), fText.get(), fLength);
    std::memcpy(joined.get() + fLength, other.fText.get(), other.fLength + 1);
    fLength += other.fLength;
    fText = std::move(joined);
    return *this;
}

char& String::operator[](std::size_t index)
{
    if (index > fLength) {
        error(kBug, kError, "string index out of range");
        index = fLength;
    }
    return fText[index];
}

String::operator const char*() const
{
    return std::strcmp(fText.get(), "null") == 0 ? nullptr : fText.get();
}

// The top four bits stay set, unlike in the common form of this hash: values are kept by hosts.
unsigned long String::hash() const
{
    std::uint32_t h = 0;
    for (const char* c = fText.get(); *c; ++c) {
        h = (h << 4) + static_cast<std::uint32_t>(static_cast<signed char>(*c));
        if (const std::uint32_t top = h & 0xF0000000u) h ^= top >> 24;
    }
    return h;
}

bool operator==(const String& a, const String& b) { return std::strcmp(a.text(), b.text()) == 0; }

String operator+(const String& a, const String& b)
{
    String joined(a);
    joined += b;
    return joined;
}

std::ostream& operator<<(std::ostream& stream, const String& string)
{
    return stream << string.text();
}

}  // namespace zeb
