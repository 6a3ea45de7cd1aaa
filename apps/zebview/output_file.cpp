#include "output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "canvas.h"
#include "failure.h"

namespace zebview
{

namespace fs = std::filesystem;

namespace
{

// Where links lead; the last may lead to what is yet to be made.
fs::path followed(fs::path path)
{
    constexpr int longest = 40;
    std::error_code none;
    for (int i = 0; i < longest && fs::is_symlink(path, none); ++i) {
        const fs::path target = fs::read_symlink(path, none);
        path = target.is_absolute() ? target : path.parent_path() / target;
    }
    return path;
}

// What a new file may be, as the user has set it.
mode_t modeOfNewFiles()
{
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

OutputFile::OutputFile(const std::string& name) : fName(name), fPath(followed(name))
{
    // A reader that has gone away is an error like any other.
    std::signal(SIGPIPE, SIG_IGN);
    if (name == "-") {
        fName = "to standard output";
        if (isatty(STDOUT_FILENO)) throw Failure("standard output is a terminal, not a file");
        const int copy = dup(STDOUT_FILENO);
        if (copy >= 0) fFile.reset(fdopen(copy, "wb"));
        if (!fFile) fail(errno);
        return;
    }
    struct stat found {
    };
    const bool exists = stat(fPath.c_str(), &found) == 0;
    if (!exists && errno != ENOENT) fail(errno);
    if (exists && S_ISDIR(found.st_mode)) fail(EISDIR);
    // A pipe may have no reader before the picture is there.
    if (exists && !S_ISREG(found.st_mode)) return;
    openBeside();
    if (fFile) fchmod(fileno(fFile.get()), exists ? found.st_mode & 0777 : modeOfNewFiles());
}

void OutputFile::openBeside()
{
    std::string name = fPath.string() + ".XXXXXX.part";
    const int descriptor = mkostemps(name.data(), 5, O_CLOEXEC);
    if (descriptor < 0) {
        const int error = errno;
        // Where the folder takes no new file, one that may be written is written over in the end.
        if (access(fPath.c_str(), W_OK) == 0) return;
        fail(error);
    }
    fTemporary = name;
    fFile.reset(fdopen(descriptor, "wb"));
}

OutputFile::~OutputFile()
{
    if (!fTemporary.empty()) unlink(fTemporary.c_str());
}

void OutputFile::save(const Canvas& picture)
{
    if (!fFile) fFile.reset(std::fopen(fPath.c_str(), "wb"));
    if (!fFile) fail(errno);
    if (!picture.write(fFile.get())) fail(errno);
    if (std::fclose(fFile.release()) != 0) fail(errno);
    if (fTemporary.empty()) return;
    if (std::rename(fTemporary.c_str(), fPath.c_str()) != 0) fail(errno);
    fTemporary.clear();
}

void OutputFile::fail(int error) const
{
    throw Failure("cannot write " + fName + ": " + std::strerror(error ? error : EIO));
}

}  // namespace zebview
