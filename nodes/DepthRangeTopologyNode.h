// Attaches the range of depths that can be relied on to every sample.
#pragma once

#include "core/ITopologyNode.h"

namespace mft_core
{

// Writes into the sample it is given. Owned by its topology. Immutable after Init.
class DepthRangeTopologyNode : public ITopologyNode
{
  public:
    // Depths are in centimetres; the stream's MF_MT_DEPTH_VALUE_UNIT, in nanometres, tells what a pixel counts.
    // Throws ComException when the stream has no unit and std::invalid_argument("depthValueUnit cant be 0").
    DepthRangeTopologyNode(std::shared_ptr<ITopologyNode> successor, IMFAttributes *outputStreamAttributes,
                           std::uint32_t minDepth, std::uint32_t maxDepth);

    HRESULT ProcessSample(IMFSample *sample) override;

  private:
    UINT32 minReliableDepth; // in pixel units
    UINT32 maxReliableDepth;
};

} // namespace mft_core
