// How much the trace channels want: the two numbers that every trace point tests.
#pragma once

#include <atomic>
#include <cstdint>

namespace mft_utils
{

enum class TraceLevel : std::uint8_t
{
    Error = 2,
    Information = 4,
    Verbose = 8
};

namespace trace_detail
{

// Highest level that any channel wants of messages and of events; 0 when none listens. Written by UpdateTraceLevels.
inline std::atomic<std::uint32_t> textLevel{0};
inline std::atomic<std::uint32_t> eventLevel{0};

} // namespace trace_detail

// Thread-safe.
inline bool TraceEnabled(TraceLevel level) noexcept
{
    return trace_detail::textLevel.load(std::memory_order_relaxed) >= static_cast<std::uint32_t>(level);
}

// The same for structured events. Thread-safe.
inline bool TraceLoggingEnabled(TraceLevel level) noexcept
{
    return trace_detail::eventLevel.load(std::memory_order_relaxed) >= static_cast<std::uint32_t>(level);
}

} // namespace mft_utils
