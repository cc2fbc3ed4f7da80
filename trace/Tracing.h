// Start and end of all trace channels of the module.
#pragma once

namespace mft_utils
{

// Reads TARN_TRACE and registers the classic and the structured channel. Failures leave a channel off and never fail.
// Called at process attach; a second call without a shutdown between is harmless.
void InitializeTracing() noexcept;

// Undoes it in the reverse order; no registration is left. Called at process detach.
void ShutdownTracing() noexcept;

} // namespace mft_utils
