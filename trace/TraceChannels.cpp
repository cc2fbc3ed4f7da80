#include "trace/TraceChannels.h"

#include <windows.h>

#include <algorithm>
#include <mutex>

#include "trace/DebugTraceSink.h"
#include "base/SharedLock.h"
#include "trace/TraceLogging.h"
#include "trace/TraceLoggingProvider.h"
#include "trace/WppTrace.h"

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
    const std::uint32_t sink = DebugTraceSink::EnabledLevel();
    trace_detail::textLevel.store(std::max(sink, WppTrace::EnabledLevel()), std::memory_order_relaxed);
    trace_detail::eventLevel.store(std::max(sink, TraceLoggingProvider::EnabledLevel()), std::memory_order_relaxed);
}

} // namespace mft_utils
