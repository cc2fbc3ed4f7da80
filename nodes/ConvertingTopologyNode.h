// Base of the nodes that make a new sample from each sample.
#pragma once

#include "core/ITopologyNode.h"
#include "media/SampleAllocator.h"

namespace mft_core
{

enum class OutputMemory
{
    Own,
    View // of the input's: for a next node that only reads, inside a chain
};

// The input sample is borrowed and never written; the output has its attributes, time and duration. What a derived
// node needs per frame is the output's memory only, from the pool where it was given one. The last one of a chain takes
// a sample of the pipeline's allocator before that. Thread-safe as far as Convert is.
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

    // Before the first sample; null for none. The node then overrides ConvertRows. Rows of `rowBytes` bytes come out.
    void UseAllocator(std::shared_ptr<mft_utils::SampleAllocator> pipelineAllocator, DWORD rowBytes, DWORD rows);

    // Before the first sample. The node then overrides ViewedPart.
    void HandOnViews() noexcept
    {
        handsOnViews = true;
    }

    struct ByteRange
    {
        std::size_t offset;
        std::size_t length; // above 0
    };

    // Null without a pool: memory is then made for each frame.
    mft_utils::BufferPool *Buffers() const noexcept
    {
        return buffers.get();
    }

  private:
    // Writes the rows of the output, every byte of each. Called as Convert is.
    virtual HRESULT ConvertRows(IMFSample *inputSample, BYTE *firstRow, std::ptrdiff_t pitchBytes);
    // What of an input of that length is the output; a range that does not lie inside drops the frame.
    virtual ByteRange ViewedPart(std::size_t inputLength) const noexcept;
    HRESULT MakeView(IMFSample *inputSample, IMFSample **outputSample) const;
    HRESULT ConvertIntoAllocated(IMFSample *inputSample, IMFSample **outputSample);
    HRESULT ConvertAnyhow(IMFSample *inputSample, IMFSample **outputSample);

    // Makes the output sample; it may throw. Called from several threads at once.
    virtual HRESULT Convert(IMFSample *inputSample, IMFSample **outputSample) = 0;

    const char *const activityName;
    std::shared_ptr<mft_utils::BufferPool> buffers;
    std::shared_ptr<mft_utils::SampleAllocator> allocator;
    DWORD outputRowBytes = 0;
    DWORD outputRows = 0;
    bool handsOnViews = false;
};

} // namespace mft_core
