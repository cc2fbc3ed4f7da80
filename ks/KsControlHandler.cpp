#include "ks/KsControlHandler.h"

#include <utility>

#include "trace/Trace.h"

namespace mft_core
{

KsControlHandler::KsControlHandler(const GUID &set, ULONG id, KsControlKind kind, std::string handlerName,
                                   ComPtr<IKsControl> ksControl)
    : Object(std::move(handlerName)), setGuid(set), controlId(id), myKsControl(std::move(ksControl))
{
    if (mft_utils::TraceEnabled(mft_utils::TraceLevel::Information))
    {
        KSIDENTIFIER identifier{};
        identifier.Set = set;
        identifier.Id = id;
        TRACE_INFO("%s serves %s", Object::GetName(),
                   mft_utils::KsIdentifierTranslator::Name(&identifier, kind).c_str());
    }
}

bool KsControlHandler::IsSameControl(const KsControlHandler &other) const noexcept
{
    return IsEqualGUID(setGuid, other.setGuid) && controlId == other.controlId;
}

bool KsControlHandler::Handles(const KSIDENTIFIER &identifier) const noexcept
{
    return IsEqualGUID(identifier.Set, setGuid) && identifier.Id == controlId;
}

} // namespace mft_core
