#include "ks/KsPropHandler.h"

#include <utility>

namespace mft_core
{

KsPropHandler::KsPropHandler(const GUID &set, ULONG id, std::string handlerName, ComPtr<IKsControl> ksControl)
    : KsControlHandler(set, id, KsControlKind::Property, std::move(handlerName), std::move(ksControl))
{
}

HRESULT KsPropHandler::Run(PKSPROPERTY, ULONG, LPVOID, ULONG, ULONG *)
{
    return ERROR_SET_NOT_FOUND;
}

} // namespace mft_core
