#include "device/nodes/TarnDepthMetadataTopologyNode.h"

#include <cstring>
#include <utility>

#include "nodes/SampleActivity.h"
#include "device/nodes/UvcMetaDataWrapper.h"
#include "tarn/frame_metadata.h"
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
    const UvcMetaDataWrapper metaData(sample);
    if (!metaData.HasMetaData())
    {
        return S_OK;
    }
    TARN_FRAME_METADATA record{};
    if (metaData.PayloadSize() < sizeof(record))
    {
        TRACE_VERBOSE("%s: record of %zu bytes left out", GetName(), metaData.PayloadSize());
        return S_OK;
    }
    std::memcpy(&record, metaData.Payload(), sizeof(record));
    // A later version's record begins like ours and is passed on whole.
    if (record.magic != TARN_FRAME_METADATA_MAGIC || record.version < TARN_FRAME_METADATA_VERSION ||
        record.size < sizeof(record) || record.size > metaData.PayloadSize())
    {
        TRACE_VERBOSE("%s: record does not hold, version %u, size %u", GetName(), record.version, record.size);
        return S_OK;
    }
    CHECK_HR(sample->SetBlob(TARN_SAMPLE_FRAME_METADATA, metaData.Payload(), record.size));
    return S_OK;
}

} // namespace mft_core
