// Base of the converting nodes whose input starts at a fraction of the buffer.
#pragma once

#include "base/LockedBuffer.h"
#include "nodes/ConvertingTopologyNode.h"

namespace mft_core
{

// Finds the part of the input, makes the output buffer, lets the derived node fill it. Thread-safe.
class BufferConvertingTopologyNode : public ConvertingTopologyNode
{
  protected:
    using ConvertingTopologyNode::ConvertingTopologyNode;

    struct Part
    {
        std::size_t offset;       // bytes before what is read
        std::size_t inputLength;  // bytes read
        std::size_t outputLength; // bytes written
    };

    // A fraction of a length, truncated towards zero.
    static std::size_t Fraction(std::size_t lengthBytes, double coefficient) noexcept;

    // Locks the frame and finds its part. Fails when there is none.
    HRESULT LockInput(IMFSample *inputSample, user_space_frameworks::LockedBuffer &input, Part &part) const;

  private:
    HRESULT Convert(IMFSample *inputSample, IMFSample **outputSample) final;

    // A part that does not lie inside the input or gives no output drops the frame.
    virtual Part PartOf(std::size_t inputBufferLength) const noexcept = 0;
    virtual void Fill(BYTE *output, const BYTE *input, const Part &part) const noexcept = 0;
};

} // namespace mft_core
