#include "tools/frameserver/LoadedModule.h"

#include <array>

#include "tools/command/ExitCode.h"
#include "tools/command/Text.h"

namespace tarn_host
{

LoadedModule::LoadedModule(std::filesystem::path modulePath) : path(std::move(modulePath)) {}

bool LoadedModule::IsLoaded() const noexcept
{
    return Handle() != nullptr;
}

std::filesystem::path LoadedModule::LoadedFrom() const
{
    std::array<wchar_t, 1024> file{};
    const HMODULE handle = Handle();
    if (handle != nullptr)
    {
        GetModuleFileNameW(handle, file.data(), static_cast<DWORD>(file.size()));
    }
    return file.data();
}

HRESULT LoadedModule::CanUnloadNow() const
{
    using CanUnload = HRESULT(STDAPICALLTYPE *)();
    const HMODULE handle = Handle();
    const FARPROC address = handle == nullptr ? nullptr : GetProcAddress(handle, "DllCanUnloadNow");
    if (address == nullptr)
    {
        throw HostError("no DllCanUnloadNow in " + ToText(path));
    }
    return reinterpret_cast<CanUnload>(reinterpret_cast<void *>(address))();
}

HMODULE LoadedModule::Handle() const noexcept
{
    return GetModuleHandleW(path.filename().c_str());
}

} // namespace tarn_host
