// Clamps the pixels of a 16-bit frame from above, in place.
#pragma once

#include "core/ITopologyNode.h"
#include "nodes/FrameSize.h"

namespace mft_core
{

// Owned by its topology. Immutable after Init.
class ImageThresholdTopologyNode : public ITopologyNode
{
  public:
    // Throws FrameSize's std::invalid_argument.
    ImageThresholdTopologyNode(std::shared_ptr<ITopologyNode> successor, std::uint32_t width, std::uint32_t height,
                               std::uint16_t threshold);

    // Hands on every sample; one that is too short or whose buffer cannot be had stays unchanged.
    HRESULT ProcessSample(IMFSample *sample) override;

  private:
    HRESULT ClampPixels(IMFSample *sample) const;

    const FrameSize size;
    const std::uint16_t maximum;
};

} // namespace mft_core
