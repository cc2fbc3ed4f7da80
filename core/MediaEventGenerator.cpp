#include "core/MediaEventGenerator.h"

#include <mutex>
#include <source_location>
#include <utility>

#include "trace/Guard.h"
#include "trace/MediaEventTranslator.h"

using namespace mft_der;

namespace mft_core
{

namespace
{
// The per-frame event would flood the log.
void TraceQueued(MediaEventType type)
{
    if (type != METransformHaveOutput)
    {
        TRACE_INFO("queue event %s", mft_utils::MediaEventTranslator::Name(type));
    }
}

HRESULT CreateQueue(IMFMediaEventQueue **queue)
{
    CHECK_HR(MFCreateEventQueue(queue));
    return S_OK;
}

// That there is no event, or none any more, is an answer and no failure.
bool IsEndOfEvents(HRESULT result)
{
    return result == MF_E_NO_EVENTS_AVAILABLE || result == MF_E_SHUTDOWN;
}

} // namespace

// Entry point of the calls that fetch events.
template <class Given, class Taken, class Body>
HRESULT MediaEventGenerator::FetchEvent(std::uint16_t call, Given &&given, Taken &&taken, Body &&body,
                                        std::source_location location) noexcept
{
    const mft_utils::EntryExitTrace trace(GetName(), location);
    const HRESULT result = recorder.Around(call, given, taken, std::forward<Body>(body), location);
    if (FAILED(result) && !IsEndOfEvents(result))
    {
        TRACE_ERROR("%s: no event, hr 0x%08lX", GetName(), static_cast<unsigned long>(result));
    }
    return result;
}

MediaEventGenerator::MediaEventGenerator()
    : Object("Media event generator"), initialized(SUCCEEDED(CreateQueue(pQueue.GetAddressOf())))
{
}

HRESULT MediaEventGenerator::CheckUsable() const
{
    return shutdown ? MF_E_SHUTDOWN : S_OK;
}

bool MediaEventGenerator::IsShutdown() const
{
    const std::scoped_lock guard(lock);
    return shutdown;
}

HRESULT MediaEventGenerator::GetEvent(DWORD dwFlags, IMFMediaEvent **ppEvent)
{
    const auto given = Values(Number(TARN_VALUE_FLAGS, dwFlags), OutPointer(0, ppEvent));
    return FetchEvent(TARN_CALL_GET_EVENT, given, EventAt(ppEvent), [&]() -> HRESULT {
        if (!initialized)
        {
            return E_OUTOFMEMORY;
        }
        CHECK_POINTER(ppEvent);
        *ppEvent = nullptr;
        ComPtr<IMFMediaEventQueue> local_pQueue;
        {
            const std::scoped_lock guard(lock);
            if (shutdown)
            {
                return MF_E_SHUTDOWN;
            }
            local_pQueue = pQueue;
        }
        // May block until an event comes: never under the lock. It ends with the shutdown.
        const HRESULT result = local_pQueue->GetEvent(dwFlags, ppEvent);
        if (IsEndOfEvents(result))
        {
            return result;
        }
        CHECK_HR_AS("local_pQueue->GetEvent(dwFlags, ppEvent)", result);
        return result;
    });
}

HRESULT MediaEventGenerator::BeginGetEvent(IMFAsyncCallback *pCallback, IUnknown *punkState)
{
    const auto given = Values(ObjectGiven(pCallback), ObjectGiven(punkState));
    return FetchEvent(TARN_CALL_BEGIN_GET_EVENT, given, Values(), [&]() -> HRESULT {
        if (!initialized)
        {
            return E_OUTOFMEMORY;
        }
        CHECK_POINTER(pCallback);
        const std::scoped_lock guard(lock);
        if (shutdown)
        {
            return MF_E_SHUTDOWN;
        }
        const HRESULT result = pQueue->BeginGetEvent(pCallback, punkState);
        CHECK_HR_AS("pQueue->BeginGetEvent(pCallback, punkState)", result);
        return result; // may be the success code MF_S_MULTIPLE_BEGIN
    });
}

HRESULT MediaEventGenerator::EndGetEvent(IMFAsyncResult *pResult, IMFMediaEvent **ppEvent)
{
    const auto given = Values(ObjectGiven(pResult), OutPointer(0, ppEvent));
    return FetchEvent(TARN_CALL_END_GET_EVENT, given, EventAt(ppEvent), [&]() -> HRESULT {
        if (!initialized)
        {
            return E_OUTOFMEMORY;
        }
        CHECK_POINTER(ppEvent);
        *ppEvent = nullptr;
        CHECK_POINTER(pResult);
        const std::scoped_lock guard(lock);
        if (shutdown)
        {
            return MF_E_SHUTDOWN;
        }
        const HRESULT result = pQueue->EndGetEvent(pResult, ppEvent);
        if (IsEndOfEvents(result))
        {
            return result;
        }
        CHECK_HR_AS("pQueue->EndGetEvent(pResult, ppEvent)", result);
        return S_OK;
    });
}

HRESULT MediaEventGenerator::QueueEvent(MediaEventType met, REFGUID guidExtendedType, HRESULT hrStatus,
                                        const PROPVARIANT *pvValue)
{
    const auto given = [&](RecordBuilder &values) { AddEvent(values, met, guidExtendedType, hrStatus, pvValue); };
    return Recorded(TARN_CALL_QUEUE_EVENT, given, Values(),
                    [&] { return Raise(met, guidExtendedType, hrStatus, pvValue); });
}

template <class Describe>
HRESULT MediaEventGenerator::RaiseRecorded(MediaEventType type, REFGUID extendedType, HRESULT status,
                                           const PROPVARIANT *value, Describe &&describe)
{
    if (!initialized)
    {
        return E_OUTOFMEMORY;
    }
    const std::scoped_lock guard(lock);
    CHECK_HR(CheckUsable());
    TraceQueued(type);
    recorder.Event([&](RecordBuilder &values) {
        AddEvent(values, type, extendedType, status, value);
        describe(values);
    });
    CHECK_HR_AS("pQueue->QueueEventParamVar(met, guidExtendedType, hrStatus, pvValue)",
                pQueue->QueueEventParamVar(type, extendedType, status, value));
    return S_OK;
}

HRESULT MediaEventGenerator::Raise(MediaEventType type, REFGUID extendedType, HRESULT status, const PROPVARIANT *value)
{
    return RaiseRecorded(type, extendedType, status, value, Values());
}

HRESULT MediaEventGenerator::RaiseHaveOutput(UINT32 streamId, IMFSample *sample)
{
    return RaiseRecorded(METransformHaveOutput, GUID{}, S_OK, nullptr, [&](RecordBuilder &values) {
        LONGLONG time = 0;
        values.U32(TARN_VALUE_STREAM, streamId);
        if (SUCCEEDED(sample->GetSampleTime(&time)))
        {
            values.I64(TARN_VALUE_TIME, time);
        }
    });
}

void MediaEventGenerator::TellEmptied(UINT32 streamId) const noexcept
{
    recorder.OutputEmptied(streamId);
}

HRESULT MediaEventGenerator::Raise(IMFMediaEvent *event)
{
    if (!initialized)
    {
        return E_OUTOFMEMORY;
    }
    // Wine 8 crashes on a null event.
    CHECK_POINTER(event);
    const std::scoped_lock guard(lock);
    CHECK_HR(CheckUsable());
    MediaEventType type = MEUnknown;
    CHECK_HR(event->GetType(&type));
    TraceQueued(type);
    recorder.Event(EventGiven(event));
    CHECK_HR(pQueue->QueueEvent(event));
    return S_OK;
}

HRESULT MediaEventGenerator::Shutdown()
{
    if (!initialized)
    {
        return E_OUTOFMEMORY;
    }
    const std::scoped_lock guard(lock);
    CHECK_HR(CheckUsable());
    shutdown = true;
    CHECK_HR(pQueue->Shutdown());
    return S_OK;
}

} // namespace mft_core
