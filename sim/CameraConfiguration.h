// What a simulated camera consists of: pins, media types, pacing, KS topology, firmware contents.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "sim/FrameSource.h"

namespace tarn_sim
{

enum class Pacing : std::uint8_t
{
    RealTime,      // by the media type's frame rate; a frame is dropped when all buffers are out
    AsFastAsTaken, // the next frame when the sink has returned and a buffer is free; nothing is dropped
    Stepped        // only what CapturePump::Step asks for
};

struct PinConfiguration
{
    DWORD streamId = 0;
    std::vector<ComPtr<IMFMediaType>> types;
    UINT32 frameSourceTypes = 0; // MFFrameSourceTypes mask for the stream's attributes
};

struct CameraConfiguration
{
    std::vector<PinConfiguration> pins;
    std::shared_ptr<IFrameSource> frameSource; // a GeneratedScene when null
    Pacing pacing = Pacing::RealTime;
    std::uint32_t buffersPerPin = 8; // frames that may be out at the same time
    std::uint64_t frameLimit = 0;    // a pin falls silent after so many frames in all; 0 = never
    bool guardPages = false;         // each frame buffer ends at an inaccessible page

    bool getStreamIdsNotImplemented = false;
    DWORD inputPinCount = 0; // as the filter reports it; nobody connects there

    std::vector<GUID> nodes;                    // node types of the KS topology, by index
    std::optional<DWORD> extensionUnitNode;     // the node that answers for the extension unit
    GUID extensionUnitSet = {};                 // its property set
    std::vector<std::uint8_t> calibrationTable; // control 8; empty = the camera has no such control
    std::vector<std::uint8_t> deviceInfo;       // answer to the device-information command
    bool privacyControl = true;                 // false: only the frames tell whether privacy is on

    // One pin (stream 0) with one D16 and one L16 type of the size and rate; no extension unit. Throws
    // std::runtime_error when a media type cannot be made, as do the other factories.
    static CameraConfiguration GenericDepth16(UINT32 width, UINT32 height, UINT32 fps);
    // The Tarn camera's depth filter: one pin with depth, infrared+depth, confidence+depth and face-login types; the
    // extension unit stands on node 3 behind a device-specific decoy on node 1.
    static CameraConfiguration TarnDepth();
    // The Tarn camera's color filter: one YUY2 pin; the color extension unit stands on node 2.
    static CameraConfiguration TarnColor();
};

// A media type as the driver reports it. Throws std::runtime_error when the platform fails.
ComPtr<IMFMediaType> MakeVideoType(const GUID &subtype, UINT32 width, UINT32 height, UINT32 fps);

} // namespace tarn_sim
