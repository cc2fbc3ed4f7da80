// Base of the nodes that make a new sample from each sample.
#pragma once

#include "core/ITopologyNode.h"

namespace mft_core
{

// The input sample is borrowed and never written; the output has its attributes, time and duration. What a derived
// node needs per frame is the output's memory only, from the pool where it was given one. Thread-safe as far as Convert
// is.
class ConvertingTopologyNode : public ITopologyNode
{
  public:
    // Converts and hands the result on. A frame that cannot be converted is dropped with the event
    // "Failed to convert output sample". Throws std::out_of_range when there is no next node.
    HRESULT ProcessSample(IMFSample *sample) final;

    void UseBuffers(const std::shared_ptr<mft_utils::BufferPool> &pool) final;

  protected:
    // `functionName` outlives the node; it names the activity of each sample.
    ConvertingTopologyNode(std::shared_ptr<ITopologyNode> successor, std::string nodeName, const char *functionName);

    // MF_E_BUFFERTOOSMALL when a frame of `lengthBytes` ends before what the node reads.
    static HRESULT CheckFrameLength(std::size_t lengthBytes, std::size_t neededBytes) noexcept;

    // Null without a pool: memory is then made for each frame.
    mft_utils::BufferPool *Buffers() const noexcept
    {
        return buffers.get();
    }

  private:
    // Makes the output sample; it may throw. Called from several threads at once.
    virtual HRESULT Convert(IMFSample *inputSample, IMFSample **outputSample) = 0;

    const char *const activityName;
    std::shared_ptr<mft_utils::BufferPool> buffers;
};

} // namespace mft_core
