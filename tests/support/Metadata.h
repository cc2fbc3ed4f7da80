// A frame's metadata as the driver attaches them, right or wrong.
#pragma once

#include "platform/CameraAttributes.h"
#include "platform/CaptureMetadata.h"

#include "tarn/frame_metadata.h"
#include "tests/support/Samples.h"

namespace tarn_test
{

inline TARN_FRAME_METADATA FrameRecord(std::uint8_t flags = 0)
{
    TARN_FRAME_METADATA record{};
    record.magic = TARN_FRAME_METADATA_MAGIC;
    record.version = TARN_FRAME_METADATA_VERSION;
    record.size = sizeof(record);
    record.flags = flags;
    return record;
}

template <class Value>
Bytes RawBytes(const Value &value)
{
    const auto *const first = reinterpret_cast<const BYTE *>(&value);
    return {first, first + sizeof(value)};
}

// An item as the driver frames it; the size it announces need not be true.
inline Bytes Item(ULONG id, const Bytes &payload, std::optional<ULONG> announcedSize = std::nullopt)
{
    const auto size = static_cast<ULONG>(sizeof(KSCAMERA_METADATA_ITEMHEADER) + payload.size());
    Bytes bytes = RawBytes(KSCAMERA_METADATA_ITEMHEADER{id, announcedSize.value_or(size)});
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    return bytes;
}

inline ComPtr<IMFAttributes> AttachItems(IMFSample *sample, const ComPtr<IMFMediaBuffer> &items)
{
    ComPtr<IMFAttributes> store;
    EXPECT_HR(S_OK, MFCreateAttributes(&store, 2));
    EXPECT_HR(S_OK, store->SetUnknown(MF_CAPTURE_METADATA_FRAME_RAWSTREAM, items.Get()));
    EXPECT_HR(S_OK, sample->SetUnknown(MFSampleExtension_CaptureMetadata, store.Get()));
    return store;
}

} // namespace tarn_test
