#include "trace/Guard.h"

#include "platform/MediaFoundation.h"

#include <exception>
#include <new>
#include <stdexcept>

#include "base/ComException.h"

namespace mft_utils
{

namespace
{

HRESULT Log(const char *prettyFunction, const char *text, const char *detail, HRESULT result) noexcept
{
    if (TraceEnabled(TraceLevel::Error))
    {
        trace_detail::Write(TraceLevel::Error, prettyFunction, "%s%s%s, hr 0x%08lX", text,
                            detail == nullptr ? "" : ": ", detail == nullptr ? "" : detail,
                            static_cast<unsigned long>(result));
    }
    return result;
}

} // namespace

bool IsEndOfSupply(HRESULT result) noexcept
{
    return result == MF_E_NO_EVENTS_AVAILABLE || result == MF_E_TRANSFORM_NEED_MORE_INPUT ||
           result == MF_E_NO_MORE_TYPES;
}

HRESULT ResultOfCurrentException(const char *prettyFunction) noexcept
{
    try
    {
        throw;
    }
    catch (const ComException &error)
    {
        // An exception always means failure, whatever code was put into it.
        const HRESULT result = FAILED(error.Result()) ? error.Result() : E_FAIL;
        return Log(prettyFunction, "Caught Com Exception error", error.what(), result);
    }
    catch (const std::bad_alloc &)
    {
        return Log(prettyFunction, "Bad allocation exception trapped", nullptr, E_OUTOFMEMORY);
    }
    catch (const std::out_of_range &error)
    {
        return Log(prettyFunction, "Out of range exception trapped", error.what(), MF_E_INVALIDINDEX);
    }
    catch (const std::exception &error)
    {
        return Log(prettyFunction, "Standard exception trapped", error.what(), E_FAIL);
    }
    catch (...)
    {
        return Log(prettyFunction, "General exception trapped", nullptr, E_FAIL);
    }
}

} // namespace mft_utils
