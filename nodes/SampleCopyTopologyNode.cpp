#include "nodes/SampleCopyTopologyNode.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "kernels/Copy.h"

namespace mft_core
{

SampleCopyTopologyNode::SampleCopyTopologyNode(std::shared_ptr<ITopologyNode> successor,
                                               double inputBufferOffsetCoefficient,
                                               double outputBufferLengthCoefficient, std::string nodeName,
                                               std::size_t mostInputBytes, OutputMemory outputMemory)
    : BufferConvertingTopologyNode(std::move(successor), std::move(nodeName),
                                   "mft_core::SampleCopyTopologyNode::ProcessSample"),
      inputOffsetCoefficient(inputBufferOffsetCoefficient), outputLengthCoefficient(outputBufferLengthCoefficient),
      mostInput(mostInputBytes)
{
    // Written so that a value that is not a number is refused too.
    if (!(inputOffsetCoefficient >= 0.0 && inputOffsetCoefficient <= 1.0))
    {
        throw std::invalid_argument("invalid input buffer offset coefficient");
    }
    if (!(outputLengthCoefficient > 0.0))
    {
        throw std::invalid_argument("output buffer length coefficient <= 0");
    }
    if (inputOffsetCoefficient + outputLengthCoefficient > 1.0)
    {
        throw std::invalid_argument("coefficients sum > 1");
    }
    if (outputMemory == OutputMemory::View)
    {
        HandOnViews();
    }
}

ConvertingTopologyNode::ByteRange SampleCopyTopologyNode::ViewedPart(std::size_t inputLength) const noexcept
{
    const Part part = PartOf(inputLength);
    return {part.offset, part.outputLength};
}

BufferConvertingTopologyNode::Part SampleCopyTopologyNode::PartOf(std::size_t inputBufferLength) const noexcept
{
    const std::size_t inputLength = std::min(inputBufferLength, mostInput);
    const std::size_t outputLength = Fraction(inputLength, outputLengthCoefficient);
    return {Fraction(inputLength, inputOffsetCoefficient), outputLength, outputLength};
}

void SampleCopyTopologyNode::Fill(BYTE *output, const BYTE *input, const Part &part) const noexcept
{
    mft_kernels::CopyPlane(output, input, part.outputLength);
}

} // namespace mft_core
