#include "sim/CameraConfiguration.h"

#include "platform/CameraAttributes.h"

#include <tarn/tarn_formats.h>

#include "sim/CameraRecords.h"
#include "base/ThrowIfFailed.h"

using mft_utils::ThrowIfFailed;

namespace tarn_sim
{

namespace
{
// No import library holds these.
constexpr GUID kCameraTerminalNode = {STATIC_KSNODETYPE_VIDEO_CAMERA_TERMINAL};
constexpr GUID kVideoProcessingNode = {STATIC_KSNODETYPE_VIDEO_PROCESSING};
constexpr GUID kVideoStreamingNode = {STATIC_KSNODETYPE_VIDEO_STREAMING};

struct VideoFormat
{
    const GUID *subtype;
    UINT32 width;
    UINT32 height;
    UINT32 fps;
};

UINT32 BytesPerPixel(const GUID &subtype)
{
    const bool twoPlanes = IsEqualGUID(subtype, CUSTOM_GUID_KELP_ZI) || IsEqualGUID(subtype, CUSTOM_GUID_KELP_ZC);
    return twoPlanes ? 4 : 2;
}

template <std::size_t Count>
std::vector<ComPtr<IMFMediaType>> MakeTypes(const VideoFormat (&formats)[Count])
{
    std::vector<ComPtr<IMFMediaType>> types;
    for (const auto &format : formats)
    {
        types.push_back(MakeVideoType(*format.subtype, format.width, format.height, format.fps));
    }
    return types;
}
} // namespace

ComPtr<IMFMediaType> MakeVideoType(const GUID &subtype, UINT32 width, UINT32 height, UINT32 fps)
{
    ComPtr<IMFMediaType> type;
    ThrowIfFailed(MFCreateMediaType(&type), "MFCreateMediaType");
    const UINT32 sampleBytes = width * height * BytesPerPixel(subtype);
    ThrowIfFailed(type->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Video), "SetGUID");
    ThrowIfFailed(type->SetGUID(MF_MT_SUBTYPE, subtype), "SetGUID");
    ThrowIfFailed(MFSetAttributeSize(type.Get(), MF_MT_FRAME_SIZE, width, height), "MFSetAttributeSize");
    ThrowIfFailed(MFSetAttributeRatio(type.Get(), MF_MT_FRAME_RATE, fps, 1), "MFSetAttributeRatio");
    ThrowIfFailed(MFSetAttributeRatio(type.Get(), MF_MT_PIXEL_ASPECT_RATIO, 1, 1), "MFSetAttributeRatio");
    ThrowIfFailed(type->SetUINT32(MF_MT_INTERLACE_MODE, MFVideoInterlace_Progressive), "SetUINT32");
    ThrowIfFailed(type->SetUINT32(MF_MT_ALL_SAMPLES_INDEPENDENT, TRUE), "SetUINT32");
    ThrowIfFailed(type->SetUINT32(MF_MT_FIXED_SIZE_SAMPLES, TRUE), "SetUINT32");
    ThrowIfFailed(type->SetUINT32(MF_MT_SAMPLE_SIZE, sampleBytes), "SetUINT32");
    ThrowIfFailed(type->SetUINT32(MF_MT_DEFAULT_STRIDE, width * 2), "SetUINT32");
    return type;
}

CameraConfiguration CameraConfiguration::GenericDepth16(UINT32 width, UINT32 height, UINT32 fps)
{
    CameraConfiguration configuration;
    configuration.pins.push_back(
        {0,
         {MakeVideoType(MFVideoFormat_D16, width, height, fps), MakeVideoType(MFVideoFormat_L16, width, height, fps)},
         MFFrameSourceTypes_Depth});
    configuration.nodes = {kCameraTerminalNode, kVideoStreamingNode};
    return configuration;
}

CameraConfiguration CameraConfiguration::TarnDepth()
{
    const VideoFormat formats[] = {
        {&CUSTOM_GUID_KELP_Z, 640, 480, 30},   {&CUSTOM_GUID_KELP_Z, 640, 480, 60},
        {&CUSTOM_GUID_KELP_Z, 1280, 720, 30},  {&CUSTOM_GUID_KELP_Z, 320, 240, 30},
        {&CUSTOM_GUID_KELP_Z, 320, 240, 60},   {&CUSTOM_GUID_KELP_ZI, 640, 480, 30},
        {&CUSTOM_GUID_KELP_ZI, 640, 480, 60},  {&CUSTOM_GUID_KELP_ZI, 1280, 720, 30},
        {&CUSTOM_GUID_KELP_ZI, 320, 240, 30},  {&CUSTOM_GUID_KELP_ZI, 320, 240, 60},
        {&CUSTOM_GUID_KELP_ZC, 640, 480, 30},  {&CUSTOM_GUID_KELP_ZC, 640, 480, 60},
        {&CUSTOM_GUID_KELP_ZC, 1280, 720, 30}, {&CUSTOM_GUID_KELP_ZC, 320, 240, 30},
        {&CUSTOM_GUID_KELP_ZC, 320, 240, 60},  {&CUSTOM_GUID_KELP_FACE_LOGIN, 640, 480, 60},
    };
    CameraConfiguration configuration;
    configuration.pins.push_back({0, MakeTypes(formats), MFFrameSourceTypes_Depth | MFFrameSourceTypes_Infrared});
    configuration.nodes = {kCameraTerminalNode, KSNODETYPE_DEV_SPECIFIC, kVideoProcessingNode, KSNODETYPE_DEV_SPECIFIC,
                           kVideoStreamingNode};
    configuration.extensionUnitNode = 3;
    configuration.extensionUnitSet = KSPROPERTYSETID_TARN_DEPTH_CONTROL;
    configuration.calibrationTable = SealedBytes(DefaultCalibration());
    configuration.deviceInfo = SealedBytes(DefaultDeviceInfo());
    return configuration;
}

CameraConfiguration CameraConfiguration::TarnColor()
{
    const VideoFormat formats[] = {
        {&MFVideoFormat_YUY2, 640, 480, 30},
        {&MFVideoFormat_YUY2, 640, 480, 60},
        {&MFVideoFormat_YUY2, 1280, 720, 30},
        {&MFVideoFormat_YUY2, 1920, 1080, 30},
    };
    CameraConfiguration configuration;
    configuration.pins.push_back({0, MakeTypes(formats), MFFrameSourceTypes_Color});
    configuration.nodes = {kCameraTerminalNode, kVideoProcessingNode, KSNODETYPE_DEV_SPECIFIC, kVideoStreamingNode};
    configuration.extensionUnitNode = 2;
    configuration.extensionUnitSet = KSPROPERTYSETID_TARN_COLOR_CONTROL;
    configuration.calibrationTable = SealedBytes(DefaultCalibration());
    return configuration;
}

} // namespace tarn_sim
