// The module's own handle, known from process attach on.
#pragma once

#include <windows.h>

namespace mft_utils
{

HMODULE DllModuleHandle() noexcept;
void SetDllModuleHandle(HMODULE handle) noexcept;

} // namespace mft_utils
