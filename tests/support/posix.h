// Signals, processes and rights, for tests of what a system like Unix can do to a host.
#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>

namespace zebtest
{

// While it lives, the process may do no more than anybody: the superuser may do everything.
class Nobody
{
public:
    Nobody() : fUser(geteuid()), fGroup(getegid())
    {
        if (fUser != 0) return;
        fGood = setegid(65534) == 0 && seteuid(65534) == 0;
    }
    ~Nobody()
    {
        if (fUser == 0) fGood = seteuid(fUser) == 0 && setegid(fGroup) == 0;
    }
    Nobody(const Nobody&) = delete;
    Nobody& operator=(const Nobody&) = delete;

private:
    uid_t fUser;
    gid_t fGroup;
    bool fGood = true;
};

// While it lives, no file of the process may grow beyond some bytes.
class FileLimit
{
public:
    explicit FileLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &fBefore);
        const rlimit limit{bytes, fBefore.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileLimit() { setrlimit(RLIMIT_FSIZE, &fBefore); }
    FileLimit(const FileLimit&) = delete;
    FileLimit& operator=(const FileLimit&) = delete;

private:
    rlimit fBefore;
};

// Counts a signal while it lives. The handler is one that cuts system calls short.
class SignalCount
{
public:
    explicit SignalCount(int signal) : fSignal(signal)
    {
        count() = 0;
        struct sigaction action = {};
        action.sa_handler = [](int) { ++count(); };
        sigaction(fSignal, &action, &fBefore);
    }
    ~SignalCount() { sigaction(fSignal, &fBefore, nullptr); }
    SignalCount(const SignalCount&) = delete;
    SignalCount& operator=(const SignalCount&) = delete;

    static std::atomic<int>& count()
    {
        static std::atomic<int> theCount;
        return theCount;
    }

private:
    int fSignal;
    struct sigaction fBefore;
};

// Waits until a thread sleeps in a system call.
inline void untilAsleep(pid_t thread)
{
    std::string text;
    do {
        std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
        std::getline(file, text);
    } while (text.substr(text.rfind(')') + 2, 1) != "S");
}

// Sends the signal so often to a thread that sleeps, and each time waits for its handler.
inline void interrupt(pthread_t thread, pid_t id, int signal, int times)
{
    const int before = SignalCount::count();
    for (int k = 1; k <= times; ++k) {
        untilAsleep(id);
        pthread_kill(thread, signal);
        while (SignalCount::count() < before + k) std::this_thread::yield();
    }
}

// The status of a process that runs a function and ends with what it returns.
template <class Function>
int inChild(const Function& function)
{
    const pid_t child = fork();
    if (child == 0) _exit(function());
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

}  // namespace zebtest
