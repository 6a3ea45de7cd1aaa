// Text as Windows takes it.
#pragma once

#if defined(_WIN32)

#include <string>

namespace zeb
{

// The text of bytes in UTF-8 or, if they are no UTF-8, in the code page of the system, as older
// hosts write it.
std::wstring wideText(const std::string& bytes);

}  // namespace zeb

#endif
