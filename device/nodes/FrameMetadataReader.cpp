#include "device/nodes/FrameMetadataReader.h"

#include <algorithm>
#include <cstring>

#include "trace/Trace.h"

namespace mft_core
{

namespace
{
// As much of the record as there is. `bytes` need not be aligned.
TARN_FRAME_METADATA CopyOf(const BYTE *bytes, std::size_t count) noexcept
{
    TARN_FRAME_METADATA record{};
    std::memcpy(&record, bytes, std::min(count, sizeof(record)));
    return record;
}
} // namespace

// The item's id is the first of all custom ones: others than this camera's may use it too.
FrameMetadataReader::FrameMetadataReader(IMFSample *sample) noexcept : metaData(sample)
{
    if (!metaData.HasMetaData())
    {
        return;
    }
    if (metaData.PayloadSize() < kFrameRecordHead)
    {
        TRACE_VERBOSE("frame record of %zu bytes is no record", metaData.PayloadSize());
        return;
    }
    const TARN_FRAME_METADATA head = CopyOf(metaData.Payload(), kFrameRecordHead);
    if (head.magic != TARN_FRAME_METADATA_MAGIC || head.version < TARN_FRAME_METADATA_VERSION ||
        head.size < kFrameRecordHead || head.size > metaData.PayloadSize())
    {
        TRACE_VERBOSE("frame record does not hold: magic 0x%X, version %u, size %u of %zu bytes", head.magic,
                      head.version, head.size, metaData.PayloadSize());
        return;
    }
    recordSize = head.size;
}

std::optional<TARN_FRAME_METADATA> FrameMetadataReader::Record(std::size_t needed) const noexcept
{
    if (recordSize == 0 || recordSize < needed)
    {
        return std::nullopt;
    }
    return CopyOf(metaData.Payload(), recordSize);
}

std::span<const BYTE> FrameMetadataReader::CompleteRecord() const noexcept
{
    if (recordSize < sizeof(TARN_FRAME_METADATA))
    {
        return {};
    }
    return {metaData.Payload(), recordSize};
}

std::optional<std::uint8_t> FrameMetadataReader::Illumination() const noexcept
{
    return metaData.ByteAt(offsetof(TARN_FRAME_METADATA, illumination));
}

bool FrameMetadataReader::IsConfidenceSuppressed() const noexcept
{
    const auto flags = metaData.ByteAt(offsetof(TARN_FRAME_METADATA, flags));
    return flags && (*flags & TARN_FRAME_FLAG_CONFIDENCE_SUPPRESSED) != 0;
}

} // namespace mft_core
