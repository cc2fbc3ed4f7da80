#include "ks/PassthroughKsEventsHandler.h"

#include <utility>

#include "trace/Check.h"

namespace mft_core
{

PassthroughKsEventsHandler::PassthroughKsEventsHandler(ComPtr<IKsControl> ksControl)
    : KsEventHandler(GUID{}, 0, "Pass Through KS Events Handler", std::move(ksControl))
{
}

HRESULT PassthroughKsEventsHandler::Run(PKSEVENT pEvent, ULONG ulEventLength, LPVOID pEventData, ULONG ulDataLength,
                                        ULONG *pBytesReturned)
{
    CHECK_POINTER(myKsControl);
    const HRESULT result = myKsControl->KsEvent(pEvent, ulEventLength, pEventData, ulDataLength, pBytesReturned);
    CHECK_HR_AS("myKsControl->KsEvent(pEvent, ulEventLength, pEventData, ulDataLength, pBytesReturned)", result);
    return result;
}

} // namespace mft_core
