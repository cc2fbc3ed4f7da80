#include "nodes/ImageResizeTopologyNode.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace mft_core
{

ImageResizeTopologyNode::ImageResizeTopologyNode(std::shared_ptr<ITopologyNode> successor, std::uint32_t inputWidth,
                                                 std::uint32_t inputHeight, std::uint32_t outputWidth,
                                                 std::uint32_t outputHeight, std::uint32_t inputPitchPixels)
    : ImageResizeTopologyNode(std::move(successor), FrameSize(inputWidth, inputHeight),
                              FrameSize(outputWidth, outputHeight),
                              FrameSize(std::max(inputWidth, inputPitchPixels), inputHeight))
{
}

ImageResizeTopologyNode::ImageResizeTopologyNode(std::shared_ptr<ITopologyNode> successor, const FrameSize &input,
                                                 const FrameSize &output, const FrameSize &pitchedInput)
    : ImageConvertingTopologyNode(
          std::move(successor), "Image Resize topology node", "mft_core::ImageResizeTopologyNode::ProcessSample",
          pitchedInput.ByteCount() - (pitchedInput.width - input.width) * FrameSize::kBytesPerPixel,
          output.ByteCount()),
      inputPitchBytes(pitchedInput.RowPitchBytes()), outputSize(output),
      plan(input.width, input.height, output.width, output.height), scratch(plan.ScratchSize())
{
}

HRESULT ImageResizeTopologyNode::ConvertImage(const std::uint16_t *input, std::uint16_t *output)
{
    const std::scoped_lock guard(lock);
    mft_kernels::Resize(plan, input, inputPitchBytes, output, outputSize.RowPitchBytes(), scratch.data());
    return S_OK;
}

} // namespace mft_core
