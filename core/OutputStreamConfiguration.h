// What an output stream is made from; filled by the device transform's hooks.
#pragma once

#include "platform/MediaFoundation.h"

#include <memory>
#include <optional>
#include <string>

#include "media/MediaTypeParser.h"

namespace mft_core
{

using mft_utils::MediaTypeList;

// A stream attribute of variable size, for example camera intrinsics. Empty when `data` is null.
struct CameraBlob
{
    std::shared_ptr<const UINT8[]> data;
    UINT32 sizeBytes = 0;
};

struct DepthDescription
{
    UINT32 measurementType = 0;      // MFDepthMeasurement
    UINT64 depthValueUnit = 1000000; // nanometres per count
};

struct OutputStreamConfiguration
{
    std::string parentName = "Unknown parent";
    std::shared_ptr<MediaTypeList> mtList = std::make_shared<MediaTypeList>();
    ComPtr<IMFAttributes> attributes;
    CameraBlob intrinsics; // MFPinholeCameraIntrinsics
    CameraBlob extrinsics; // MFCameraExtrinsics
    std::optional<DepthDescription> depth;
    UINT64 defaultFrameInterval100ns = 1000000;
};

} // namespace mft_core
