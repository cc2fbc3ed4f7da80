#include "device/nodes/TarnFrameFormatTopologyNode.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "device/nodes/FrameMetadataReader.h"
#include "nodes/SampleActivity.h"
#include "tarn/tarn_formats.h"
#include "trace/Check.h"
#include "media/MediaTypeParser.h"

using mft_utils::MediaTypeData;
using mft_utils::MediaTypeParser;

namespace mft_core
{

namespace
{
// As far as the record is needed here.
constexpr std::size_t kRecordBytes = offsetof(TARN_FRAME_METADATA, frameInterval100ns);

bool HasSizeOfAny(const MediaTypeData &data, const std::vector<MediaTypeData> &others)
{
    return std::any_of(others.begin(), others.end(), [&](const MediaTypeData &other) {
        return other.width == data.width && other.height == data.height;
    });
}
} // namespace

TarnFrameFormatTopologyNode::TarnFrameFormatTopologyNode(std::shared_ptr<ITopologyNode> successor,
                                                         const InputStream &pin, std::vector<GUID> acceptedSubtypes,
                                                         std::uint32_t frameWidth, std::uint32_t frameHeight,
                                                         std::shared_ptr<const ConfidenceMapState> confidenceMapState)
    : ITopologyNode(std::move(successor), "Tarn frame format topology node"), subtypes(std::move(acceptedSubtypes)),
      width(frameWidth), height(frameHeight), confidenceMap(std::move(confidenceMapState))
{
    AddFormerLengths(pin);
}

std::uint64_t TarnFrameFormatTopologyNode::FrameBytes(const GUID &subtype, std::uint32_t frameWidth,
                                                      std::uint32_t frameHeight) noexcept
{
    const std::uint64_t plane = std::uint64_t{frameWidth} * frameHeight * 2;
    if (IsEqualGUID(subtype, CUSTOM_GUID_KELP_ZI) || IsEqualGUID(subtype, CUSTOM_GUID_KELP_ZC))
    {
        return 2 * plane;
    }
    const bool isOnePlane =
        IsEqualGUID(subtype, CUSTOM_GUID_KELP_Z) || IsEqualGUID(subtype, CUSTOM_GUID_KELP_FACE_LOGIN);
    return isOnePlane ? plane : 0;
}

// The pin may run with what the pipeline told it last, or with what it was asked for last.
void TarnFrameFormatTopologyNode::AddFormerLengths(const InputStream &pin)
{
    std::vector<MediaTypeData> former;
    const auto add = [&](IMFMediaType *type) {
        MediaTypeData data;
        if (type != nullptr && SUCCEEDED(MediaTypeParser::GetMediaTypeData(data, type)))
        {
            former.push_back(data);
        }
    };
    ComPtr<IMFMediaType> current;
    ComPtr<IMFMediaType> preferred;
    DeviceStreamState preferredState = DeviceStreamState_Stop;
    if (SUCCEEDED(pin.GetCurrentMediaType(current.GetAddressOf())))
    {
        add(current.Get());
    }
    if (SUCCEEDED(pin.GetPreferredState(&preferredState, preferred.GetAddressOf())))
    {
        add(preferred.Get());
    }

    MediaTypeList offered;
    pin.GetSupportedMediaTypes(offered);
    for (const auto &type : offered)
    {
        GUID subtype{};
        MediaTypeData data;
        if (SUCCEEDED(type->GetGUID(MF_MT_SUBTYPE, &subtype)) &&
            SUCCEEDED(MediaTypeParser::GetMediaTypeData(data, type.Get())) && HasSizeOfAny(data, former))
        {
            formerLengths.push_back(FrameBytes(subtype, data.width, data.height));
        }
    }
}

HRESULT TarnFrameFormatTopologyNode::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    const SampleActivity activity("mft_core::TarnFrameFormatTopologyNode::ProcessSample", sample);
    DWORD length = 0;
    CHECK_HR(sample->GetTotalLength(&length));
    const auto record = FrameMetadataReader(sample).Record(kRecordBytes);
    if (const Refusal refusal = record ? JudgeByRecord(*record, length) : JudgeByLength(length))
    {
        Refuse(*refusal, length);
        return S_OK;
    }
    HandOn(sample);
    return S_OK;
}

TarnFrameFormatTopologyNode::Refusal TarnFrameFormatTopologyNode::JudgeByRecord(const TARN_FRAME_METADATA &record,
                                                                                std::uint64_t length) const
{
    const auto format = std::find_if(subtypes.begin(), subtypes.end(),
                                     [&](const GUID &subtype) { return record.formatFourCc == subtype.Data1; });
    if (format == subtypes.end() || record.width != width || record.height != height)
    {
        return FrameRefusals::Reason::OtherFormat;
    }
    return length < LengthOf(*format) ? Refusal(FrameRefusals::Reason::TooShort) : std::nullopt;
}

TarnFrameFormatTopologyNode::Refusal TarnFrameFormatTopologyNode::JudgeByLength(std::uint64_t length) const
{
    const bool isExact =
        std::any_of(subtypes.begin(), subtypes.end(), [&](const GUID &subtype) { return length == LengthOf(subtype); });
    if (isExact)
    {
        return std::nullopt;
    }
    if (length != 0 && std::find(formerLengths.begin(), formerLengths.end(), length) != formerLengths.end())
    {
        return FrameRefusals::Reason::OtherFormat;
    }
    return length < LeastLength() ? Refusal(FrameRefusals::Reason::TooShort) : std::nullopt;
}

std::uint64_t TarnFrameFormatTopologyNode::LengthOf(const GUID &subtype) const noexcept
{
    return FrameBytes(subtype, width, height);
}

// Of a frame that does not have the length of any format. Depth with padding and half a frame of confidence and depth
// look alike: with the map enabled it is the latter, whose confidence must not be taken for depth.
std::uint64_t TarnFrameFormatTopologyNode::LeastLength() const
{
    const auto [least, most] = std::minmax_element(
        subtypes.begin(), subtypes.end(), [this](const GUID &a, const GUID &b) { return LengthOf(a) < LengthOf(b); });
    return LengthOf(confidenceMap && confidenceMap->IsEnabled() ? *most : *least);
}

void TarnFrameFormatTopologyNode::Refuse(FrameRefusals::Reason reason, std::uint64_t length)
{
    TRACE_VERBOSE("%s: frame of %zu bytes refused", GetName(), static_cast<std::size_t>(length));
    if (const auto counts = refusals.Add(reason, MFGetSystemTime()))
    {
        TRACE_ERROR("%s: frames refused since the start: %zu of another format, %zu too short; the last one has %zu "
                    "bytes",
                    GetName(), counts->otherFormat, counts->tooShort, static_cast<std::size_t>(length));
    }
}

} // namespace mft_core
