#include "trace/WppTrace.h"

#include "platform/EventTracing.h"

#include <atomic>
#include <mutex>

#include "base/HResultFromWin32.h"
#include "base/SharedLock.h"
#include "trace/ModuleRecord.h"
#include "trace/TraceChannels.h"
#include "trace/TraceLine.h"

namespace mft_utils
{

namespace
{

constexpr ULONG kMessageFlags =
    TRACE_MESSAGE_SEQUENCE | TRACE_MESSAGE_GUID | TRACE_MESSAGE_TIMESTAMP | TRACE_MESSAGE_SYSTEMINFO;
static_assert(kMessageFlags == 43);

constinit user_space_frameworks::SharedLock registrationLock;
TRACEHANDLE registration TARN_GUARDED_BY(registrationLock) = 0;

std::atomic<std::uint64_t> sessionLogger{0};
std::atomic<std::uint32_t> sessionLevel{0};
std::atomic<std::uint32_t> sessionFlags{0};
std::atomic<bool> moduleRecordDue{false};

void Apply(const WppSession &session) noexcept
{
    sessionLogger.store(session.logger, std::memory_order_relaxed);
    sessionFlags.store(session.flags, std::memory_order_relaxed);
    moduleRecordDue.store(session.logger != 0, std::memory_order_relaxed);
    sessionLevel.store(session.level, std::memory_order_relaxed);
    UpdateTraceLevels();
}

ULONG WINAPI OnEnable(WMIDPREQUESTCODE request, PVOID, ULONG *size, PVOID buffer)
{
    if (size != nullptr)
    {
        *size = 0;
    }
    if (request == WMI_ENABLE_EVENTS)
    {
        ModuleRecord::OfThisProcess(); // read here, before frames wait for it
        const TRACEHANDLE logger = GetTraceLoggerHandle(buffer);
        Apply(WppSession::Make(logger, GetTraceEnableLevel(logger), GetTraceEnableFlags(logger)));
    }
    else if (request == WMI_DISABLE_EVENTS)
    {
        Apply(WppSession{});
    }
    return ERROR_SUCCESS;
}

std::uint32_t FlagOf(TraceMessageId message) noexcept
{
    return message == TraceMessageId::Entry || message == TraceMessageId::Exit ? kWppFlagEntryExit : kWppFlagMessages;
}

} // namespace

WppArgumentList::WppArgumentList(std::initializer_list<TraceArgument> arguments) noexcept
{
    for (const TraceArgument &argument : arguments)
    {
        if (count == kMaxArguments)
        {
            return;
        }
        if (argument.isString)
        {
            const TextCutter::Piece piece = cutter.Fit(argument.text);
            pieces[count++] = {piece.text, piece.size};
            continue;
        }
        values[count] = argument.value;
        pieces[count] = {&values[count], sizeof(values[count])};
        ++count;
    }
}

WppSession WppSession::Make(std::uint64_t logger, std::uint32_t level, std::uint32_t flags) noexcept
{
    if (logger == 0 || logger == static_cast<std::uint64_t>(INVALID_PROCESSTRACE_HANDLE) || flags == 0)
    {
        return {};
    }
    return {logger, level, flags};
}

HRESULT WppTrace::Register() noexcept
{
    const std::scoped_lock guard(registrationLock);
    if (registration != 0)
    {
        return S_FALSE;
    }
    TRACE_GUID_REGISTRATION messageClass{&kWppMessageGuid, nullptr};
    TRACEHANDLE handle = 0;
    const ULONG error =
        RegisterTraceGuidsW(&OnEnable, nullptr, &kWppControlGuid, 1, &messageClass, nullptr, nullptr, &handle);
    if (error != ERROR_SUCCESS)
    {
        return HResultFromWin32(error);
    }
    registration = handle;
    return S_OK;
}

void WppTrace::Unregister() noexcept
{
    const std::scoped_lock guard(registrationLock);
    if (registration != 0)
    {
        UnregisterTraceGuids(registration);
        registration = 0;
    }
    Apply(WppSession{});
}

std::uint32_t WppTrace::EnabledLevel() noexcept
{
    return sessionLevel.load(std::memory_order_relaxed);
}

bool WppTrace::IsEnabled(TraceLevel level, std::uint32_t flag) noexcept
{
    return EnabledLevel() >= static_cast<std::uint32_t>(level) &&
           (sessionFlags.load(std::memory_order_relaxed) & flag) != 0;
}

namespace
{
class WppChannel final : public ITraceChannel
{
  public:
    std::uint32_t MessageLevel() const noexcept override
    {
        return WppTrace::EnabledLevel();
    }
    std::uint32_t EventLevel() const noexcept override
    {
        return 0;
    }

    void Write(const TraceMessage &message) noexcept override
    {
        if (!WppTrace::IsEnabled(message.level, FlagOf(message.id)))
        {
            return;
        }
        if (moduleRecordDue.load(std::memory_order_relaxed) &&
            moduleRecordDue.exchange(false, std::memory_order_relaxed))
        {
            ModuleRecord::OfThisProcess().AsEvent([](const TraceEvent &record) {
                TraceText text(record.name);
                AppendFields(text, record);
                Send({ModuleRecord::kLevel,
                      TraceMessageId::Text,
                      "mft_utils::ModuleRecord",
                      text.Text(),
                      {"mft_utils::ModuleRecord", HRESULT{0}, text.Text()}});
            });
        }
        Send(message);
    }
    void Write(const TraceEvent &) noexcept override {}

  private:
    static void Send(const TraceMessage &message) noexcept
    {
        const WppArgumentList list(message.arguments);
        // The call takes pointer and size in turn up to a null pointer; pieces that are not used are null with size 0,
        // so the list always ends in time, with a null as wide as a pointer.
        static_assert(WppArgumentList::kMaxArguments == 5);
        GUID messageClass = kWppMessageGuid;
        ::TraceMessage(sessionLogger.load(std::memory_order_relaxed), kMessageFlags, &messageClass,
                       static_cast<USHORT>(message.id), list.At(0).data, list.At(0).size, list.At(1).data,
                       list.At(1).size, list.At(2).data, list.At(2).size, list.At(3).data, list.At(3).size,
                       list.At(4).data, list.At(4).size, static_cast<void *>(nullptr));
    }
};

constinit WppChannel channel;
} // namespace

ITraceChannel &WppTrace::Channel() noexcept
{
    return channel;
}

} // namespace mft_utils
