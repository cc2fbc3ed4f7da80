#include "nodes/Crop16BitTopologyNode.h"

#include <stdexcept>
#include <utility>

#include "kernels/Copy.h"
#include "media/MediaBufferWrapper.h"
#include "trace/Check.h"

namespace mft_core
{

namespace
{
// Before the frame sizes are checked on their own: this text is the more telling one.
std::uint32_t InputSideFor(std::uint32_t inputSide, std::uint32_t outputSide)
{
    if (inputSide < outputSide)
    {
        throw std::invalid_argument("input is smaller than output");
    }
    return inputSide;
}
} // namespace

Crop16BitTopologyNode::Rectangle::Rectangle(std::uint32_t inputWidth, std::uint32_t inputHeight,
                                            std::uint32_t outputWidth, std::uint32_t outputHeight)
    : input(InputSideFor(inputWidth, outputWidth), InputSideFor(inputHeight, outputHeight)),
      output(outputWidth, outputHeight)
{
}

std::size_t Crop16BitTopologyNode::Rectangle::FirstPixel() const noexcept
{
    const std::size_t offsetX = (input.width - output.width) / 2;
    const std::size_t offsetY = (input.height - output.height) / 2;
    return input.width * offsetY + offsetX;
}

std::size_t Crop16BitTopologyNode::Rectangle::EndPixel() const noexcept
{
    return FirstPixel() + std::size_t{input.width} * (output.height - 1) + output.width;
}

Crop16BitTopologyNode::Crop16BitTopologyNode(std::shared_ptr<ITopologyNode> successor, std::uint32_t inputWidth,
                                             std::uint32_t inputHeight, std::uint32_t outputWidth,
                                             std::uint32_t outputHeight,
                                             std::shared_ptr<mft_utils::SampleAllocator> pipelineAllocator,
                                             OutputMemory outputMemory)
    : Crop16BitTopologyNode(std::move(successor), Rectangle(inputWidth, inputHeight, outputWidth, outputHeight))
{
    UseAllocator(std::move(pipelineAllocator), outputWidth * FrameSize::kBytesPerPixel, outputHeight);
    if (outputMemory == OutputMemory::View)
    {
        HandOnViews();
    }
}

Crop16BitTopologyNode::Crop16BitTopologyNode(std::shared_ptr<ITopologyNode> successor, const Rectangle &rectangle)
    : ImageConvertingTopologyNode(
          std::move(successor), "Crop 16 bit topology node", "mft_core::Crop16BitTopologyNode::ProcessSample",
          static_cast<DWORD>(rectangle.EndPixel() * FrameSize::kBytesPerPixel), rectangle.output.ByteCount()),
      crop(rectangle)
{
}

HRESULT Crop16BitTopologyNode::ConvertImage(const std::uint16_t *input, std::uint16_t *output)
{
    mft_kernels::CopyRectangle(input + crop.FirstPixel(), crop.input.RowPitchBytes(), output,
                               crop.output.RowPitchBytes(), crop.output.width, crop.output.height);
    return S_OK;
}

ConvertingTopologyNode::ByteRange Crop16BitTopologyNode::ViewedPart(std::size_t /*inputLength*/) const noexcept
{
    return {crop.FirstPixel() * FrameSize::kBytesPerPixel,
            (crop.EndPixel() - crop.FirstPixel()) * FrameSize::kBytesPerPixel};
}

HRESULT Crop16BitTopologyNode::ConvertRows(IMFSample *inputSample, BYTE *firstRow, std::ptrdiff_t pitchBytes)
{
    const mft_utils::MediaBufferWrapper input(inputSample);
    CHECK_HR(CheckFrameLength(input.length, crop.EndPixel() * FrameSize::kBytesPerPixel));
    mft_kernels::CopyRectangle(reinterpret_cast<const std::uint16_t *>(input.data) + crop.FirstPixel(),
                               crop.input.RowPitchBytes(), reinterpret_cast<std::uint16_t *>(firstRow), pitchBytes,
                               crop.output.width, crop.output.height);
    return S_OK;
}

} // namespace mft_core
