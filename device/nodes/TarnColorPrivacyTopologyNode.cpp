#include "device/nodes/TarnColorPrivacyTopologyNode.h"

#include <algorithm>
#include <initializer_list>
#include <stdexcept>
#include <utility>

#include "nodes/SampleActivity.h"
#include "trace/Check.h"
#include "base/LockedBuffer.h"

namespace mft_core
{

namespace
{
constexpr BYTE kBlackLuma = 16; // of 16 to 235
constexpr BYTE kNoChroma = 128;

bool IsOneOf(const GUID &subtype, std::initializer_list<GUID> subtypes)
{
    return std::any_of(subtypes.begin(), subtypes.end(),
                       [&](const GUID &candidate) { return IsEqualGUID(candidate, subtype) != 0; });
}

// Rows may be padded; the media type tells.
std::size_t LumaBytesOf(IMFMediaType *mediaType)
{
    UINT32 width = 0;
    UINT32 height = 0;
    if (FAILED(MFGetAttributeSize(mediaType, MF_MT_FRAME_SIZE, &width, &height)))
    {
        return 0;
    }
    UINT32 stride = 0;
    if (FAILED(mediaType->GetUINT32(MF_MT_DEFAULT_STRIDE, &stride)))
    {
        stride = width;
    }
    return std::size_t{stride} * height;
}

void Fill(BYTE *begin, BYTE *end, const std::array<BYTE, 2> &pair)
{
    for (; end - begin >= 2; begin += 2)
    {
        begin[0] = pair[0];
        begin[1] = pair[1];
    }
    std::fill(begin, end, pair[0]);
}
} // namespace

TarnColorPrivacyTopologyNode::TarnColorPrivacyTopologyNode(std::shared_ptr<ITopologyNode> successor,
                                                           std::shared_ptr<FramePrivacy> framePrivacy,
                                                           IMFMediaType *mediaType)
    : ITopologyNode(std::move(successor), "Tarn color privacy topology node"), privacy(std::move(framePrivacy)),
      black(BlackOf(mediaType))
{
    if (!privacy)
    {
        throw std::invalid_argument("framePrivacy is null");
    }
}

std::optional<TarnColorPrivacyTopologyNode::Black> TarnColorPrivacyTopologyNode::BlackOf(IMFMediaType *mediaType)
{
    GUID subtype{};
    if (mediaType == nullptr || FAILED(mediaType->GetGUID(MF_MT_SUBTYPE, &subtype)))
    {
        return std::nullopt;
    }
    if (IsOneOf(subtype, {MFVideoFormat_YUY2}))
    {
        return Black{{kBlackLuma, kNoChroma}, {kBlackLuma, kNoChroma}, 0};
    }
    if (IsOneOf(subtype, {MFVideoFormat_UYVY}))
    {
        return Black{{kNoChroma, kBlackLuma}, {kNoChroma, kBlackLuma}, 0};
    }
    if (IsOneOf(subtype, {MFVideoFormat_NV12, MFVideoFormat_I420, MFVideoFormat_IYUV, MFVideoFormat_YV12}))
    {
        return Black{{kBlackLuma, kBlackLuma}, {kNoChroma, kNoChroma}, LumaBytesOf(mediaType)};
    }
    if (IsOneOf(subtype, {MFVideoFormat_RGB24, MFVideoFormat_RGB32, MFVideoFormat_ARGB32}))
    {
        return Black{{0, 0}, {0, 0}, 0};
    }
    return std::nullopt;
}

HRESULT TarnColorPrivacyTopologyNode::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    const SampleActivity activity("mft_core::TarnColorPrivacyTopologyNode::ProcessSample", sample);
    if (privacy->Covers(sample))
    {
        if (!black)
        {
            TRACE_INFO("%s: private frame of a format that cannot be blanked dropped", GetName());
            return S_OK;
        }
        CHECK_HR(BlankPixels(sample));
    }
    HandOn(sample);
    return S_OK;
}

HRESULT TarnColorPrivacyTopologyNode::BlankPixels(IMFSample *sample) const
{
    // Several buffers are replaced by one, so that the planes lie where the format has them.
    ComPtr<IMFMediaBuffer> buffer;
    CHECK_HR(sample->ConvertToContiguousBuffer(buffer.GetAddressOf()));
    user_space_frameworks::LockedBuffer pixels;
    CHECK_HR(pixels.Lock(buffer.Get()));
    BYTE *const rest = pixels.data + std::min<std::size_t>(black->firstBytes, pixels.capacity);
    Fill(pixels.data, rest, black->first);
    Fill(rest, pixels.data + pixels.capacity, black->rest);
    return S_OK;
}

} // namespace mft_core
