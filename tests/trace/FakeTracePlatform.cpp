#include "FakeTracePlatform.h"

#include <cstdarg>

#include <gtest/gtest.h>

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

ULONG WINAPI FakeRegisterTraceGuidsW(WMIDPREQUEST callback, PVOID, LPCGUID control, ULONG count,
                                     PTRACE_GUID_REGISTRATION classes, LPCWSTR, LPCWSTR, PTRACEHANDLE handle)
{
    if (Fake().registerResult != ERROR_SUCCESS)
    {
        return Fake().registerResult;
    }
    Fake().classicCallback = callback;
    Fake().classicControl = *control;
    Fake().classicMessageClass = count == 1 ? *classes[0].Guid : GUID{};
    *handle = kClassicHandle;
    return ERROR_SUCCESS;
}

ULONG WINAPI FakeUnregisterTraceGuids(TRACEHANDLE handle)
{
    if (handle == kClassicHandle)
    {
        Fake().classicCallback = nullptr;
    }
    return ERROR_SUCCESS;
}

TRACEHANDLE WINAPI FakeGetTraceLoggerHandle(PVOID)
{
    return Fake().sessionLogger;
}

UCHAR WINAPI FakeGetTraceEnableLevel(TRACEHANDLE)
{
    return Fake().sessionLevel;
}

ULONG WINAPI FakeGetTraceEnableFlags(TRACEHANDLE)
{
    return Fake().sessionFlags;
}

ULONG WINAPI FakeEventRegister(LPCGUID provider, PENABLECALLBACK callback, PVOID, PREGHANDLE handle)
{
    if (Fake().registerResult != ERROR_SUCCESS)
    {
        return Fake().registerResult;
    }
    Fake().structuredProvider = *provider;
    Fake().structuredCallback = callback;
    *handle = kStructuredHandle;
    return ERROR_SUCCESS;
}

ULONG WINAPI FakeEventUnregister(REGHANDLE handle)
{
    if (handle == kStructuredHandle)
    {
        Fake().structuredCallback = nullptr;
    }
    return ERROR_SUCCESS;
}

ULONG WINAPI FakeEventSetInformation(REGHANDLE, EVENT_INFO_CLASS, PVOID information, ULONG size)
{
    Fake().structuredTraits.assign(static_cast<const char *>(information), size);
    return Fake().traitsResult;
}

ULONG WINAPI FakeEventWriteTransfer(REGHANDLE handle, PCEVENT_DESCRIPTOR descriptor, LPCGUID activity, LPCGUID related,
                                    ULONG count, PEVENT_DATA_DESCRIPTOR data)
{
    EXPECT_EQ(kStructuredHandle, handle);
    EXPECT_EQ(nullptr, related);
    WrittenEvent event{*descriptor, activity != nullptr, {}, {}, {}};
    if (activity != nullptr)
    {
        event.activity = *activity;
    }
    for (ULONG i = 0; i < count; ++i)
    {
        event.data.emplace_back(reinterpret_cast<const char *>(static_cast<ULONG_PTR>(data[i].Ptr)), data[i].Size);
        event.types.push_back(data[i].Reserved);
    }
    Fake().events.push_back(event);
    return ERROR_SUCCESS;
}

} // namespace

} // namespace tarn_test

// The pointers through which the code calls the platform; defined here, the import library's are not taken.
#define TARN_IMPORT(function)                                                                                          \
    extern const decltype(&function) importOf##function asm("__imp_" #function);                                       \
    const decltype(&function) importOf##function = &tarn_test::Fake##function

extern "C"
{
    TARN_IMPORT(RegisterTraceGuidsW);
    TARN_IMPORT(UnregisterTraceGuids);
    TARN_IMPORT(GetTraceLoggerHandle);
    TARN_IMPORT(GetTraceEnableLevel);
    TARN_IMPORT(GetTraceEnableFlags);
    TARN_IMPORT(EventRegister);
    TARN_IMPORT(EventUnregister);
    TARN_IMPORT(EventSetInformation);
    TARN_IMPORT(EventWriteTransfer);

    // The one function that is not called through a pointer.
    ULONG __cdecl TraceMessage(TRACEHANDLE logger, ULONG flags, LPCGUID messageClass, USHORT number, ...)
    {
        tarn_test::WrittenMessage message{logger, flags, *messageClass, number, {}};
        std::va_list arguments;
        va_start(arguments, number);
        while (const void *data = va_arg(arguments, const void *))
        {
            const SIZE_T size = va_arg(arguments, SIZE_T);
            message.arguments.emplace_back(static_cast<const char *>(data), size);
        }
        va_end(arguments);
        tarn_test::FakeTracePlatform::Instance().messages.push_back(message);
        return ERROR_SUCCESS;
    }
}
