#include "trace/ModuleRecord.h"

#include <cstdio>
#include <mutex>

#include "ModuleVersion.h"
#include "base/SharedLock.h"

namespace mft_utils
{

namespace
{
// Empty when it does not fit or is not to be had. `text` ends with a NUL.
template <std::size_t Size>
void ToUtf8(const wchar_t *text, std::array<char, Size> &utf8) noexcept
{
    if (WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), static_cast<int>(Size), nullptr, nullptr) <= 0)
    {
        utf8[0] = '\0';
    }
}

// The documented calls answer an old version to a process without a manifest that names the new one.
void ReadWindowsVersion(char *text, std::size_t size) noexcept
{
    using Call = LONG(WINAPI *)(OSVERSIONINFOW *);
    const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    const FARPROC address = ntdll == nullptr ? nullptr : GetProcAddress(ntdll, "RtlGetVersion");
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof(version);
    if (address != nullptr && reinterpret_cast<Call>(reinterpret_cast<void *>(address))(&version) == 0)
    {
        std::snprintf(text, size, "%lu.%lu.%lu", version.dwMajorVersion % 1000, version.dwMinorVersion % 1000,
                      version.dwBuildNumber % 1000000);
    }
}
} // namespace

const ModuleRecord &ModuleRecord::OfThisProcess() noexcept
{
    static constinit user_space_frameworks::SharedLock lock;
    static constinit ModuleRecord record;
    static constinit bool isRead = false;
    const std::scoped_lock guard(lock);
    if (!isRead)
    {
        isRead = true;
        record.Read();
    }
    return record;
}

void ModuleRecord::Read() noexcept
{
    processId = GetCurrentProcessId();
    std::array<wchar_t, MAX_COMPUTERNAME_LENGTH + 1> name{};
    DWORD length = static_cast<DWORD>(name.size());
    if (GetComputerNameW(name.data(), &length) != 0)
    {
        ToUtf8(name.data(), machine);
    }
    ReadWindowsVersion(windowsVersion.data(), windowsVersion.size());

    HMODULE own = nullptr;
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<const wchar_t *>(&kModuleVersion), &own) != 0)
    {
        ReadPath(own, modulePath);
    }
    ReadPath(nullptr, processPath);
}

std::array<char, ModuleRecord::kDateSize> ModuleRecord::Today() noexcept
{
    SYSTEMTIME now;
    GetSystemTime(&now);
    std::array<char, kDateSize> date{};
    std::snprintf(date.data(), date.size(), "%04u-%02u-%02u", now.wYear % 10000u, now.wMonth % 100u, now.wDay % 100u);
    return date;
}

const char *ModuleRecord::Version() noexcept
{
    return kModuleVersion;
}

void ModuleRecord::ReadPath(HMODULE module, Path &path) noexcept
{
    std::array<wchar_t, MAX_PATH> wide{};
    const DWORD length = GetModuleFileNameW(module, wide.data(), static_cast<DWORD>(wide.size()));
    if (length > 0)
    {
        wide.back() = L'\0'; // a path that is too long comes cut
        ToUtf8(wide.data(), path);
    }
}

} // namespace mft_utils
