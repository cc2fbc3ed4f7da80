// Writes the frame's camera intrinsics and the stream's extrinsics on every sample.
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
    // `frameIntrinsics` holds the one model that is right for the pixels of these samples; the extrinsics are taken
    // from the stream's attributes. What is empty is not written. May throw ComException when the attribute cannot be
    // read.
    TarnCalibrationTopologyNode(std::shared_ptr<ITopologyNode> successor, const OutputStream &stream,
                                CameraBlob frameIntrinsics);

    // A record that cannot be written is traced; the sample goes on without it.
    HRESULT ProcessSample(IMFSample *sample) override;

  private:
    const CameraBlob intrinsics;   // MFPinholeCameraIntrinsics
    std::vector<UINT8> extrinsics; // MFCameraExtrinsics
};

} // namespace mft_core
