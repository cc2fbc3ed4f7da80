#include "utils/Check.h"

#include "utils/DebugTraceSink.h"
#include "utils/FunctionName.h"
#include "utils/Guard.h"
#include "utils/TraceText.h"
#include "utils/WppTrace.h"

namespace mft_utils
{

HRESULT PrintRetOnHResultErrorMessage_LM_DMFT_COMMON(const char *prettyFunction, const char *expression,
                                                     HRESULT result) noexcept
{
    const TraceLevel level = IsEndOfSupply(result) ? TraceLevel::Information : TraceLevel::Error;
    if (TraceEnabled(level))
    {
        const TraceText function(QualifiedFunctionName(prettyFunction));
        WppTrace::Write(level, WppMessage::CheckFailure, {function.Text(), expression, result});

        TraceText text;
        text.AppendFormat("%s failed, hr 0x%08lX", expression, static_cast<unsigned long>(result));
        DebugTraceSink::WriteLine(level, function.Text(), text.Text());
    }
    return result;
}

HRESULT PrintRetOnHResultErrorMessage_LM_DMFT_COMMON(const char *prettyFunction, const char *expression,
                                                     const char *actual, const char *expected, HRESULT result) noexcept
{
    if (TraceEnabled(TraceLevel::Error))
    {
        const TraceText function(QualifiedFunctionName(prettyFunction));
        WppTrace::Write(TraceLevel::Error, WppMessage::ValueFailure,
                        {function.Text(), expression, actual, expected, result});

        TraceText text;
        text.AppendFormat("%s is %s, expected %s, hr 0x%08lX", expression, actual, expected,
                          static_cast<unsigned long>(result));
        DebugTraceSink::WriteLine(TraceLevel::Error, function.Text(), text.Text());
    }
    return result;
}

} // namespace mft_utils
