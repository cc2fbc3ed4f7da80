#include "trace/PlatformGuidNames.h"

#include "platform/CameraAttributes.h"
#include "platform/DeviceTransform.h"
#include "platform/ExtendedCameraControl.h"

#include <array>

namespace mft_utils
{

namespace
{

constexpr GUID KSEVENTSETID_ExtendedCameraControl = {
    0x571C92C9, 0x13A2, 0x47E3, {0xA6, 0x49, 0xD2, 0xA7, 0x78, 0x16, 0x63, 0x84}};
constexpr GUID KSEVENTSETID_CameraAsyncControl = {
    0x22A11754, 0x9701, 0x4088, {0xB3, 0x3F, 0x6B, 0x9C, 0xBC, 0x52, 0xDF, 0x5E}};
constexpr GUID KSPROPERTYSETID_PerFrameSettingControl = {
    0xF1F3E261, 0xDEE6, 0x4537, {0xBF, 0xF5, 0xEE, 0x20, 0x6D, 0xB5, 0x4A, 0xAC}};
constexpr GUID kNull{};

#define TARN_NAMED(guid)                                                                                               \
    NamedGuid                                                                                                          \
    {                                                                                                                  \
        &(guid), #guid                                                                                                 \
    }

// clang-format off
constexpr auto kNames = std::to_array<NamedGuid>({
    {&kNull, "GUID_NULL"},

    // Media types and their attributes.
    TARN_NAMED(MFMediaType_Video), TARN_NAMED(MFMediaType_Audio), TARN_NAMED(MFMediaType_Image),
    TARN_NAMED(MF_MT_MAJOR_TYPE), TARN_NAMED(MF_MT_SUBTYPE), TARN_NAMED(MF_MT_FRAME_SIZE), TARN_NAMED(MF_MT_FRAME_RATE),
    TARN_NAMED(MF_MT_FRAME_RATE_RANGE_MIN), TARN_NAMED(MF_MT_FRAME_RATE_RANGE_MAX), TARN_NAMED(MF_MT_PIXEL_ASPECT_RATIO),
    TARN_NAMED(MF_MT_INTERLACE_MODE), TARN_NAMED(MF_MT_DEFAULT_STRIDE), TARN_NAMED(MF_MT_SAMPLE_SIZE),
    TARN_NAMED(MF_MT_AVG_BITRATE), TARN_NAMED(MF_MT_FIXED_SIZE_SAMPLES), TARN_NAMED(MF_MT_ALL_SAMPLES_INDEPENDENT),
    TARN_NAMED(MF_MT_COMPRESSED), TARN_NAMED(MF_MT_VIDEO_NOMINAL_RANGE), TARN_NAMED(MF_MT_VIDEO_PRIMARIES),
    TARN_NAMED(MF_MT_TRANSFER_FUNCTION), TARN_NAMED(MF_MT_YUV_MATRIX), TARN_NAMED(MF_MT_AM_FORMAT_TYPE),
    TARN_NAMED(MF_MT_USER_DATA), TARN_NAMED(MF_MT_DEPTH_MEASUREMENT), TARN_NAMED(MF_MT_DEPTH_VALUE_UNIT),

    // Video formats.
    TARN_NAMED(MFVideoFormat_D16), TARN_NAMED(MFVideoFormat_L8), TARN_NAMED(MFVideoFormat_L16),
    TARN_NAMED(MFVideoFormat_YUY2), TARN_NAMED(MFVideoFormat_UYVY), TARN_NAMED(MFVideoFormat_NV12),
    TARN_NAMED(MFVideoFormat_MJPG), TARN_NAMED(MFVideoFormat_H264), TARN_NAMED(MFVideoFormat_RGB24),
    TARN_NAMED(MFVideoFormat_RGB32), TARN_NAMED(MFVideoFormat_ARGB32), TARN_NAMED(MFVideoFormat_I420),
    TARN_NAMED(MFVideoFormat_YV12), TARN_NAMED(MFVideoFormat_P010),

    // Attributes of transforms and streams.
    TARN_NAMED(MF_TRANSFORM_ASYNC), TARN_NAMED(MF_TRANSFORM_ASYNC_UNLOCK), TARN_NAMED(MF_SA_D3D_AWARE),
    TARN_NAMED(MF_SA_D3D11_AWARE), TARN_NAMED(MF_SA_D3D11_SHARED_WITHOUT_MUTEX),
    TARN_NAMED(MFT_SUPPORT_DYNAMIC_FORMAT_CHANGE), TARN_NAMED(MFT_ENUM_HARDWARE_URL_Attribute),
    TARN_NAMED(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL), TARN_NAMED(MF_DEVICEMFT_CONNECTED_PIN_KSCONTROL),
    TARN_NAMED(MF_DEVICESTREAM_STREAM_CATEGORY), TARN_NAMED(MF_DEVICESTREAM_STREAM_ID),
    TARN_NAMED(MF_DEVICESTREAM_FRAMESERVER_SHARED), TARN_NAMED(MF_DEVICESTREAM_ATTRIBUTE_FRAMESOURCE_TYPES),
    TARN_NAMED(MFStreamExtension_CameraExtrinsics), TARN_NAMED(MFStreamExtension_PinholeCameraIntrinsics),
    TARN_NAMED(MF_EVENT_MFT_INPUT_STREAM_ID), TARN_NAMED(MEDeviceStreamCreated),

    // Attributes of samples.
    TARN_NAMED(MFSampleExtension_CleanPoint), TARN_NAMED(MFSampleExtension_Discontinuity),
    TARN_NAMED(MFSampleExtension_Depth_MinReliableDepth), TARN_NAMED(MFSampleExtension_Depth_MaxReliableDepth),
    TARN_NAMED(MFSampleExtension_CameraExtrinsics), TARN_NAMED(MFSampleExtension_PinholeCameraIntrinsics),
    TARN_NAMED(MFSampleExtension_CaptureMetadata), TARN_NAMED(MF_CAPTURE_METADATA_FRAME_ILLUMINATION),
    TARN_NAMED(MF_CAPTURE_METADATA_FRAME_RAWSTREAM),

    // Kernel-streaming sets, categories and node types.
    TARN_NAMED(KSPROPERTYSETID_ExtendedCameraControl), TARN_NAMED(KSEVENTSETID_ExtendedCameraControl),
    TARN_NAMED(KSEVENTSETID_CameraAsyncControl), TARN_NAMED(KSPROPERTYSETID_PerFrameSettingControl),
    TARN_NAMED(PROPSETID_VIDCAP_CAMERACONTROL), TARN_NAMED(PROPSETID_VIDCAP_VIDEOPROCAMP),
    TARN_NAMED(PROPSETID_VIDCAP_VIDEOCONTROL), TARN_NAMED(KSEVENTSETID_VIDCAPTOSTI), TARN_NAMED(KSEVENTSETID_Connection),
    TARN_NAMED(KSPROPSETID_General), TARN_NAMED(KSPROPSETID_Topology), TARN_NAMED(KSPROPSETID_Connection),
    TARN_NAMED(KSPROPSETID_Pin), TARN_NAMED(MS_CAMERA_CONTROL_XU), TARN_NAMED(PINNAME_VIDEO_CAPTURE),
    TARN_NAMED(PINNAME_VIDEO_PREVIEW), TARN_NAMED(PINNAME_VIDEO_STILL), TARN_NAMED(KSNODETYPE_DEV_SPECIFIC),
});
// clang-format on

#undef TARN_NAMED

} // namespace

std::span<const NamedGuid> PlatformGuidNames() noexcept
{
    return kNames;
}

} // namespace mft_utils
