#include "nodes/BufferConvertingTopologyNode.h"

#include "base/LockedBuffer.h"
#include "trace/Check.h"
#include "media/IMFSampleUtils.h"

using user_space_frameworks::LockedBuffer;

namespace mft_core
{

std::size_t BufferConvertingTopologyNode::Fraction(std::size_t lengthBytes, double coefficient) noexcept
{
    return static_cast<std::size_t>(static_cast<double>(lengthBytes) * coefficient);
}

// The texts are what support tools search for, letter for letter.
HRESULT BufferConvertingTopologyNode::LockInput(IMFSample *inputSample, LockedBuffer &input, Part &part) const
{
    ComPtr<IMFMediaBuffer> inputMediaBuffer;
    CHECK_HR_AS("inputSample->ConvertToContiguousBuffer(&inputMediaBuffer)",
                inputSample->ConvertToContiguousBuffer(inputMediaBuffer.GetAddressOf()));
    CHECK_POINTER_AS("inputMediaBuffer", inputMediaBuffer, E_UNEXPECTED);
    CHECK_HR_AS("inputMediaBuffer->Lock(&inputBuffer, nullptr , &inputBufferLength)",
                input.Lock(inputMediaBuffer.Get()));

    part = PartOf(input.length);
    CHECK_HR(CheckFrameLength(input.length, part.offset));
    CHECK_HR(CheckFrameLength(input.length - part.offset, part.inputLength));
    CHECK_HR(CheckFrameLength(part.outputLength, 1));
    return S_OK;
}

HRESULT BufferConvertingTopologyNode::Convert(IMFSample *inputSample, IMFSample **outputSample)
{
    ComPtr<IMFSample> output;
    CHECK_HR_AS("IMFSampleUtils::Copy(outputSample, inputSample)",
                mft_utils::IMFSampleUtils::Copy(output.GetAddressOf(), inputSample));
    LockedBuffer input;
    Part part{};
    if (const HRESULT found = LockInput(inputSample, input, part); FAILED(found))
    {
        return found;
    }
    const auto outputLength = static_cast<DWORD>(part.outputLength);

    ComPtr<IMFMediaBuffer> outputMediaBuffer;
    CHECK_HR_AS("MFCreateMemoryBuffer(outputLength, &outputMediaBuffer)",
                Buffers() != nullptr ? Buffers()->Take(outputLength, outputMediaBuffer.GetAddressOf())
                                     : MFCreateMemoryBuffer(outputLength, outputMediaBuffer.GetAddressOf()));
    CHECK_HR(outputMediaBuffer->SetCurrentLength(outputLength));
    CHECK_HR_AS("(*outputSample)->AddBuffer(outputMediaBuffer)", output->AddBuffer(outputMediaBuffer.Get()));
    {
        LockedBuffer outputBuffer;
        CHECK_HR_AS("outputMediaBuffer->Lock(&outputBuffer, nullptr, nullptr)",
                    outputBuffer.Lock(outputMediaBuffer.Get()));
        Fill(outputBuffer.data, input.data + part.offset, part);
    }
    *outputSample = output.Detach();
    return S_OK;
}

} // namespace mft_core
