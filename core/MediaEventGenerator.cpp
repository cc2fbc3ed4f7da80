#include "core/MediaEventGenerator.h"

#include <mutex>
#include <source_location>
#include <utility>

#include "trace/Guard.h"
#include "trace/MediaEventTranslator.h"

using mft_utils::EntryPoint;

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

// Entry point of the calls that fetch events.
template <class Body>
HRESULT FetchEvent(const char *objectName, Body &&body,
                   std::source_location location = std::source_location::current()) noexcept
{
    const mft_utils::EntryExitTrace trace(objectName, location);
    const HRESULT result = mft_utils::Guarded(std::forward<Body>(body), location);
    if (FAILED(result) && !IsEndOfEvents(result))
    {
        TRACE_ERROR("%s: no event, hr 0x%08lX", objectName, static_cast<unsigned long>(result));
    }
    return result;
}
} // namespace

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
    return FetchEvent(GetName(), [&]() -> HRESULT {
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
    return FetchEvent(GetName(), [&]() -> HRESULT {
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
    return FetchEvent(GetName(), [&]() -> HRESULT {
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
    return EntryPoint(GetName(), [&]() -> HRESULT {
        if (!initialized)
        {
            return E_OUTOFMEMORY;
        }
        const std::scoped_lock guard(lock);
        CHECK_HR(CheckUsable());
        TraceQueued(met);
        CHECK_HR(pQueue->QueueEventParamVar(met, guidExtendedType, hrStatus, pvValue));
        return S_OK;
    });
}

HRESULT MediaEventGenerator::QueueEvent(IMFMediaEvent *event)
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
