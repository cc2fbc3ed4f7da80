#include "device/nodes/TarnConfidenceMapTopologyNode.h"

#include <cstddef>
#include <stdexcept>
#include <utility>

#include <tarn/tarn_dmft.h>

#include "device/nodes/FrameMetadataReader.h"
#include "kernels/Confidence.h"
#include "kernels/Copy.h"
#include "nodes/SampleActivity.h"
#include "trace/Check.h"
#include "media/MediaBufferWrapper.h"

namespace mft_core
{

TarnConfidenceMapTopologyNode::TarnConfidenceMapTopologyNode(std::shared_ptr<ITopologyNode> successor,
                                                             std::int32_t width, std::int32_t height,
                                                             std::shared_ptr<const ConfidenceMapState> confidenceMap)
    : ITopologyNode(std::move(successor), "Tarn confidence map topology node"),
      size(width, height, 2 * FrameSize::kBytesPerPixel), planeSize(size.ByteCount()),
      mapState(std::move(confidenceMap))
{
    if (!mapState)
    {
        throw std::invalid_argument("confidenceMap is null");
    }
}

HRESULT TarnConfidenceMapTopologyNode::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    const SampleActivity activity("mft_core::TarnConfidenceMapTopologyNode::ProcessSample", sample);
    {
        const mft_utils::MediaBufferWrapper buffer(sample);
        if (buffer.length < 2 * planeSize)
        {
            // Every frame while the map is off: the camera then sends depth alone.
            TRACE_VERBOSE("%s: sample of %lu bytes handed on unchanged", GetName(), buffer.length);
        }
        else
        {
            if (mapState->IsEnabled() && !FrameMetadataReader(sample).IsConfidenceSuppressed())
            {
                ExtractConfidenceMapToMetadata(buffer.data, sample);
            }
            MoveDepthDataToExpectedLocation(buffer.data);
        }
    }
    HandOn(sample);
    return S_OK;
}

// The blob spans the whole plane although the map fills half of it: applications know that size.
void TarnConfidenceMapTopologyNode::ExtractConfidenceMapToMetadata(BYTE *buffer, IMFSample *sample) const noexcept
{
    mft_kernels::ExtractConfidence(buffer, static_cast<std::ptrdiff_t>(size.width), size.width, size.height);
    const HRESULT result = sample->SetBlob(ORRIN_SAMPLE_TARN_CONFIDENCE_MAP, buffer, planeSize);
    if (FAILED(result))
    {
        TRACE_ERROR("SetBlob of the confidence map failed, hr 0x%08lX", static_cast<unsigned long>(result));
    }
}

void TarnConfidenceMapTopologyNode::MoveDepthDataToExpectedLocation(BYTE *buffer) const noexcept
{
    mft_kernels::MovePlane(buffer, buffer + planeSize, planeSize);
}

} // namespace mft_core
