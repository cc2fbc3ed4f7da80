// COM registration of the module's classes in the registry.
#pragma once

#include <windows.h>

#include <vector>

#include "module/RegistryKey.h"

namespace mft_utils
{

// Registers classes all or none: what it wrote is undone with it, in the reverse order, unless it was kept. Confined.
class Registration
{
  public:
    Registration() = default;
    ~Registration();
    Registration(const Registration &) = delete;
    Registration &operator=(const Registration &) = delete;

    // Writes "Software\Classes\CLSID\{...}" with its "InProcServer32" under HKEY_LOCAL_MACHINE. A module path that does
    // not fit into 260 characters is refused before anything is written.
    HRESULT RegisterObject(HMODULE module, const CLSID &clsid, const wchar_t *description,
                           const wchar_t *threadingModel);

    void Keep() noexcept;

  private:
    HRESULT WriteKeys(const wchar_t *keyPath, const wchar_t *modulePath, const wchar_t *description,
                      const wchar_t *threadingModel);

    std::vector<RegistryKey> keys; // each undoes its own changes
    bool kept = false;
};

// Deletes the class's key with all below it. Fails when there is none.
HRESULT UnregisterObject(const CLSID &clsid);

} // namespace mft_utils
