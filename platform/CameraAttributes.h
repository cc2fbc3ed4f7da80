// Attribute keys, enumerations and records of the camera pipeline ("Media Foundation attributes", mfapi.h and mfidl.h).
#pragma once

#include "platform/MediaFoundation.h"

#define TARN_PLATFORM_GUID(name, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8)                                            \
    inline constexpr GUID name = {l, w1, w2, {b1, b2, b3, b4, b5, b6, b7, b8}}

// clang-format off
// Given to InitializeTransform.
TARN_PLATFORM_GUID(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL, 0x6A2C4FA6, 0xD179, 0x41CD, 0x95, 0x23, 0x82, 0x23, 0x71, 0xEA, 0x40, 0xE5); // IUnknown
TARN_PLATFORM_GUID(MF_DEVICEMFT_CONNECTED_PIN_KSCONTROL,    0xE63310F7, 0xB244, 0x4EF8, 0x9A, 0x7D, 0x24, 0xC7, 0x4E, 0x32, 0xEB, 0xD0); // IUnknown

// Stream attributes.
TARN_PLATFORM_GUID(MF_DEVICESTREAM_STREAM_CATEGORY,             0x2939E7B8, 0xA62E, 0x4579, 0xB6, 0x74, 0xD4, 0x07, 0x3D, 0xFA, 0xBB, 0xBA); // GUID
TARN_PLATFORM_GUID(MF_DEVICESTREAM_STREAM_ID,                   0x11BD5120, 0xD124, 0x446B, 0x88, 0xE6, 0x17, 0x06, 0x02, 0x57, 0xFF, 0xF9); // UINT32
TARN_PLATFORM_GUID(MF_DEVICESTREAM_FRAMESERVER_SHARED,          0x1CB378E9, 0xB279, 0x41D4, 0xAF, 0x97, 0x34, 0xA2, 0x43, 0xE6, 0x83, 0x20); // UINT32
TARN_PLATFORM_GUID(MF_DEVICESTREAM_ATTRIBUTE_FRAMESOURCE_TYPES, 0x17145FD1, 0x1B2B, 0x423C, 0x80, 0x01, 0x2B, 0x68, 0x33, 0xED, 0x35, 0x88); // UINT32, MFFrameSourceTypes mask
TARN_PLATFORM_GUID(MFStreamExtension_CameraExtrinsics,          0x686196D0, 0x13E2, 0x41D9, 0x96, 0x38, 0xEF, 0x03, 0x2C, 0x27, 0x2A, 0x52); // blob, MFCameraExtrinsics
TARN_PLATFORM_GUID(MFStreamExtension_PinholeCameraIntrinsics,   0xDBAC0455, 0x0EC8, 0x4AEF, 0x9C, 0x32, 0x7A, 0x3E, 0xE3, 0x45, 0x6F, 0x53); // blob, MFPinholeCameraIntrinsics

// Depth description, on stream attributes and media types.
TARN_PLATFORM_GUID(MF_MT_DEPTH_MEASUREMENT, 0xFD5AC489, 0x0917, 0x4BB6, 0x9D, 0x54, 0x31, 0x22, 0xBF, 0x70, 0x14, 0x4B); // UINT32, MFDepthMeasurement
TARN_PLATFORM_GUID(MF_MT_DEPTH_VALUE_UNIT,  0x21A800F5, 0x3189, 0x4797, 0xBE, 0xBA, 0xF1, 0x3C, 0xD9, 0xA3, 0x1A, 0x5E); // UINT64, nanometres per count

// Sample attributes.
TARN_PLATFORM_GUID(MFSampleExtension_Depth_MinReliableDepth,  0x5F8582B2, 0xE36B, 0x47C8, 0x9B, 0x87, 0xFE, 0xE1, 0xCA, 0x72, 0xC5, 0xB0); // UINT32
TARN_PLATFORM_GUID(MFSampleExtension_Depth_MaxReliableDepth,  0xE45545D1, 0x1F0F, 0x4A32, 0xA8, 0xA7, 0x61, 0x01, 0xA2, 0x4E, 0xA8, 0xBE); // UINT32
TARN_PLATFORM_GUID(MFSampleExtension_CameraExtrinsics,        0x6B761658, 0xB7EC, 0x4C3B, 0x82, 0x25, 0x86, 0x23, 0xCA, 0xBE, 0xC3, 0x1D); // blob, MFCameraExtrinsics
TARN_PLATFORM_GUID(MFSampleExtension_PinholeCameraIntrinsics, 0x4EE3B6C5, 0x6A15, 0x4E72, 0x97, 0x61, 0x70, 0xC1, 0xDB, 0x8B, 0x9F, 0xE3); // blob, MFPinholeCameraIntrinsics
TARN_PLATFORM_GUID(MFSampleExtension_CaptureMetadata,         0x2EBE23A8, 0xFAF5, 0x444A, 0xA6, 0xA2, 0xEB, 0x81, 0x08, 0x80, 0xAB, 0x5D); // IMFAttributes store

