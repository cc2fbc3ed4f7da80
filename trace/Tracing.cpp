#include "trace/Tracing.h"

#include "trace/DebugTraceSink.h"
#include "trace/Trace.h"
#include "trace/TraceChannels.h"
#include "trace/TraceLoggingProvider.h"
#include "trace/WppTrace.h"

namespace mft_utils
{

std::array<ITraceChannel *, 3> TraceChannels() noexcept
{
    return {&WppTrace::Channel(), &TraceLoggingProvider::Channel(), &DebugTraceSink::Instance()};
}

void InitializeTracing() noexcept
{
    DebugTraceSink::Instance().ConfigureFromEnvironment();
    const HRESULT classic = WppTrace::Register();
    const HRESULT structured = TraceLoggingProvider::Register();
    TRACE_INFO("Tracing started: classic channel hr 0x%08lX, structured channel hr 0x%08lX",
               static_cast<unsigned long>(classic), static_cast<unsigned long>(structured));
}

void ShutdownTracing() noexcept
{
    TRACE_INFO("Tracing ends");
    TraceLoggingProvider::Unregister();
    WppTrace::Unregister();
    DebugTraceSink::Instance().Close();
}

} // namespace mft_utils
