#include "nodes/ImageConvertingTopologyNode.h"

#include <utility>

#include "trace/Check.h"
#include "media/IMFSampleUtils.h"
#include "media/MediaBufferWrapper.h"

namespace mft_core
{

ImageConvertingTopologyNode::ImageConvertingTopologyNode(std::shared_ptr<ITopologyNode> successor, std::string nodeName,
                                                         const char *functionName, DWORD neededInputBytes,
                                                         DWORD outputBytes)
    : ConvertingTopologyNode(std::move(successor), std::move(nodeName), functionName), inputLength(neededInputBytes),
      outputLength(outputBytes)
{
}

HRESULT ImageConvertingTopologyNode::Convert(IMFSample *inputSample, IMFSample **outputSample)
{
    ComPtr<IMFSample> output;
    CHECK_HR_AS("IMFSampleUtils::Copy(outputSample, inputSample)",
                mft_utils::IMFSampleUtils::Copy(output.GetAddressOf(), inputSample));
    {
        const mft_utils::MediaBufferWrapper inputBufferWrapper(inputSample);
        CHECK_HR(CheckFrameLength(inputBufferWrapper.length, inputLength));
        const mft_utils::MediaBufferWrapper outputBufferWrapper(outputLength, Buffers());
        CHECK_HR_AS("(*outputSample)->AddBuffer(outputBufferWrapper.mediaBuffer)",
                    output->AddBuffer(outputBufferWrapper.mediaBuffer.Get()));
        CHECK_HR(ConvertImage(reinterpret_cast<const std::uint16_t *>(inputBufferWrapper.data),
                              reinterpret_cast<std::uint16_t *>(outputBufferWrapper.data)));
    }
    *outputSample = output.Detach();
    return S_OK;
}

} // namespace mft_core
