#include "sim/SimulatedStream.h"

#include "platform/CameraAttributes.h"

#include <algorithm>

#include "sim/FrameComposer.h"
#include "base/ThrowIfFailed.h"

using mft_utils::ThrowIfFailed;

namespace tarn_sim
{

ComPtr<IMFAttributes> MakeFilterAttributes(const CameraConfiguration &configuration)
{
    ComPtr<IMFAttributes> attributes;
    ThrowIfFailed(MFCreateAttributes(&attributes, 2), "MFCreateAttributes");
    ThrowIfFailed(attributes->SetString(MFT_ENUM_HARDWARE_URL_Attribute, L"\\\\?\\usb#simulated_tarn_camera"),
                  "SetString");
    ThrowIfFailed(attributes->SetUINT32(MF_TRANSFORM_ASYNC, configuration.pins.empty() ? 0 : 1), "SetUINT32");
    return attributes;
}

ComPtr<IMFAttributes> MakePinAttributes(const PinConfiguration &pin)
{
    ComPtr<IMFAttributes> attributes;
    ThrowIfFailed(MFCreateAttributes(&attributes, 4), "MFCreateAttributes");
    ThrowIfFailed(attributes->SetGUID(MF_DEVICESTREAM_STREAM_CATEGORY, PINNAME_VIDEO_CAPTURE), "SetGUID");
    ThrowIfFailed(attributes->SetUINT32(MF_DEVICESTREAM_STREAM_ID, pin.streamId), "SetUINT32");
    ThrowIfFailed(attributes->SetUINT32(MF_DEVICESTREAM_ATTRIBUTE_FRAMESOURCE_TYPES, pin.frameSourceTypes),
                  "SetUINT32");
    ThrowIfFailed(attributes->SetUINT32(MF_SA_D3D11_SHARED_WITHOUT_MUTEX, 1), "SetUINT32");
    return attributes;
}

bool Offers(const PinConfiguration &pin, IMFMediaType *type)
{
    FrameFormat wanted;
    return SUCCEEDED(ReadFrameFormat(type, wanted)) &&
           std::ranges::any_of(pin.types, [&wanted](const ComPtr<IMFMediaType> &offered) {
               FrameFormat format;
               return SUCCEEDED(ReadFrameFormat(offered.Get(), format)) && format == wanted;
           });
}

HRESULT CopyType(IMFMediaType *source, IMFMediaType **copy)
{
    ComPtr<IMFMediaType> made;
    HRESULT result = MFCreateMediaType(&made);
    if (SUCCEEDED(result))
    {
        result = source->CopyAllItems(made.Get());
    }
    if (SUCCEEDED(result))
    {
        *copy = made.Detach();
    }
    return result;
}

} // namespace tarn_sim
