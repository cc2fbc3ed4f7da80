#include "device/nodes/TarnFrameFormatTopologyNode.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <optional>
#include <utility>

#include "nodes/SampleActivity.h"
#include "device/nodes/UvcMetaDataWrapper.h"
#include "tarn/frame_metadata.h"
#include "trace/Check.h"

namespace mft_core
{

namespace
{
// As far as the record is needed here.
constexpr std::size_t kRecordBytes = offsetof(TARN_FRAME_METADATA, frameInterval100ns);

std::optional<TARN_FRAME_METADATA> RecordOf(IMFSample *sample)
{
    const UvcMetaDataWrapper metaData(sample);
    TARN_FRAME_METADATA record{};
    if (metaData.PayloadSize() < kRecordBytes)
    {
        return std::nullopt;
    }
    std::memcpy(&record, metaData.Payload(), kRecordBytes);
    return record.magic == TARN_FRAME_METADATA_MAGIC ? std::optional(record) : std::nullopt;
}
} // namespace

TarnFrameFormatTopologyNode::TarnFrameFormatTopologyNode(std::shared_ptr<ITopologyNode> successor,
                                                         std::vector<Format> acceptedFormats, std::uint32_t frameWidth,
                                                         std::uint32_t frameHeight)
    : ITopologyNode(std::move(successor), "Tarn frame format topology node"), formats(std::move(acceptedFormats)),
      width(frameWidth), height(frameHeight)
{
}

HRESULT TarnFrameFormatTopologyNode::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    const SampleActivity activity("mft_core::TarnFrameFormatTopologyNode::ProcessSample", sample);
    if (!IsExpected(sample))
    {
        TRACE_INFO("%s: frame of another format dropped", GetName());
        return S_OK;
    }
    HandOn(sample);
    return S_OK;
}

bool TarnFrameFormatTopologyNode::IsExpected(IMFSample *sample) const
{
    DWORD length = 0;
    if (FAILED(sample->GetTotalLength(&length)))
    {
        return false;
    }
    const auto lengthOf = [&](const Format &format) { return std::uint64_t{width} * height * format.bytesPerPixel; };
    const auto record = RecordOf(sample);
    return std::any_of(formats.begin(), formats.end(), [&](const Format &format) {
        if (!record)
        {
            return length == lengthOf(format);
        }
        return record->formatFourCc == format.subtype.Data1 && record->width == width && record->height == height &&
               length >= lengthOf(format);
    });
}

} // namespace mft_core
