#include "trace/Trace.h"

#include <cstdarg>

#include "trace/FunctionName.h"
#include "trace/TraceChannels.h"
#include "trace/TraceText.h"

namespace mft_utils::trace_detail
{

namespace
{

void WriteBoundary(TraceMessageId message, const char *mark, const char *prettyFunction,
                   const char *objectName) noexcept
{
    const char *object = objectName == nullptr ? "" : objectName;
    const TraceText function(QualifiedFunctionName(prettyFunction));

    TraceText text(mark);
    text.Append(" ");
    text.Append(object);
    WriteToTraceChannels({TraceLevel::Verbose, message, function.Text(), text.Text(), {function.Text(), object}});
}

} // namespace

void Write(TraceLevel level, const char *prettyFunction, const char *format, ...) noexcept
{
    TraceText text;
    std::va_list arguments;
    va_start(arguments, format);
    text.AppendFormatList(format, arguments);
    va_end(arguments);

    const TraceText function(QualifiedFunctionName(prettyFunction));
    WriteToTraceChannels({level,
                          TraceMessageId::Text,
                          function.Text(),
                          text.Text(),
                          {function.Text(), static_cast<HRESULT>(level), text.Text()}});
}

void WriteEntry(const char *prettyFunction, const char *objectName) noexcept
{
    WriteBoundary(TraceMessageId::Entry, "==>", prettyFunction, objectName);
}

void WriteExit(const char *prettyFunction, const char *objectName) noexcept
{
    WriteBoundary(TraceMessageId::Exit, "<==", prettyFunction, objectName);
}

} // namespace mft_utils::trace_detail
