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
                threads.emplace_back([this, thread] { CallAtRandom(seed * kThreads + thread); });
            }
        }
        camera->Pins().SetFrameSink(nullptr);
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
    void OnFrame(DWORD streamId, IMFSample *sample) override
    {
        session.ProcessInput(streamId, sample);
    }

    void CallAtRandom(unsigned threadSeed)
    {
        std::mt19937 random(threadSeed);
        for (unsigned call = 0; call < calls / kThreads; ++call)
        {
            try
            {
                Call(random);
            }
            catch (const tarn_host::HostError &)
            {
                // What is refused is part of the session.
            }
        }
    }

    void Call(std::mt19937 &random)
    {
        const DWORD output = random() % 2;
        const tarn_host::KsClient controls(session.KsControl());
        DeviceStreamState state{};
        ComPtr<IMFMediaType> type;
        ComPtr<IMFAttributes> attributes;
        switch (random() % 12)
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
            controls.SetConfidenceMap(random() % 2 != 0);
            break;
        case 4:
            controls.SetPreset(random() % 8);
            break;
        case 5:
            controls.Preset();
            break;
        case 6:
            controls.SetFaceLogin(random() % 2 != 0);
            break;
        case 7:
            transform->GetOutputStreamState(output, &state);
            break;
        case 8:
            transform->GetOutputStreamAttributes(random() % 3, &attributes);
            break;
        case 9:
            transform->ProcessMessage(random() % 4 == 0 ? MFT_MESSAGE_COMMAND_FLUSH : MFT_MESSAGE_COMMAND_DRAIN, 0);
            break;
        case 10:
            camera->Ks().SignalAutoUpdate();
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
