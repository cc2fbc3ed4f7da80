#include "sim/CameraControls.h"

#include <algorithm>

#include "sim/CameraIdentifiers.h"

namespace tarn_sim
{

CameraControls::CameraControls(const GUID &extensionUnitSet)
{
    if (IsEqualGUID(extensionUnitSet, KSPROPERTYSETID_TARN_DEPTH_CONTROL))
    {
        errorControl = kControlDepthError;
        controls = {{kControlLaserPower, Access::ReadWrite, 0, 16, 1, 16, 16},
                    {kControlAccuracy, Access::ReadWrite, 1, 3, 1, 2, 2},
                    {kControlMotionVersusRange, Access::ReadWrite, 0, 100, 1, 9, 9},
                    {kControlDepthError, Access::ReadOnly, 0, 255, 1, 0, 0},
                    {kControlFilterOption, Access::ReadWrite, 0, 7, 1, 5, 5},
                    {kControlConfidenceThreshold, Access::ReadWrite, 0, 15, 1, 3, 3}};
    }
    else if (IsEqualGUID(extensionUnitSet, KSPROPERTYSETID_TARN_COLOR_CONTROL))
    {
        errorControl = kControlColorError;
        controls = {{kControlExposurePriority, Access::ReadWrite, 0, 1, 1, 0, 0},
                    {kControlAutoFlicker, Access::ReadWrite, 0, 1, 1, 1, 1},
                    {kControlColorError, Access::ReadOnly, 0, 255, 1, 0, 0},
                    {kControlExposureGranularity, Access::ReadWrite, 2, 200, 2, 10, 10}};
    }
}

bool CameraControls::Find(ULONG id, ByteControl &control) const
{
    const std::scoped_lock guard(lock);
    const auto found = std::ranges::find(controls, id, &ByteControl::id);
    if (found == controls.end())
    {
        return false;
    }
    control = *found;
    return true;
}

bool CameraControls::Store(ULONG id, std::uint8_t value)
{
    const std::scoped_lock guard(lock);
    const auto found = std::ranges::find(controls, id, &ByteControl::id);
    if (found == controls.end())
    {
        return false;
    }
    found->value = value;
    return true;
}

std::uint8_t CameraControls::ValueOf(ULONG id) const
{
    ByteControl control;
    return Find(id, control) ? control.value : std::uint8_t{0};
}

void CameraControls::SetErrorCode(std::uint8_t code)
{
    Store(errorControl, code);
}

void CameraControls::FillMetadata(TARN_FRAME_METADATA &record) const
{
    record.flags =
        static_cast<std::uint8_t>((confidenceSuppressed ? TARN_FRAME_FLAG_CONFIDENCE_SUPPRESSED : 0U) |
                                  (privacy ? TARN_FRAME_FLAG_PRIVACY : 0U) | (hdr ? TARN_FRAME_FLAG_HDR : 0U));
    record.errorCode = ValueOf(errorControl);
    if (errorControl != kControlDepthError)
    {
        return;
    }
    record.laserPower = ValueOf(kControlLaserPower);
    record.accuracy = ValueOf(kControlAccuracy);
    record.motionVersusRange = ValueOf(kControlMotionVersusRange);
    record.filterOption = ValueOf(kControlFilterOption);
    record.confidenceThreshold = ValueOf(kControlConfidenceThreshold);
}

} // namespace tarn_sim
