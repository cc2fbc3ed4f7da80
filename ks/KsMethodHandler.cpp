#include "ks/KsMethodHandler.h"

#include <utility>

namespace mft_core
{

KsMethodHandler::KsMethodHandler(const GUID &set, ULONG id, std::string handlerName, ComPtr<IKsControl> ksControl)
    : KsControlHandler(set, id, KsControlKind::Method, std::move(handlerName), std::move(ksControl))
{
}

HRESULT KsMethodHandler::Run(PKSMETHOD, ULONG, LPVOID, ULONG, ULONG *)
{
    return ERROR_SET_NOT_FOUND;
}

} // namespace mft_core
