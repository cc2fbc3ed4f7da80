// A frame server for tests: one transform over one simulated camera, pumped step by step on the test's thread.
#pragma once

#include "platform/CameraAttributes.h"
#include "platform/DeviceTransform.h"
#include "platform/RealTimeClientEx.h"

#include <map>

#include "sim/SimulatedCamera.h"
#include "tests/support/GiveInput.h"
#include "tests/support/OwnWork.h"
#include "tests/support/Samples.h"
#include "tools/frameserver/FrameFormat.h"
#include "tools/frameserver/WorkQueue.h"
#include "base/TakeReference.h"

namespace tarn_test
{

// Gives the camera's frames to the transform and answers the transform's events. Confined, but for OnFrame.
class TestFrameServer : public tarn_sim::IFrameSink
{
  public:
    // Initialises the transform over the camera.
    TestFrameServer(ComPtr<IMFDeviceTransform> deviceTransform, ComPtr<tarn_sim::SimulatedCamera> simulatedCamera)
        : transform(std::move(deviceTransform)), camera(std::move(simulatedCamera))
    {
        ComPtr<IMFAttributes> filter;
        {
            const OwnWork own;
            ComPtr<IMFRealTimeClientEx> client;
            EXPECT_HR(S_OK, transform.As(&client));
            EXPECT_HR(S_OK, client->SetWorkQueueEx(workQueue.Id(), 0));
            EXPECT_HR(S_OK, transform.As(&events));
            EXPECT_HR(S_OK, MFCreateAttributes(&filter, 1));
            EXPECT_HR(S_OK, filter->SetUnknown(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL,
                                               static_cast<IMFTransform *>(camera.Get())));
            camera->Pins().SetFrameSink(this);
        }
        initialized = transform->InitializeTransform(filter.Get());
    }

    // Shuts down and lets go of both; nobody else may hold the transform then.
    ~TestFrameServer() override
    {
        const OwnWork own;
        camera->Pins().SetFrameSink(nullptr);
        camera->Pins().StopAll();
        if (!isShutDown)
        {
            EXPECT_HR(S_OK, ShutDown());
        }
        events.Reset();
        EXPECT_REFS(transform, 1);
    }

    TestFrameServer(const TestFrameServer &) = delete;
    TestFrameServer &operator=(const TestFrameServer &) = delete;

    void OnFrame(DWORD streamId, IMFSample *sample) override
    {
        EXPECT_HR(S_OK, GiveInput(transform, streamId, sample));
    }

    HRESULT ShutDown()
    {
        ComPtr<IMFShutdown> shutdown;
        EXPECT_HR(S_OK, transform.As(&shutdown));
        isShutDown = true;
        return shutdown->Shutdown();
    }

    // Answers every event that is queued now.
    void Pump()
    {
        ComPtr<IMFMediaEvent> event;
        while (events->GetEvent(MF_EVENT_FLAG_NO_WAIT, event.ReleaseAndGetAddressOf()) == S_OK)
        {
            MediaEventType type = MEUnknown;
            GUID extendedType{};
            event->GetType(&type);
            event->GetExtendedType(&extendedType);
            UINT32 streamId = 0;
            event->GetUINT32(MF_EVENT_MFT_INPUT_STREAM_ID, &streamId);
            if (type == METransformInputStreamStateChanged)
            {
                FollowPreferredState(streamId);
            }
            else if (type == METransformHaveOutput)
            {
                ++haveOutputEvents;
            }
            else if (IsEqualGUID(extendedType, MEDeviceStreamCreated))
            {
                const OwnWork own;
                ++createdEvents[streamId];
            }
        }
    }

    ComPtr<IMFMediaType> OutputType(DWORD streamId, DWORD index = 0)
    {
        ComPtr<IMFMediaType> type;
        EXPECT_HR(S_OK, transform->GetOutputAvailableType(streamId, index, &type));
        return type;
    }

    // The output's type of that size and rate; null when it has none.
    ComPtr<IMFMediaType> FindType(DWORD output, const tarn_host::VideoSize &size)
    {
        const OwnWork own;
        ComPtr<IMFMediaType> type;
        for (DWORD index = 0; SUCCEEDED(transform->GetOutputAvailableType(output, index, &type)); ++index)
        {
            if (tarn_host::FrameFormat::Of(*type.Get()).size == size)
            {
                return type;
            }
            type.Reset();
        }
        return nullptr;
    }

