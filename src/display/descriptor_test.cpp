#include "display/descriptor.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#if !defined(_WIN32)

#include <sys/stat.h>

#include "support/folder.h"
#include "support/posix.h"

namespace zeb
{

namespace
{

using zebtest::SignalCount;

// A pipe whose writing end is a descriptor.
struct Pipe {
    Pipe()
    {
        if (pipe(ends) == 0) writer = Descriptor(ends[1]);
    }
    ~Pipe() { close(ends[0]); }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int ends[2] = {-1, -1};
    Descriptor writer;
};

bool isPending(int signal)
{
    sigset_t pending;
    sigpending(&pending);
    return sigismember(&pending, signal) == 1;
}

bool isBlocked(int signal)
{
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    return sigismember(&mask, signal) == 1;
}

}  // namespace

TEST(Descriptor, ASignalCutsNoWriteShort)
{
    const SignalCount count(SIGUSR1);
    Pipe pipe;
    // More than a pipe takes at once: a write waits for the reader.
    const std::string sent(3 << 20, 'x');
    std::size_t got = 0;
    std::thread reader([&, writer = pthread_self(), id = gettid()] {
        // The first may find a part written, the second finds nothing written.
        zebtest::interrupt(writer, id, SIGUSR1, 3);
        std::vector<char> bytes(1 << 16);
        for (ssize_t n = 1; n > 0; got += static_cast<std::size_t>(n)) {
            n = read(pipe.ends[0], bytes.data(), bytes.size());
        }
    });
    EXPECT_TRUE(pipe.writer.write(sent.data(), sent.size())) << std::strerror(errno);
    EXPECT_TRUE(pipe.writer.close());
    reader.join();
    EXPECT_EQ(got, sent.size());
    EXPECT_EQ(SignalCount::count(), 3);
}

TEST(Descriptor, ASignalDoesNotEndTheWaitForAReader)
{
    const SignalCount count(SIGUSR1);
    const zebtest::Folder folder;
    const std::string path = folder / "pipe";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    int end = -1;
    std::thread reader([&, writer = pthread_self(), id = gettid()] {
        zebtest::interrupt(writer, id, SIGUSR1, 2);
        end = open(path.c_str(), O_RDONLY | O_NONBLOCK);
    });
    EXPECT_TRUE(Descriptor::open(path)) << std::strerror(errno);
    reader.join();
    close(end);
}

TEST(Descriptor, APipeWithoutAReaderFailsAndSendsNoSignal)
{
    const SignalCount count(SIGPIPE);
    Pipe pipe;
    close(pipe.ends[0]);
    EXPECT_FALSE(pipe.writer.write("x", 1));
    EXPECT_EQ(errno, EPIPE);
    EXPECT_EQ(SignalCount::count(), 0);
    EXPECT_FALSE(isPending(SIGPIPE));
    EXPECT_FALSE(isBlocked(SIGPIPE)) << "as it was";
}

TEST(Descriptor, AnIgnoredSignalStaysIgnored)
{
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    Pipe pipe;
    close(pipe.ends[0]);
    EXPECT_FALSE(pipe.writer.write("x", 1));
    EXPECT_EQ(errno, EPIPE);
    EXPECT_EQ(std::signal(SIGPIPE, before), SIG_IGN);
    EXPECT_FALSE(isBlocked(SIGPIPE));
}

// A signal that waits for the host to let it through is the host's.
TEST(Descriptor, ASignalThatWaitedBeforeStays)
{
    const SignalCount count(SIGPIPE);
    sigset_t set, before;
    sigemptyset(&set);
    sigaddset(&set, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &set, &before);
    pthread_kill(pthread_self(), SIGPIPE);
    Pipe pipe;
    EXPECT_TRUE(pipe.writer.write("x", 1));
    EXPECT_TRUE(isPending(SIGPIPE));
    close(pipe.ends[0]);
    EXPECT_FALSE(pipe.writer.write("x", 1));
    EXPECT_TRUE(isPending(SIGPIPE));
    EXPECT_TRUE(isBlocked(SIGPIPE));
    EXPECT_EQ(SignalCount::count(), 0);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    EXPECT_EQ(SignalCount::count(), 1);
}

TEST(Descriptor, AFileThatMayNotGrowFailsAndSendsNoSignal)
{
    const SignalCount count(SIGXFSZ);
    const zebtest::Folder folder;
    const Descriptor file = Descriptor::create(folder / "a", false);
    const zebtest::FileLimit limit(5);
    EXPECT_FALSE(file.write("0123456789", 10));
    EXPECT_EQ(errno, EFBIG);
    EXPECT_EQ(SignalCount::count(), 0);
    EXPECT_FALSE(isPending(SIGXFSZ));
    EXPECT_EQ(zebtest::contents(folder / "a"), "01234");
}

TEST(Descriptor, WhatCantBeKeptSaysSo)
{
    const Pipe pipe;
    EXPECT_FALSE(pipe.writer.sync());
    EXPECT_EQ(errno, EINVAL);
}

TEST(Descriptor, AClaimedFileIsNotRemoved)
{
    const zebtest::Folder folder;
    const auto path = folder / "a";
    Descriptor file = Descriptor::create(path, false);
    EXPECT_TRUE(file.claim());
    Descriptor again = file.duplicate();
    EXPECT_TRUE(file.close());
    Descriptor::removeUnclaimed(path);
    EXPECT_TRUE(std::filesystem::exists(path)) << "the duplicate holds it";
    EXPECT_TRUE(again.close());
    Descriptor::removeUnclaimed(path);
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(Descriptor, AFileThatIsBeingRemovedCantBeClaimed)
{
    const zebtest::Folder folder;
    const Descriptor file = Descriptor::create(folder / "a", false);
    Descriptor::removeUnclaimed(folder / "a");
    EXPECT_FALSE(file.claim()) << "it has no name any more";
    const Descriptor mine = Descriptor::create(folder / "b", false);
    const Descriptor other = Descriptor::open(folder / "b");
    EXPECT_TRUE(other.claim());
    EXPECT_FALSE(mine.claim()) << "somebody else has";
}

}  // namespace zeb

#endif
