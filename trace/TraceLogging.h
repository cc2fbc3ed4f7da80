// Structured events of the provider "TARN_DEVICE_MFT": single events and activities with start and stop.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <initializer_list>

#include "trace/Trace.h"

namespace mft_utils
{

// One field of an event: a name and a typed value. Borrows strings and GUIDs for the length of the call.
struct TraceField
{
    enum class Type : std::uint8_t
    {
        AnsiString,
        Int64,
        UInt32,
        HexInt32,
        Guid
    };

    const char *name;
    Type type;
    union {
        const char *string;
        std::int64_t int64;
        std::uint32_t uint32;
        const GUID *guid;
    };

    static TraceField String(const char *fieldName, const char *value) noexcept
    {
        TraceField field{fieldName, Type::AnsiString, {}};
        field.string = value;
        return field;
    }
    static TraceField Int64(const char *fieldName, std::int64_t value) noexcept
    {
        TraceField field{fieldName, Type::Int64, {}};
        field.int64 = value;
        return field;
    }
    static TraceField UInt32(const char *fieldName, std::uint32_t value) noexcept
    {
        TraceField field{fieldName, Type::UInt32, {}};
        field.uint32 = value;
        return field;
    }
    static TraceField Hex32(const char *fieldName, HRESULT value) noexcept
    {
        TraceField field{fieldName, Type::HexInt32, {}};
        field.uint32 = static_cast<std::uint32_t>(value);
        return field;
    }
    static TraceField Guid(const char *fieldName, const GUID &value) noexcept
    {
        TraceField field{fieldName, Type::Guid, {}};
        field.guid = &value;
        return field;
    }
};

namespace trace_detail
{
// Highest level that the provider's session or the debug sink wants of structured events; 0 when nobody listens.
inline std::atomic<std::uint32_t> eventLevel{0};

void WriteEvent(TraceLevel level, std::uint8_t opcode, const GUID *activity, const GUID *relatedActivity,
                const char *eventName, std::initializer_list<TraceField> fields) noexcept;
} // namespace trace_detail

// Thread-safe.
inline bool TraceLoggingEnabled(TraceLevel level) noexcept
{
    return trace_detail::eventLevel.load(std::memory_order_relaxed) >= static_cast<std::uint32_t>(level);
}

// Writes one event outside any activity. Thread-safe.
inline void TraceLoggingWrite(TraceLevel level, const char *eventName,
                              std::initializer_list<TraceField> fields = {}) noexcept
{
    if (TraceLoggingEnabled(level))
    {
        trace_detail::WriteEvent(level, 0, nullptr, nullptr, eventName, fields);
    }
}

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
            trace_detail::WriteEvent(eventLevel, 0, running ? &id : nullptr, nullptr, eventName, fields);
        }
    }

    void Stop(std::initializer_list<TraceField> stopFields = {}) noexcept
    {
        if (running)
        {
            running = false;
            trace_detail::WriteEvent(level, 2, &id, nullptr, name, stopFields);
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
