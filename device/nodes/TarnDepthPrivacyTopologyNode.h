// Blanks frames while the camera's privacy control is on.
#pragma once

#include <atomic>

#include "core/ITopologyNode.h"

namespace mft_core
{

// Works in the buffers it is given. The frame's own metadata tell whether privacy is on; a frame without readable
// metadata is treated like the one before it. Owned by its topology. Thread-safe.
class TarnDepthPrivacyTopologyNode : public ITopologyNode
{
  public:
    explicit TarnDepthPrivacyTopologyNode(std::shared_ptr<ITopologyNode> successor);

    // With privacy on, every buffer of the sample is zeroed to its full capacity, a confidence map is taken off, and
    // the frame's metadata say that there is no confidence, so that nodes behind make none. A frame that cannot be
    // blanked is dropped.
    HRESULT ProcessSample(IMFSample *sample) override;

  private:
    bool IsPrivate(IMFSample *sample);

    std::atomic<bool> privacyOn{false}; // as of the last frame that told
};

} // namespace mft_core
