// A frame server whose threads call a depth transform at random.
#pragma once

#include <random>
#include <thread>

#include "sim/SimulatedCamera.h"
#include "tools/command/ExitCode.h"
#include "tools/frameserver/DeviceTransformSession.h"
#include "tools/frameserver/LoadedModule.h"
#include "tools/frameserver/TransformKind.h"
#include "tools/ks/KsClient.h"

namespace tarn_test
{

class RandomSession : private tarn_host::SessionListener, private tarn_sim::IFrameSink
{
  public:
    RandomSession(unsigned sessionSeed, unsigned callCount, const tarn_sim::FaultPlan &cameraFaults)
        : seed(sessionSeed), calls(callCount), faults(cameraFaults), session(*this)
    {
    }

    void Run(const tarn_host::LoadedModule &module)
    {
        auto configuration = tarn_sim::CameraConfiguration::TarnDepth();
        configuration.buffersPerPin = 4;
        camera = user_space_frameworks::MakeCom<tarn_sim::SimulatedCamera>(configuration);
        transform = module.Create(tarn_host::ClassOf(tarn_host::TransformKind::Depth));
        session.Open(transform, static_cast<IMFTransform *>(camera.Get()));
        camera->Faults().SetPlan(faults);
        camera->Pins().SetFrameSink(this);
        {
            std::vector<std::jthread> threads;
            for (unsigned thread = 0; thread < kThreads; ++thread)
            {
                threads.emplace_back([this, thread] { CallAtRandom(seed * kThreads + thread, thread); });
            }
        }
        camera->Pins().SetFrameSink(nullptr);
        camera->Pins().WaitForReturnOfFrames(std::chrono::milliseconds(100)); // outputs that run keep none
        session.Synchronise(std::chrono::seconds(10));
        transform.Reset();
        session.Close();
        camera->Pins().StopAll();
    }

  private:
    static constexpr unsigned kThreads = 3;

    HRESULT OnInputState(DWORD inputId, DeviceStreamState state, IMFMediaType *type) override
    {
        return camera->Pins().SetPinState(inputId, state, type);
    }
    void OnOutputSample(DWORD, IMFSample *) override {}
    void OnSessionFailure() override {}
    void OnFrame(DWORD streamId, IMFSample *sample) override { session.ProcessInput(streamId, sample); }

    void CallAtRandom(unsigned threadSeed, unsigned thread)
    {
        std::mt19937 random(threadSeed);
        for (unsigned call = 0; call < calls / kThreads; ++call)
        {
            try
            {
                Call(random, thread);
            }
            catch (const tarn_host::HostError &)
            {
                // What is refused is part of the session.
            }
        }
    }

    // Each changes something else, as the pipeline, an application and a service do; all ask.
    void Call(std::mt19937 &random, unsigned thread)
    {
        const DWORD output = random() % 2;
        const tarn_host::KsClient controls(session.KsControl());
        DeviceStreamState state{};
        ComPtr<IMFMediaType> type;
        ComPtr<IMFAttributes> attributes;
        switch (random() % 8 + 10 * thread)
        {
        case 0:
        case 1:
            transform->GetOutputAvailableType(output, random() % 4, &type);
            transform->SetOutputStreamState(output, type.Get(), DeviceStreamState_Run, 0);
            break;
        case 2:
            transform->SetOutputStreamState(output, nullptr, DeviceStreamState_Stop, 0);
            break;
        case 3:
            controls.SetFaceLogin(random() % 2 != 0);
            break;
        case 10:
        case 11:
            controls.SetConfidenceMap(random() % 2 != 0);
            break;
        case 12:
            controls.SetPreset(random() % 8);
            break;
        case 20:
            transform->ProcessMessage(random() % 4 == 0 ? MFT_MESSAGE_COMMAND_FLUSH : MFT_MESSAGE_COMMAND_DRAIN, 0);
            break;
        case 21:
        case 22:
            camera->Ks().SignalAutoUpdate();
            break;
        case 4:
        case 14:
        case 24:
            controls.Preset();
            break;
        case 5:
        case 15:
        case 25:
            transform->GetOutputStreamState(output, &state);
            break;
        case 6:
        case 16:
        case 26:
            transform->GetOutputStreamAttributes(random() % 3, &attributes);
            break;
        default: // frames come meanwhile
            std::this_thread::sleep_for(std::chrono::milliseconds(random() % 20));
        }
    }

    const unsigned seed;
    const unsigned calls;
    const tarn_sim::FaultPlan faults;
    ComPtr<tarn_sim::SimulatedCamera> camera;
    ComPtr<IMFDeviceTransform> transform;
    tarn_host::DeviceTransformSession session;
};

} // namespace tarn_test
