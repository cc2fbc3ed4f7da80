#include "trace/DebugTraceSink.h"

#include <array>
#include <mutex>

#include "trace/TraceChannels.h"
#include "trace/TraceLine.h"

namespace mft_utils
{

namespace
{
// A tracing thread waits this long at most; at the end of the process the thread that held the lock may be gone.
constexpr int kLockYields = 200;
constexpr int kLockSleepsOf1ms = 50;

constinit DebugTraceSink sink;
} // namespace

DebugTraceSink &DebugTraceSink::Instance() noexcept
{
    return sink;
}

void DebugTraceSink::ConfigureFromEnvironment() noexcept
{
    std::array<wchar_t, 1024> wide{};
    std::array<char, 3 * wide.size()> setting{};
    const DWORD length = GetEnvironmentVariableW(L"TARN_TRACE", wide.data(), static_cast<DWORD>(wide.size()));
    if (length == 0 || length >= wide.size())
    {
        return;
    }
    const int size = WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(length), setting.data(),
                                         static_cast<int>(setting.size()), nullptr, nullptr);
    if (size > 0)
    {
        Configure(std::string_view(setting.data(), static_cast<std::size_t>(size)));
    }
}

bool DebugTraceSink::Configure(std::string_view setting) noexcept
{
    const TraceSetting parsed = TraceSetting::Parse(setting);
    bool isOn = parsed.level != 0;
    {
        const std::scoped_lock guard(lock);
        if (isOn)
        {
            isOn = destination.Open(parsed);
        }
        else
        {
            destination.Close();
        }
        configuredLevel.store(isOn ? parsed.level : 0, std::memory_order_relaxed);
    }
    UpdateTraceLevels();
    return isOn;
}

void DebugTraceSink::Close() noexcept
{
    // Levels first: should the lock be lost with a thread that was ended, nothing is written any more all the same.
    configuredLevel.store(0, std::memory_order_relaxed);
    callbackLevel.store(0, std::memory_order_relaxed);
    if (LockBriefly())
    {
        const std::scoped_lock guard(std::adopt_lock, lock);
        destination.Close();
        lineCallback = nullptr;
        callbackContext = nullptr;
    }
    UpdateTraceLevels();
}

void DebugTraceSink::SetCallback(LineCallback callback, void *context, TraceLevel level) noexcept
{
    {
        const std::scoped_lock guard(lock);
        lineCallback = callback;
        callbackContext = context;
        callbackLevel.store(callback == nullptr ? 0 : static_cast<std::uint32_t>(level), std::memory_order_relaxed);
    }
    UpdateTraceLevels();
}

std::uint32_t DebugTraceSink::MessageLevel() const noexcept
{
    const std::uint32_t ofCallback = callbackLevel.load(std::memory_order_relaxed);
    return ofCallback != 0 ? ofCallback : configuredLevel.load(std::memory_order_relaxed);
}

std::uint32_t DebugTraceSink::EventLevel() const noexcept
{
    return MessageLevel();
}

void DebugTraceSink::Write(const TraceMessage &message) noexcept
{
    if (MessageLevel() >= static_cast<std::uint32_t>(message.level))
    {
        Emit(message.level, TraceLine(message));
    }
}

void DebugTraceSink::Write(const TraceEvent &event) noexcept
{
    if (EventLevel() >= static_cast<std::uint32_t>(event.level))
    {
        Emit(event.level, TraceLine(event));
    }
}

bool DebugTraceSink::LockBriefly() noexcept
{
    for (int attempt = 0; attempt < kLockYields + kLockSleepsOf1ms; ++attempt)
    {
        if (lock.try_lock())
        {
            return true;
        }
        Sleep(attempt < kLockYields ? 0 : 1);
    }
    failedLocks.fetch_add(1, std::memory_order_relaxed);
    return false;
}

void DebugTraceSink::Emit(TraceLevel level, const TraceText &line) noexcept
{
    if (!LockBriefly())
    {
        return;
    }
    const std::scoped_lock guard(std::adopt_lock, lock);
    // Checked again: the sink may have been closed since.
    if (MessageLevel() < static_cast<std::uint32_t>(level))
    {
        return;
    }
    if (lineCallback != nullptr)
    {
        lineCallback(callbackContext, level, line.Text());
        return;
    }
    if (const std::uint32_t lost = failedLocks.exchange(0, std::memory_order_relaxed); lost != 0)
    {
        TraceText note;
        note.AppendFormat("(%lu lines lost)", static_cast<unsigned long>(lost));
        destination.Write(note);
    }
    destination.Write(line);
}

} // namespace mft_utils
