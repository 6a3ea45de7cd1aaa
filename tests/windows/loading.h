// The DLL as hosts load it while they run.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>

namespace zebtest
{

// A copy of the DLL under another name: this program holds the DLL itself to its end.
class Loading : public testing::Test
{
protected:
    Loading() : path(std::filesystem::path(testing::TempDir()) / "zeb-loading.dll")
    {
        wchar_t own[MAX_PATH] = L"";
        GetModuleFileNameW(GetModuleHandleW(L"zebcore.dll"), own, MAX_PATH);
        std::filesystem::copy_file(own, path, std::filesystem::copy_options::overwrite_existing);
    }
    ~Loading() override
    {
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
    }

    HMODULE load() const { return LoadLibraryW(path.c_str()); }
    bool loaded() const { return GetModuleHandleW(path.c_str()) != nullptr; }

    const std::filesystem::path path;
};

template <class Function>
Function* function(HMODULE library, const char* name)
{
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

}  // namespace zebtest
