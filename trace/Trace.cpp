#include "trace/Trace.h"

#include <cstdarg>

#include "trace/DebugTraceSink.h"
#include "trace/FunctionName.h"
#include "trace/TraceText.h"
#include "trace/WppTrace.h"

namespace mft_utils::trace_detail
{

namespace
{

void WriteBoundary(WppMessage message, const char *mark, const char *prettyFunction, const char *objectName) noexcept
{
    const char *object = objectName == nullptr ? "" : objectName;
    const TraceText function(QualifiedFunctionName(prettyFunction));
    WppTrace::Write(TraceLevel::Verbose, message, {function.Text(), object});

    TraceText text(mark);
    text.Append(" ");
    text.Append(object);
    DebugTraceSink::WriteLine(TraceLevel::Verbose, function.Text(), text.Text());
}

} // namespace

std::string QualifiedName(const char *prettyFunction)
{
    return std::string(QualifiedFunctionName(prettyFunction));
}

void Write(TraceLevel level, const char *prettyFunction, const char *format, ...) noexcept
{
    TraceText text;
    std::va_list arguments;
    va_start(arguments, format);
    text.AppendFormatList(format, arguments);
    va_end(arguments);

    const TraceText function(QualifiedFunctionName(prettyFunction));
    WppTrace::Write(level, WppMessage::Text, {function.Text(), static_cast<HRESULT>(level), text.Text()});
    DebugTraceSink::WriteLine(level, function.Text(), text.Text());
}

void WriteEntry(const char *prettyFunction, const char *objectName) noexcept
{
    WriteBoundary(WppMessage::Entry, "==>", prettyFunction, objectName);
}

void WriteExit(const char *prettyFunction, const char *objectName) noexcept
{
    WriteBoundary(WppMessage::Exit, "<==", prettyFunction, objectName);
}

} // namespace mft_utils::trace_detail
