// Lets only frames of the expected format into a chain.
#pragma once

#include <cstdint>
#include <vector>

#include "core/ITopologyNode.h"

namespace mft_core
{

// After a change of format the pin goes on with the former one until the pipeline gets round to it; such frames reach
// the new topology. The frame's own metadata tell its format; a frame without readable metadata is judged by its
// length. Owned by its topology. Immutable after Init.
class TarnFrameFormatTopologyNode : public ITopologyNode
{
  public:
    struct Format
    {
        GUID subtype;
        std::uint32_t bytesPerPixel; // of all planes together
    };

    TarnFrameFormatTopologyNode(std::shared_ptr<ITopologyNode> successor, std::vector<Format> acceptedFormats,
                                std::uint32_t frameWidth, std::uint32_t frameHeight);

    // Drops a frame of another format or size, and one that is shorter than its format needs.
    HRESULT ProcessSample(IMFSample *sample) override;

  private:
    bool IsExpected(IMFSample *sample) const;

    const std::vector<Format> formats;
    const std::uint32_t width;
    const std::uint32_t height;
};

} // namespace mft_core
