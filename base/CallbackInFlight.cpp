#include "base/CallbackInFlight.h"

#include <windows.h>

#include <atomic>

namespace mft_utils
{

namespace
{
// Between the end of the count and the return to the platform lie some instructions of this module; no count of our
// own can cover them. This is ample time for a thread to run them.
constexpr ULONGLONG kLeaveMs = 100;
constexpr ULONGLONG kPatienceMs = 150;
constexpr DWORD kPollMs = 5;

std::atomic<LONG> inFlight{0};
std::atomic<ULONGLONG> lastEndMs{0}; // tick count; 0: none has ended yet

bool AllHaveLeft() noexcept
{
    if (inFlight != 0)
    {
        return false;
    }
    const ULONGLONG last = lastEndMs;
    return last == 0 || GetTickCount64() - last >= kLeaveMs;
}
} // namespace

void CallbackInFlight::Begin() noexcept
{
    if (!std::exchange(counted, true))
    {
        ++inFlight;
    }
}

void CallbackInFlight::End() noexcept
{
    if (std::exchange(counted, false))
    {
        lastEndMs = GetTickCount64(); // before the count falls
        --inFlight;
    }
}

bool CallbacksHaveReturned() noexcept
{
    const ULONGLONG end = GetTickCount64() + kPatienceMs;
    while (!AllHaveLeft())
    {
        if (GetTickCount64() >= end)
        {
            return false;
        }
        Sleep(kPollMs);
    }
    return true;
}

} // namespace mft_utils
