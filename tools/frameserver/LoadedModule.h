// The module as COM loaded it into this process: where it came from, and whether it lets itself be unloaded.
#pragma once

#include <windows.h>

#include <filesystem>

namespace tarn_host
{

// Looks the module up by file name each time and holds no reference on it. Confined.
class LoadedModule
{
  public:
    explicit LoadedModule(std::filesystem::path modulePath);

    bool IsLoaded() const noexcept;
    // Full path of the loaded file; empty when it is not loaded.
    std::filesystem::path LoadedFrom() const;
    // What the module's DllCanUnloadNow answers. Throws HostError when it is not loaded or lacks the export.
    HRESULT CanUnloadNow() const;

  private:
    HMODULE Handle() const noexcept;

    std::filesystem::path path;
};

} // namespace tarn_host
