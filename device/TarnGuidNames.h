// Names of the device's own GUIDs and KS properties for logs.
#pragma once

namespace mft_core
{

// Adds them to the translators of GUIDs and of KS identifiers; what a missing translator would have got is left out.
void RegisterTarnGuidNames() noexcept;

} // namespace mft_core
