#include "module/ModuleHandle.h"

namespace mft_utils
{

namespace
{
HMODULE moduleHandle = nullptr; // written once, at process attach
} // namespace

HMODULE DllModuleHandle() noexcept
{
    return moduleHandle;
}

void SetDllModuleHandle(HMODULE handle) noexcept
{
    moduleHandle = handle;
}

} // namespace mft_utils
