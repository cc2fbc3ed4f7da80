#include "ks/PassthroughKsMethodsHandler.h"

#include <utility>

#include "trace/Check.h"

namespace mft_core
{

PassthroughKsMethodsHandler::PassthroughKsMethodsHandler(ComPtr<IKsControl> ksControl)
    : KsMethodHandler(GUID{}, 0, "Pass Through KS Methods Handler", std::move(ksControl))
{
}

HRESULT PassthroughKsMethodsHandler::Run(PKSMETHOD pMethod, ULONG ulPropertyLength, LPVOID pvPropertyData,
                                         ULONG ulDataLength, ULONG *pulBytesReturned)
{
    CHECK_POINTER(myKsControl);
    const HRESULT result =
        myKsControl->KsMethod(pMethod, ulPropertyLength, pvPropertyData, ulDataLength, pulBytesReturned);
    CHECK_HR_AS("myKsControl->KsMethod(pMethod, ulPropertyLength, pvPropertyData, ulDataLength, pulBytesReturned)",
                result);
    return result;
}

} // namespace mft_core
