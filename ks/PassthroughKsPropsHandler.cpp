#include "ks/PassthroughKsPropsHandler.h"

#include <utility>

#include "trace/Check.h"

namespace mft_core
{

PassthroughKsPropsHandler::PassthroughKsPropsHandler(ComPtr<IKsControl> ksControl)
    : KsPropHandler(GUID{}, 0, "Pass Through KS Properties Handler", std::move(ksControl))
{
}

HRESULT PassthroughKsPropsHandler::Run(PKSPROPERTY pProperty, ULONG ulPropertyLength, LPVOID pvPropertyData,
                                       ULONG ulDataLength, ULONG *pulBytesReturned)
{
    CHECK_POINTER(myKsControl);
    const HRESULT result =
        myKsControl->KsProperty(pProperty, ulPropertyLength, pvPropertyData, ulDataLength, pulBytesReturned);
    CHECK_HR_AS("myKsControl->KsProperty(pProperty, ulPropertyLength, pvPropertyData, ulDataLength, pulBytesReturned)",
                result);
    return result;
}

} // namespace mft_core