    HRESULT Change(DWORD output, const ComPtr<IMFMediaType> &type, DeviceStreamState state)
    {
        const HRESULT result = transform->SetOutputStreamState(output, type.Get(), state, 0);
        Pump();
        return result;
    }
    HRESULT Start(DWORD output, DWORD typeIndex = 0)
    {
        return Change(output, OutputType(output, typeIndex), DeviceStreamState_Run);
    }
    HRESULT Run(DWORD output, UINT32 width, UINT32 height, UINT32 fps)
    {
        return Change(output, FindType(output, {width, height, fps}), DeviceStreamState_Run);
    }
    HRESULT Stop(DWORD output)
    {
        ComPtr<IMFMediaType> type;
        {
            const OwnWork own;
            type = OutputType(output);
        }
        return Change(output, type, DeviceStreamState_Stop);
    }

    // Has the camera deliver frames on a pin.
    void Step(std::uint32_t frames, DWORD pin = 0) { EXPECT_HR(S_OK, camera->Pins().Step(pin, frames)); }

    // Null when nothing is ready.
    ComPtr<IMFSample> Collect(DWORD streamId)
    {
        MFT_OUTPUT_DATA_BUFFER buffer{};
        buffer.dwStreamID = streamId;
        DWORD status = 0;
        transform->ProcessOutput(0, 1, &buffer, &status);
        ComPtr<IMFSample> sample;
        user_space_frameworks::TakeReference(sample, buffer.pSample);
        return sample;
    }

    std::vector<ComPtr<IMFSample>> CollectAll(DWORD streamId)
    {
        std::vector<ComPtr<IMFSample>> samples;
        while (ComPtr<IMFSample> sample = Collect(streamId))
        {
            samples.push_back(sample);
        }
        return samples;
    }

    std::vector<ComPtr<IMFSample>> WaitForSamples(DWORD output, std::size_t count)
    {
        std::vector<ComPtr<IMFSample>> samples;
        EXPECT_TRUE(WaitUntil([&] {
            for (auto &sample : CollectAll(output))
            {
                samples.push_back(sample);
            }
            return samples.size() >= count;
        })) << samples.size()
            << " of " << count << " samples";
        Pump();
        return samples;
    }

    // Has the camera deliver frames and waits for as many samples of the output.
    std::vector<ComPtr<IMFSample>> StepAndCollect(DWORD output, std::uint32_t frames)
    {
        Step(frames);
        return WaitForSamples(output, frames);
    }

    DeviceStreamState OutputState(DWORD streamId)
    {
        const OwnWork own;
        DeviceStreamState state = DeviceStreamState_Disabled;
        EXPECT_HR(S_OK, transform->GetOutputStreamState(streamId, &state));
        return state;
    }

    HRESULT SendProperty(const GUID &set, ULONG id, ULONG flags, void *data, ULONG size)
    {
        ComPtr<IKsControl> control;
        EXPECT_HR(S_OK, transform.As(&control));
        KSPROPERTY property{};
        property.Set = set;
        property.Id = id;
        property.Flags = flags;
        ULONG returned = 0;
        return control->KsProperty(&property, sizeof(property), data, size, &returned);
    }

    tarn_host::WorkQueue workQueue; // goes last: frames may need it until the shutdown
    HRESULT initialized = E_FAIL;
    bool isShutDown = false;
    ComPtr<IMFDeviceTransform> transform;
    ComPtr<tarn_sim::SimulatedCamera> camera;
    ComPtr<IMFMediaEventGenerator> events;
    int haveOutputEvents = 0;
    std::map<UINT32, int> createdEvents;

  private:
    // A transform that fails to tell goes on as it is.
    void FollowPreferredState(UINT32 streamId)
    {
        DeviceStreamState state = DeviceStreamState_Stop;
        ComPtr<IMFMediaType> type;
        if (SUCCEEDED(transform->GetInputStreamPreferredState(streamId, &state, &type)))
        {
            EXPECT_HR(S_OK, transform->SetInputStreamState(streamId, type.Get(), state, 0));
            const OwnWork own;
            EXPECT_HR(S_OK, camera->Pins().SetPinState(streamId, state, type.Get()));
        }
    }
};

// One 16-bit pin that delivers what Step asks for.
inline ComPtr<tarn_sim::SimulatedCamera> SteppedCamera(std::size_t pins = 1)
{
    auto configuration = tarn_sim::CameraConfiguration::GenericDepth16(64, 48, 30);
    configuration.pacing = tarn_sim::Pacing::Stepped;
    configuration.buffersPerPin = 64;
    for (DWORD id = 1; id < pins; ++id)
    {
        auto pin = configuration.pins.front();
        pin.streamId = id;
        configuration.pins.push_back(pin);
    }
    return user_space_frameworks::MakeCom<tarn_sim::SimulatedCamera>(configuration);
}

} // namespace tarn_test
