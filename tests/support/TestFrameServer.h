// A frame server for tests: one transform over one simulated camera, pumped step by step on the test's thread.
#pragma once

#include "platform/CameraAttributes.h"
#include "platform/DeviceTransform.h"

#include <map>
#include <vector>

#include "sim/SimulatedCamera.h"
#include "tests/support/Expect.h"
#include "tests/support/GiveInput.h"
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
        EXPECT_HR(S_OK, transform.As(&events));
        ComPtr<IMFAttributes> filter;
        EXPECT_HR(S_OK, MFCreateAttributes(&filter, 1));
        EXPECT_HR(S_OK, filter->SetUnknown(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL,
                                           static_cast<IMFTransform *>(camera.Get())));
        initialized = transform->InitializeTransform(filter.Get());
        camera->Pins().SetFrameSink(this);
    }

    // Shuts down and lets go of both; nobody else may hold the transform then.
    ~TestFrameServer() override
    {
        camera->Pins().SetFrameSink(nullptr);
        camera->Pins().StopAll();
        ComPtr<IMFShutdown> shutdown;
        EXPECT_HR(S_OK, transform.As(&shutdown));
        MFSHUTDOWN_STATUS status = MFSHUTDOWN_INITIATED;
        shutdown->GetShutdownStatus(&status);
        if (status != MFSHUTDOWN_COMPLETED)
        {
            EXPECT_HR(S_OK, shutdown->Shutdown());
        }
        shutdown.Reset();
        events.Reset();
        EXPECT_REFS(transform, 1);
    }

    TestFrameServer(const TestFrameServer &) = delete;
    TestFrameServer &operator=(const TestFrameServer &) = delete;

    void OnFrame(DWORD streamId, IMFSample *sample) override
    {
        EXPECT_HR(S_OK, GiveInput(transform, streamId, sample));
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

    HRESULT Start(DWORD streamId, DWORD typeIndex = 0)
    {
        const HRESULT result =
            transform->SetOutputStreamState(streamId, OutputType(streamId, typeIndex).Get(), DeviceStreamState_Run, 0);
        Pump();
        return result;
    }

    HRESULT Stop(DWORD streamId)
    {
        const HRESULT result =
            transform->SetOutputStreamState(streamId, OutputType(streamId).Get(), DeviceStreamState_Stop, 0);
        Pump();
        return result;
    }

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

    DeviceStreamState OutputState(DWORD streamId)
    {
        DeviceStreamState state = DeviceStreamState_Disabled;
        EXPECT_HR(S_OK, transform->GetOutputStreamState(streamId, &state));
        return state;
    }

    HRESULT initialized = E_FAIL;
    ComPtr<IMFDeviceTransform> transform;
    ComPtr<tarn_sim::SimulatedCamera> camera;
    ComPtr<IMFMediaEventGenerator> events;
    int haveOutputEvents = 0;
    std::map<UINT32, int> createdEvents;

  private:
    void FollowPreferredState(UINT32 streamId)
    {
        DeviceStreamState state = DeviceStreamState_Stop;
        ComPtr<IMFMediaType> type;
        EXPECT_HR(S_OK, transform->GetInputStreamPreferredState(streamId, &state, &type));
        EXPECT_HR(S_OK, transform->SetInputStreamState(streamId, type.Get(), state, 0));
        EXPECT_HR(S_OK, camera->Pins().SetPinState(streamId, state, type.Get()));
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

inline LONGLONG TimeOf(const ComPtr<IMFSample> &sample)
{
    LONGLONG time = -1;
    EXPECT_HR(S_OK, sample->GetSampleTime(&time));
    return time;
}

} // namespace tarn_test
