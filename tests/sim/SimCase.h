// Shared words of the simulated camera's tests.
#pragma once

#include "platform/CameraAttributes.h"
#include "platform/CaptureMetadata.h"

#include <tarn/frame_metadata.h>

#include <cstring>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "sim/CameraIdentifiers.h"
#include "sim/SimulatedCamera.h"
#include "tests/support/Expect.h"

namespace tarn_sim
{

constexpr std::chrono::seconds kLongEnough{20};

inline ComPtr<SimulatedCamera> MakeCamera(CameraConfiguration configuration, Pacing pacing = Pacing::Stepped)
{
    configuration.pacing = pacing;
    return user_space_frameworks::MakeCom<SimulatedCamera>(std::move(configuration));
}

// Keeps every sample; what else is to happen on the capture thread is `onFrame`.
class KeepingSink : public IFrameSink
{
  public:
    std::function<void(IMFSample *)> onFrame = [](IMFSample *) {};

    void OnFrame(DWORD, IMFSample *sample) override
    {
        {
            const std::scoped_lock guard(lock);
            kept.emplace_back(sample);
        }
        onFrame(sample);
    }
    std::vector<ComPtr<IMFSample>> Take()
    {
        const std::scoped_lock guard(lock);
        return std::exchange(kept, {});
    }

  private:
    std::mutex lock;
    std::vector<ComPtr<IMFSample>> kept;
};

// Lets every sample go at once.
class CountingSink : public IFrameSink
{
  public:
    std::function<void(IMFSample *)> onFrame = [](IMFSample *) {};
    std::atomic<std::uint64_t> frames{0};

    void OnFrame(DWORD, IMFSample *sample) override
    {
        ++frames;
        onFrame(sample);
    }
};

inline std::vector<std::uint8_t> BytesOf(IMFSample *sample)
{
    ComPtr<IMFMediaBuffer> buffer;
    BYTE *bytes = nullptr;
    DWORD length = 0;
    EXPECT_HR(S_OK, sample->ConvertToContiguousBuffer(&buffer));
    EXPECT_HR(S_OK, buffer->Lock(&bytes, nullptr, &length));
    std::vector<std::uint8_t> copy(bytes, bytes + length);
    EXPECT_HR(S_OK, buffer->Unlock());
    return copy;
}

inline std::uint16_t Value16(const std::vector<std::uint8_t> &bytes, std::size_t index)
{
    std::uint16_t value = 0;
    std::memcpy(&value, bytes.data() + 2 * index, sizeof(value));
    return value;
}

// The raw metadata items of the sample; none when it has no store or no items.
inline std::vector<std::uint8_t> MetadataItems(IMFSample *sample)
{
    ComPtr<IMFAttributes> store;
    ComPtr<IMFMediaBuffer> buffer;
    if (FAILED(sample->GetUnknown(MFSampleExtension_CaptureMetadata, IID_PPV_ARGS(&store))) ||
        FAILED(store->GetUnknown(MF_CAPTURE_METADATA_FRAME_RAWSTREAM, IID_PPV_ARGS(&buffer))))
    {
        return {};
    }
    BYTE *bytes = nullptr;
    DWORD length = 0;
    EXPECT_HR(S_OK, buffer->Lock(&bytes, nullptr, &length));
    std::vector<std::uint8_t> copy(bytes, bytes + length);
    EXPECT_HR(S_OK, buffer->Unlock());
    return copy;
}

// The record in our item, found by walking the items in order.
inline std::optional<TARN_FRAME_METADATA> RecordOf(IMFSample *sample)
{
    const auto items = MetadataItems(sample);
    std::size_t offset = 0;
    while (offset + sizeof(KSCAMERA_METADATA_ITEMHEADER) <= items.size())
    {
        KSCAMERA_METADATA_ITEMHEADER header{};
        std::memcpy(&header, items.data() + offset, sizeof(header));
        EXPECT_EQ(0U, offset % 8);
        if (header.Size < sizeof(header) || header.Size > items.size() - offset)
        {
            return std::nullopt;
        }
        if (header.MetadataId == MetadataId_Custom_Start && header.Size == sizeof(header) + sizeof(TARN_FRAME_METADATA))
        {
            TARN_FRAME_METADATA record{};
            std::memcpy(&record, items.data() + offset + sizeof(header), sizeof(record));
            return record;
        }
        offset += header.Size;
    }
    return std::nullopt;
}

} // namespace tarn_sim
