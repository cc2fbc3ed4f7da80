#include "device/properties/FaceAuthKsPropertyHandler.h"

#include "platform/ExtendedCameraControl.h"

#include <utility>

#include "ks/KsRequest.h"
#include "trace/Check.h"

namespace mft_core
{

namespace
{
constexpr ULONG kPayloadSize = sizeof(KSCAMERA_EXTENDEDPROP_HEADER) + sizeof(KSCAMERA_EXTENDEDPROP_VALUE);
constexpr ULONGLONG kOff = KSCAMERA_EXTENDEDPROP_FACEAUTH_MODE_DISABLED;
constexpr ULONGLONG kOn = KSCAMERA_EXTENDEDPROP_FACEAUTH_MODE_ALTERNATIVE_FRAME_ILLUMINATION;
} // namespace

FaceAuthKsPropertyHandler::FaceAuthKsPropertyHandler(std::shared_ptr<FaceAuthState> faceAuthState)
    : KsPropHandler(KSPROPERTYSETID_ExtendedCameraControl, KSPROPERTY_CAMERACONTROL_EXTENDED_FACEAUTH_MODE,
                    "Face auth KS property handler"),
      state(std::move(faceAuthState))
{
}

HRESULT FaceAuthKsPropertyHandler::Run(PKSPROPERTY property, ULONG, LPVOID data, ULONG dataLength, ULONG *bytesReturned)
{
    CHECK_POINTER(property);
    CHECK_POINTER(bytesReturned);
    *bytesReturned = 0;
    if (!state->faceAuthSupported)
    {
        TRACE_INFO("%s: not supported by this camera", GetName());
        return ERROR_SET_NOT_FOUND;
    }
    if (dataLength < kPayloadSize)
    {
        *bytesReturned = kPayloadSize;
        TRACE_ERROR("%s: %lu bytes, %lu needed", GetName(), dataLength, kPayloadSize);
        return HRESULT_FROM_WIN32(ERROR_MORE_DATA);
    }
    const ULONG flags = FlagsOf(property);
    const bool isSet = (flags & KSPROPERTY_TYPE_SET) != 0;
    if (!isSet && (flags & KSPROPERTY_TYPE_GET) == 0)
    {
        return E_INVALIDARG;
    }
    CHECK_POINTER(data);
    if (isSet)
    {
        return Set(data);
    }
    Get(data);
    *bytesReturned = kPayloadSize;
    return S_OK;
}

HRESULT FaceAuthKsPropertyHandler::Set(const void *data)
{
    const auto mode = ReadBlock<KSCAMERA_EXTENDEDPROP_HEADER>(data).Flags;
    const bool isKnown = mode == kOff || mode == kOn;
    if (isKnown ? !state->ChangeMode(mode == kOn) : !state->canChangeMode)
    {
        TRACE_ERROR("%s: the mode cannot change while a stream runs", GetName());
        return E_FAIL;
    }
    if (!isKnown)
    {
        TRACE_ERROR("%s: unknown mode 0x%llX", GetName(), mode);
        return E_INVALIDARG;
    }
    TRACE_INFO("%s: mode %s", GetName(), mode == kOn ? "on" : "off");
    return S_OK;
}

void FaceAuthKsPropertyHandler::Get(void *data) const noexcept
{
    auto header = ReadBlock<KSCAMERA_EXTENDEDPROP_HEADER>(data); // the other fields stay the caller's
    header.Version = 1;
    header.Size = kPayloadSize;
    header.Flags = state->faceAuthMode ? kOn : kOff;
    header.Capability = kOff | kOn;
    WriteBlock(data, header);
}

} // namespace mft_core
