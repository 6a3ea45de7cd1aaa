#include "display/file_path.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace zeb
{

#if defined(_WIN32)

namespace
{

// Empty if the name is not in the encoding.
std::wstring decoded(const std::string& name, unsigned encoding, unsigned long flags)
{
    const int size = static_cast<int>(name.size());
    const int length = MultiByteToWideChar(encoding, flags, name.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(encoding, flags, name.data(), size, wide.data(), length);
    return wide;
}

}  // namespace

std::filesystem::path filePath(const std::string& name)
{
    std::wstring wide = decoded(name, CP_UTF8, MB_ERR_INVALID_CHARS);
    if (wide.empty()) wide = decoded(name, CP_ACP, 0);
    return wide;
}

std::FILE* openForWriting(const std::filesystem::path& path)
{
    return _wfopen(path.c_str(), L"wb");
}

#else

std::filesystem::path filePath(const std::string& name) { return name; }

std::FILE* openForWriting(const std::filesystem::path& path)
{
    return std::fopen(path.c_str(), "wb");
}

#endif

}  // namespace zeb
