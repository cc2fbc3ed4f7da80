#include "device/nodes/TarnDepthPrivacyTopologyNode.h"

#include <cstddef>
#include <cstring>
#include <utility>

#include "nodes/SampleActivity.h"
#include "device/nodes/UvcMetaDataWrapper.h"
#include "tarn/frame_metadata.h"
#include "tarn/tarn_dmft.h"
#include "trace/Check.h"

namespace mft_core
{

namespace
{
constexpr std::size_t kFlags = offsetof(TARN_FRAME_METADATA, flags);

HRESULT BlankBuffer(IMFMediaBuffer *buffer)
{
    BYTE *data = nullptr;
    DWORD capacity = 0;
    CHECK_HR(buffer->Lock(&data, &capacity, nullptr));
    if (data != nullptr)
    {
        std::memset(data, 0, capacity);
    }
    CHECK_HR(buffer->Unlock());
    return S_OK;
}

HRESULT BlankPixels(IMFSample *sample)
{
    DWORD count = 0;
    CHECK_HR(sample->GetBufferCount(&count));
    for (DWORD i = 0; i < count; ++i)
    {
        ComPtr<IMFMediaBuffer> buffer;
        CHECK_HR(sample->GetBufferByIndex(i, buffer.GetAddressOf()));
        CHECK_HR(BlankBuffer(buffer.Get()));
    }
    return S_OK;
}

HRESULT TakeOffConfidenceMap(IMFSample *sample)
{
    UINT32 size = 0;
    if (SUCCEEDED(sample->GetBlobSize(ORRIN_SAMPLE_TARN_CONFIDENCE_MAP, &size)))
    {
        CHECK_HR(sample->DeleteItem(ORRIN_SAMPLE_TARN_CONFIDENCE_MAP));
    }
    return S_OK;
}

void SuppressConfidence(IMFSample *sample)
{
    const UvcMetaDataWrapper metaData(sample);
    if (const auto flags = metaData.ByteAt(kFlags))
    {
        // The wrapper is made for readers, but the metadata are this frame's own and locked for us.
        const_cast<BYTE *>(metaData.Payload())[kFlags] =
            static_cast<BYTE>(*flags | TARN_FRAME_FLAG_CONFIDENCE_SUPPRESSED);
    }
}
} // namespace

TarnDepthPrivacyTopologyNode::TarnDepthPrivacyTopologyNode(std::shared_ptr<ITopologyNode> successor)
    : ITopologyNode(std::move(successor), "Tarn depth privacy topology node")
{
}

HRESULT TarnDepthPrivacyTopologyNode::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    const SampleActivity activity("mft_core::TarnDepthPrivacyTopologyNode::ProcessSample", sample);
    if (IsPrivate(sample))
    {
        CHECK_HR(BlankPixels(sample));
        CHECK_HR(TakeOffConfidenceMap(sample));
        SuppressConfidence(sample);
    }
    HandOn(sample);
    return S_OK;
}

bool TarnDepthPrivacyTopologyNode::IsPrivate(IMFSample *sample)
{
    const UvcMetaDataWrapper metaData(sample);
    const auto flags = metaData.ByteAt(kFlags);
    if (!flags)
    {
        return privacyOn;
    }
    const bool isOn = (*flags & TARN_FRAME_FLAG_PRIVACY) != 0;
    if (privacyOn.exchange(isOn) != isOn)
    {
        TRACE_INFO("%s: privacy %s", GetName(), isOn ? "on" : "off");
    }
    return isOn;
}

} // namespace mft_core
