// What the module sets up when a process loads it.
#pragma once

#include <windows.h>

namespace mft_utils
{

// Trace channels, log name translators, the device's own names. Never fails the load.
void OnDllProcessAttach(HMODULE module) noexcept;

// Undoes it in the reverse order.
void OnDllProcessDetach() noexcept;

} // namespace mft_utils
