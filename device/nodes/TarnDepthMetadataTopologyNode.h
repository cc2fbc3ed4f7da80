// Puts the camera's metadata record of the frame on the sample, where applications find it.
#pragma once

#include "core/ITopologyNode.h"

namespace mft_core
{

// Owned by its topology. Immutable after Init.
class TarnDepthMetadataTopologyNode : public ITopologyNode
{
  public:
    explicit TarnDepthMetadataTopologyNode(std::shared_ptr<ITopologyNode> successor);

    // Sets TARN_SAMPLE_FRAME_METADATA; a frame whose record is missing, unknown or cut short goes on without.
    HRESULT ProcessSample(IMFSample *sample) override;

  private:
    HRESULT AttachRecord(IMFSample *sample) const;
};

} // namespace mft_core
