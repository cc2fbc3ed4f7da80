#include "trace/TraceLogging.h"

#include <atomic>
#include <cstdint>

#include "trace/TraceChannels.h"

namespace mft_utils
{

namespace
{

// An id that no other activity on the machine has: process, time of its first use, counter. Made without COM, which
// the calling thread may not have set up.
GUID NextActivityId() noexcept
{
    static std::atomic<std::uint32_t> counter{0};
    static std::atomic<std::uint64_t> processTime{0};
    std::uint64_t time = processTime.load(std::memory_order_relaxed);
    if (time == 0)
    {
        FILETIME now;
        GetSystemTimeAsFileTime(&now);
        const std::uint64_t value = (std::uint64_t{now.dwHighDateTime} << 32) | now.dwLowDateTime;
        // Two threads may come here at once: both go on with the time that was stored first.
        if (processTime.compare_exchange_strong(time, value, std::memory_order_relaxed))
        {
            time = value;
        }
    }
    const DWORD process = GetCurrentProcessId();
    GUID id{};
    id.Data1 = counter.fetch_add(1, std::memory_order_relaxed) + 1;
    id.Data2 = static_cast<unsigned short>(process & 0xFFFF);
    id.Data3 = static_cast<unsigned short>(process >> 16);
    for (int i = 0; i < 8; ++i)
    {
        id.Data4[i] = static_cast<unsigned char>(time >> (8 * i));
    }
    return id;
}

} // namespace

namespace trace_detail
{
void WriteEvent(const TraceEvent &event) noexcept
{
    WriteToTraceChannels(event);
}
} // namespace trace_detail

void TraceLoggingActivity::Start(std::initializer_list<TraceField> startFields) noexcept
{
    id = NextActivityId();
    trace_detail::WriteEvent({level, TraceOpcode::Start, &id, name, startFields});
}

} // namespace mft_utils
