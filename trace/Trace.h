// Text trace points: one flag test each when off, formatted only when somebody listens.
#pragma once

#include "platform/CompilerChecks.h"

#include <source_location>

#include "trace/TraceLevels.h"

namespace mft_utils
{

namespace trace_detail
{

void Write(TraceLevel level, const char *prettyFunction, const char *format, ...) noexcept TARN_PRINTF_LIKE(3, 4);
void WriteEntry(const char *prettyFunction, const char *objectName) noexcept;
void WriteExit(const char *prettyFunction, const char *objectName) noexcept;
} // namespace trace_detail

// Writes "==>" with the function's name when made and "<==" when destroyed, at the verbose level. Confined.
class EntryExitTrace
{
  public:
    explicit EntryExitTrace(const char *nameOfObject,
                            std::source_location location = std::source_location::current()) noexcept
        : function(location.function_name()), objectName(nameOfObject), enabled(TraceEnabled(TraceLevel::Verbose))
    {
        if (enabled)
        {
            trace_detail::WriteEntry(function, objectName);
        }
    }
    ~EntryExitTrace()
    {
        if (enabled)
        {
            trace_detail::WriteExit(function, objectName);
        }
    }
    EntryExitTrace(const EntryExitTrace &) = delete;
    EntryExitTrace &operator=(const EntryExitTrace &) = delete;

  private:
    const char *function;
    const char *objectName;
    bool enabled;
};

} // namespace mft_utils

#define TARN_TRACE_AT(level, ...)                                                                                      \
    do                                                                                                                 \
    {                                                                                                                  \
        if (::mft_utils::TraceEnabled(level))                                                                          \
        {                                                                                                              \
            ::mft_utils::trace_detail::Write(level, std::source_location::current().function_name(), __VA_ARGS__);     \
        }                                                                                                              \
    } while (false)

// printf-like text at the level in the name.
#define TRACE_ERROR(...) TARN_TRACE_AT(::mft_utils::TraceLevel::Error, __VA_ARGS__)
#define TRACE_INFO(...) TARN_TRACE_AT(::mft_utils::TraceLevel::Information, __VA_ARGS__)
#define TRACE_VERBOSE(...) TARN_TRACE_AT(::mft_utils::TraceLevel::Verbose, __VA_ARGS__)
