#include "trace/TraceLine.h"

#include <windows.h>

namespace mft_utils
{

namespace
{
void AppendHeader(TraceText &line, TraceLevel level, std::string_view function) noexcept
{
    FILETIME now;
    SYSTEMTIME time;
    GetSystemTimePreciseAsFileTime(&now);
    FileTimeToSystemTime(&now, &time);
    const std::uint64_t time100ns = (std::uint64_t{now.dwHighDateTime} << 32) | now.dwLowDateTime;
    line.AppendFormat("%02u:%02u:%02u.%06u %5lu %5lu %-7s ", time.wHour, time.wMinute, time.wSecond,
                      static_cast<unsigned>(time100ns / 10 % 1000000),
                      static_cast<unsigned long>(GetCurrentProcessId()),
                      static_cast<unsigned long>(GetCurrentThreadId()), TraceLevelName(level));
    line.Append(function);
}

void AppendField(TraceText &line, const TraceField &field) noexcept
{
    line.AppendFormat(" %s=", field.name == nullptr ? "" : field.name);
    switch (field.type)
    {
    case TraceField::Type::AnsiString:
        line.AppendFormat("\"%s\"", field.string == nullptr ? "" : field.string);
        break;
    case TraceField::Type::Int64:
        line.AppendFormat("%lld", static_cast<long long>(field.int64));
        break;
    case TraceField::Type::UInt32:
        line.AppendFormat("%lu", static_cast<unsigned long>(field.uint32));
        break;
    case TraceField::Type::HexInt32:
        line.AppendFormat("0x%08lX", static_cast<unsigned long>(field.uint32));
        break;
    }
}
} // namespace

const char *TraceLevelName(TraceLevel level) noexcept
{
    switch (level)
    {
    case TraceLevel::Error:
        return "error";
    case TraceLevel::Verbose:
        return "verbose";
    case TraceLevel::Information:
        break;
    }
    return "info";
}

TraceLine::TraceLine(const TraceMessage &message) noexcept
{
    AppendHeader(*this, message.level, message.function);
    Append(": ");
    Append(message.text);
}

TraceLine::TraceLine(const TraceEvent &event) noexcept
{
    AppendHeader(*this, event.level, "event ");
    Append(event.name == nullptr ? "" : event.name);
    Append(event.opcode == TraceOpcode::Start ? " start" : event.opcode == TraceOpcode::Stop ? " stop" : "");
    if (event.activity != nullptr)
    {
        // The first field counts the activities of this process; the rest is the same for all of them.
        AppendFormat(" #%lu", static_cast<unsigned long>(event.activity->Data1));
    }
    AppendFields(*this, event);
}

void AppendFields(TraceText &text, const TraceEvent &event) noexcept
{
    for (const TraceField &field : event.fields)
    {
        AppendField(text, field);
    }
}

} // namespace mft_utils
