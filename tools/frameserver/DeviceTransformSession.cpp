#include "tools/frameserver/DeviceTransformSession.h"

#include "platform/CameraAttributes.h"
#include "platform/SampleAllocator.h"

#include <algorithm>
#include <cstdio>

#include "tools/command/ExitCode.h"
#include "base/TakeReference.h"

namespace tarn_host
{

namespace
{

constexpr GUID kMarker{0x5B0E3C4D, 0x7A11, 0x4F6E, {0x9D, 0x52, 0x0C, 0xE8, 0x31, 0x7F, 0xB4, 0x26}};

const char *NameOf(DeviceStreamState state)
{
    switch (state)
    {
    case DeviceStreamState_Stop:
        return "Stop";
    case DeviceStreamState_Pause:
        return "Pause";
    case DeviceStreamState_Run:
        return "Run";
    case DeviceStreamState_Disabled:
        return "Disabled";
    }
    return "unknown";
}

} // namespace

DeviceTransformSession::DeviceTransformSession(SessionListener &sessionListener) : listener(sessionListener) {}

DeviceTransformSession::~DeviceTransformSession()
{
    try
    {
        Close();
    }
    catch (const HostError &)
    {
        // The run has failed already and its first reason is the one worth telling.
    }
}

void DeviceTransformSession::Open(ComPtr<IMFDeviceTransform> freshTransform, IUnknown *cameraFilter)
{
    transform = std::move(freshTransform);
    ThrowIfFailed(transform.As(&events), "asking the transform for IMFMediaEventGenerator");

    ComPtr<IMFAttributes> attributes;
    ThrowIfFailed(MFCreateAttributes(&attributes, 1), "MFCreateAttributes");
    ThrowIfFailed(attributes->SetUnknown(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL, cameraFilter), "SetUnknown");
    ThrowIfFailed(transform->InitializeTransform(attributes.Get()), "InitializeTransform");

    ComPtr<IMFRealTimeClientEx> realTimeClient;
    ThrowIfFailed(transform.As(&realTimeClient), "asking the transform for IMFRealTimeClientEx");
    workQueue.emplace();
    ThrowIfFailed(realTimeClient->SetWorkQueueEx(workQueue->Id(), 0), "SetWorkQueueEx");

    ReadStreamIds();
    FindInputRule();
    eventLoop = std::thread([this] { RunEventLoop(); });
}

void DeviceTransformSession::ReadStreamIds()
{
    DWORD inputs = 0;
    DWORD outputs = 0;
    ThrowIfFailed(transform->GetStreamCount(&inputs, &outputs), "GetStreamCount");
    inputIds.resize(inputs);
    outputIds.resize(outputs);
    ThrowIfFailed(transform->GetStreamIDs(inputs, inputIds.data(), outputs, outputIds.data()), "GetStreamIDs");
}

// Before an output runs the transform drops what it is given, and what is then left of our references shows the rule.
void DeviceTransformSession::FindInputRule()
{
    if (inputIds.empty())
    {
        return;
    }
    ComPtr<IMFSample> sample;
    ThrowIfFailed(MFCreateSample(&sample), "MFCreateSample");
    ThrowIfFailed(sample->SetSampleTime(0), "SetSampleTime");
    sample.Get()->AddRef();
    ThrowIfFailed(transform->ProcessInput(inputIds.front(), sample.Get(), 0), "ProcessInput");
    sample.Get()->AddRef();
    const ULONG left = sample.Get()->Release();
    isInputConsumed = left == 1;
    if (!isInputConsumed)
    {
        sample.Get()->Release();
    }
}

std::vector<ComPtr<IMFMediaType>> DeviceTransformSession::OutputTypes(DWORD outputId) const
{
    std::vector<ComPtr<IMFMediaType>> types;
    for (DWORD index = 0;; ++index)
    {
        ComPtr<IMFMediaType> type;
        const HRESULT result = transform->GetOutputAvailableType(outputId, index, &type);
        if (result == MF_E_NO_MORE_TYPES || result == MF_E_INVALIDINDEX)
        {
            return types;
        }
        ThrowIfFailed(result, "GetOutputAvailableType");
        types.push_back(std::move(type));
    }
}

ComPtr<IKsControl> DeviceTransformSession::KsControl() const
{
    ComPtr<IKsControl> control;
    ThrowIfFailed(transform.As(&control), "asking the transform for IKsControl");
    return control;
}

void DeviceTransformSession::SendMessage(MFT_MESSAGE_TYPE message) const
{
    ThrowIfFailed(transform->ProcessMessage(message, 0), "ProcessMessage");
}

void DeviceTransformSession::SetOutputState(DWORD outputId, DeviceStreamState state, IMFMediaType *type)
{
    if (state == DeviceStreamState_Run && offersAllocators)
    {
        OfferAllocator(outputId);
    }
    ThrowIfFailed(transform->SetOutputStreamState(outputId, type, state, 0), "SetOutputStreamState");
}

void DeviceTransformSession::OfferAllocator(DWORD outputId)
{
    ComPtr<IMFSampleAllocatorControl> control;
    ThrowIfFailed(transform.As(&control), "asking the transform for IMFSampleAllocatorControl");
    DWORD inputId = 0;
    MFSampleAllocatorUsage usage = MFSampleAllocatorUsage_UsesCustomAllocator;
    ThrowIfFailed(control->GetAllocatorUsage(outputId, &inputId, &usage), "GetAllocatorUsage");
    if (usage == MFSampleAllocatorUsage_UsesProvidedAllocator)
    {
        ComPtr<IMFVideoSampleAllocatorEx> allocator;
        ThrowIfFailed(MFCreateVideoSampleAllocatorEx(IID_PPV_ARGS(&allocator)), "MFCreateVideoSampleAllocatorEx");
        ThrowIfFailed(control->SetDefaultAllocator(outputId, allocator.Get()), "SetDefaultAllocator");
    }
}

void DeviceTransformSession::WaitForInputs(DeviceStreamState state, std::size_t count, std::chrono::milliseconds limit)
{
    std::unique_lock hold(lock);
    const auto reached = [&] {
        return failure.has_value() ||
               static_cast<std::size_t>(std::count_if(inputStates.begin(), inputStates.end(),
                                                      [&](const auto &one) { return one.second == state; })) >= count;
    };
    if (!changed.wait_for(hold, limit, reached))
    {
        throw HostError("the transform did not bring " + std::to_string(count) + " input(s) to state " + NameOf(state) +
                        " in time");
    }
    if (failure)
    {
        throw HostError(*failure);
    }
}

// An event of our own runs through the transform's queue behind what is there.
void DeviceTransformSession::Synchronise(std::chrono::milliseconds limit)
{
    std::unique_lock hold(lock);
    const std::uint64_t mine = ++markersQueued;
    hold.unlock();
    ThrowIfFailed(events->QueueEvent(MEExtendedType, kMarker, S_OK, nullptr), "QueueEvent");
    hold.lock();
    if (!changed.wait_for(hold, limit, [&] { return failure.has_value() || markersSeen >= mine; }))
    {
        throw HostError("the transform's events were not answered in time");
    }
    if (failure)
    {
        throw HostError(*failure);
    }
}

HRESULT DeviceTransformSession::ProcessInput(DWORD inputId, IMFSample *sample) const
{
    if (isInputConsumed)
    {
        sample->AddRef();
    }
    return transform->ProcessInput(inputId, sample, 0);
}

void DeviceTransformSession::RunEventLoop()
{
    for (;;)
    {
        ComPtr<IMFMediaEvent> event;
        const HRESULT waited = events->GetEvent(0, &event);
        if (waited == MF_E_SHUTDOWN)
        {
            return;
        }
        if (FAILED(waited) || !event)
        {
            Fail("GetEvent", waited);
            return;
        }
        const HRESULT handled = HandleEvent(*event.Get());
        if (FAILED(handled))
        {
            Fail("handling an event of the transform", handled);
        }
    }
}

HRESULT DeviceTransformSession::HandleEvent(IMFMediaEvent &event)
{
    MediaEventType type = MEUnknown;
    HRESULT status = S_OK;
    GUID extendedType{};
    if (FAILED(event.GetType(&type)) || FAILED(event.GetStatus(&status)) ||
        FAILED(event.GetExtendedType(&extendedType)))
    {
        return E_UNEXPECTED;
    }
    if (FAILED(status) || type == MEError)
    {
        return FAILED(status) ? status : E_FAIL;
    }

    if (type == MEExtendedType && IsEqualGUID(extendedType, kMarker))
    {
        const std::scoped_lock hold(lock);
        ++markersSeen;
        changed.notify_all();
        return S_OK;
    }
    const bool streamCreated = type == MEUnknown && IsEqualGUID(extendedType, MEDeviceStreamCreated);
    {
        const std::scoped_lock hold(lock);
        std::uint64_t &counter = type == METransformHaveOutput                ? counters.outputEvents
                                 : type == METransformInputStreamStateChanged ? counters.inputStateEvents
                                 : streamCreated                              ? counters.streamCreatedEvents
                                                                              : counters.otherEvents;
        ++counter;
    }
    if (type == METransformHaveOutput)
    {
        return CollectOutputs();
    }
    return type == METransformInputStreamStateChanged ? FollowInputState(event) : S_OK;
}

// The transform says what it prefers; the frame server sets it on the transform's input and then on the camera's pin.
HRESULT DeviceTransformSession::FollowInputState(IMFMediaEvent &event)
{
    UINT32 inputId = 0;
    HRESULT result = event.GetUINT32(MF_EVENT_MFT_INPUT_STREAM_ID, &inputId);
    if (FAILED(result))
    {
        return result;
    }
    DeviceStreamState state = DeviceStreamState_Stop;
    ComPtr<IMFMediaType> type;
    result = transform->GetInputStreamPreferredState(inputId, &state, &type);
    if (SUCCEEDED(result))
    {
        result = transform->SetInputStreamState(inputId, type.Get(), state, 0);
    }
    if (SUCCEEDED(result))
    {
        result = listener.OnInputState(inputId, state, type.Get());
    }
    if (FAILED(result))
    {
        return result;
    }
    {
        const std::scoped_lock hold(lock);
        inputStates[inputId] = state;
    }
    changed.notify_all();
    return S_OK;
}

HRESULT DeviceTransformSession::CollectOutputs()
{
    std::vector<MFT_OUTPUT_DATA_BUFFER> buffers(outputIds.size());
    std::transform(outputIds.begin(), outputIds.end(), buffers.begin(), [](DWORD id) {
        MFT_OUTPUT_DATA_BUFFER buffer{};
        buffer.dwStreamID = id;
        return buffer;
    });
    DWORD status = 0;
    const HRESULT result = transform->ProcessOutput(0, static_cast<DWORD>(buffers.size()), buffers.data(), &status);
    for (const MFT_OUTPUT_DATA_BUFFER &buffer : buffers)
    {
        ComPtr<IMFSample> sample;
        ComPtr<IMFCollection> streamEvents;
        user_space_frameworks::TakeReference(sample, buffer.pSample);
        user_space_frameworks::TakeReference(streamEvents, buffer.pEvents);
        if (sample)
        {
            listener.OnOutputSample(buffer.dwStreamID, sample.Get());
        }
    }
    // Earlier calls may have emptied the queues already: each call takes one sample from every output.
    return result == MF_E_TRANSFORM_NEED_MORE_INPUT ? S_OK : result;
}

void DeviceTransformSession::Fail(const std::string &step, HRESULT result)
{
    {
        const std::scoped_lock hold(lock);
        if (!failure)
        {
            failure = HostError(result, step).what();
        }
    }
    changed.notify_all();
    listener.OnSessionFailure();
}

std::optional<std::string> DeviceTransformSession::Failure() const
{
    const std::scoped_lock hold(lock);
    return failure;
}

SessionCounters DeviceTransformSession::Counters() const
{
    const std::scoped_lock hold(lock);
    return counters;
}

ULONG DeviceTransformSession::Close()
{
    if (!transform)
    {
        return 0;
    }
    HRESULT result = E_NOINTERFACE;
    {
        ComPtr<IMFShutdown> shutdown;
        if (SUCCEEDED(transform.As(&shutdown)))
        {
            result = shutdown->Shutdown();
        }
    }
    if (eventLoop.joinable())
    {
        if (FAILED(result))
        {
            // The loop waits inside the transform and nothing can end it there, so the process has to.
            std::fprintf(stderr, "tarn-host: %s\n", HostError(result, "shutting the transform down").what());
            EndProcess(ExitCode::Failure);
        }
        eventLoop.join();
    }
    events.Reset();
    const ULONG left = transform.Detach()->Release();
    workQueue.reset();
    ThrowIfFailed(result, "shutting the transform down");
    return left;
}

} // namespace tarn_host
