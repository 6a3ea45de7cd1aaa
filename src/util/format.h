// Formatting of messages.
#pragma once

#include <cstdarg>
#include <cstddef>

namespace zeb
{

// As vsnprintf, with numbers that read the same on every platform and in every locale. Knows what
// messages need: %s, %d, %ld, %u, %lu, %g, %p and %%. The text is cut to the buffer, whose size is
// at least 1.
void formatMessage(char* buffer, std::size_t size, const char* format, std::va_list args);

}  // namespace zeb
