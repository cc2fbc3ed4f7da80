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
// With the padding of its rows; a linear lock of such a buffer would be a copy.
HRESULT BlankPlane(IMF2DBuffer2 *plane)
{
    BYTE *firstRow = nullptr;
    LONG pitchBytes = 0;
    BYTE *data = nullptr;
    DWORD capacity = 0;
    CHECK_HR(plane->Lock2DSize(MF2DBuffer_LockFlags_Write, &firstRow, &pitchBytes, &data, &capacity));
    if (data != nullptr)
    {
        std::fill_n(data, capacity, BYTE{0});
    }
    CHECK_HR(plane->Unlock2D());
    return S_OK;
}

HRESULT BlankBuffer(IMFMediaBuffer *buffer)
{
    ComPtr<IMF2DBuffer2> plane;
    if (SUCCEEDED(buffer->QueryInterface(IID_PPV_ARGS(&plane))))
    {
        return BlankPlane(plane.Get());
    }
    user_space_frameworks::LockedBuffer pixels;
    CHECK_HR(pixels.Lock(buffer));
    std::fill_n(pixels.data, pixels.capacity, BYTE{0});
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

void TarnDepthPrivacyTopologyNode::UseBuffers(const std::shared_ptr<mft_utils::BufferPool> &pool)
{
    buffers = pool;
}

HRESULT TarnDepthPrivacyTopologyNode::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    const SampleActivity activity("mft_core::TarnDepthPrivacyTopologyNode::ProcessSample", sample);
    if (privacy->Covers(sample))
    {
        if (buffers)
        {
            buffers->Forget();
        }
        CHECK_HR(BlankPixels(sample));
        CHECK_HR(TakeOffConfidenceMap(sample));
    }
    HandOn(sample);
    return S_OK;
}

} // namespace mft_core
