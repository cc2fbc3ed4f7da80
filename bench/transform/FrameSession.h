// One depth transform over the simulated camera, frame by frame, and how its processor time is measured.
#pragma once

#include "platform/CameraAttributes.h"
#include "platform/DeviceTransform.h"
#include "platform/ExtendedCameraControl.h"
#include "platform/RealTimeClientEx.h"
#include "platform/SampleAllocator.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "base/ComObject.h"
#include "base/TakeReference.h"
#include "sim/SimulatedCamera.h"
#include "tarn/tarn_dmft.h"

namespace tarn_bench
{

using user_space_frameworks::MakeCom;
using user_space_frameworks::TakeReference;

inline constexpr CLSID kDepthTransform{0x7F9DF308, 0x0F2D, 0x432E, {0x8C, 0x8E, 0xD3, 0x6E, 0xD8, 0xF1, 0x2C, 0x90}};
inline constexpr DWORD kDepth = 0;
inline constexpr DWORD kInfrared = 1;

inline void Require(HRESULT result, const char *what)
{
    if (FAILED(result))
    {
        std::fprintf(stderr, "%s failed: 0x%08lX\n", what, static_cast<unsigned long>(result));
        std::exit(1);
    }
}

struct Run
{
    std::string module = "tarn_dmft.dll";
    bool allocator = false;
    bool latency = false;
    int rounds = 5;
};

struct Scenario
{
    const char *name;
    UINT32 width = 0;
    UINT32 height = 0;
    bool depth = false;
    bool infrared = false;
    bool map = false;
    bool faceLogin = false;
};

inline ComPtr<IMFDeviceTransform> CreateTransform(const std::string &module)
{
    using GetClassObject = HRESULT(STDAPICALLTYPE *)(REFCLSID, REFIID, void **);
    const HMODULE library = LoadLibraryA(module.c_str());
    Require(library != nullptr ? S_OK : HRESULT_FROM_WIN32(GetLastError()), "LoadLibrary");
    const auto entry =
        reinterpret_cast<GetClassObject>(reinterpret_cast<void *>(GetProcAddress(library, "DllGetClassObject")));
    ComPtr<IClassFactory> factory;
    Require(entry(kDepthTransform, IID_PPV_ARGS(&factory)), "DllGetClassObject");
    ComPtr<IMFDeviceTransform> transform;
    Require(factory->CreateInstance(nullptr, IID_PPV_ARGS(&transform)), "CreateInstance");
    return transform;
}

// One transform with running outputs, and a frame of the camera that is given to it over and over.
class Session : public tarn_sim::IFrameSink
{
  public:
    Session(const Run &run, const Scenario &played)
        : scenario(played), hasAllocator(run.allocator), transform(CreateTransform(run.module))
    {
        auto configuration = tarn_sim::CameraConfiguration::TarnDepth();
        configuration.pacing = tarn_sim::Pacing::Stepped;
        camera = MakeCom<tarn_sim::SimulatedCamera>(configuration);
        camera->Pins().SetFrameSink(this);
        ComPtr<IMFAttributes> filter;
        Require(MFCreateAttributes(&filter, 1), "MFCreateAttributes");
        Require(filter->SetUnknown(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL, static_cast<IMFTransform *>(camera.Get())),
                "SetUnknown");
        Require(transform->InitializeTransform(filter.Get()), "InitializeTransform");
        Require(transform.As(&events), "IMFMediaEventGenerator");
        Require(MFAllocateWorkQueueEx(MF_MULTITHREADED_WORKQUEUE, &workQueue), "MFAllocateWorkQueueEx");
        ComPtr<IMFRealTimeClientEx> realTime;
        Require(transform.As(&realTime), "IMFRealTimeClientEx");
        Require(realTime->SetWorkQueueEx(workQueue, 0), "SetWorkQueueEx");
        Start();
        Require(camera->Pins().Step(0, 1), "Step");
        Require(frame ? S_OK : E_FAIL, "frame of the camera");
    }
    ~Session() override
    {
        held.clear();
        camera->Pins().SetFrameSink(nullptr);
        camera->Pins().StopAll();
        ComPtr<IMFShutdown> shutdown;
        transform.As(&shutdown);
        shutdown->Shutdown();
        MFUnlockWorkQueue(workQueue);
    }
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    void OnFrame(DWORD /*streamId*/, IMFSample *sample) override
    {
        frame = sample;
    }

