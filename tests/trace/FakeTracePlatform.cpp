#include "FakeTracePlatform.h"

#include <cstdarg>

namespace tarn_test
{

FakeTracePlatform &FakeTracePlatform::Instance()
{
    static FakeTracePlatform platform;
    return platform;
}

void FakeTracePlatform::Reset()
{
    *this = FakeTracePlatform{};
}

void FakeTracePlatform::EnableClassic(std::uint64_t logger, UCHAR level, ULONG flags)
{
    sessionLogger = logger;
    sessionLevel = level;
    sessionFlags = flags;
    ULONG size = 1;
    classicCallback(WMI_ENABLE_EVENTS, nullptr, &size, nullptr);
}

void FakeTracePlatform::DisableClassic()
{
    ULONG size = 1;
    classicCallback(WMI_DISABLE_EVENTS, nullptr, &size, nullptr);
}

void FakeTracePlatform::EnableStructured(ULONG isEnabled, UCHAR level)
{
    structuredCallback(&structuredProvider, isEnabled, level, 0, 0, nullptr, nullptr);
}

namespace
{

constexpr TRACEHANDLE kClassicHandle = 0x11;
constexpr REGHANDLE kStructuredHandle = 0x22;

FakeTracePlatform &Fake()
{
    return FakeTracePlatform::Instance();
}

} // namespace

} // namespace tarn_test

// The pointers through which the code calls the platform; defined here, the import library's are not taken.
#define TARN_IMPORT(function)                                                                                          \
    extern const decltype(&function) importOf##function asm("__imp_" #function);                                       \
    const decltype(&function) importOf##function

extern "C"
{
    using namespace tarn_test;

    TARN_IMPORT(RegisterTraceGuidsW) = [](WMIDPREQUEST callback, PVOID, LPCGUID control, ULONG count,
                                          PTRACE_GUID_REGISTRATION classes, LPCWSTR, LPCWSTR, PTRACEHANDLE handle) {
        if (Fake().registerResult == ERROR_SUCCESS)
        {
            Fake().classicCallback = callback;
            Fake().classicControl = *control;
            Fake().classicMessageClass = count == 1 ? *classes[0].Guid : GUID{};
            *handle = kClassicHandle;
        }
        return Fake().registerResult;
    };
    TARN_IMPORT(UnregisterTraceGuids) = [](TRACEHANDLE handle) -> ULONG {
        Fake().classicCallback = handle == kClassicHandle ? nullptr : Fake().classicCallback;
        return ERROR_SUCCESS;
    };
    TARN_IMPORT(GetTraceLoggerHandle) = [](PVOID) -> TRACEHANDLE { return Fake().sessionLogger; };
    TARN_IMPORT(GetTraceEnableLevel) = [](TRACEHANDLE) { return Fake().sessionLevel; };
    TARN_IMPORT(GetTraceEnableFlags) = [](TRACEHANDLE) { return Fake().sessionFlags; };
    TARN_IMPORT(EventRegister) = [](LPCGUID provider, PENABLECALLBACK callback, PVOID, PREGHANDLE handle) {
        if (Fake().registerResult == ERROR_SUCCESS)
        {
            Fake().structuredProvider = *provider;
            Fake().structuredCallback = callback;
            *handle = kStructuredHandle;
        }
        return Fake().registerResult;
    };
    TARN_IMPORT(EventUnregister) = [](REGHANDLE handle) -> ULONG {
        Fake().structuredCallback = handle == kStructuredHandle ? nullptr : Fake().structuredCallback;
        return ERROR_SUCCESS;
    };
    TARN_IMPORT(EventSetInformation) = [](REGHANDLE, EVENT_INFO_CLASS, PVOID information, ULONG size) {
        Fake().structuredTraits.assign(static_cast<const char *>(information), size);
        return Fake().traitsResult;
    };
    TARN_IMPORT(EventWriteTransfer) = [](REGHANDLE handle, PCEVENT_DESCRIPTOR descriptor, LPCGUID activity,
                                         LPCGUID related, ULONG count, PEVENT_DATA_DESCRIPTOR data) -> ULONG {
        EXPECT_EQ(kStructuredHandle, handle);
        EXPECT_EQ(nullptr, related);
        WrittenEvent event{*descriptor, activity != nullptr, activity != nullptr ? *activity : GUID{}, {}, {}};
        for (ULONG i = 0; i < count; ++i)
        {
            event.data.emplace_back(reinterpret_cast<const char *>(static_cast<ULONG_PTR>(data[i].Ptr)), data[i].Size);
            event.types.push_back(data[i].Reserved);
        }
        (descriptor->Level == 0 ? Fake().moduleEvents : Fake().events).push_back(event);
        return ERROR_SUCCESS;
    };

    // The one function that is not called through a pointer.
    ULONG __cdecl TraceMessage(TRACEHANDLE logger, ULONG flags, LPCGUID messageClass, USHORT number, ...)
    {
        WrittenMessage message{logger, flags, *messageClass, number, {}};
        std::va_list arguments;
        va_start(arguments, number);
        while (const void *data = va_arg(arguments, const void *))
        {
            const SIZE_T size = va_arg(arguments, SIZE_T);
            message.arguments.emplace_back(static_cast<const char *>(data), size);
        }
        va_end(arguments);
        const bool isModule = message.arguments.at(0).starts_with("mft_utils::ModuleRecord");
        (isModule ? Fake().moduleMessages : Fake().messages).push_back(message);
        return ERROR_SUCCESS;
    }
}
