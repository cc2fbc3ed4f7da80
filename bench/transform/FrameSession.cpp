#include "FrameSession.h"

#include "platform/CameraAttributes.h"
#include "platform/ExtendedCameraControl.h"
#include "platform/RealTimeClientEx.h"
#include "platform/SampleAllocator.h"

#include <cstdio>
#include <cstdlib>

#include "base/ComObject.h"
#include "base/TakeReference.h"
#include "tarn/tarn_dmft.h"

namespace tarn_bench
{

namespace
{

constexpr CLSID kDepthTransform{0x7F9DF308, 0x0F2D, 0x432E, {0x8C, 0x8E, 0xD3, 0x6E, 0xD8, 0xF1, 0x2C, 0x90}};
constexpr DWORD kDepth = 0;
constexpr DWORD kInfrared = 1;

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

} // namespace

void Require(HRESULT result, const char *what)
{
    if (FAILED(result))
    {
        std::fprintf(stderr, "%s failed: 0x%08lX\n", what, static_cast<unsigned long>(result));
        std::exit(1);
    }
}

FrameSession::FrameSession(const Run &run, const Scenario &played)
    : scenario(played), hasAllocator(run.allocator), transform(CreateTransform(run.module))
{
    auto configuration = tarn_sim::CameraConfiguration::TarnDepth();
    configuration.pacing = tarn_sim::Pacing::Stepped;
    camera = user_space_frameworks::MakeCom<tarn_sim::SimulatedCamera>(configuration);
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

FrameSession::~FrameSession()
{
    held.clear();
    camera->Pins().SetFrameSink(nullptr);
    camera->Pins().StopAll();
    ComPtr<IMFShutdown> shutdown;
    transform.As(&shutdown);
    shutdown->Shutdown();
    MFUnlockWorkQueue(workQueue);
}

void FrameSession::OnFrame(DWORD /*streamId*/, IMFSample *sample)
{
    frame = sample;
}

void FrameSession::Frame()
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

const BYTE *FrameSession::FrameData(DWORD &length) const
{
    ComPtr<IMFMediaBuffer> buffer;
    Require(frame->GetBufferByIndex(0, &buffer), "GetBufferByIndex");
    BYTE *data = nullptr;
    Require(buffer->Lock(&data, nullptr, &length), "Lock");
    Require(buffer->Unlock(), "Unlock");
    return data;
}

template <class Payload>
void FrameSession::SetProperty(const GUID &set, ULONG id, Payload payload)
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

void FrameSession::Start()
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
        StartOutput(kInfrared, scenario.faceLogin ? 360 : scenario.width, scenario.faceLogin ? 360 : scenario.height);
    }
}

void FrameSession::StartOutput(DWORD output, UINT32 width, UINT32 height)
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

void FrameSession::OfferAllocator(DWORD output)
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

void FrameSession::FollowPin(IMFMediaEvent &event)
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
ComPtr<IMFSample> FrameSession::NextInput()
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

void FrameSession::WaitForOutput()
{
    MediaEventType type = MEUnknown;
    while (type != METransformHaveOutput)
    {
        ComPtr<IMFMediaEvent> event;
        Require(events->GetEvent(0, &event), "GetEvent");
        Require(event->GetType(&type), "GetType");
    }
}

} // namespace tarn_bench
