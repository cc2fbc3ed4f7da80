// Text and events as readable lines for a support engineer without trace tools.
#pragma once

#include <windows.h>

#include <cstdint>
#include <initializer_list>
#include <string_view>

#include "trace/Trace.h"
#include "trace/TraceLogging.h"

namespace mft_utils
{

// Turned on by the environment variable TARN_TRACE: "2", "4", "8" or "error", "info", "verbose", optionally followed
// by ",file=<path>" or ",file=stderr"; without a file the lines go to the debugger. Thread-safe.
class DebugTraceSink
{
  public:
    // Receives each line without its end. Called under the sink's lock: it must not trace.
    using LineCallback = void (*)(void *context, TraceLevel level, const char *line);

    // Applies TARN_TRACE. A variable that is missing, empty or not understood leaves the sink off.
    static void ConfigureFromEnvironment() noexcept;
    // False when the setting is not understood or its file cannot be opened; the sink is then off.
    static bool Configure(std::string_view setting) noexcept;
    // Turns the sink off, and the callback too.
    static void Close() noexcept;

    // Sends lines up to `level` to a callback instead; null turns it off. For tests.
    static void SetCallback(LineCallback callback, void *context, TraceLevel level = TraceLevel::Verbose) noexcept;

    static std::uint32_t EnabledLevel() noexcept;
    static void WriteLine(TraceLevel level, std::string_view function, const char *text) noexcept;
    static void WriteEvent(TraceLevel level, std::uint8_t opcode, const GUID *activity, const char *eventName,
                           std::initializer_list<TraceField> fields) noexcept;
};

} // namespace mft_utils
