// Names of the device's own GUIDs for logs.
#pragma once

namespace mft_core
{

// Adds them to the GUID translator; without the translator nothing happens.
void RegisterTarnGuidNames() noexcept;

} // namespace mft_core
