// What whole frames cost through COM: processor time of the process per frame beside one plain copy of the input frame
// into a kept block in the same run, and the way of a frame at 60 frames a second.
//
//   tarn_frame_bench [--module PATH] [--allocator] [--latency] [--rounds N]
#include "platform/CameraAttributes.h"
#include "platform/DeviceTransform.h"
#include "platform/ExtendedCameraControl.h"
#include "platform/RealTimeClientEx.h"
#include "platform/SampleAllocator.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "base/ComObject.h"
#include "base/TakeReference.h"
#include "sim/SimulatedCamera.h"
#include "tarn/tarn_dmft.h"

namespace
{

using user_space_frameworks::MakeCom;
using user_space_frameworks::TakeReference;
using Clock = std::chrono::steady_clock;

constexpr CLSID kDepthTransform{0x7F9DF308, 0x0F2D, 0x432E, {0x8C, 0x8E, 0xD3, 0x6E, 0xD8, 0xF1, 0x2C, 0x90}};
constexpr DWORD kDepth = 0;
constexpr DWORD kInfrared = 1;

void Require(HRESULT result, const char *what)
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

const std::vector<Scenario> kScenarios{
    {"depth", 640, 480, true},
    {"depth and map", 640, 480, true, false, true},
    {"infrared", 640, 480, false, true},
    {"depth and infrared", 640, 480, true, true},
    {"face login", 640, 480, false, true, false, true},
    {"depth", 1280, 720, true},
    {"depth and map", 1280, 720, true, false, true},
    {"infrared", 1280, 720, false, true},
    {"depth and infrared", 1280, 720, true, true},
};

ComPtr<IMFDeviceTransform> CreateTransform(const std::string &module)
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

double ProcessorSeconds()
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
double MicrosecondsPerCall(const std::function<void()> &call)
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

double Part(std::vector<double> values, double part)
{
    std::sort(values.begin(), values.end());
    return values.at(static_cast<std::size_t>(static_cast<double>(values.size() - 1) * part));
}

void CompareWithCopy(const Run &run, const Scenario &scenario)
{
    Session session(run, scenario);
    DWORD length = 0;
    const BYTE *const input = session.FrameData(length);
    std::vector<BYTE> kept(length);
    std::vector<double> copies;
    std::vector<double> frames;
    std::vector<double> ratios;
    for (int i = 0; i < 200; ++i)
    {
        session.Frame();
    }
    for (int i = 0; i < run.rounds; ++i)
    {
        frames.push_back(MicrosecondsPerCall([&] { session.Frame(); }));
        copies.push_back(MicrosecondsPerCall([&] { std::memcpy(kept.data(), input, kept.size()); }));
        ratios.push_back(frames.back() / copies.back());
    }
    std::printf("| %s | %ux%u | %.1f | %.0f | %.1f (%.1f-%.1f) |\n", scenario.name, scenario.width, scenario.height,
                Part(copies, 0.5), Part(frames, 0.5), Part(ratios, 0.5), Part(ratios, 0.0), Part(ratios, 1.0));
    std::fflush(stdout);
}

void MeasureLatency(const Run &run, const Scenario &scenario)
{
    constexpr int kSeconds = 10;
    Session session(run, scenario);
    std::vector<double> ways;
    auto due = Clock::now();
    for (int i = 0; i < 60 * kSeconds; ++i)
    {
        due += std::chrono::microseconds(16'667);
        std::this_thread::sleep_until(due);
        const auto start = Clock::now();
        session.Frame();
        ways.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    }
    std::printf("| %s | %ux%u | %.2f | %.2f | %.2f |\n", scenario.name, scenario.width, scenario.height,
                Part(ways, 0.5), Part(ways, 0.99), Part(ways, 1.0));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv)
{
    Run run;
    for (int i = 1; i < argc; ++i)
    {
        const std::string option = argv[i];
        run.latency = run.latency || option == "--latency";
        run.allocator = run.allocator || option == "--allocator";
        if (i + 1 < argc && option == "--module")
        {
            run.module = argv[++i];
        }
        else if (i + 1 < argc && option == "--rounds")
        {
            run.rounds = std::atoi(argv[++i]);
        }
    }
    Require(CoInitializeEx(nullptr, COINIT_MULTITHREADED), "CoInitializeEx");
    Require(MFStartup(MF_VERSION, MFSTARTUP_FULL), "MFStartup");
    std::printf("%s\n\n| scenario | size | copy us | frame us | frame / copy, median (least-most) of %d rounds |\n"
                "|---|---|---|---|---|\n",
                run.allocator ? "With the pipeline's allocator" : "Without an allocator", run.rounds);
    for (const Scenario &scenario : kScenarios)
    {
        CompareWithCopy(run, scenario);
    }
    if (run.latency)
    {
        std::printf("\n| scenario, 60 frames a second | size | p50 ms | p99 ms | max ms |\n|---|---|---|---|---|\n");
        for (const Scenario &scenario : kScenarios)
        {
            MeasureLatency(run, scenario);
        }
    }
    std::fflush(stdout);
    TerminateProcess(GetCurrentProcess(), 0); // the platform's threads may outlive a return
}
