// Offsets of 64 bits, on systems of 32 bits too.
#define _FILE_OFFSET_BITS 64

#include "display/descriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#if defined(_WIN32)
#include <io.h>
#else
#include <sys/file.h>

#include <csignal>
#include <ctime>
#endif

namespace zeb
{

namespace
{

template <class Call>
auto uninterrupted(const Call& call)
{
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

#if defined(_WIN32)

constexpr int kFlags = O_BINARY | O_NOINHERIT;

int openPath(const std::filesystem::path& path, int flags, int mode)
{
    return _wopen(path.c_str(), flags | kFlags, mode);
}

struct WriteSignals {
    void consume(int) {}
};

#else

int openPath(const std::filesystem::path& path, int flags, int mode)
{
    return uninterrupted([&] { return ::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode); });
}

// Keeps from the host what a failing write sends to its thread: that a pipe has no reader, or that
// a file may not grow. What was pending before stays.
class WriteSignals
{
public:
    WriteSignals()
    {
        sigset_t pending;
        sigpending(&pending);
        sigemptyset(&fSignals);
        for (const int signal : {SIGPIPE, SIGXFSZ}) {
            if (!sigismember(&pending, signal)) sigaddset(&fSignals, signal);
        }
        pthread_sigmask(SIG_BLOCK, &fSignals, &fMask);
    }
    ~WriteSignals() { pthread_sigmask(SIG_SETMASK, &fMask, nullptr); }
    WriteSignals(const WriteSignals&) = delete;
    WriteSignals& operator=(const WriteSignals&) = delete;

    // Takes the signal that came with the error of a write.
    void consume(int error) const
    {
        const int signal = error == EPIPE ? SIGPIPE : error == EFBIG ? SIGXFSZ : 0;
        if (!signal || !sigismember(&fSignals, signal)) return;
        sigset_t one;
        sigemptyset(&one);
        sigaddset(&one, signal);
        const timespec now{};
        uninterrupted([&] { return sigtimedwait(&one, nullptr, &now); });
    }

private:
    sigset_t fSignals, fMask;
};

#endif

}  // namespace

Descriptor Descriptor::create(const std::filesystem::path& path, bool isPrivate)
{
    int flags = O_RDWR | O_CREAT | O_EXCL;
#if defined(O_NOFOLLOW)
    flags |= O_NOFOLLOW;
#endif
    return Descriptor(openPath(path, flags, isPrivate ? 0600 : 0666));
}

Descriptor Descriptor::open(const std::filesystem::path& path)
{
    return Descriptor(openPath(path, O_WRONLY, 0));
}

bool Descriptor::write(const char* bytes, std::size_t size) const
{
    WriteSignals signals;
    constexpr std::size_t kMost = 1 << 20;
    while (size > 0) {
        const auto part = static_cast<unsigned>(std::min(size, kMost));
        const auto written = uninterrupted([&] { return ::write(fNumber, bytes, part); });
        if (written < 1) {
            const int why = written < 0 ? errno : EIO;
            signals.consume(why);
            errno = why;
            return false;
        }
        bytes += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

bool Descriptor::read(char* bytes, std::size_t size) const
{
    while (size > 0) {
        const auto part = static_cast<unsigned>(std::min(size, std::size_t{1} << 20));
        const auto got = uninterrupted([&] { return ::read(fNumber, bytes, part); });
        if (got == 0) errno = 0;
        if (got <= 0) return false;
        bytes += got;
        size -= static_cast<std::size_t>(got);
    }
    return true;
}

bool Descriptor::seek(std::uint64_t position) const
{
    return lseek(fNumber, static_cast<off_t>(position), SEEK_SET) >= 0;
}

bool Descriptor::cut(std::uint64_t size) const
{
    return uninterrupted([&] { return ftruncate(fNumber, static_cast<off_t>(size)); }) == 0;
}

bool Descriptor::close()
{
    // Whatever comes back, the number is free: to close it once more could hit another file.
    return !*this || ::close(std::exchange(fNumber, -1)) == 0;
}

bool Descriptor::isRegular() const
{
    struct stat status;
    return fstat(fNumber, &status) == 0 && S_ISREG(status.st_mode);
}

#if defined(_WIN32)

bool Descriptor::sync() const { return _commit(fNumber) == 0; }
bool Descriptor::becomeLike(const std::filesystem::path&) const { return true; }
// An open file can't be removed.
bool Descriptor::claim() const { return true; }
Descriptor Descriptor::duplicate() const { return Descriptor(); }

void Descriptor::removeUnclaimed(const std::filesystem::path& path)
{
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

#else

bool Descriptor::sync() const
{
    return uninterrupted([&] { return fsync(fNumber); }) == 0;
}

bool Descriptor::becomeLike(const std::filesystem::path& other) const
{
    struct stat wanted, own;
    if (stat(other.c_str(), &wanted) != 0 || fstat(fNumber, &own) != 0) return false;
    const bool sameOwner = own.st_uid == wanted.st_uid && own.st_gid == wanted.st_gid;
    if (!sameOwner && fchown(fNumber, wanted.st_uid, wanted.st_gid) != 0) return false;
    return fchmod(fNumber, wanted.st_mode & 07777) == 0;
}

bool Descriptor::claim() const
{
    // Where there are no locks nothing is removed either.
    const auto lock = [&] { return flock(fNumber, LOCK_EX | LOCK_NB); };
    if (uninterrupted(lock) != 0 && errno == EWOULDBLOCK) return false;
    struct stat status;
    return fstat(fNumber, &status) == 0 && status.st_nlink > 0;
}

Descriptor Descriptor::duplicate() const { return Descriptor(fcntl(fNumber, F_DUPFD_CLOEXEC, 0)); }

void Descriptor::removeUnclaimed(const std::filesystem::path& path)
{
    // Not to wait for a reader where somebody has put a pipe in its place.
    const Descriptor file(openPath(path, O_RDONLY | O_NONBLOCK | O_NOFOLLOW, 0));
    if (!file || !file.isRegular()) return;
    const auto lock = [&] { return flock(file.fNumber, LOCK_EX | LOCK_NB); };
    if (uninterrupted(lock) == 0) ::unlink(path.c_str());
}

#endif

long processId() { return getpid(); }

}  // namespace zeb
