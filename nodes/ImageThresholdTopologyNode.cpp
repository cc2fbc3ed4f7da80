#include "nodes/ImageThresholdTopologyNode.h"

#include <utility>

#include "kernels/Threshold.h"
#include "nodes/SampleActivity.h"
#include "trace/Check.h"
#include "trace/Guard.h"
#include "media/MediaBufferWrapper.h"

namespace mft_core
{

ImageThresholdTopologyNode::ImageThresholdTopologyNode(std::shared_ptr<ITopologyNode> successor, std::uint32_t width,
                                                       std::uint32_t height, std::uint16_t threshold)
    : ITopologyNode(std::move(successor), "Image threshold topology node"), size(width, height), maximum(threshold)
{
}

HRESULT ImageThresholdTopologyNode::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    const SampleActivity activity("mft_core::ImageThresholdTopologyNode::ProcessSample", sample);
    const HRESULT result = mft_utils::Guarded([&] { return ClampPixels(sample); });
    if (FAILED(result))
    {
        TRACE_ERROR("%s: sample handed on unchanged, hr 0x%08lX", GetName(), static_cast<unsigned long>(result));
    }
    HandOn(sample);
    return S_OK;
}

HRESULT ImageThresholdTopologyNode::ClampPixels(IMFSample *sample) const
{
    const mft_utils::MediaBufferWrapper buffer(sample);
    if (buffer.length < size.ByteCount())
    {
        return MF_E_BUFFERTOOSMALL;
    }
    mft_kernels::ClampAbove(reinterpret_cast<std::uint16_t *>(buffer.data), size.RowPitchBytes(), size.width,
                            size.height, maximum);
    return S_OK;
}

} // namespace mft_core
