// What the transform attached to a sample, as an application reads it.
#pragma once

#include "platform/CameraAttributes.h"

#include <cstdint>
#include <optional>
#include <vector>

#include "tarn/frame_metadata.h"

namespace tarn_host
{

// Value. What a sample does not have is empty.
struct SampleDetails
{
    std::int64_t time100ns = -1;
    std::int64_t duration100ns = 0;
    std::optional<TARN_FRAME_METADATA> record;
    std::optional<bool> isIlluminated;
    std::optional<std::uint32_t> minReliableDepth; // counts
    std::optional<std::uint32_t> maxReliableDepth;
    std::vector<MFPinholeCameraIntrinsic_IntrinsicModel> intrinsics;
    std::vector<MFCameraExtrinsic_CalibratedTransform> extrinsics;
    std::vector<std::uint8_t> confidence; // the blob as it is; the map comes first

    static SampleDetails Of(IMFSample &sample);
};

} // namespace tarn_host
