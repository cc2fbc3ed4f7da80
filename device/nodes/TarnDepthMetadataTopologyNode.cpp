#include "device/nodes/TarnDepthMetadataTopologyNode.h"

#include <utility>

#include "device/nodes/FrameMetadataReader.h"
#include "nodes/SampleActivity.h"
#include "tarn/sample_attributes.h"
#include "trace/Check.h"

namespace mft_core
{

TarnDepthMetadataTopologyNode::TarnDepthMetadataTopologyNode(std::shared_ptr<ITopologyNode> successor)
    : ITopologyNode(std::move(successor), "Tarn depth metadata topology node")
{
}

HRESULT TarnDepthMetadataTopologyNode::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    const SampleActivity activity("mft_core::TarnDepthMetadataTopologyNode::ProcessSample", sample);
    if (FAILED(AttachRecord(sample)))
    {
        TRACE_ERROR("%s: the sample goes without its metadata record", GetName());
    }
    HandOn(sample);
    return S_OK;
}

HRESULT TarnDepthMetadataTopologyNode::AttachRecord(IMFSample *sample) const
{
    // A later version's record begins like ours and is passed on whole.
    const FrameMetadataReader metadata(sample);
    const auto record = metadata.CompleteRecord();
    if (!record.empty())
    {
        CHECK_HR(sample->SetBlob(TARN_SAMPLE_FRAME_METADATA, record.data(), static_cast<UINT32>(record.size())));
    }
    return S_OK;
}

} // namespace mft_core
