#include "display/file_path.h"

#include "util/wide_text.h"

namespace zeb
{

#if defined(_WIN32)

std::filesystem::path filePath(const std::string& name) { return wideText(name); }

#else

std::filesystem::path filePath(const std::string& name) { return name; }

#endif

}  // namespace zeb
