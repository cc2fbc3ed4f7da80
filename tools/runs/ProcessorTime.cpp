#include "tools/runs/ProcessorTime.h"

#include <windows.h>

#include <cstdint>

namespace tarn_host
{

std::chrono::microseconds ProcessorTime() noexcept
{
    FILETIME created{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    if (!GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user))
    {
        return {};
    }
    const auto ticks100ns = [](const FILETIME &time) {
        return static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32U | time.dwLowDateTime);
    };
    return std::chrono::microseconds((ticks100ns(kernel) + ticks100ns(user)) / 10);
}

} // namespace tarn_host
