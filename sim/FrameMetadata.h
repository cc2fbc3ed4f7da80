// The metadata that the driver attaches to each frame.
#pragma once

#include "platform/MediaFoundation.h"

#include <tarn/frame_metadata.h>

#include "sim/CameraControls.h"
#include "sim/FaultPlan.h"

namespace tarn_sim
{

struct FrameToCompose;

TARN_FRAME_METADATA MakeRecord(const FrameToCompose &frame, bool illuminated, const CameraControls &controls);

// Puts the record, behind an item of another kind, into the sample's capture-metadata store, or what the fault makes
// of it. Throws std::runtime_error when the platform fails.
void AttachMetadata(IMFSample *sample, const TARN_FRAME_METADATA &record, MetadataFault fault);

} // namespace tarn_sim
