#include "device/nodes/TarnIr10to8TopologyNode.h"

#include <stdexcept>
#include <utility>

#include "kernels/TenToEight.h"
#include "trace/Check.h"

namespace mft_core
{

TarnIr10to8TopologyNode::TarnIr10to8TopologyNode(std::shared_ptr<ITopologyNode> successor, std::int32_t width,
                                                 std::int32_t height, double inputBufferOffsetCoefficient,
                                                 std::shared_ptr<mft_utils::SampleAllocator> pipelineAllocator)
    : BufferConvertingTopologyNode(std::move(successor), "10bpp to 8bpp topology node",
                                   "mft_core::TarnIr10to8TopologyNode::ProcessSample"),
      size(width, height), offsetCoefficient(inputBufferOffsetCoefficient)
{
    // Written so that a value that is not a number is refused too.
    if (!(offsetCoefficient >= 0.0 && offsetCoefficient <= 0.75))
    {
        throw std::invalid_argument("invalid input buffer offset coefficient");
    }
    UseAllocator(std::move(pipelineAllocator), size.width, size.height);
}

BufferConvertingTopologyNode::Part TarnIr10to8TopologyNode::PartOf(std::size_t inputBufferLength) const noexcept
{
    return {Fraction(inputBufferLength, offsetCoefficient), size.ByteCount(), size.PixelCount()};
}

void TarnIr10to8TopologyNode::Fill(BYTE *output, const BYTE *input, const Part &) const noexcept
{
    FillRows(output, static_cast<std::ptrdiff_t>(size.width), input);
}

HRESULT TarnIr10to8TopologyNode::ConvertRows(IMFSample *inputSample, BYTE *firstRow, std::ptrdiff_t pitchBytes)
{
    LockedBuffer input;
    Part part{};
    CHECK_HR(LockInput(inputSample, input, part));
    FillRows(firstRow, pitchBytes, input.data + part.offset);
    return S_OK;
}

void TarnIr10to8TopologyNode::FillRows(BYTE *firstRow, std::ptrdiff_t pitchBytes, const BYTE *input) const noexcept
{
    mft_kernels::ConvertTenToEight(reinterpret_cast<const std::uint16_t *>(input), size.RowPitchBytes(), firstRow,
                                   pitchBytes, size.width, size.height);
}

} // namespace mft_core
