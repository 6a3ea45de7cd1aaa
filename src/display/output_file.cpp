#include "display/output_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <random>
namespace zeb
{

namespace
{

namespace fs = std::filesystem;

constexpr std::size_t kChunk = 1 << 16;
constexpr int kAttempts = 100;
constexpr int kMostLinks = 40;

// The names of temporary files: that of the file to be, sixteen digits, an ending.
constexpr int kDigits = 16;
constexpr const char* kEnding = ".part";
// Stands for names that leave no room for more.
constexpr const char* kShortStem = "zeb";

fs::path temporaryName(const fs::path& stem, std::uint64_t number)
{
    std::string digits(kDigits, '0');
    for (char& digit : digits) {
        digit = "0123456789abcdef"[number & 15];
        number >>= 4;
    }
    fs::path name = stem;
    return name += "." + digits + kEnding;
}

bool isTemporaryName(const fs::path& name, const fs::path& stem)
{
    const fs::path::string_type &text = name.native(), &start = stem.native();
    const std::size_t size = temporaryName(stem, 0).native().size();
    if (text.size() != size || text.compare(0, start.size(), start) != 0) return false;
    const fs::path rest = text.substr(start.size());
    const std::string middle = rest.stem().string();
    return rest.extension() == kEnding && middle.size() == kDigits + 1 && middle[0] == '.' &&
           middle.find_first_not_of("0123456789abcdef", 1) == std::string::npos;
}

// Processes that ended before their time may have left some.
void removeAbandoned(const fs::path& folder, const fs::path& stem)
{
    std::error_code failed;
    fs::directory_iterator entry(folder, failed);
    for (; !failed && entry != fs::directory_iterator(); entry.increment(failed)) {
        if (isTemporaryName(entry->path().filename(), stem))
            Descriptor::removeUnclaimed(entry->path());
    }
}

// Where links at the end of a path lead to, whether there is something or not.
fs::path followed(fs::path path)
{
    std::error_code failed;
    for (int k = 0; k < kMostLinks && fs::is_symlink(fs::symlink_status(path, failed)); ++k) {
        path = path.parent_path() / fs::read_symlink(path, failed);
    }
    return path;
}

bool isRefusal(int why) { return why == EACCES || why == EPERM || why == EROFS; }

}  // namespace

std::uint64_t randomNumber()
try {
    std::random_device device;
    return std::uint64_t{device()} << 32 | device();
} catch (const std::exception&) {
    static std::uint64_t count = 0;
    return (static_cast<std::uint64_t>(processId()) << 32) + ++count;
}

// What errno says.
bool OutputFile::failed()
{
    fail(std::strerror(errno));
    return false;
}

void OutputFile::fail(const std::string& why)
{
    if (fWhy.empty()) fWhy = why.empty() ? "no reason given" : why;
}

bool OutputFile::isUsable()
{
    if (fOwner != processId()) fail("another process opened it");
    return fWhy.empty();
}

bool OutputFile::open(const fs::path& path, std::uint64_t (*random)())
{
    std::error_code unknown;
    const fs::file_status status = fs::status(path, unknown);
    if (status.type() == fs::file_type::none) {
        fail(unknown.message());
        return false;
    }
    fOwner = processId();
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        fPlace = Place::kDevice;
        fFile = Descriptor::open(path);
        return fFile || failed();
    }
    const bool replaces = fs::exists(status);
    // A host may change its folder meanwhile.
    const fs::path named = fs::absolute(path, unknown);
    fPath = followed(named);
    // The system itself has links that look as if they led somewhere else. What is no link is not
    // looked at twice: meanwhile another process may have replaced it.
    const bool same = !replaces || fPath == named || fs::equivalent(path, fPath, unknown);
    if (same && openBeside(random, replaces)) return true;
    const int why = same ? errno : EACCES;
    if (!replaces || !isRefusal(why)) return failed();
    fPlace = Place::kOver;
    fFile = Descriptor::open(path);
    if (fFile && fFile.isRegular()) return true;
    fFile.close();
    errno = why;
    return failed();
}

bool OutputFile::openBeside(std::uint64_t (*random)(), bool replaces)
{
    const fs::path folder = fPath.parent_path();
    fs::path stem = fPath.filename();
    errno = EEXIST;
    for (int attempt = 0; attempt < kAttempts && !fFile; ++attempt) {
        const fs::path path = folder / temporaryName(stem, random());
        Descriptor file = Descriptor::create(path, replaces);
        if (!file && errno == ENAMETOOLONG && stem != kShortStem) {
            stem = kShortStem;
        } else if (!file && errno != EEXIST) {
            return false;
        } else if (file && file.claim()) {  // otherwise somebody thinks it abandoned
            fFile = std::move(file);
            fTemporary = path;
        }
    }
    if (!fFile) return false;
    removeAbandoned(folder, stem);
    if (!replaces || fFile.becomeLike(fPath)) return true;
    const int why = errno;
    discard();
    errno = why;
    return false;
}

bool OutputFile::write(const char* bytes, std::size_t size)
{
    if (!isUsable()) return false;
    if (fPlace == Place::kBeside) {
        fBytes.insert(fBytes.end(), bytes, bytes + size);
        fPosition += size;
        return fBytes.size() < kChunk || send();
    }
    const auto start = static_cast<std::size_t>(fPosition);
    if (fBytes.size() < start + size) fBytes.resize(start + size);
    std::copy(bytes, bytes + size, fBytes.begin() + static_cast<std::ptrdiff_t>(start));
    fPosition += size;
    return true;
}

// Sends what is kept.
bool OutputFile::send()
{
    if (!fFile.write(fBytes.data(), fBytes.size())) return failed();
    fBytes.clear();
    return true;
}

bool OutputFile::read(char* bytes, std::size_t size)
{
    if (!isUsable()) return false;
    if (fPlace == Place::kBeside) {
        if (!send()) return false;
        if (!fFile.read(bytes, size)) return errno ? failed() : false;
    } else {
        if (fBytes.size() < fPosition || fBytes.size() - fPosition < size) return false;
        std::copy_n(fBytes.begin() + static_cast<std::ptrdiff_t>(fPosition), size, bytes);
    }
    fPosition += size;
    return true;
}

bool OutputFile::seek(std::uint64_t position)
{
    if (!isUsable()) return false;
    if (fPlace == Place::kBeside && (!send() || !fFile.seek(position))) return failed();
    fPosition = position;
    return true;
}

bool OutputFile::finish()
{
    if (isUsable()) fPlace == Place::kBeside ? replace() : overwrite();
    discard();
    return fWhy.empty();
}

bool OutputFile::replace()
{
    // Nobody is to take the file for an abandoned one before it has its name.
    const Descriptor claim = fFile.duplicate();
    if (!send()) return false;
    if (!fFile.sync() || !fFile.close()) return failed();
    std::error_code problem;
    fs::rename(fTemporary, fPath, problem);
    if (problem) {
        fail(problem.message());
        return false;
    }
    fTemporary.clear();
    return true;
}

bool OutputFile::overwrite()
{
    const std::uint64_t size = fBytes.size();
    bool good = send();
    if (fPlace == Place::kOver) {
        good = good && fFile.cut(size) && fFile.sync();
        if (!good) {
            failed();
            // Rather nothing than half a picture.
            fFile.cut(0);
        }
    }
    return (good && fFile.close()) || failed();
}

void OutputFile::discard()
{
    fFile.close();
    std::error_code ignored;
    if (!fTemporary.empty() && fOwner == processId()) fs::remove(fTemporary, ignored);
    fTemporary.clear();
    fBytes.clear();
}

}  // namespace zeb
