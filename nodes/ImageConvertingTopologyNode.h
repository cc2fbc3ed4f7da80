// Base of the converting nodes that turn one 16-bit image into another.
#pragma once

#include "nodes/ConvertingTopologyNode.h"

namespace mft_core
{

// Wraps the input, allocates the output, lets the derived node compute the pixels. Thread-safe as far as
// ConvertImage is.
class ImageConvertingTopologyNode : public ConvertingTopologyNode
{
  protected:
    // A frame of less than `neededInputBytes` is dropped. Both lengths are above 0.
    ImageConvertingTopologyNode(std::shared_ptr<ITopologyNode> successor, std::string nodeName,
                                const char *functionName, DWORD neededInputBytes, DWORD outputBytes);

  private:
    HRESULT Convert(IMFSample *inputSample, IMFSample **outputSample) final;

    // Writes every byte of the output, which holds anything before. `input` may have any alignment.
    virtual HRESULT ConvertImage(const std::uint16_t *input, std::uint16_t *output) = 0;

    const DWORD inputLength;
    const DWORD outputLength;
};

} // namespace mft_core
