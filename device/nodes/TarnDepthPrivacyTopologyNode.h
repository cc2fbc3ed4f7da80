// Blanks frames while the camera's privacy control is on.
#pragma once

#include "core/ITopologyNode.h"
#include "device/nodes/FramePrivacy.h"

namespace mft_core
{

// Works in the buffers it is given. The frame's own record tells whether privacy is on; a frame without a record that
// holds is treated by what is known. Owned by its topology, shares the privacy state. Immutable after Init.
class TarnDepthPrivacyTopologyNode : public ITopologyNode
{
  public:
    // Throws std::invalid_argument("framePrivacy is null").
    TarnDepthPrivacyTopologyNode(std::shared_ptr<ITopologyNode> successor, std::shared_ptr<FramePrivacy> framePrivacy);

    // With privacy on, every buffer of the sample is zeroed to its full capacity and a confidence map is taken off; one
    // that is made behind shows nothing. A frame that cannot be blanked is dropped.
    HRESULT ProcessSample(IMFSample *sample) override;

    // With privacy on, what the nodes have written there is forgotten with every frame: they may stand in front.
    void UseBuffers(const std::shared_ptr<mft_utils::BufferPool> &pool) override;

  private:
    const std::shared_ptr<FramePrivacy> privacy;
    std::shared_ptr<mft_utils::BufferPool> buffers;
};

} // namespace mft_core
