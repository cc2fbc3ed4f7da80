#include "nodes/CropMmTopologyNode.h"

#include <cstring>
#include <stdexcept>
#include <utility>

#include "kernels/MedianCrop.h"

namespace mft_core
{

namespace
{
std::int32_t CentredOffset(std::uint32_t input, std::uint32_t output) noexcept
{
    return static_cast<std::int32_t>((std::int64_t{input} - std::int64_t{output}) / 2);
}
} // namespace

CropMmTopologyNode::CropMmTopologyNode(std::shared_ptr<ITopologyNode> successor, std::int32_t inputWidth,
                                       std::int32_t inputHeight, std::int32_t outputWidth, std::int32_t outputHeight)
    : CropMmTopologyNode(std::move(successor), FrameSize(inputWidth, inputHeight), FrameSize(outputWidth, outputHeight))
{
}

CropMmTopologyNode::CropMmTopologyNode(std::shared_ptr<ITopologyNode> successor, const FrameSize &input,
                                       const FrameSize &output)
    : ImageConvertingTopologyNode(std::move(successor), "Crop MM topology node",
                                  "mft_core::CropMmTopologyNode::ProcessSample", input.ByteCount(), input.ByteCount()),
      cropX(CentredOffset(input.width, output.width)), cropY(CentredOffset(input.height, output.height)),
      outputSize(output), inputSize(input)
{
    if (cropX < 1 || cropY < 1)
    {
        throw std::invalid_argument("median crop needs a pixel around its rectangle");
    }
    if (WrittenBytes() > inputSize.ByteCount())
    {
        throw std::invalid_argument("median crop rows exceed the buffer");
    }
}

HRESULT CropMmTopologyNode::ConvertImage(const std::uint16_t *input, std::uint16_t *output)
{
    // Rows that do not reach the next one leave gaps.
    const std::size_t gapless = RunBytes() < PitchBytes() ? 0 : WrittenBytes();
    std::memset(reinterpret_cast<BYTE *>(output) + gapless, 0, inputSize.ByteCount() - gapless);
    const mft_kernels::MedianCropInput rectangle{input,
                                                 inputSize.RowPitchBytes(),
                                                 inputSize.width,
                                                 inputSize.height,
                                                 static_cast<std::size_t>(cropX),
                                                 static_cast<std::size_t>(cropY)};
    return mft_kernels::MedianCrop3x3(rectangle, output, static_cast<std::ptrdiff_t>(PitchBytes()), outputSize.width,
                                      outputSize.height)
               ? S_OK
               : E_FAIL;
}

std::size_t CropMmTopologyNode::PitchBytes() const noexcept
{
    return std::size_t{outputSize.height} * FrameSize::kBytesPerPixel;
}

std::size_t CropMmTopologyNode::RunBytes() const noexcept
{
    constexpr std::size_t run = mft_kernels::kMedianRun;
    return (outputSize.width + run - 1) / run * run * FrameSize::kBytesPerPixel;
}

std::size_t CropMmTopologyNode::WrittenBytes() const noexcept
{
    return (outputSize.height - 1) * PitchBytes() + RunBytes();
}

} // namespace mft_core
