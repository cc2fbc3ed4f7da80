#include "ks/UvcCommand.h"

#include <utility>

#include "trace/Check.h"

namespace mft_core
{

UvcCommand::UvcCommand(ComPtr<IKsControl> targetKsControl, const GUID &set, ULONG id, std::string objectName)
    : Object(std::move(objectName)), ksControl(std::move(targetKsControl)), setGuid(set), controlId(id)
{
}

KSPROPERTY UvcCommand::Request(ULONG flags) const noexcept
{
    KSPROPERTY property{};
    property.Set = setGuid;
    property.Id = controlId;
    property.Flags = flags;
    return property;
}

HRESULT UvcCommand::Set(const void *buffer, std::size_t length)
{
    CHECK_POINTER(ksControl);
    KSPROPERTY property = Request(KSPROPERTY_TYPE_SET);
    ULONG bytesReturned = 0;
    // IKsControl has one pointer for both directions; a set does not write through it.
    CHECK_HR_AS("ksControl->KsProperty(&property, sizeof(property), (LPVOID)buffer, static_cast<ULONG>(length), "
                "&bytesReturned)",
                ksControl->KsProperty(&property, sizeof(property), const_cast<void *>(buffer),
                                      static_cast<ULONG>(length), &bytesReturned));
    return S_OK;
}

HRESULT UvcCommand::Get(void *buffer, std::size_t length, ULONG &bytesReturned)
{
    bytesReturned = 0;
    CHECK_POINTER(ksControl);
    KSPROPERTY property = Request(KSPROPERTY_TYPE_GET);
    CHECK_HR_AS("ksControl->KsProperty(&property, sizeof(property), (LPVOID)buffer, static_cast<ULONG>(length), "
                "&bytesReturned)",
                ksControl->KsProperty(&property, sizeof(property), buffer, static_cast<ULONG>(length), &bytesReturned));
    return S_OK;
}

} // namespace mft_core