    // One frame in and every output's sample out; the samples are held until those of the next frame have come.
    void Frame()
    {
        const ComPtr<IMFSample> input = NextInput();
        input.Get()->AddRef(); // which the transform takes over
        Require(transform->ProcessInput(0, input.Get(), 0), "ProcessInput");
        const std::size_t expected = (scenario.depth ? 1U : 0U) + (scenario.infrared ? 1U : 0U);
        std::vector<ComPtr<IMFSample>> samples;
        while (samples.size() < expected)
        {
            WaitForOutput();
            MFT_OUTPUT_DATA_BUFFER buffers[2]{};
            buffers[1].dwStreamID = kInfrared;
            DWORD status = 0;
            transform->ProcessOutput(0, 2, buffers, &status);
            for (const MFT_OUTPUT_DATA_BUFFER &buffer : buffers)
            {
                ComPtr<IMFSample> sample;
                TakeReference(sample, buffer.pSample);
                if (sample)
                {
                    samples.push_back(sample);
                }
            }
        }
        held.swap(samples);
    }

    const BYTE *FrameData(DWORD &length)
    {
        ComPtr<IMFMediaBuffer> buffer;
        Require(frame->GetBufferByIndex(0, &buffer), "GetBufferByIndex");
        BYTE *data = nullptr;
        Require(buffer->Lock(&data, nullptr, &length), "Lock");
        Require(buffer->Unlock(), "Unlock");
        return data;
    }

  private:
    template <class Payload>
    void SetProperty(const GUID &set, ULONG id, Payload payload)
    {
        ComPtr<IKsControl> control;
        Require(transform.As(&control), "IKsControl");
        KSPROPERTY property{};
        property.Set = set;
        property.Id = id;
        property.Flags = KSPROPERTY_TYPE_SET;
        ULONG returned = 0;
        Require(control->KsProperty(&property, sizeof(property), &payload, sizeof(payload), &returned), "KsProperty");
    }

    void Start()
    {
        if (scenario.map)
        {
            SetProperty(KSPROPERTYSETID_TARN_DMFT_CONTROL, KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP, UINT32{1});
        }
        if (scenario.faceLogin)
        {
            struct
            {
                KSCAMERA_EXTENDEDPROP_HEADER header;
                KSCAMERA_EXTENDEDPROP_VALUE value;
            } mode{};
            mode.header.Flags = KSCAMERA_EXTENDEDPROP_FACEAUTH_MODE_ALTERNATIVE_FRAME_ILLUMINATION;
            SetProperty(KSPROPERTYSETID_ExtendedCameraControl, KSPROPERTY_CAMERACONTROL_EXTENDED_FACEAUTH_MODE, mode);
        }
        if (scenario.depth)
        {
            StartOutput(kDepth, scenario.width, scenario.height);
        }
        if (scenario.infrared)
        {
            StartOutput(kInfrared, scenario.faceLogin ? 360 : scenario.width,
                        scenario.faceLogin ? 360 : scenario.height);
        }
    }

    void StartOutput(DWORD output, UINT32 width, UINT32 height)
    {
        for (DWORD index = 0;; ++index)
        {
            ComPtr<IMFMediaType> type;
            Require(transform->GetOutputAvailableType(output, index, &type), "GetOutputAvailableType");
            UINT32 offeredWidth = 0;
            UINT32 offeredHeight = 0;
            MFGetAttributeSize(type.Get(), MF_MT_FRAME_SIZE, &offeredWidth, &offeredHeight);
            if (offeredWidth == width && offeredHeight == height)
            {
                OfferAllocator(output);
                Require(transform->SetOutputStreamState(output, type.Get(), DeviceStreamState_Run, 0),
                        "SetOutputStreamState");
                break;
            }
        }
        ComPtr<IMFMediaEvent> event;
        while (SUCCEEDED(events->GetEvent(MF_EVENT_FLAG_NO_WAIT, event.ReleaseAndGetAddressOf())))
        {
            FollowPin(*event.Get());
        }
    }

