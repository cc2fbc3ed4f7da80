// Structured events of the provider "TARN_DEVICE_MFT": single events and activities with start and stop.
#pragma once

#include <windows.h>

#include <initializer_list>

#include "trace/TraceRecord.h"

namespace mft_utils
{

namespace trace_detail
{
void WriteEvent(const TraceEvent &event) noexcept;
} // namespace trace_detail

// An activity: a start event when made, a stop event with the same name when stopped or destroyed. Confined.
class TraceLoggingActivity
{
  public:
    explicit TraceLoggingActivity(const char *activityName, std::initializer_list<TraceField> startFields = {},
                                  TraceLevel activityLevel = TraceLevel::Information) noexcept
        : name(activityName), level(activityLevel), running(TraceLoggingEnabled(activityLevel))
    {
        if (running)
        {
            Start(startFields);
        }
    }
    ~TraceLoggingActivity()
    {
        Stop();
    }
    TraceLoggingActivity(const TraceLoggingActivity &) = delete;
    TraceLoggingActivity &operator=(const TraceLoggingActivity &) = delete;

    // True when started and not stopped: spare the cost of building fields otherwise.
    bool IsRunning() const noexcept
    {
        return running;
    }

    // An event inside the activity; written at its own level even where the activity itself is off.
    void Write(TraceLevel eventLevel, const char *eventName, std::initializer_list<TraceField> fields = {}) noexcept
    {
        if (TraceLoggingEnabled(eventLevel))
        {
            trace_detail::WriteEvent({eventLevel, TraceOpcode::Info, running ? &id : nullptr, eventName, fields});
        }
    }

    void Stop(std::initializer_list<TraceField> stopFields = {}) noexcept
    {
        if (running)
        {
            running = false;
            trace_detail::WriteEvent({level, TraceOpcode::Stop, &id, name, stopFields});
        }
    }

  private:
    void Start(std::initializer_list<TraceField> startFields) noexcept; // makes the id

    const char *name;
    TraceLevel level;
    bool running;
    GUID id{};
};

} // namespace mft_utils
