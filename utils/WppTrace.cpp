#include "utils/WppTrace.h"

#include "platform/EventTracing.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <mutex>

#include "utils/HResultFromWin32.h"
#include "utils/SharedLock.h"
#include "utils/TraceChannels.h"

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

void Apply(const WppSession &session) noexcept
{
    sessionLogger.store(session.logger, std::memory_order_relaxed);
    sessionFlags.store(session.flags, std::memory_order_relaxed);
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
        const TRACEHANDLE logger = GetTraceLoggerHandle(buffer);
        Apply(WppSession::Make(logger, GetTraceEnableLevel(logger), GetTraceEnableFlags(logger)));
    }
    else if (request == WMI_DISABLE_EVENTS)
    {
        Apply(WppSession{});
    }
    return ERROR_SUCCESS;
}

std::uint32_t FlagOf(WppMessage message) noexcept
{
    return message == WppMessage::Entry || message == WppMessage::Exit ? kWppFlagEntryExit : kWppFlagMessages;
}

} // namespace

WppArgument::WppArgument(const char *argumentText) noexcept
    : isString(true), text(argumentText == nullptr ? "null" : argumentText)
{
}

WppArgument::WppArgument(HRESULT argumentValue) noexcept : isString(false), value(argumentValue) {}

WppArgumentList::WppArgumentList(std::initializer_list<WppArgument> arguments) noexcept
{
    for (const WppArgument &argument : arguments)
    {
        if (count == kMaxArguments)
        {
            return;
        }
        if (argument.isString)
        {
            AddString(argument.text);
            continue;
        }
        values[count] = argument.value;
        pieces[count] = {&values[count], sizeof(values[count])};
        ++count;
    }
}

void WppArgumentList::AddString(const char *text) noexcept
{
    const std::size_t length = strnlen(text, kMaxStringBytes);
    if (length < kMaxStringBytes)
    {
        pieces[count++] = {text, length + 1};
        return;
    }
    // Room for one cut string: a message has at most one text that can grow.
    if (cutStringUsed)
    {
        pieces[count++] = {"...", sizeof("...")};
        return;
    }
    cutStringUsed = true;
    std::memcpy(cutString.data(), text, kMaxStringBytes - 1);
    cutString.back() = '\0';
    pieces[count++] = {cutString.data(), kMaxStringBytes};
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

void WppTrace::Write(TraceLevel level, WppMessage message, std::initializer_list<WppArgument> arguments) noexcept
{
    if (!IsEnabled(level, FlagOf(message)))
    {
        return;
    }
    const WppArgumentList list(arguments);
    // The call takes pointer and size in turn up to a null pointer; pieces that are not used are null with size 0,
    // so the list always ends in time, with a null as wide as a pointer.
    static_assert(WppArgumentList::kMaxArguments == 5);
    GUID messageClass = kWppMessageGuid;
    TraceMessage(sessionLogger.load(std::memory_order_relaxed), kMessageFlags, &messageClass,
                 static_cast<USHORT>(message), list.At(0).data, list.At(0).size, list.At(1).data, list.At(1).size,
                 list.At(2).data, list.At(2).size, list.At(3).data, list.At(3).size, list.At(4).data, list.At(4).size,
                 static_cast<void *>(nullptr));
}

} // namespace mft_utils
