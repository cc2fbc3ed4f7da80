#include "device/nodes/TarnDepthPrivacyTopologyNode.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "nodes/SampleActivity.h"
#include "tarn/tarn_dmft.h"
#include "trace/Check.h"
#include "base/LockedBuffer.h"

namespace mft_core
{

namespace
{
HRESULT BlankPixels(IMFSample *sample)
{
    DWORD count = 0;
    CHECK_HR(sample->GetBufferCount(&count));
    for (DWORD i = 0; i < count; ++i)
    {
        ComPtr<IMFMediaBuffer> buffer;
        CHECK_HR(sample->GetBufferByIndex(i, buffer.GetAddressOf()));
        user_space_frameworks::LockedBuffer pixels;
        CHECK_HR(pixels.Lock(buffer.Get()));
        std::fill_n(pixels.data, pixels.capacity, BYTE{0});
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
} // namespace

TarnDepthPrivacyTopologyNode::TarnDepthPrivacyTopologyNode(std::shared_ptr<ITopologyNode> successor,
                                                           std::shared_ptr<FramePrivacy> framePrivacy)
    : ITopologyNode(std::move(successor), "Tarn depth privacy topology node"), privacy(std::move(framePrivacy))
{
    if (!privacy)
    {
        throw std::invalid_argument("framePrivacy is null");
    }
}

HRESULT TarnDepthPrivacyTopologyNode::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    const SampleActivity activity("mft_core::TarnDepthPrivacyTopologyNode::ProcessSample", sample);
    if (privacy->Covers(sample))
    {
        CHECK_HR(BlankPixels(sample));
        CHECK_HR(TakeOffConfidenceMap(sample));
    }
    HandOn(sample);
    return S_OK;
}

} // namespace mft_core
