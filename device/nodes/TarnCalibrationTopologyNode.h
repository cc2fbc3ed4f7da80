// Writes the stream's camera intrinsics and extrinsics on every sample.
#pragma once

#include <memory>
#include <vector>

#include "core/ITopologyNode.h"
#include "core/OutputStream.h"

namespace mft_core
{

// Owned by its topology. Immutable after Init.
class TarnCalibrationTopologyNode : public ITopologyNode
{
  public:
    // Takes both records from the stream's attributes; what the stream does not have is not written. May throw
    // ComException when an attribute cannot be read.
    TarnCalibrationTopologyNode(std::shared_ptr<ITopologyNode> successor, const OutputStream &stream);

    // A record that cannot be written is traced; the sample goes on without it.
    HRESULT ProcessSample(IMFSample *sample) override;

  private:
    std::vector<UINT8> intrinsics; // MFPinholeCameraIntrinsics
    std::vector<UINT8> extrinsics; // MFCameraExtrinsics
};

} // namespace mft_core
