#include "device/nodes/UvcMetaDataWrapper.h"

#include "platform/CameraAttributes.h"
#include "platform/CaptureMetadata.h"

#include <cstring>

#include <tarn/frame_metadata.h>

#include "trace/Trace.h"

namespace mft_core
{

namespace
{
constexpr std::size_t kItemAlignment = 8;
static_assert(TARN_FRAME_METADATA_ITEM_ID == MetadataId_Custom_Start);
} // namespace

UvcMetaDataWrapper::UvcMetaDataWrapper(IMFSample *sample) noexcept
{
    ComPtr<IMFMediaBuffer> rawItems;
    if (sample == nullptr || FAILED(sample->GetUnknown(MFSampleExtension_CaptureMetadata, IID_PPV_ARGS(&store))) ||
        !store || FAILED(store->GetUnknown(MF_CAPTURE_METADATA_FRAME_RAWSTREAM, IID_PPV_ARGS(&rawItems))) || !rawItems)
    {
        return;
    }
    const HRESULT result = items.Lock(rawItems.Get());
    if (FAILED(result))
    {
        TRACE_ERROR("frame metadata cannot be locked, hr 0x%08lX", static_cast<unsigned long>(result));
        return;
    }
    FindPayload();
}

// What the buffer holds comes from the camera: no size in it is believed.
void UvcMetaDataWrapper::FindPayload() noexcept
{
    KSCAMERA_METADATA_ITEMHEADER header{};
    std::size_t offset = 0;
    while (items.length - offset >= sizeof(header))
    {
        // The driver's buffer need not be aligned.
        std::memcpy(&header, items.data + offset, sizeof(header));
        if (header.Size < sizeof(header) || header.Size > items.length - offset || header.Size % kItemAlignment != 0)
        {
            TRACE_ERROR("frame metadata malformed at byte %zu: item size %lu of %lu bytes", offset, header.Size,
                        items.length);
            return;
        }
        if (header.MetadataId == TARN_FRAME_METADATA_ITEM_ID)
        {
            payload = items.data + offset + sizeof(header);
            payloadSize = header.Size - sizeof(header);
            return;
        }
        offset += header.Size;
    }
}

std::optional<BYTE> UvcMetaDataWrapper::ByteAt(std::size_t offset) const noexcept
{
    if (offset >= payloadSize)
    {
        return std::nullopt;
    }
    return payload[offset];
}

} // namespace mft_core
