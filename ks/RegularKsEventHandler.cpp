#include "ks/RegularKsEventHandler.h"

#include <mutex>

#include "ks/KsRequest.h"
#include "trace/Check.h"

namespace mft_core
{

HRESULT RegularKsEventHandler::Run(PKSEVENT pEvent, ULONG, LPVOID pEventData, ULONG ulDataLength, ULONG *)
{
    CHECK_POINTER_AS("pEvent", pEvent, E_INVALIDARG);
    if ((FlagsOf(pEvent) & KSEVENT_TYPE_ENABLE) == 0)
    {
        return E_NOTIMPL;
    }
    return Subscribe(pEventData, ulDataLength);
}

HRESULT RegularKsEventHandler::AttemptToResetRegularEvent(KSEVENTDATA *eventData)
{
    return Reset(eventData);
}

HRESULT RegularKsEventHandler::Set()
{
    const std::scoped_lock guard(lock);
    CHECK_POINTER_AS("eventHandle", eventHandle, HRESULT_FROM_WIN32(ERROR_INVALID_STATE));
    if (!SetEvent(eventHandle.Get()))
    {
        TRACE_ERROR("%s: the subscriber's event cannot be signalled, error %lu", GetName(), GetLastError());
        return S_OK;
    }
    eventHandle.Detach();
    registeredEventData = nullptr;
    return S_OK;
}

HRESULT RegularKsEventHandler::Reset(KSEVENTDATA *eventData)
{
    const std::scoped_lock guard(lock);
    if (eventData != registeredEventData)
    {
        return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
    }
    eventHandle.Reset();
    registeredEventData = nullptr;
    return S_OK;
}

} // namespace mft_core
