// Serves the depth and the infrared output together from frames that hold both.
#pragma once

#include "core/Topology.h"
#include "core/WorkQueueParameters.h"
#include "device/nodes/FramePrivacy.h"
#include "device/calibration/TarnCalibration.h"

namespace mft_core
{

class TarnDepthZITopology : public Topology
{
  public:
    TarnDepthZITopology(const std::string &ownerName, std::shared_ptr<FramePrivacy> framePrivacy,
                        std::shared_ptr<const TarnCalibration> cameraCalibration);

    // Asks for the closest infrared and depth type at or above the larger of the two sizes and rates; both outputs get
    // every frame. MF_E_INVALIDMEDIATYPE for a type that its output does not offer, E_FAIL when the pin has none that
    // will do; the constructors of the nodes may throw. The object is only good for release then.
    HRESULT Init(std::shared_ptr<InputStream> inputStream, std::shared_ptr<OutputStream> depthOutStream,
                 IMFMediaType *depthMediaType, std::shared_ptr<OutputStream> irOutStream, IMFMediaType *irMediaType,
                 const WorkQueueParameters &wqParams);

  private:
    CameraBlob CroppedIntrinsics(const mft_utils::MediaTypeData &inputMtData,
                                 const mft_utils::MediaTypeData &outputMtData) const;
    std::shared_ptr<ITopologyNode> InfraredBranch(const std::shared_ptr<OutputStream> &irOutStream,
                                                  const mft_utils::MediaTypeData &inputMtData,
                                                  const mft_utils::MediaTypeData &irMtData);
    std::shared_ptr<ITopologyNode> DepthBranch(const std::shared_ptr<OutputStream> &depthOutStream,
                                               IMFAttributes *depthAttributes,
                                               const mft_utils::MediaTypeData &inputMtData,
                                               const mft_utils::MediaTypeData &depthMtData);

    const std::shared_ptr<FramePrivacy> privacyState;
    const std::shared_ptr<const TarnCalibration> calibrationTable;
};

} // namespace mft_core
