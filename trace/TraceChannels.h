// What the trace front end and the channels know of each other.
#pragma once

#include <array>

#include "trace/ITraceChannel.h"

namespace mft_utils
{

// The module's channels. Defined where they are started and ended.
std::array<ITraceChannel *, 3> TraceChannels() noexcept;

// Called by a channel whenever what it wants has changed. Thread-safe.
void UpdateTraceLevels() noexcept;

// To every channel. Thread-safe.
void WriteToTraceChannels(const TraceMessage &message) noexcept;
void WriteToTraceChannels(const TraceEvent &event) noexcept;

} // namespace mft_utils
