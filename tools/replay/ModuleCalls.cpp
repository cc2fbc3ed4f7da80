#include "tools/replay/ModuleCalls.h"

#include "platform/CameraAttributes.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "tools/command/ExitCode.h"
#include "tools/replay/CallArguments.h"
#include "tools/replay/ComValues.h"
#include "tools/replay/EventArrival.h"

namespace tarn_replay
{

using tarn_host::HostError;
using tarn_host::ThrowIfFailed;

namespace
{
constexpr DWORD kMostStreams = 1024;
} // namespace

ModuleCalls::ModuleCalls(ComPtr<IMFDeviceTransform> deviceTransform, ComPtr<IUnknown> cameraFilter,
                         const FramePixels &framePixels, bool withHashes)
    : transform(std::move(deviceTransform)), camera(std::move(cameraFilter)), pixels(framePixels),
      hashesWanted(withHashes), arrival(user_space_frameworks::MakeCom<EventArrival>())
{
}

ModuleCalls::~ModuleCalls() = default;

const std::map<std::uint16_t, ModuleCalls::Maker> &ModuleCalls::Makers()
{
    using Face = IMFDeviceTransform;
    using Self = ModuleCalls;
    static const std::map<std::uint16_t, Maker> makers{
        {TARN_CALL_INITIALIZE_TRANSFORM, &Self::InitializeTransform},
        {TARN_CALL_GET_INPUT_AVAILABLE_TYPE, &Self::AvailableType<&Face::GetInputAvailableType>},
        {TARN_CALL_GET_INPUT_CURRENT_TYPE, &Self::CurrentType<&Face::GetInputCurrentType>},
        {TARN_CALL_GET_INPUT_STREAM_ATTRIBUTES, &Self::StreamAttributes<&Face::GetInputStreamAttributes>},
        {TARN_CALL_GET_OUTPUT_AVAILABLE_TYPE, &Self::AvailableType<&Face::GetOutputAvailableType>},
        {TARN_CALL_GET_OUTPUT_CURRENT_TYPE, &Self::CurrentType<&Face::GetOutputCurrentType>},
        {TARN_CALL_GET_OUTPUT_STREAM_ATTRIBUTES, &Self::StreamAttributes<&Face::GetOutputStreamAttributes>},
        {TARN_CALL_GET_STREAM_COUNT, &Self::GetStreamCount},
        {TARN_CALL_GET_STREAM_IDS, &Self::GetStreamIds},
        {TARN_CALL_PROCESS_EVENT, &Self::ProcessEvent},
        {TARN_CALL_PROCESS_MESSAGE, &Self::ProcessMessage},
        {TARN_CALL_PROCESS_OUTPUT, &Self::ProcessOutput},
        {TARN_CALL_SET_INPUT_STREAM_STATE, &Self::SetState<&Face::SetInputStreamState>},
        {TARN_CALL_GET_INPUT_STREAM_STATE, &Self::State<&Face::GetInputStreamState>},
        {TARN_CALL_SET_OUTPUT_STREAM_STATE, &Self::SetState<&Face::SetOutputStreamState>},
        {TARN_CALL_GET_OUTPUT_STREAM_STATE, &Self::State<&Face::GetOutputStreamState>},
        {TARN_CALL_GET_INPUT_STREAM_PREFERRED_STATE, &Self::GetPreferredState},
        {TARN_CALL_FLUSH_INPUT_STREAM, &Self::Flush<&Face::FlushInputStream>},
        {TARN_CALL_FLUSH_OUTPUT_STREAM, &Self::Flush<&Face::FlushOutputStream>},
        {TARN_CALL_GET_ATTRIBUTES, &Self::GetAttributes},
        {TARN_CALL_SHUTDOWN, &Self::Shutdown},
        {TARN_CALL_GET_SHUTDOWN_STATUS, &Self::GetShutdownStatus},
        {TARN_CALL_REGISTER_THREADS_EX, &Self::RegisterThreads},
        {TARN_CALL_UNREGISTER_THREADS, &Self::UnregisterThreads},
        {TARN_CALL_SET_WORK_QUEUE_EX, &Self::SetWorkQueue},
        {TARN_CALL_GET_EVENT, &Self::GetEvent},
        {TARN_CALL_BEGIN_GET_EVENT, &Self::BeginGetEvent},
        {TARN_CALL_END_GET_EVENT, &Self::EndGetEvent},
        {TARN_CALL_QUEUE_EVENT, &Self::QueueEvent},
        {TARN_CALL_SET_DEFAULT_ALLOCATOR, &Self::SetDefaultAllocator},
        {TARN_CALL_GET_ALLOCATOR_USAGE, &Self::GetAllocatorUsage},
    };
    return makers;
}

HRESULT ModuleCalls::Make(const tarn_recording::Record &call, ValueWriter &given)
{
    if (call.header.type == TARN_RECORD_KS_CALL)
    {
        return KsCall(call, given);
    }
    if (call.header.subject == TARN_CALL_PROCESS_INPUT)
    {
        return ProcessInput(call);
    }
    const auto maker = Makers().find(call.header.subject);
    if (maker == Makers().end())
    {
        throw HostError("call " + std::to_string(call.header.subject) + " of the recording is not known");
    }
    return (this->*maker->second)(call.Values(), given);
}

void ModuleCalls::End() noexcept
{
    ComPtr<IMFShutdown> shutdown;
    if (transform && SUCCEEDED(transform.As(&shutdown)))
    {
        shutdown->Shutdown();
    }
}

ULONG ModuleCalls::Close()
{
    arrival->Clear();
    const ULONG left = transform ? transform.Detach()->Release() : 0;
    workQueues.clear();
    return left;
}

template <HRESULT (STDMETHODCALLTYPE IMFDeviceTransform::*method)(DWORD, DWORD, IMFMediaType **)>
HRESULT ModuleCalls::AvailableType(Values in, ValueWriter &given)
{
    ComPtr<IMFMediaType> type;
    const HRESULT result = (transform.Get()->*method)(Number(in, TARN_VALUE_STREAM), Number(in, TARN_VALUE_INDEX),
                                                      Out(in, 0, type.GetAddressOf()));
    Put(given, TARN_VALUE_MEDIA_TYPE, type.Get());
    return result;
}

template <HRESULT (STDMETHODCALLTYPE IMFDeviceTransform::*method)(DWORD, IMFMediaType **)>
HRESULT ModuleCalls::CurrentType(Values in, ValueWriter &given)
{
    ComPtr<IMFMediaType> type;
    const HRESULT result = (transform.Get()->*method)(Number(in, TARN_VALUE_STREAM), Out(in, 0, type.GetAddressOf()));
    Put(given, TARN_VALUE_MEDIA_TYPE, type.Get());
    return result;
}

template <HRESULT (STDMETHODCALLTYPE IMFDeviceTransform::*method)(DWORD, IMFAttributes **)>
HRESULT ModuleCalls::StreamAttributes(Values in, ValueWriter &given)
{
    ComPtr<IMFAttributes> store;
    const HRESULT result = (transform.Get()->*method)(Number(in, TARN_VALUE_STREAM), Out(in, 0, store.GetAddressOf()));
    Put(given, TARN_VALUE_ATTRIBUTES, store.Get());
    return result;
}

template <HRESULT (STDMETHODCALLTYPE IMFDeviceTransform::*method)(DWORD, DeviceStreamState *)>
HRESULT ModuleCalls::State(Values in, ValueWriter &given)
{
    DeviceStreamState state{};
    const HRESULT result = (transform.Get()->*method)(Number(in, TARN_VALUE_STREAM), Out(in, 0, &state));
    given.U32(TARN_VALUE_STATE, static_cast<std::uint32_t>(state));
    return result;
}

template <HRESULT (STDMETHODCALLTYPE IMFDeviceTransform::*method)(DWORD, IMFMediaType *, DeviceStreamState, DWORD)>
HRESULT ModuleCalls::SetState(Values in, ValueWriter &)
{
    hasChangedState = true;
    const ComPtr<IMFMediaType> type = MakeMediaType(in.Find(TARN_VALUE_MEDIA_TYPE));
    return (transform.Get()->*method)(Number(in, TARN_VALUE_STREAM), type.Get(),
                                      static_cast<DeviceStreamState>(Number(in, TARN_VALUE_STATE)),
                                      Number(in, TARN_VALUE_FLAGS));
}

template <HRESULT (STDMETHODCALLTYPE IMFDeviceTransform::*method)(DWORD, DWORD)>
HRESULT ModuleCalls::Flush(Values in, ValueWriter &)
{
    return (transform.Get()->*method)(Number(in, TARN_VALUE_STREAM), Number(in, TARN_VALUE_FLAGS));
}

// The camera takes the place of the filter that the recorded attributes held.
HRESULT ModuleCalls::InitializeTransform(Values in, ValueWriter &)
{
    const auto recorded = in.Find(TARN_VALUE_ATTRIBUTES);
    if (!recorded || recorded->IsNull())
    {
        return transform->InitializeTransform(nullptr);
    }
    tarn_recording::Guid key;
    static_assert(sizeof key.bytes == sizeof(GUID));
    const GUID filter = MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL;
    std::memcpy(key.bytes.data(), &filter, sizeof filter);
    const ComPtr<IMFAttributes> attributes = MakeAttributes(recorded->Items());
    const auto held = recorded->Items().Attribute(key);
    if (held && !held->IsNull())
    {
        ThrowIfFailed(attributes->SetUnknown(filter, camera.Get()), "SetUnknown");
    }
    return transform->InitializeTransform(attributes.Get());
}

HRESULT ModuleCalls::GetStreamCount(Values in, ValueWriter &given)
{
    DWORD inputs = 0;
    DWORD outputCount = 0;
    const HRESULT result = transform->GetStreamCount(Out(in, 0, &inputs), Out(in, 1, &outputCount));
    given.U32(TARN_VALUE_COUNT, inputs);
    given.U32(TARN_VALUE_COUNT, outputCount);
    return result;
}

HRESULT ModuleCalls::GetStreamIds(Values in, ValueWriter &given)
{
    const std::array counts{std::min(Number(in, TARN_VALUE_COUNT), kMostStreams),
                            std::min(Number(in, TARN_VALUE_COUNT, 1), kMostStreams)};
    std::array<std::vector<DWORD>, 2> ids{std::vector<DWORD>(counts[0]), std::vector<DWORD>(counts[1])};
    const HRESULT result =
        transform->GetStreamIDs(counts[0], Out(in, 0, ids[0].data()), counts[1], Out(in, 1, ids[1].data()));
    for (const auto &some : ids)
    {
        const std::size_t begun = given.BeginList(TARN_VALUE_STREAMS);
        for (const DWORD id : some)
        {
            given.U32(TARN_VALUE_STREAM, id);
        }
        given.End(begun);
    }
    return result;
}

HRESULT ModuleCalls::GetPreferredState(Values in, ValueWriter &given)
{
    DeviceStreamState state{};
    ComPtr<IMFMediaType> type;
    const HRESULT result = transform->GetInputStreamPreferredState(Number(in, TARN_VALUE_STREAM), Out(in, 0, &state),
                                                                   Out(in, 1, type.GetAddressOf()));
    given.U32(TARN_VALUE_STATE, static_cast<std::uint32_t>(state));
    Put(given, TARN_VALUE_MEDIA_TYPE, type.Get());
    return result;
}

HRESULT ModuleCalls::ProcessMessage(Values in, ValueWriter &)
{
    return transform->ProcessMessage(static_cast<MFT_MESSAGE_TYPE>(Number(in, TARN_VALUE_MESSAGE)),
                                     static_cast<ULONG_PTR>(in.Unsigned(TARN_VALUE_PARAMETER).value_or(0)));
}

} // namespace tarn_replay
