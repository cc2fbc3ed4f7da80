#include "ks/KsEventHandler.h"

#include <mutex>

#include "ks/KsRequest.h"
#include "trace/Check.h"
#include "base/HResultFromWin32.h"

namespace mft_core
{

HRESULT KsEventHandler::AttemptToResetRegularEvent(KSEVENTDATA *)
{
    return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
}

HRESULT KsEventHandler::DuplicateEventHandle(HANDLE event)
{
    const std::scoped_lock guard(lock);
    if (eventHandle)
    {
        TRACE_ERROR("%s has a subscriber already", GetName());
        return HRESULT_FROM_WIN32(ERROR_INVALID_STATE);
    }
    if (!DuplicateHandle(GetCurrentProcess(), event, GetCurrentProcess(), eventHandle.ReleaseAndGetAddressOf(), 0,
                         FALSE, DUPLICATE_SAME_ACCESS))
    {
        return mft_utils::HResultFromWin32(GetLastError());
    }
    return S_OK;
}

HRESULT KsEventHandler::Subscribe(LPVOID pEventData, ULONG ulDataLength)
{
    CHECK_POINTER_AS("pEventData", pEventData, E_INVALIDARG);
    if (ulDataLength < sizeof(KSEVENTDATA))
    {
        TRACE_ERROR("%s: event data of %lu bytes, %zu expected", GetName(), ulDataLength, sizeof(KSEVENTDATA));
        return E_INVALIDARG;
    }
    CHECK_HR_AS("DuplicateEventHandle(ksEventData->EventHandle.Event)",
                DuplicateEventHandle(ReadBlock<KSEVENTDATA>(pEventData).EventHandle.Event));
    return S_OK;
}

} // namespace mft_core
