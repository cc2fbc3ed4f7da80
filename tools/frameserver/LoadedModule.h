// The module in this process: how it is found, what it makes, and whether it lets itself be unloaded.
#pragma once

#include "platform/DeviceTransform.h"

#include <filesystem>

namespace tarn_host
{

enum class ModuleAccess
{
    File,    // The class objects come from the DLL itself; the registry stays as it is.
    Registry // The DLL is registered, as an installer would do it, and COM finds it.
};

// Confined.
class LoadedModule
{
  public:
    // Throws UsageError when there is no such file, HostError when it can be neither loaded nor registered.
    LoadedModule(const std::filesystem::path &modulePath, ModuleAccess moduleAccess);
    // Unloads the module if it has not been and lets itself be.
    ~LoadedModule();
    LoadedModule(const LoadedModule &) = delete;
    LoadedModule &operator=(const LoadedModule &) = delete;

    // Throws HostError.
    ComPtr<IMFDeviceTransform> Create(const CLSID &transformClass) const;

    // Full path of the loaded file; empty when it is not loaded.
    std::filesystem::path LoadedFrom() const;
    // What the module's DllCanUnloadNow answers, asked again for 5 s at most until it is S_OK. Throws HostError when it
    // is not loaded or lacks the export.
    HRESULT CanUnloadNow() const;
    // Unloads it if it lets itself be; false when it stays.
    bool Unload();

  private:
    HMODULE Handle() const noexcept;
    FARPROC Export(const char *name) const;

    const std::filesystem::path path;
    const ModuleAccess access;
    HMODULE library = nullptr; // with ModuleAccess::File
};

// The module beside this program; used unless the user names another one.
std::filesystem::path DefaultModulePath();

// Of the option that asks for ModuleAccess::Registry.
inline constexpr const char *kRegisterHelp = "register the module (system-wide) and have COM find it";

} // namespace tarn_host
