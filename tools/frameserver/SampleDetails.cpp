#include "tools/frameserver/SampleDetails.h"

#include <algorithm>
#include <cstring>

#include "tarn/sample_attributes.h"

namespace tarn_host
{

namespace
{

std::vector<std::uint8_t> BlobOf(IMFSample &sample, const GUID &key)
{
    UINT32 size = 0;
    if (FAILED(sample.GetBlobSize(key, &size)))
    {
        return {};
    }
    std::vector<std::uint8_t> blob(size);
    return SUCCEEDED(sample.GetBlob(key, blob.data(), size, nullptr)) ? blob : std::vector<std::uint8_t>{};
}

// A 32-bit count and as many entries. Only those that are really there.
template <class Entry>
std::vector<Entry> EntriesOf(const std::vector<std::uint8_t> &blob)
{
    std::uint32_t count = 0;
    if (blob.size() < sizeof(count))
    {
        return {};
    }
    std::memcpy(&count, blob.data(), sizeof(count));
    std::vector<Entry> entries(std::min<std::size_t>(count, (blob.size() - sizeof(count)) / sizeof(Entry)));
    if (!entries.empty())
    {
        std::memcpy(entries.data(), blob.data() + sizeof(count), entries.size() * sizeof(Entry));
    }
    return entries;
}

std::optional<std::uint32_t> NumberOf(IMFSample &sample, const GUID &key)
{
    UINT32 value = 0;
    return SUCCEEDED(sample.GetUINT32(key, &value)) ? std::optional<std::uint32_t>(value) : std::nullopt;
}

std::optional<bool> IlluminationOf(IMFSample &sample)
{
    ComPtr<IMFAttributes> store;
    UINT64 value = 0;
    if (FAILED(sample.GetUnknown(MFSampleExtension_CaptureMetadata, IID_PPV_ARGS(&store))) ||
        FAILED(store->GetUINT64(MF_CAPTURE_METADATA_FRAME_ILLUMINATION, &value)))
    {
        return std::nullopt;
    }
    return value != 0;
}

} // namespace

SampleDetails SampleDetails::Of(IMFSample &sample)
{
    SampleDetails details;
    LONGLONG time = 0;
    if (SUCCEEDED(sample.GetSampleTime(&time)))
    {
        details.time100ns = time;
    }
    if (SUCCEEDED(sample.GetSampleDuration(&time)))
    {
        details.duration100ns = time;
    }
    const std::vector<std::uint8_t> record = BlobOf(sample, TARN_SAMPLE_FRAME_METADATA);
    if (record.size() >= sizeof(TARN_FRAME_METADATA))
    {
        std::memcpy(&details.record.emplace(), record.data(), sizeof(TARN_FRAME_METADATA));
    }
    details.isIlluminated = IlluminationOf(sample);
    details.minReliableDepth = NumberOf(sample, MFSampleExtension_Depth_MinReliableDepth);
    details.maxReliableDepth = NumberOf(sample, MFSampleExtension_Depth_MaxReliableDepth);
    details.intrinsics =
        EntriesOf<MFPinholeCameraIntrinsic_IntrinsicModel>(BlobOf(sample, MFSampleExtension_PinholeCameraIntrinsics));
    details.extrinsics =
        EntriesOf<MFCameraExtrinsic_CalibratedTransform>(BlobOf(sample, MFSampleExtension_CameraExtrinsics));
    details.confidence = BlobOf(sample, ORRIN_SAMPLE_TARN_CONFIDENCE_MAP);
    return details;
}

} // namespace tarn_host
