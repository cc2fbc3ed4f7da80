#include "ks/WarmStartKsPropsHandler.h"

#include "platform/ExtendedCameraControl.h"

#include "ks/KsRequest.h"
#include "trace/Check.h"

namespace mft_core
{

namespace
{
constexpr ULONG kPayloadSize = sizeof(KSCAMERA_EXTENDEDPROP_HEADER) + sizeof(KSCAMERA_EXTENDEDPROP_VALUE);
constexpr ULONG kSizeReportedBySet = 16;
} // namespace

WarmStartKsPropsHandler::WarmStartKsPropsHandler()
    : KsPropHandler(KSPROPERTYSETID_ExtendedCameraControl, KSPROPERTY_CAMERACONTROL_EXTENDED_WARMSTART,
                    "Warm Start handler")
{
}

HRESULT WarmStartKsPropsHandler::Run(PKSPROPERTY pProperty, ULONG, LPVOID pvPropertyData, ULONG ulDataLength,
                                     ULONG *pulBytesReturned)
{
    SetReturnedSize(pulBytesReturned, 0);
    CHECK_POINTER(pProperty);

    const ULONG flags = FlagsOf(pProperty);
    const bool isSet = (flags & KSPROPERTY_TYPE_SET) != 0;
    if (!isSet && (flags & KSPROPERTY_TYPE_GET) == 0)
    {
        return S_OK;
    }
    if (ulDataLength < kPayloadSize)
    {
        // Only a caller that asks with an empty buffer wants to hear the size.
        SetReturnedSize(pulBytesReturned, ulDataLength == 0 ? kPayloadSize : 0);
        return HRESULT_FROM_WIN32(ERROR_MORE_DATA);
    }
    if (pvPropertyData == nullptr)
    {
        return S_OK;
    }
    const HRESULT result = isSet ? Set(pvPropertyData) : Get(pvPropertyData);
    if (SUCCEEDED(result))
    {
        SetReturnedSize(pulBytesReturned, isSet ? kSizeReportedBySet : kPayloadSize);
    }
    return result;
}

HRESULT WarmStartKsPropsHandler::Set(const void *data)
{
    const auto header = ReadBlock<KSCAMERA_EXTENDEDPROP_HEADER>(data);
    if ((header.Flags & KSCAMERA_EXTENDEDPROP_WARMSTART_MODE_ENABLED) != 0)
    {
        TRACE_ERROR("%s: warm start is not supported", GetName());
        return E_INVALIDARG;
    }
    return S_OK;
}

HRESULT WarmStartKsPropsHandler::Get(void *data)
{
    auto header = ReadBlock<KSCAMERA_EXTENDEDPROP_HEADER>(data); // PinId stays the caller's
    header.Version = 1;
    header.Size = kPayloadSize;
    header.Result = 0;
    header.Flags = KSCAMERA_EXTENDEDPROP_WARMSTART_MODE_DISABLED;
    header.Capability = KSCAMERA_EXTENDEDPROP_CAPS_ASYNCCONTROL;
    WriteBlock(data, header);
    return S_OK;
}

} // namespace mft_core
