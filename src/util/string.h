// The counted character string of names.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <memory>

namespace zeb
{

class String
{
public:
    String() : String(nullptr) {}
    // A null text gives the empty string.
    String(const char* text);
    String(const String& other) : String(other.fText.get()) {}
    String(String&& other) noexcept : String(nullptr) { swap(other); }
    String& operator=(String other) noexcept
    {
        swap(other);
        return *this;
    }

    std::size_t length() const { return fLength; }
    bool empty() const { return fLength == 0; }
    const char* text() const { return fText.get(); }

    String& operator+=(const String& other);
    // The terminator at and past the end; past it the index is reported.
    char& operator[](std::size_t index);
    // A string that reads "null" stands for no string at all.
    operator const char*() const;
    unsigned long hash() const;

private:
    void swap(String& other) noexcept
    {
        fText.swap(other.fText);
        std::swap(fLength, other.fLength);
    }

    std::unique_ptr<char[]> fText;
    std::size_t fLength;
};

bool operator==(const String& a, const String& b);
inline bool operator!=(const String& a, const String& b) { return !(a == b); }
String operator+(const String& a, const String& b);
std::ostream& operator<<(std::ostream& stream, const String& string);

}  // namespace zeb
