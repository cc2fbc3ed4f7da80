#include "device/nodes/TarnIr10to8TopologyNode.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "kernels/TenToEight.h"
#include "trace/Check.h"

namespace mft_core
{

TarnIr10to8TopologyNode::TarnIr10to8TopologyNode(std::shared_ptr<ITopologyNode> successor, std::int32_t width,
                                                 std::int32_t height, double inputBufferOffsetCoefficient,
                                                 std::shared_ptr<mft_utils::SampleAllocator> pipelineAllocator,
                                                 std::int32_t inputPitchPixels)
    : BufferConvertingTopologyNode(std::move(successor), "10bpp to 8bpp topology node",
                                   "mft_core::TarnIr10to8TopologyNode::ProcessSample"),
      size(width, height), input(std::max(width, inputPitchPixels), height),
      offsetCoefficient(inputBufferOffsetCoefficient)
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
    return {Fraction(inputBufferLength, offsetCoefficient), InputBytes(), size.PixelCount()};
}

void TarnIr10to8TopologyNode::Fill(BYTE *output, const BYTE *pixels, const Part &) const noexcept
{
    FillRows(output, static_cast<std::ptrdiff_t>(size.width), pixels);
}

HRESULT TarnIr10to8TopologyNode::ConvertRows(IMFSample *inputSample, BYTE *firstRow, std::ptrdiff_t pitchBytes)
{
    user_space_frameworks::LockedBuffer frame;
    Part part{};
    CHECK_HR(LockInput(inputSample, frame, part));
    FillRows(firstRow, pitchBytes, frame.data + part.offset);
    return S_OK;
}

// Up to the end of the last row's pixels.
std::size_t TarnIr10to8TopologyNode::InputBytes() const noexcept
{
    return input.ByteCount() - std::size_t{input.width - size.width} * FrameSize::kBytesPerPixel;
}

void TarnIr10to8TopologyNode::FillRows(BYTE *firstRow, std::ptrdiff_t pitchBytes, const BYTE *pixels) const noexcept
{
    mft_kernels::ConvertTenToEight(reinterpret_cast<const std::uint16_t *>(pixels), input.RowPitchBytes(), firstRow,
                                   pitchBytes, size.width, size.height);
}

} // namespace mft_core
