#include "nodes/SharpeningTopologyNode.h"

#include <cstring>
#include <mutex>
#include <utility>

namespace mft_core
{

SharpeningTopologyNode::SharpeningTopologyNode(std::shared_ptr<ITopologyNode> successor, std::int32_t width,
                                               std::int32_t height)
    : SharpeningTopologyNode(std::move(successor), FrameSize(width, height, sizeof(float)))
{
}

SharpeningTopologyNode::SharpeningTopologyNode(std::shared_ptr<ITopologyNode> successor, const FrameSize &frameSize)
    : ImageConvertingTopologyNode(std::move(successor), "Sharpening topology node",
                                  "mft_core::SharpeningTopologyNode::ProcessSample", frameSize.ByteCount(),
                                  frameSize.ByteCount()),
      size(frameSize), kernel(mft_kernels::SelectSharpenKernel()), scratch(frameSize.PixelCount())
{
}

HRESULT SharpeningTopologyNode::ConvertImage(const std::uint16_t *input, std::uint16_t *output)
{
    ClearBorder(output);
    const std::scoped_lock guard(lock);
    kernel(input, size.RowPitchBytes(), output, size.RowPitchBytes(), size.width, size.height, scratch.data());
    return S_OK;
}

void SharpeningTopologyNode::ClearBorder(std::uint16_t *output) const noexcept
{
    constexpr std::uint32_t border = mft_kernels::kSharpenBorder;
    if (size.width <= 2 * border || size.height <= 2 * border)
    {
        std::memset(output, 0, size.ByteCount());
        return;
    }
    // The right border of one row and the left border of the next lie side by side.
    const std::size_t between = std::size_t{2} * border * FrameSize::kBytesPerPixel;
    const std::size_t rows = (std::size_t{size.width} * border + border) * FrameSize::kBytesPerPixel;
    std::memset(output, 0, rows);
    std::uint16_t *rightBorder = output + std::size_t{size.width} * (border + 1) - border;
    for (std::uint32_t y = border; y + border + 1 < size.height; ++y, rightBorder += size.width)
    {
        std::memset(rightBorder, 0, between);
    }
    std::memset(rightBorder, 0, rows);
}

} // namespace mft_core
