// Threads of the system's pool.
#include <windows.h>

#include <mutex>

#include "util/helpers.h"

namespace zeb
{

namespace
{

// Of the library's own, so that what the host gives the system's does not stand in the way.
class SystemPool
{
public:
    SystemPool() : fPool(CreateThreadpool(nullptr)) {}
    ~SystemPool()
    {
        if (fPool && !Helpers::areKilled()) CloseThreadpool(fPool);
    }
    SystemPool(const SystemPool&) = delete;
    SystemPool& operator=(const SystemPool&) = delete;

    PTP_POOL get() const { return fPool; }
    // So many more are wanted at once, or fewer.
    void want(int more)
    {
        const std::lock_guard lock(fMutex);
        fWanted += more;
        if (fWanted <= fMost) return;
        fMost = fWanted;
        SetThreadpoolThreadMaximum(fPool, static_cast<DWORD>(fMost));
        // Those that come only in need come one by one, and late.
        SetThreadpoolThreadMinimum(fPool, static_cast<DWORD>(fMost));
    }

private:
    const PTP_POOL fPool;
    std::mutex fMutex;
    int fWanted = 0, fMost = 0;
};

SystemPool& pool()
{
    static SystemPool pool;
    return pool;
}

// The library, or the program that it is a part of.
HMODULE module()
{
    HMODULE found = nullptr;
    GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(&pool), &found);
    return found;
}

class PoolHelpers final : public Helpers
{
public:
    PoolHelpers(Helped& helped, int count) : Helpers(count), fHelped(helped)
    {
        if (count == 0) return;
        TP_CALLBACK_ENVIRON environment;
        InitializeThreadpoolEnvironment(&environment);
        SetThreadpoolCallbackPool(&environment, pool().get());
        SetThreadpoolCallbackRunsLong(&environment);
        // Is not unloaded before its code has been left.
        SetThreadpoolCallbackLibrary(&environment, module());
        fWork = pool().get() ? CreateThreadpoolWork(follow, this, &environment) : nullptr;
        DestroyThreadpoolEnvironment(&environment);
        if (!fWork) fCount = 0;
        pool().want(fCount);
    }
    ~PoolHelpers() override
    {
        if (!fWork) return;
        WaitForThreadpoolWorkCallbacks(fWork, TRUE);
        CloseThreadpoolWork(fWork);
        pool().want(-fCount);
    }
    void call() override
    {
        if (fWork) SubmitThreadpoolWork(fWork);
    }

private:
    static void CALLBACK follow(PTP_CALLBACK_INSTANCE, void* helpers, PTP_WORK)
    {
        static_cast<PoolHelpers*>(helpers)->fHelped.help();
    }

    Helped& fHelped;
    PTP_WORK fWork = nullptr;
};

}  // namespace

std::unique_ptr<Helpers> Helpers::get(Helped& helped, int count)
{
    return std::make_unique<PoolHelpers>(helped, count);
}

bool Helpers::areKilled()
{
    // Has no import library.
    static const auto processEnds = reinterpret_cast<BOOLEAN(NTAPI*)()>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlDllShutdownInProgress")));
    return processEnds && processEnds();
}

}  // namespace zeb
