// Tells applications whether the laser was on while an infrared frame was exposed.
#pragma once

#include "core/ITopologyNode.h"

namespace mft_core
{

// Copies the state from the camera's record into the frame's capture-metadata store. The store belongs to every sample
// that was made from the same frame; a splitter before this node makes separate samples. Owned by its topology.
// Immutable after Init.
class TarnIrIlluminationTopologyNode : public ITopologyNode
{
  public:
    explicit TarnIrIlluminationTopologyNode(std::shared_ptr<ITopologyNode> successor);

    // Hands on every sample; one without the record, or with a short one, stays unchanged.
    HRESULT ProcessSample(IMFSample *sample) override;
};

} // namespace mft_core
