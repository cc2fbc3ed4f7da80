#include "trace/TraceChannels.h"

#include <algorithm>
#include <mutex>

#include "base/SharedLock.h"

namespace mft_utils
{

namespace
{
constinit user_space_frameworks::SharedLock lock;
} // namespace

void UpdateTraceLevels() noexcept
{
    // Two sessions may be switched at once; the last to enter sees what both have stored.
    const std::scoped_lock guard(lock);
    std::uint32_t messages = 0;
    std::uint32_t events = 0;
    for (const ITraceChannel *channel : TraceChannels())
    {
        messages = std::max(messages, channel->MessageLevel());
        events = std::max(events, channel->EventLevel());
    }
    trace_detail::textLevel.store(messages, std::memory_order_relaxed);
    trace_detail::eventLevel.store(events, std::memory_order_relaxed);
}

void WriteToTraceChannels(const TraceMessage &message) noexcept
{
    for (ITraceChannel *channel : TraceChannels())
    {
        channel->Write(message);
    }
}

void WriteToTraceChannels(const TraceEvent &event) noexcept
{
    for (ITraceChannel *channel : TraceChannels())
    {
        channel->Write(event);
    }
}

} // namespace mft_utils
