// Turns 16-bit infrared frames that hold 10-bit values into 8-bit frames.
#pragma once

#include "nodes/BufferConvertingTopologyNode.h"
#include "nodes/FrameSize.h"

namespace mft_core
{

// A leading part of the input may be ignored. Shift and rescale are one step without memory in between, so frames that
// come at the same time share nothing. Owned by its topology. Immutable after Init.
class TarnIr10to8TopologyNode : public BufferConvertingTopologyNode
{
  public:
    // `inputPitchPixels` is from row to row, at least `width`; 0 without padding. The coefficient is the fraction of
    // the input buffer before the infrared pixels. Throws std::invalid_argument "invalid input buffer offset
    // coefficient" outside 0 to 0.75, or FrameSize's.
    TarnIr10to8TopologyNode(std::shared_ptr<ITopologyNode> successor, std::int32_t width, std::int32_t height,
                            double inputBufferOffsetCoefficient = 0,
                            std::shared_ptr<mft_utils::SampleAllocator> pipelineAllocator = nullptr,
                            std::int32_t inputPitchPixels = 0);

  private:
    Part PartOf(std::size_t inputBufferLength) const noexcept override;
    void Fill(BYTE *output, const BYTE *pixels, const Part &part) const noexcept override;
    HRESULT ConvertRows(IMFSample *inputSample, BYTE *firstRow, std::ptrdiff_t pitchBytes) override;
    void FillRows(BYTE *firstRow, std::ptrdiff_t pitchBytes, const BYTE *pixels) const noexcept;
    std::size_t InputBytes() const noexcept;

    const FrameSize size;
    const FrameSize input; // a row is a pitch
    const double offsetCoefficient;
};

} // namespace mft_core
