#include "ks/OneShotKsEventHandler.h"

#include <mutex>

#include "ks/KsRequest.h"
#include "trace/Check.h"
#include "base/HResultFromWin32.h"

namespace mft_core
{

HRESULT OneShotKsEventHandler::Run(PKSEVENT pEvent, ULONG, LPVOID pEventData, ULONG ulDataLength, ULONG *)
{
    CHECK_POINTER_AS("pEvent", pEvent, E_INVALIDARG);
    CHECK_POINTER_AS("pEventData", pEventData, E_INVALIDARG);
    if ((FlagsOf(pEvent) & KSEVENT_TYPE_ONESHOT) == 0)
    {
        return E_NOTIMPL;
    }
    return Subscribe(pEventData, ulDataLength);
}

HRESULT OneShotKsEventHandler::Set()
{
    const std::scoped_lock guard(lock);
    CHECK_POINTER_AS("eventHandle", eventHandle, HRESULT_FROM_WIN32(ERROR_INVALID_STATE));
    if (!SetEvent(eventHandle.Get()))
    {
        const HRESULT failure = mft_utils::HResultFromLastError();
        TRACE_ERROR("%s: the subscriber's event cannot be signalled, hr 0x%08lX", GetName(),
                    static_cast<unsigned long>(failure));
        return failure;
    }
    eventHandle.Reset();
    TRACE_INFO("%s: fired", GetName());
    return S_OK;
}

} // namespace mft_core
