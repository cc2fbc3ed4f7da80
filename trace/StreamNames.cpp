#include "trace/StreamNames.h"

namespace mft_utils
{

const char *StreamStateName(DeviceStreamState state) noexcept
{
    switch (state)
    {
    case DeviceStreamState_Stop:
        return "Stopped";
    case DeviceStreamState_Pause:
        return "Starting";
    case DeviceStreamState_Run:
        return "Active";
    case DeviceStreamState_Disabled:
        return "Stopping";
    }
    return "Unknown state";
}

const char *FrameSourceName(UINT32 frameSourceType) noexcept
{
    switch (frameSourceType)
    {
    case MFFrameSourceTypes_Color:
        return "Color";
    case MFFrameSourceTypes_Infrared:
        return "Infrared";
    case MFFrameSourceTypes_Depth:
        return "Depth";
    case MFFrameSourceTypes_Custom:
        return "Custom";
    default:
        return "Unknown MFFrameSourceType";
    }
}

} // namespace mft_utils
