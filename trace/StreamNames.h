// Names of stream states and frame sources for logs.
#pragma once

#include "platform/CameraAttributes.h"
#include "platform/DeviceTransform.h"

namespace mft_utils
{

// "Stopped", "Starting", "Active", "Stopping" in the order of the enumeration; "Unknown state" for any other value.
const char *StreamStateName(DeviceStreamState state) noexcept;

// "Color", "Infrared", "Depth", "Custom"; "Unknown MFFrameSourceType" for anything else, a mask of several included.
const char *FrameSourceName(UINT32 frameSourceType) noexcept;

} // namespace mft_utils
