#include "device/nodes/TarnIr10to8TopologyNode.h"

#include <stdexcept>
#include <utility>

#include "kernels/TenToEight.h"

namespace mft_core
{

TarnIr10to8TopologyNode::TarnIr10to8TopologyNode(std::shared_ptr<ITopologyNode> successor, std::int32_t width,
                                                 std::int32_t height, double inputBufferOffsetCoefficient)
    : BufferConvertingTopologyNode(std::move(successor), "10bpp to 8bpp topology node",
                                   "mft_core::TarnIr10to8TopologyNode::ProcessSample"),
      size(width, height), offsetCoefficient(inputBufferOffsetCoefficient)
{
    // Written so that a value that is not a number is refused too.
    if (!(offsetCoefficient >= 0.0 && offsetCoefficient <= 0.75))
    {
        throw std::invalid_argument("invalid input buffer offset coefficient");
    }
}

BufferConvertingTopologyNode::Part TarnIr10to8TopologyNode::PartOf(std::size_t inputBufferLength) const noexcept
{
    return {Fraction(inputBufferLength, offsetCoefficient), size.ByteCount(), size.PixelCount()};
}

void TarnIr10to8TopologyNode::Fill(BYTE *output, const BYTE *input, const Part &) const noexcept
{
    mft_kernels::ConvertTenToEight(reinterpret_cast<const std::uint16_t *>(input), size.RowPitchBytes(), output,
                                   static_cast<std::ptrdiff_t>(size.width), size.width, size.height);
}

} // namespace mft_core
