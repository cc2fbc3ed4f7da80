// Cuts the centred rectangle out of a 16-bit frame.
#pragma once

#include "nodes/FrameSize.h"
#include "nodes/ImageConvertingTopologyNode.h"

namespace mft_core
{

// An odd difference of the sizes leaves the extra row or column at the bottom or right. The rows of a view have the
// pitch of the input and end with the rectangle. Owned by its topology.
// Immutable after Init.
class Crop16BitTopologyNode : public ImageConvertingTopologyNode
{
  public:
    // Throws std::invalid_argument "input is smaller than output", or FrameSize's.
    Crop16BitTopologyNode(std::shared_ptr<ITopologyNode> successor, std::uint32_t inputWidth, std::uint32_t inputHeight,
                          std::uint32_t outputWidth, std::uint32_t outputHeight,
                          std::shared_ptr<mft_utils::SampleAllocator> pipelineAllocator = nullptr,
                          OutputMemory outputMemory = OutputMemory::Own);

  private:
    struct Rectangle
    {
        Rectangle(std::uint32_t inputWidth, std::uint32_t inputHeight, std::uint32_t outputWidth,
                  std::uint32_t outputHeight);
        std::size_t FirstPixel() const noexcept;
        std::size_t EndPixel() const noexcept;

        FrameSize input;
        FrameSize output;
    };

    Crop16BitTopologyNode(std::shared_ptr<ITopologyNode> successor, const Rectangle &rectangle);
    ByteRange ViewedPart(std::size_t inputLength) const noexcept override;
    HRESULT ConvertRows(IMFSample *inputSample, BYTE *firstRow, std::ptrdiff_t pitchBytes) override;
    HRESULT ConvertImage(const std::uint16_t *input, std::uint16_t *output) override;

    const Rectangle crop;
};

} // namespace mft_core
