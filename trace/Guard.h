// The exception guard around every COM entry point: nothing throws past it.
#pragma once

#include <source_location>
#include <utility>

#include "trace/Check.h"

namespace mft_utils
{

// Turns the exception now being handled into its result and logs it. Call only inside a catch block.
HRESULT ResultOfCurrentException(const char *prettyFunction) noexcept;

// Answers of a caller's question for more: no event yet, no sample yet, no further type. Failures by name only.
bool IsEndOfSupply(HRESULT result) noexcept;

// Runs `body`, which returns an HRESULT, and turns whatever escapes from it into a result. Thread-safe.
template <class Body>
HRESULT Guarded(Body &&body, std::source_location location = std::source_location::current()) noexcept
{
    try
    {
        return std::forward<Body>(body)();
    }
    catch (...)
    {
        return ResultOfCurrentException(location.function_name());
    }
}

// Frame of a public entry point: entry/exit trace, guard, and one more log line when the call failed (but none for the
// end of a supply: a pipeline that polls would fill the trace).
template <class Body>
HRESULT EntryPoint(const char *objectName, Body &&body,
                   std::source_location location = std::source_location::current()) noexcept
{
    const EntryExitTrace trace(objectName, location);
    const HRESULT result = Guarded(std::forward<Body>(body), location);
    if (FAILED(result) && !IsEndOfSupply(result) && TraceEnabled(TraceLevel::Error))
    {
        trace_detail::Write(TraceLevel::Error, location.function_name(), "%s failed, hr 0x%08lX", objectName,
                            static_cast<unsigned long>(result));
    }
    return result;
}

} // namespace mft_utils
