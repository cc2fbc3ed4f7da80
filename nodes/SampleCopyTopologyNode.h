// Copies one plane of a multi-plane frame into a new sample.
#pragma once

#include <limits>

#include "nodes/BufferConvertingTopologyNode.h"

namespace mft_core
{

// Offset and length of the plane are fractions of the input buffer, or of its first bytes when it is longer than a
// frame. Owned by its topology. Immutable after Init.
class SampleCopyTopologyNode : public BufferConvertingTopologyNode
{
  public:
    // Throws std::invalid_argument, in this order: "invalid input buffer offset coefficient" outside 0 to 1,
    // "output buffer length coefficient <= 0", "coefficients sum > 1".
    SampleCopyTopologyNode(std::shared_ptr<ITopologyNode> successor, double inputBufferOffsetCoefficient,
                           double outputBufferLengthCoefficient, std::string nodeName,
                           std::size_t mostInputBytes = std::numeric_limits<std::size_t>::max(),
                           OutputMemory outputMemory = OutputMemory::Own);

  private:
    ByteRange ViewedPart(std::size_t inputLength) const noexcept override;
    Part PartOf(std::size_t inputBufferLength) const noexcept override;
    void Fill(BYTE *output, const BYTE *input, const Part &part) const noexcept override;

    const double inputOffsetCoefficient;
    const double outputLengthCoefficient;
    const std::size_t mostInput;
};

} // namespace mft_core
