#include "tools/frameserver/RegisterModule.h"

#include <windows.h>

#include <array>

#include "tools/command/ExitCode.h"
#include "tools/command/Text.h"
#include "base/HResultFromWin32.h"
#include "base/UniqueHandle.h"

namespace tarn_host
{

namespace
{

using user_space_frameworks::UniqueHandle;

constexpr DWORD kRegistrationLimitMs = 60'000;

std::filesystem::path RegistrationTool()
{
    std::array<wchar_t, MAX_PATH> folder{};
    GetSystemDirectoryW(folder.data(), MAX_PATH);
    return std::filesystem::path(folder.data()) / L"regsvr32.exe";
}

// The tool's exit codes ("How to use the Regsvr32 tool and troubleshoot Regsvr32 error messages").
const char *Meaning(DWORD exitCode)
{
    switch (exitCode)
    {
    case 3:
        return "the module or one of the DLLs it needs cannot be loaded";
    case 4:
        return "the module does not export DllRegisterServer";
    case 5:
        return "DllRegisterServer failed; run as administrator";
    default:
        return "unknown reason";
    }
}

DWORD RunAndWait(std::wstring commandLine)
{
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr,
                        &startup, &process))
    {
        throw HostError(mft_utils::HResultFromLastError(), "starting regsvr32");
    }
    const UniqueHandle thread(process.hThread);
    const UniqueHandle handle(process.hProcess);
    if (WaitForSingleObject(handle.Get(), kRegistrationLimitMs) != WAIT_OBJECT_0)
    {
        TerminateProcess(handle.Get(), 1);
        throw HostError("regsvr32 did not end within a minute");
    }
    DWORD exitCode = 1;
    GetExitCodeProcess(handle.Get(), &exitCode);
    return exitCode;
}

} // namespace

void RegisterModule(const std::filesystem::path &module)
{
    const DWORD exitCode = RunAndWait(L"\"" + RegistrationTool().native() + L"\" /s \"" + module.native() + L"\"");
    if (exitCode != 0)
    {
        throw HostError("regsvr32 cannot register " + ToText(module) + ": " + Meaning(exitCode) + " (exit code " +
                        std::to_string(exitCode) + ")");
    }
}

} // namespace tarn_host
