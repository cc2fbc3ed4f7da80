// Cuts the centred rectangle out of a 16-bit frame and replaces each pixel by the median of its 3x3 neighbours.
#pragma once

#include "nodes/FrameSize.h"
#include "nodes/ImageConvertingTopologyNode.h"

namespace mft_core
{

// The output buffer has the size of the input frame. Its rows follow each other at a pitch of outputHeight pixels and
// are written in order in runs of 8 pixels, so that in a rectangle wider than high each row overwrites the end of the
// one before; what no row reaches is 0. Owned by its topology. Immutable after Init.
class CropMmTopologyNode : public ImageConvertingTopologyNode
{
  public:
    // Throws FrameSize's std::invalid_argument, "median crop needs a pixel around its rectangle" or
    // "median crop rows exceed the buffer".
    CropMmTopologyNode(std::shared_ptr<ITopologyNode> successor, std::int32_t inputWidth, std::int32_t inputHeight,
                       std::int32_t outputWidth, std::int32_t outputHeight);

  private:
    CropMmTopologyNode(std::shared_ptr<ITopologyNode> successor, const FrameSize &input, const FrameSize &output);
    HRESULT ConvertImage(const std::uint16_t *input, std::uint16_t *output) override;

    std::size_t PitchBytes() const noexcept;
    std::size_t RunBytes() const noexcept;     // written per row
    std::size_t WrittenBytes() const noexcept; // from the start of the first row to the end of the last

    const std::int32_t cropX;
    const std::int32_t cropY;
    const FrameSize outputSize;
    const FrameSize inputSize;
};

} // namespace mft_core
