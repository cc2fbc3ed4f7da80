// Shared words of the simulated camera's tests.
#pragma once

#include "platform/CameraAttributes.h"

#include <tarn/frame_metadata.h>
#include <tarn/tarn_formats.h>

#include "device/nodes/UvcMetaDataWrapper.h"
#include "sim/CameraIdentifiers.h"
#include "sim/SimulatedCamera.h"
#include "tests/support/Samples.h"

namespace tarn_sim
{

constexpr std::chrono::seconds kLongEnough{20};

inline ComPtr<SimulatedCamera> MakeCamera(CameraConfiguration configuration, Pacing pacing = Pacing::Stepped)
{
    configuration.pacing = pacing;
    return user_space_frameworks::MakeCom<SimulatedCamera>(std::move(configuration));
}

// Keeps every sample unless told not to; what else is to happen on the capture thread is `onFrame`.
class TestSink : public IFrameSink
{
  public:
    std::function<void()> onFrame = [] {};
    std::atomic<bool> keep{true};
    std::atomic<std::uint64_t> frames{0};

    void OnFrame(DWORD, IMFSample *sample) override
    {
        ++frames;
        if (keep)
        {
            const std::scoped_lock guard(lock);
            kept.emplace_back(sample);
        }
        onFrame();
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

// Runs the first pin of a stepped camera for so many frames.
inline std::vector<ComPtr<IMFSample>> Capture(SimulatedCamera &camera, IMFMediaType *type, std::uint32_t frames)
{
    TestSink sink;
    camera.Pins().SetFrameSink(&sink);
    EXPECT_HR(S_OK, camera.Pins().SetPinState(0, DeviceStreamState_Run, type));
    EXPECT_HR(S_OK, camera.Pins().Step(0, frames, kLongEnough));
    EXPECT_HR(S_OK, camera.Pins().SetPinState(0, DeviceStreamState_Stop, nullptr));
    camera.Pins().SetFrameSink(nullptr);
    return sink.Take();
}

// A property request addressed to a node.
inline HRESULT NodeProperty(SimulatedCamera &camera, const GUID &set, ULONG id, ULONG flags, void *data, ULONG length,
                            ULONG *returned, ULONG node = 3)
{
    KSP_NODE request{{{{set, id, flags | KSPROPERTY_TYPE_TOPOLOGY}}}, node, 0};
    return camera.KsProperty(&request.Property, sizeof(request), data, length, returned);
}

using tarn_test::BytesOf;

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
    return BytesOf(buffer);
}

// What the transforms read of them.
inline std::optional<TARN_FRAME_METADATA> RecordOf(IMFSample *sample)
{
    const mft_core::UvcMetaDataWrapper metaData(sample);
    TARN_FRAME_METADATA record{};
    if (metaData.PayloadSize() != sizeof(record))
    {
        return std::nullopt;
    }
    std::memcpy(&record, metaData.Payload(), sizeof(record));
    return record;
}

} // namespace tarn_sim
