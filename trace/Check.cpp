#include "trace/Check.h"

#include "trace/FunctionName.h"
#include "trace/Guard.h"
#include "trace/TraceChannels.h"
#include "trace/TraceText.h"

namespace mft_utils
{

HRESULT PrintRetOnHResultErrorMessage_LM_DMFT_COMMON(const char *prettyFunction, const char *expression,
                                                     HRESULT result) noexcept
{
    const TraceLevel level = IsEndOfSupply(result) ? TraceLevel::Information : TraceLevel::Error;
    if (TraceEnabled(level))
    {
        const TraceText function(QualifiedFunctionName(prettyFunction));

        TraceText text;
        text.AppendFormat("%s failed, hr 0x%08lX", expression, static_cast<unsigned long>(result));
        WriteToTraceChannels(
            {level, TraceMessageId::CheckFailure, function.Text(), text.Text(), {function.Text(), expression, result}});
    }
    return result;
}

HRESULT PrintRetOnHResultErrorMessage_LM_DMFT_COMMON(const char *prettyFunction, const char *expression,
                                                     const char *actual, const char *expected, HRESULT result) noexcept
{
    if (TraceEnabled(TraceLevel::Error))
    {
        const TraceText function(QualifiedFunctionName(prettyFunction));

        TraceText text;
        text.AppendFormat("%s is %s, expected %s, hr 0x%08lX", expression, actual, expected,
                          static_cast<unsigned long>(result));
        WriteToTraceChannels({TraceLevel::Error,
                              TraceMessageId::ValueFailure,
                              function.Text(),
                              text.Text(),
                              {function.Text(), expression, actual, expected, result}});
    }
    return result;
}

} // namespace mft_utils
