// What the trace front end hands to the channels: messages with arguments and events with fields.
#pragma once

#include <windows.h>

#include <cstdint>
#include <initializer_list>

#include "trace/TraceLevels.h"

namespace mft_utils
{

// Numbers are part of the classic trace format: a message is never renumbered.
enum class TraceMessageId : std::uint16_t
{
    Entry = 10,        // function, object
    Exit = 11,         // function, object
    CheckFailure = 12, // function, expression, result
    ValueFailure = 13, // function, name, actual, expected, result
    Text = 14          // function, level, text
};

// One argument: a string, or a 32-bit value. Borrows the string.
class TraceArgument
{
  public:
    TraceArgument(const char *argumentText) noexcept // NOLINT(google-explicit-constructor): reads as an argument list
        : isString(true), text(argumentText == nullptr ? "null" : argumentText)
    {
    }
    TraceArgument(HRESULT argumentValue) noexcept // NOLINT(google-explicit-constructor)
        : isString(false), value(argumentValue)
    {
    }

    bool isString;
    std::int32_t value = 0;
    const char *text = nullptr;
};

// Borrows everything for the length of the call.
struct TraceMessage
{
    TraceLevel level;
    TraceMessageId id;
    const char *function; // qualified name
    const char *text;     // what a reader sees behind the function
    std::initializer_list<TraceArgument> arguments;
};

// One field of an event: a name and a typed value. Borrows a string for the length of the call.
struct TraceField
{
    enum class Type : std::uint8_t
    {
        AnsiString,
        Int64,
        UInt32,
        HexInt32
    };

    const char *name;
    Type type;
    union {
        const char *string;
        std::int64_t int64;
        std::uint32_t uint32;
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
};

// As events carry it.
enum class TraceOpcode : std::uint8_t
{
    Info = 0,
    Start = 1,
    Stop = 2
};

// Borrows everything for the length of the call.
struct TraceEvent
{
    TraceLevel level;
    TraceOpcode opcode;
    const GUID *activity; // null outside any activity
    const char *name;
    std::initializer_list<TraceField> fields;
};

} // namespace mft_utils