    void OfferAllocator(DWORD output)
    {
        if (hasAllocator)
        {
            ComPtr<IMFSampleAllocatorControl> control;
            Require(transform.As(&control), "IMFSampleAllocatorControl");
            ComPtr<IMFVideoSampleAllocatorEx> allocator;
            Require(MFCreateVideoSampleAllocatorEx(IID_PPV_ARGS(&allocator)), "MFCreateVideoSampleAllocatorEx");
            Require(control->SetDefaultAllocator(output, allocator.Get()), "SetDefaultAllocator");
        }
    }

    void FollowPin(IMFMediaEvent &event)
    {
        MediaEventType type = MEUnknown;
        event.GetType(&type);
        if (type == METransformInputStreamStateChanged)
        {
            DeviceStreamState state = DeviceStreamState_Stop;
            ComPtr<IMFMediaType> wanted;
            Require(transform->GetInputStreamPreferredState(0, &state, &wanted), "GetInputStreamPreferredState");
            Require(transform->SetInputStreamState(0, wanted.Get(), state, 0), "SetInputStreamState");
            Require(camera->Pins().SetPinState(0, state, wanted.Get()), "SetPinState");
        }
    }

    // The buffer and the metadata of a camera frame in a sample of its own, as the driver delivers it.
    ComPtr<IMFSample> NextInput()
    {
        ComPtr<IMFMediaBuffer> buffer;
        ComPtr<IUnknown> metadata;
        ComPtr<IMFSample> input;
        Require(MFCreateSample(&input), "MFCreateSample");
        Require(frame->GetBufferByIndex(0, &buffer), "GetBufferByIndex");
        Require(input->AddBuffer(buffer.Get()), "AddBuffer");
        Require(frame->GetUnknown(MFSampleExtension_CaptureMetadata, IID_PPV_ARGS(&metadata)), "GetUnknown");
        Require(input->SetUnknown(MFSampleExtension_CaptureMetadata, metadata.Get()), "SetUnknown");
        Require(input->SetSampleTime(++number * 166'667), "SetSampleTime");
        Require(input->SetSampleDuration(166'667), "SetSampleDuration");
        return input;
    }

    void WaitForOutput()
    {
        MediaEventType type = MEUnknown;
        while (type != METransformHaveOutput)
        {
            ComPtr<IMFMediaEvent> event;
            Require(events->GetEvent(0, &event), "GetEvent");
            Require(event->GetType(&type), "GetType");
        }
    }

    const Scenario scenario;
    const bool hasAllocator;
    const ComPtr<IMFDeviceTransform> transform;
    ComPtr<tarn_sim::SimulatedCamera> camera;
    ComPtr<IMFMediaEventGenerator> events;
    DWORD workQueue = 0;
    ComPtr<IMFSample> frame;
    std::vector<ComPtr<IMFSample>> held;
    LONGLONG number = 0;
};

inline double ProcessorSeconds()
{
    FILETIME created{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &user);
    const auto seconds = [](const FILETIME &time) {
        return static_cast<double>(std::uint64_t{time.dwHighDateTime} << 32U | time.dwLowDateTime) / 1e7;
    };
    return seconds(kernel) + seconds(user);
}

// The clock of the process ticks every 10 ms: a round lasts until that is little.
inline double MicrosecondsPerCall(const std::function<void()> &call)
{
    constexpr double kRoundSeconds = 0.5;
    constexpr int kCallsBetweenLooks = 20;
    int calls = 0;
    const double start = ProcessorSeconds();
    double now = start;
    for (; now - start < kRoundSeconds; now = ProcessorSeconds())
    {
        for (int i = 0; i < kCallsBetweenLooks; ++i)
        {
            call();
        }
        calls += kCallsBetweenLooks;
    }
    return (now - start) * 1e6 / calls;
}

} // namespace tarn_bench
