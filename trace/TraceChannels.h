// Keeps the two level flags that every trace point tests in step with the channels.
#pragma once

namespace mft_utils
{

// Called by a channel whenever what it wants has changed. Thread-safe.
void UpdateTraceLevels() noexcept;

} // namespace mft_utils
