// The clock of recordings.
#pragma once

#include <cstdint>

namespace mft_der
{

// 100 ns, the same for all threads of the machine. Thread-safe.
std::uint64_t RecordingClock() noexcept;

} // namespace mft_der
