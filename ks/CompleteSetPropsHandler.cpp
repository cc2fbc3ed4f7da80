#include "ks/CompleteSetPropsHandler.h"

#include <utility>

#include "ks/KsRequest.h"
#include "trace/Check.h"

namespace mft_core
{

CompleteSetPropsHandler::CompleteSetPropsHandler(ComPtr<IKsControl> ksControl, const GUID &set)
    : KsPropHandler(set, 0, "Complete Set KS Properties Handler", std::move(ksControl))
{
}

bool CompleteSetPropsHandler::Handles(const KSIDENTIFIER &identifier) const noexcept
{
    return IsEqualGUID(identifier.Set, GetSet());
}

HRESULT CompleteSetPropsHandler::Run(PKSPROPERTY pProperty, ULONG ulPropertyLength, LPVOID pPropertyData,
                                     ULONG ulDataLength, ULONG *pBytesReturned)
{
    CHECK_POINTER(myKsControl);
    const HRESULT result =
        myKsControl->KsProperty(pProperty, ulPropertyLength, pPropertyData, ulDataLength, pBytesReturned);
    if (IsLengthAnswer(result, ulDataLength))
    {
        return result;
    }
    CHECK_HR_AS("myKsControl->KsProperty(pProperty, ulPropertyLength, pPropertyData, ulDataLength, pBytesReturned)",
                result);
    return result;
}

bool CompleteSetPropsHandler::IsSameSet(const KsControlHandler &other) const noexcept
{
    return IsEqualGUID(GetSet(), other.GetSet());
}

} // namespace mft_core