// Keys inside the capture-metadata store.
TARN_PLATFORM_GUID(MF_CAPTURE_METADATA_FRAME_ILLUMINATION, 0x6D688FFC, 0x63D3, 0x46FE, 0xBA, 0xDA, 0x5B, 0x94, 0x7D, 0xB0, 0xD0, 0x80); // UINT64
TARN_PLATFORM_GUID(MF_CAPTURE_METADATA_FRAME_RAWSTREAM,    0x9252077B, 0x2680, 0x49B9, 0xAE, 0x02, 0xB1, 0x90, 0x75, 0x97, 0x3B, 0x70); // IMFMediaBuffer

// Microsoft's UVC camera-control extension unit.
TARN_PLATFORM_GUID(MS_CAMERA_CONTROL_XU, 0x0F3F95DC, 0x2632, 0x4C4E, 0x92, 0xC9, 0xA0, 0x47, 0x82, 0xF4, 0x3B, 0xC8);
// clang-format on

#undef TARN_PLATFORM_GUID

// "MFFrameSourceTypes enumeration (mfapi.h)": a bit mask.
enum MFFrameSourceTypes
{
    MFFrameSourceTypes_Color = 0x0001,
    MFFrameSourceTypes_Infrared = 0x0002,
    MFFrameSourceTypes_Depth = 0x0004,
    MFFrameSourceTypes_Image = 0x0008,
    MFFrameSourceTypes_Custom = 0x0080
};

// "MFDepthMeasurement enumeration (mfapi.h)".
enum MFDepthMeasurement
{
    DistanceToFocalPlane = 0,
    DistanceToOpticalCenter = 1
};

struct MF_FLOAT2
{
    FLOAT x;
    FLOAT y;
};

struct MF_FLOAT3
{
    FLOAT x;
    FLOAT y;
    FLOAT z;
};

struct MF_QUATERNION
{
    FLOAT x;
    FLOAT y;
    FLOAT z;
    FLOAT w;
};

// "MFCameraExtrinsics structure (mfapi.h)".
struct MFCameraExtrinsic_CalibratedTransform
{
    GUID CalibrationId;
    MF_FLOAT3 Position;
    MF_QUATERNION Orientation;
};
static_assert(sizeof(MFCameraExtrinsic_CalibratedTransform) == 44);

struct MFCameraExtrinsics
{
    UINT32 TransformCount;
    MFCameraExtrinsic_CalibratedTransform CalibratedTransforms[1];
};
static_assert(sizeof(MFCameraExtrinsics) == 48);

// "MFPinholeCameraIntrinsics structure (mfapi.h)".
struct MFCameraIntrinsic_PinholeCameraModel
{
    MF_FLOAT2 FocalLength;
    MF_FLOAT2 PrincipalPoint;
};
static_assert(sizeof(MFCameraIntrinsic_PinholeCameraModel) == 16);

struct MFCameraIntrinsic_DistortionModel
{
    FLOAT Radial_k1;
    FLOAT Radial_k2;
    FLOAT Radial_k3;
    FLOAT Tangential_p1;
    FLOAT Tangential_p2;
};
static_assert(sizeof(MFCameraIntrinsic_DistortionModel) == 20);

struct MFPinholeCameraIntrinsic_IntrinsicModel
{
    UINT32 Width;
    UINT32 Height;
    MFCameraIntrinsic_PinholeCameraModel CameraModel;
    MFCameraIntrinsic_DistortionModel DistortionModel;
};
static_assert(sizeof(MFPinholeCameraIntrinsic_IntrinsicModel) == 44);

struct MFPinholeCameraIntrinsics
{
    UINT32 IntrinsicModelCount;
    MFPinholeCameraIntrinsic_IntrinsicModel IntrinsicModels[1];
};
static_assert(sizeof(MFPinholeCameraIntrinsics) == 48);
