#include "texture_files.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <fstream>
#include <optional>

#include "failure.h"

namespace zebview
{

namespace
{

namespace fs = std::filesystem;

constexpr std::uintmax_t kMostBytes = std::uintmax_t{1} << 29;

// What stands for a byte in an address, such as %20.
std::string decoded(const std::string& text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        unsigned char byte = 0;
        const char* const digits = text.data() + i + 1;
        if (text[i] == '%' && i + 2 < text.size() &&
            std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2 && byte != 0) {
            result += static_cast<char>(byte);
            i += 2;
        } else {
            result += text[i];
        }
    }
    return result;
}

std::string lowered(std::string text)
{
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// The file itself or, as some systems do not tell capitals, one that is called nearly so.
std::optional<fs::path> sameName(const fs::path& wanted)
{
    std::error_code failed;
    if (fs::exists(wanted, failed)) return wanted;
    const std::string name = lowered(wanted.filename().string());
    for (fs::directory_iterator entry(wanted.parent_path(), failed), end; !failed && entry != end;
         entry.increment(failed)) {
        if (lowered(entry->path().filename().string()) == name) return entry->path();
    }
    return std::nullopt;
}

bool isInside(const fs::path& file, const fs::path& folder)
{
    return std::mismatch(folder.begin(), folder.end(), file.begin(), file.end()).first ==
           folder.end();
}

// Where it really lies, if that is within the folder.
std::optional<fs::path> within(const fs::path& folder, const fs::path& wanted)
{
    std::error_code failed;
    // Nothing outside is looked at, not even for what there is.
    const fs::path parent = fs::weakly_canonical(wanted.parent_path(), failed);
    if (failed || !isInside(parent, folder)) return std::nullopt;
    const auto found = sameName(parent / wanted.filename());
    if (!found) return std::nullopt;
    const fs::path file = fs::canonical(*found, failed);
    if (failed || !isInside(file, folder) || !fs::is_regular_file(file, failed)) {
        return std::nullopt;
    }
    return file;
}

// The names that a file may go by: those of other systems, and of addresses, come last.
std::vector<fs::path> spellings(const std::string& name)
{
    std::string text = name;
    std::replace(text.begin(), text.end(), '\\', '/');
    if (text.starts_with("file://")) text.erase(0, 7);
    std::vector<fs::path> result;
    for (const std::string& one : {name, text, decoded(text)}) {
        if (std::find(result.begin(), result.end(), one) == result.end()) result.emplace_back(one);
    }
    return result;
}

}  // namespace

TextureFiles::TextureFiles(const std::string& model, const std::string& more)
{
    std::error_code failed;
    const fs::path own = fs::canonical(fs::absolute(model, failed).parent_path(), failed);
    if (!failed) fFolders.push_back(own);
    if (more.empty()) return;
    const fs::path added = fs::canonical(more, failed);
    if (!failed) fFolders.push_back(added);
}

std::vector<std::uint8_t> TextureFiles::read(const std::string& name) const
{
    std::optional<fs::path> path;
    // A joined name that is absolute is itself.
    for (const fs::path& folder : fFolders) {
        for (const fs::path& one : spellings(name)) {
            if (!path && one.has_filename()) path = within(folder, folder / one);
        }
    }
    for (const fs::path& folder : fFolders) {
        for (const fs::path& one : spellings(name)) {
            if (!path && one.has_filename()) path = within(folder, folder / one.filename());
        }
    }
    if (!path) throw Failure("it is not in the model's folder; --textures DIR names another");
    std::error_code failed;
    const std::uintmax_t size = fs::file_size(*path, failed);
    if (failed || size > kMostBytes) throw Failure("the file is larger than 512 MiB");
    std::ifstream file(*path, std::ios::binary);
    std::vector<std::uint8_t> bytes(size);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
    if (!file) throw Failure("the file cannot be read");
    return bytes;
}

}  // namespace zebview
