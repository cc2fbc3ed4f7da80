#include "sim/FrameMetadata.h"

#include "platform/CameraAttributes.h"
#include "platform/CaptureMetadata.h"

#include <cstring>
#include <vector>

#include "sim/FrameComposer.h"
#include "base/LockedBuffer.h"
#include "base/ThrowIfFailed.h"

using mft_utils::ThrowIfFailed;

namespace tarn_sim
{

namespace
{
constexpr ULONG kUsbVideoHeaderItem = 2; // KSCAMERA_MetadataId
constexpr ULONG kUsbVideoHeaderBytes = 16;
constexpr ULONG kShortPayloadBytes = 40;

void Append(std::vector<BYTE> &items, const void *bytes, std::size_t size)
{
    const auto *const first = static_cast<const BYTE *>(bytes);
    items.insert(items.end(), first, first + size);
}

void AppendItem(std::vector<BYTE> &items, ULONG id, ULONG announcedSize, const void *payload, std::size_t payloadSize)
{
    const KSCAMERA_METADATA_ITEMHEADER header{id, announcedSize};
    Append(items, &header, sizeof(header));
    Append(items, payload, payloadSize);
}

std::vector<BYTE> MakeItems(const TARN_FRAME_METADATA &record, MetadataFault fault)
{
    constexpr ULONG headerBytes = sizeof(KSCAMERA_METADATA_ITEMHEADER);
    std::vector<BYTE> items;
    const std::vector<BYTE> usbHeader(kUsbVideoHeaderBytes, 0x0C);
    ULONG usbItemSize = headerBytes + kUsbVideoHeaderBytes;
    if (fault == MetadataFault::ZeroSizedItem)
    {
        usbItemSize = 0;
    }
    else if (fault == MetadataFault::HugeItem)
    {
        usbItemSize = 0xFFFFFFF8;
    }
    AppendItem(items, kUsbVideoHeaderItem, usbItemSize, usbHeader.data(), usbHeader.size());

    const ULONG payload = fault == MetadataFault::ShortPayload ? kShortPayloadBytes : ULONG{sizeof(record)};
    AppendItem(items, TARN_FRAME_METADATA_ITEM_ID, headerBytes + payload, &record, payload);
    if (fault == MetadataFault::Truncated)
    {
        items.resize(items.size() - sizeof(record) / 2);
    }
    return items;
}
} // namespace

TARN_FRAME_METADATA MakeRecord(const FrameToCompose &frame, bool illuminated, const CameraControls &controls)
{
    constexpr std::uint32_t exposureUs = 4000;
    TARN_FRAME_METADATA record{};
    record.magic = TARN_FRAME_METADATA_MAGIC;
    record.version = TARN_FRAME_METADATA_VERSION;
    record.size = sizeof(record);
    record.frameCounter = frame.number;
    record.timestamp100ns = frame.time100ns;
    record.exposureUs = exposureUs;
    record.gain256 = 256;
    record.width = static_cast<std::uint16_t>(frame.format.width);
    record.height = static_cast<std::uint16_t>(frame.format.height);
    record.formatFourCc = frame.format.subtype.Data1;
    record.frameInterval100ns = static_cast<std::uint32_t>(frame.format.interval100ns);
    record.temperatureDeciC = static_cast<std::int16_t>(412 + frame.number % 16);
    record.illumination = illuminated ? 1 : 0;
    controls.FillMetadata(record);
    return record;
}

void AttachMetadata(IMFSample *sample, const TARN_FRAME_METADATA &record, MetadataFault fault)
{
    if (fault == MetadataFault::Absent)
    {
        return;
    }
    ComPtr<IMFAttributes> store;
    ThrowIfFailed(MFCreateAttributes(&store, 1), "MFCreateAttributes");
    if (fault != MetadataFault::NoItems)
    {
        const auto items = MakeItems(record, fault);
        const auto size = static_cast<DWORD>(items.size());
        ComPtr<IMFMediaBuffer> buffer;
        ThrowIfFailed(MFCreateMemoryBuffer(size, &buffer), "MFCreateMemoryBuffer");
        ThrowIfFailed(buffer->SetCurrentLength(size), "SetCurrentLength");
        user_space_frameworks::LockedBuffer bytes;
        ThrowIfFailed(bytes.Lock(buffer.Get()), "Lock");
        std::memcpy(bytes.data, items.data(), items.size());
        ThrowIfFailed(store->SetUnknown(MF_CAPTURE_METADATA_FRAME_RAWSTREAM, buffer.Get()), "SetUnknown");
    }
    ThrowIfFailed(sample->SetUnknown(MFSampleExtension_CaptureMetadata, store.Get()), "SetUnknown");
}

} // namespace tarn_sim
