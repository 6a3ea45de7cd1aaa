#include "util/wide_text.h"

#if defined(_WIN32)

#include <windows.h>

namespace zeb
{

namespace
{

// Empty if the bytes are not in the encoding.
std::wstring decoded(const std::string& bytes, unsigned encoding, unsigned long flags)
{
    const int size = static_cast<int>(bytes.size());
    const int length = MultiByteToWideChar(encoding, flags, bytes.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(encoding, flags, bytes.data(), size, wide.data(), length);
    return wide;
}

}  // namespace

std::wstring wideText(const std::string& bytes)
{
    std::wstring wide = decoded(bytes, CP_UTF8, MB_ERR_INVALID_CHARS);
    if (wide.empty()) wide = decoded(bytes, CP_ACP, 0);
    return wide;
}

}  // namespace zeb

#endif
