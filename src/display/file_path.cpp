#include "display/file_path.h"

#include "util/wide_text.h"

namespace zeb
{

#if defined(_WIN32)

std::filesystem::path filePath(const std::string& name) { return wideText(name); }

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
