// Text and events as readable lines for a support engineer without trace tools.
#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

#include "base/SharedLock.h"
#include "trace/ITraceChannel.h"
#include "trace/TraceDestination.h"

namespace mft_utils
{

// Turned on by the environment variable TARN_TRACE; the form of its value is TraceSetting's. One for the module.
// Thread-safe.
class DebugTraceSink final : public ITraceChannel
{
  public:
    // Receives each line without its end. Called under the sink's lock: it must not trace.
    using LineCallback = void (*)(void *context, TraceLevel level, const char *line);

    static DebugTraceSink &Instance() noexcept;

    // Applies TARN_TRACE. A variable that is missing, empty or not understood leaves the sink off.
    void ConfigureFromEnvironment() noexcept;
    // False when the setting is not understood or its file cannot be opened; the sink is then off.
    bool Configure(std::string_view setting) noexcept;
    // Turns the sink off, and the callback too.
    void Close() noexcept;
    // Sends lines up to `level` to a callback instead; null turns it off. For tests.
    void SetCallback(LineCallback callback, void *context, TraceLevel level = TraceLevel::Verbose) noexcept;

    std::uint32_t MessageLevel() const noexcept override;
    std::uint32_t EventLevel() const noexcept override;
    void Write(const TraceMessage &message) noexcept override;
    void Write(const TraceEvent &event) noexcept override;

  private:
    bool LockBriefly() noexcept TARN_TRY_ACQUIRE(true, lock);
    void Emit(TraceLevel level, const TraceText &line) noexcept;

    user_space_frameworks::SharedLock lock;
    TraceDestination destination TARN_GUARDED_BY(lock);
    LineCallback lineCallback TARN_GUARDED_BY(lock) = nullptr;
    void *callbackContext TARN_GUARDED_BY(lock) = nullptr;
    std::atomic<std::uint32_t> configuredLevel{0};
    std::atomic<std::uint32_t> callbackLevel{0};
    std::atomic<std::uint32_t> failedLocks{0};
};

} // namespace mft_utils
