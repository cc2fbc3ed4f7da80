#include "ks/KsControlsDispatcher.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "ks/KsRequest.h"
#include "trace/Guard.h"
#include "trace/TraceLogging.h"

namespace mft_core
{

namespace
{

constexpr std::size_t kBytesPerLine = 32;
constexpr std::size_t kLongestDump = 4096; // a camera's largest block is far below; an application may send anything

void DumpBytes(const char *what, const void *bytes, std::size_t size)
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    const auto *byte = static_cast<const unsigned char *>(bytes);
    const std::size_t shown = std::min(size, kLongestDump);
    for (std::size_t offset = 0; offset < shown; offset += kBytesPerLine)
    {
        std::string line;
        const std::size_t end = std::min(offset + kBytesPerLine, shown);
        for (std::size_t index = offset; index < end; ++index)
        {
            line += kDigits[byte[index] >> 4];
            line += kDigits[byte[index] & 0xF];
            line += ' ';
        }
        TRACE_VERBOSE("%s %04zX: %s", what, offset, line.c_str());
    }
    if (shown < size)
    {
        TRACE_VERBOSE("%s: %zu more bytes", what, size - shown);
    }
}

// The identifier may come from an application that lies about its length: it is read only when that covers it.
HRESULT CheckRequest(const KsCallArguments &call) noexcept
{
    if (call.request == nullptr)
    {
        return E_POINTER;
    }
    return call.requestLength < sizeof(KSIDENTIFIER) ? E_INVALIDARG : S_OK;
}

void TraceRequest(const std::string &displayName, const KSIDENTIFIER &identifier, const KsCallArguments &call)
{
    TRACE_INFO("%s, data length %lu", displayName.c_str(), call.dataLength);
    if (mft_utils::TraceEnabled(mft_utils::TraceLevel::Verbose))
    {
        DumpBytes("identifier", &identifier, sizeof(identifier));
        if (call.data != nullptr)
        {
            DumpBytes("data", call.data, call.dataLength);
        }
    }
}

// Positive numbers too: a property that nobody serves is one.
void TraceResult(const std::string &displayName, HRESULT result, const KsCallArguments &call)
{
    if (result != S_OK && !IsLengthAnswer(result, call.dataLength) &&
        mft_utils::TraceEnabled(mft_utils::TraceLevel::Error))
    {
        const std::string returned = call.bytesReturned != nullptr ? std::to_string(*call.bytesReturned) : "null";
        TRACE_ERROR("%s: hr 0x%08lX, bytes returned %s", displayName.c_str(), static_cast<unsigned long>(result),
                    returned.c_str());
    }
}
} // namespace

// What differs between the three kinds of call in their traces.
struct KsControlsDispatcher::CallKind
{
    KsControlType type;
    KsControlKind kind;
    const char *activityName;
    const char *fieldName;
    const char *emptyName;

    void Stop(mft_utils::TraceLoggingActivity &activity, const std::string &displayName, HRESULT result) const
    {
        activity.Stop({mft_utils::TraceField::String(fieldName, displayName.c_str()),
                       mft_utils::TraceField::Hex32("hr", result)});
    }
};

KsControlsDispatcher::KsControlsDispatcher() : Object("KS controls dispatcher") {}

// Part of every call: trace, observers, handler, trace.
template <class Dispatcher>
HRESULT KsControlsDispatcher::DispatchCall(const CallKind &kind, Dispatcher &dispatcher, const KsCallArguments &call)
{
    mft_utils::TraceLoggingActivity activity(kind.activityName);
    std::string displayName = kind.emptyName;
    HRESULT result = CheckRequest(call);
    if (SUCCEEDED(result))
    {
        const auto identifier = ReadBlock<KSIDENTIFIER>(call.request);
        // Handlers may rewrite the block, so the name is made before they run; but only if someone will read it.
        if (activity.IsRunning() || mft_utils::TraceEnabled(mft_utils::TraceLevel::Error))
        {
            displayName = mft_utils::KsIdentifierTranslator::Name(&identifier, kind.kind);
        }
        TraceRequest(displayName, identifier, call);
        // Guarded inside, so that observers hear the exit of a handler that throws as well.
        result = Observed(kind.type, call,
                          [&] { return mft_utils::Guarded([&] { return dispatcher.Dispatch(identifier, call); }); });
    }
    TraceResult(displayName, result, call);
    kind.Stop(activity, displayName, result);
    return result;
}

