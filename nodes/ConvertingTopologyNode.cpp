#include "nodes/ConvertingTopologyNode.h"

#include <utility>

#include "media/IMFSampleUtils.h"
#include "media/LockedRows.h"
#include "media/MediaBufferView.h"
#include "nodes/SampleActivity.h"
#include "trace/Check.h"
#include "trace/Guard.h"

namespace mft_core
{

ConvertingTopologyNode::ConvertingTopologyNode(std::shared_ptr<ITopologyNode> successor, std::string nodeName,
                                               const char *functionName)
    : ITopologyNode(std::move(successor), std::move(nodeName)), activityName(functionName)
{
}

HRESULT ConvertingTopologyNode::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    SampleActivity activity(activityName, sample);
    ComPtr<IMFSample> output;
    const HRESULT result = mft_utils::Guarded([&] { return ConvertAnyhow(sample, output.GetAddressOf()); });
    if (FAILED(result))
    {
        activity.Write(mft_utils::TraceLevel::Error, "Failed to convert output sample",
                       {mft_utils::TraceField::Hex32("hr", result)});
        return result;
    }
    HandOn(output.Get());
    return S_OK;
}

void ConvertingTopologyNode::UseBuffers(const std::shared_ptr<mft_utils::BufferPool> &pool)
{
    buffers = pool;
}

void ConvertingTopologyNode::UseAllocator(std::shared_ptr<mft_utils::SampleAllocator> pipelineAllocator, DWORD rowBytes,
                                          DWORD rows)
{
    allocator = std::move(pipelineAllocator);
    outputRowBytes = rowBytes;
    outputRows = rows;
}

// A frame in other memory is better than no frame: the pipeline then copies it.
HRESULT ConvertingTopologyNode::ConvertAnyhow(IMFSample *inputSample, IMFSample **outputSample)
{
    if (handsOnViews)
    {
        return MakeView(inputSample, outputSample);
    }
    if (allocator && SUCCEEDED(mft_utils::Guarded([&] { return ConvertIntoAllocated(inputSample, outputSample); })))
    {
        return S_OK;
    }
    return Convert(inputSample, outputSample);
}

// The next node reads the frame where it lies, where a copy would be read once and thrown away.
HRESULT ConvertingTopologyNode::MakeView(IMFSample *inputSample, IMFSample **outputSample) const
{
    ComPtr<IMFSample> output;
    CHECK_HR_AS("IMFSampleUtils::Copy(outputSample, inputSample)",
                mft_utils::IMFSampleUtils::Copy(output.GetAddressOf(), inputSample));
    ComPtr<IMFMediaBuffer> inputMediaBuffer;
    CHECK_HR_AS("inputSample->ConvertToContiguousBuffer(&inputMediaBuffer)",
                inputSample->ConvertToContiguousBuffer(inputMediaBuffer.GetAddressOf()));
    CHECK_POINTER_AS("inputMediaBuffer", inputMediaBuffer, E_UNEXPECTED);
    DWORD inputLength = 0;
    CHECK_HR(inputMediaBuffer->GetCurrentLength(&inputLength));
    const ByteRange part = ViewedPart(inputLength);
    CHECK_HR(CheckFrameLength(inputLength, part.offset));
    CHECK_HR(CheckFrameLength(inputLength - part.offset, part.length));
    CHECK_HR(CheckFrameLength(part.length, 1));
    const auto view = user_space_frameworks::MakeCom<mft_utils::MediaBufferView>(
        inputMediaBuffer, static_cast<DWORD>(part.offset), static_cast<DWORD>(part.length));
    CHECK_HR_AS("(*outputSample)->AddBuffer(outputMediaBuffer)", output->AddBuffer(view.Get()));
    *outputSample = output.Detach();
    return S_OK;
}

ConvertingTopologyNode::ByteRange ConvertingTopologyNode::ViewedPart(std::size_t inputLength) const noexcept
{
    return {0, inputLength};
}

HRESULT ConvertingTopologyNode::ConvertIntoAllocated(IMFSample *inputSample, IMFSample **outputSample)
{
    ComPtr<IMFSample> output;
    if (const HRESULT allocated = allocator->Allocate(inputSample, output.GetAddressOf()); FAILED(allocated))
    {
        return allocated; // which the allocator has told, once
    }
    ComPtr<IMFMediaBuffer> buffer;
    CHECK_HR(output->GetBufferByIndex(0, buffer.GetAddressOf()));
    {
        LockedRows rows;
        CHECK_HR(rows.Lock(buffer.Get(), outputRowBytes, outputRows));
        CHECK_HR(ConvertRows(inputSample, rows.first, rows.pitchBytes));
    }
    CHECK_HR(buffer->SetCurrentLength(outputRowBytes * outputRows));
    *outputSample = output.Detach();
    return S_OK;
}

HRESULT ConvertingTopologyNode::ConvertRows(IMFSample * /*inputSample*/, BYTE * /*firstRow*/,
                                            std::ptrdiff_t /*pitchBytes*/)
{
    return E_NOTIMPL;
}

HRESULT ConvertingTopologyNode::CheckFrameLength(std::size_t lengthBytes, std::size_t neededBytes) noexcept
{
    return lengthBytes < neededBytes ? MF_E_BUFFERTOOSMALL : S_OK;
}

} // namespace mft_core
