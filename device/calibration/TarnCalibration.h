// The camera's calibration: reads the table, makes the intrinsics and extrinsics records that streams publish.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>
#include <optional>
#include <string>

#include "core/OutputStreamConfiguration.h"
#include "device/calibration/CalibrationTable.h"
#include "device/calibration/FrameGeometry.h"
#include "ks/UvcCommand.h"

namespace mft_core
{

// Where a camera stands in the rig: at its origin, or where the table says that the depth camera stands.
enum class CameraPose : std::uint8_t
{
    Origin,
    Depth
};

// Owned by its transform. Immutable after Init.
class TarnCalibration : public user_space_frameworks::Object
{
  public:
    TarnCalibration(ComPtr<IKsControl> extensionUnit, const GUID &set, ULONG controlId, const std::string &ownerName);

    // Reads the table. A table that cannot be read or does not check is traced and is no failure: both records are then
    // empty and the camera works without them.
    HRESULT Init();

    // MFPinholeCameraIntrinsics with one model per distinct frame size, in the order of the list. Types without a frame
    // size are passed over. Empty without a table, and when no size is left.
    CameraBlob CreateIntrinsics(const MediaTypeList &mtList) const;

    // MFPinholeCameraIntrinsics with the one model that holds for the pixels of such a frame. Empty without a table,
    // and for an empty frame.
    CameraBlob CreateFrameIntrinsics(const FrameGeometry &frame) const;

    // MFCameraExtrinsics with the transform into the axes of the color camera, which is the origin of both: the
    // table's for the depth camera, none at all for the color camera itself. Empty without a table.
    CameraBlob CreateExtrinsics(CameraPose pose) const;

  private:
    HRESULT ReadTable(CalibrationTable &read);

    UvcCommand control;
    std::optional<CalibrationTable> table;
};

} // namespace mft_core