HRESULT KsControlsDispatcher::EndSubscription(const CallKind &kind, const KsCallArguments &call)
{
    mft_utils::TraceLoggingActivity activity(kind.activityName);
    const HRESULT result = Observed(kind.type, call, [&] {
        return mft_utils::Guarded(
            [&] { return eventsDispathcer.ResetRegularEvent(static_cast<KSEVENTDATA *>(call.data)); });
    });
    kind.Stop(activity, kind.emptyName, result);
    return result;
}

HRESULT KsControlsDispatcher::KsProperty(PKSPROPERTY Property, ULONG PropertyLength, LPVOID PropertyData,
                                         ULONG DataLength, ULONG *BytesReturned) noexcept
{
    static constexpr CallKind kKind{KsControlType::Property, KsControlKind::Property,
                                    "mft_core::KsControlsDispatcher::KsProperty", "PropId", "Empty request"};
    const mft_utils::EntryExitTrace trace(GetName());
    return mft_utils::Guarded([&] { // the failure is traced with the property's name
        return DispatchCall(kKind, propertiesDispathcer,
                            {Property, PropertyLength, PropertyData, DataLength, BytesReturned});
    });
}

HRESULT KsControlsDispatcher::KsMethod(PKSMETHOD Method, ULONG MethodLength, LPVOID MethodData, ULONG DataLength,
                                       ULONG *BytesReturned) noexcept
{
    // Method events carry the field name of the event ones; tools that read recordings expect it.
    static constexpr CallKind kKind{KsControlType::Method, KsControlKind::Method,
                                    "mft_core::KsControlsDispatcher::KsMethod", "EventSet", "Empty request"};
    return mft_utils::EntryPoint(GetName(), [&] {
        return DispatchCall(kKind, methodsDispathcer, {Method, MethodLength, MethodData, DataLength, BytesReturned});
    });
}

HRESULT KsControlsDispatcher::KsEvent(PKSEVENT Event, ULONG EventLength, LPVOID EventData, ULONG DataLength,
                                      ULONG *BytesReturned) noexcept
{
    static constexpr CallKind kKind{KsControlType::Event, KsControlKind::Event,
                                    "mft_core::KsControlsDispatcher::KsEvent", "EventSet", "Empty event"};
    return mft_utils::EntryPoint(GetName(), [&] {
        const KsCallArguments call{Event, EventLength, EventData, DataLength, BytesReturned};
        return Event == nullptr ? EndSubscription(kKind, call) : DispatchCall(kKind, eventsDispathcer, call);
    });
}

HRESULT KsControlsDispatcher::RegisterKsPropertyHandler(const std::shared_ptr<KsPropHandler> &handler)
{
    CHECK_HR(propertiesDispathcer.RegisterHandler(handler));
    return S_OK;
}

HRESULT KsControlsDispatcher::RegisterKsPropertyDefaultHandler(const std::shared_ptr<KsPropHandler> &handler)
{
    CHECK_HR(propertiesDispathcer.RegisterDefaultHandler(handler));
    return S_OK;
}

HRESULT KsControlsDispatcher::RegisterKsEventHandler(const std::shared_ptr<KsEventHandler> &handler)
{
    CHECK_HR(eventsDispathcer.RegisterHandler(handler));
    return S_OK;
}

HRESULT KsControlsDispatcher::RegisterKsEventDefaultHandler(const std::shared_ptr<KsEventHandler> &handler)
{
    CHECK_HR(eventsDispathcer.RegisterDefaultHandler(handler));
    return S_OK;
}

HRESULT KsControlsDispatcher::RegisterKsMethodHandler(const std::shared_ptr<KsMethodHandler> &handler)
{
    CHECK_HR(methodsDispathcer.RegisterHandler(handler));
    return S_OK;
}

HRESULT KsControlsDispatcher::RegisterKsMethodDefaultHandler(const std::shared_ptr<KsMethodHandler> &handler)
{
    CHECK_HR(methodsDispathcer.RegisterDefaultHandler(handler));
    return S_OK;
}

} // namespace mft_core
