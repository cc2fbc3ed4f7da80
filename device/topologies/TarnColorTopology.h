// Serves one color output: the camera's frames as they are, with the records that belong to them.
#pragma once

#include "core/Topology.h"
#include "device/nodes/FramePrivacy.h"
#include "device/calibration/TarnCalibration.h"

namespace mft_core
{

// Works on the capture thread, as passing frames through does.
class TarnColorTopology : public Topology
{
  public:
    TarnColorTopology(const std::string &ownerName, std::shared_ptr<FramePrivacy> framePrivacy,
                      std::shared_ptr<const TarnCalibration> cameraCalibration);

    // Asks for input of the output's own type. Fails as TopologySettings::Validate does; the constructors of the
    // nodes may throw. The object is only good for release then.
    HRESULT Init(std::shared_ptr<InputStream> inputStream, std::shared_ptr<OutputStream> outputStream,
                 IMFMediaType *mediaType);

  private:
    const std::shared_ptr<FramePrivacy> privacyState;
    const std::shared_ptr<const TarnCalibration> calibrationTable;
};

} // namespace mft_core
