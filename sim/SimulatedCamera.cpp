#include "sim/SimulatedCamera.h"

#include <algorithm>

#include "sim/CapturePump.h"
#include "sim/FaultInjector.h"
#include "sim/GeneratedScene.h"
#include "sim/KsFilter.h"
#include "sim/SimulatedStream.h"

namespace tarn_sim
{

SimulatedCamera::SimulatedCamera(CameraConfiguration cameraConfiguration)
    : configuration(std::move(cameraConfiguration)), faults(std::make_shared<FaultInjector>()),
      controls(std::make_shared<CameraControls>(configuration.extensionUnitSet)),
      ksFilter(std::make_unique<KsFilter>(configuration, controls, faults)),
      attributes(MakeFilterAttributes(configuration))
{
    auto source = configuration.frameSource ? configuration.frameSource : std::make_shared<GeneratedScene>();
    pump = std::make_shared<CapturePump>(configuration, std::move(source), controls, faults);
    for (const auto &pin : configuration.pins)
    {
        pinAttributes.push_back(MakePinAttributes(pin));
    }
}

SimulatedCamera::~SimulatedCamera()
{
    pump->StopAll();
}

HRESULT SimulatedCamera::SetPinState(DWORD streamId, DeviceStreamState state, IMFMediaType *type)
{
    const PinConfiguration *const pin = FindPin(streamId);
    if (pin == nullptr)
    {
        return MF_E_INVALIDSTREAMNUMBER;
    }
    if (state == DeviceStreamState_Run && type != nullptr && !Offers(*pin, type))
    {
        return MF_E_INVALIDTYPE;
    }
    return pump->SetPinState(streamId, state, type);
}

DeviceStreamState SimulatedCamera::GetPinState(DWORD streamId) const
{
    return pump->GetPinState(streamId);
}

void SimulatedCamera::SetFrameSink(IFrameSink *sink)
{
    pump->SetFrameSink(sink);
}

HRESULT SimulatedCamera::Step(DWORD streamId, std::uint32_t frames, std::chrono::milliseconds limit)
{
    return pump->Step(streamId, frames, limit);
}

HRESULT SimulatedCamera::WaitForFrames(DWORD streamId, std::uint64_t total, std::chrono::milliseconds limit)
{
    return pump->WaitForFrames(streamId, total, limit);
}

HRESULT SimulatedCamera::WaitForReturnOfFrames(std::chrono::milliseconds limit)
{
    return pump->WaitForReturnOfFrames(limit);
}

void SimulatedCamera::StopAll()
{
    pump->StopAll();
}

PinStatistics SimulatedCamera::Statistics(DWORD streamId) const
{
    return pump->Statistics(streamId);
}

std::uint32_t SimulatedCamera::SignalAutoUpdate()
{
    return ksFilter->SignalAutoUpdate();
}

std::uint32_t SimulatedCamera::EventListenerCount() const
{
    return ksFilter->EventListenerCount();
}

void SimulatedCamera::SetPrivacy(bool on)
{
    controls->privacy = on;
}

bool SimulatedCamera::Privacy() const
{
    return controls->privacy;
}

void SimulatedCamera::SetConfidenceSuppressed(bool suppressed)
{
    controls->confidenceSuppressed = suppressed;
}

void SimulatedCamera::SetErrorCode(std::uint8_t code)
{
    controls->SetErrorCode(code);
}

std::uint8_t SimulatedCamera::ControlValue(ULONG controlId) const
{
    ByteControl control;
    return controls->Find(controlId, control) ? control.value : std::uint8_t{0};
}

FirmwareState SimulatedCamera::FirmwareNow() const
{
    return ksFilter->FirmwareNow();
}

void SimulatedCamera::SetFaultPlan(const FaultPlan &plan)
{
    faults->SetPlan(plan);
}

std::uint64_t SimulatedCamera::Calls(Method method) const
{
    return counters.Calls(method);
}

std::vector<KsCall> SimulatedCamera::KsTraffic() const
{
    return ksFilter->Traffic();
}

void SimulatedCamera::ClearKsTraffic()
{
    ksFilter->ClearTraffic();
}

HRESULT SimulatedCamera::KsProperty(PKSPROPERTY property, ULONG length, void *data, ULONG dataLength,
                                    ULONG *bytesReturned)
{
    counters.Count(Method::KsProperty);
    return ksFilter->Property(property, length, data, dataLength, bytesReturned);
}

HRESULT SimulatedCamera::KsMethod(PKSMETHOD method, ULONG length, void *data, ULONG dataLength, ULONG *bytesReturned)
{
    counters.Count(Method::KsMethod);
    return ksFilter->Method(method, length, data, dataLength, bytesReturned);
}

HRESULT SimulatedCamera::KsEvent(PKSEVENT event, ULONG length, void *data, ULONG dataLength, ULONG *bytesReturned)
{
    counters.Count(Method::KsEvent);
    return ksFilter->Event(event, length, data, dataLength, bytesReturned);
}

HRESULT SimulatedCamera::MFTGetStreamCount(DWORD *inputs, DWORD *outputs)
{
    const HRESULT fault = CountTransformCall(Method::GetStreamCount);
    if (FAILED(fault))
    {
        return fault;
    }
    if (inputs == nullptr || outputs == nullptr)
    {
        return E_POINTER;
    }
    *inputs = configuration.inputPinCount;
    *outputs = static_cast<DWORD>(configuration.pins.size());
    return S_OK;
}

HRESULT SimulatedCamera::MFTGetStreamIDs(DWORD inSize, DWORD *inIds, DWORD outSize, DWORD *outIds)
{
    const HRESULT fault = CountTransformCall(Method::GetStreamIDs);
    if (FAILED(fault))
    {
        return fault;
    }
    if (configuration.getStreamIdsNotImplemented)
    {
        return E_NOTIMPL;
    }
    if (inSize < configuration.inputPinCount || outSize < configuration.pins.size())
    {
        return MF_E_BUFFERTOOSMALL;
    }
    if ((inIds == nullptr && configuration.inputPinCount > 0) || outIds == nullptr)
    {
        return E_POINTER;
    }
    for (DWORD i = 0; i < configuration.inputPinCount; ++i)
    {
        inIds[i] = i;
    }
    for (std::size_t i = 0; i < configuration.pins.size(); ++i)
    {
        outIds[i] = configuration.pins[i].streamId;
    }
    return S_OK;
}

HRESULT SimulatedCamera::MFTGetOutputStreamInfo(DWORD id, MFT_OUTPUT_STREAM_INFO *info)
{
    const HRESULT fault = CountTransformCall(Method::GetOutputStreamInfo);
    if (FAILED(fault))
    {
        return fault;
    }
    if (info == nullptr)
    {
        return E_POINTER;
    }
    *info = {};
    if (FindPin(id) == nullptr)
    {
        return MF_E_INVALIDSTREAMNUMBER;
    }
    info->dwFlags = MFT_OUTPUT_STREAM_WHOLE_SAMPLES | MFT_OUTPUT_STREAM_PROVIDES_SAMPLES;
    return S_OK;
}

HRESULT SimulatedCamera::GetAttributes(IMFAttributes **store)
{
    const HRESULT fault = CountTransformCall(Method::GetAttributes);
    if (FAILED(fault))
    {
        return fault;
    }
    return store == nullptr ? E_POINTER : attributes.CopyTo(store);
}

HRESULT SimulatedCamera::GetOutputStreamAttributes(DWORD id, IMFAttributes **store)
{
    const HRESULT fault = CountTransformCall(Method::GetOutputStreamAttributes);
    if (FAILED(fault))
    {
        return fault;
    }
    if (store == nullptr)
    {
        return E_POINTER;
    }
    *store = nullptr;
    const PinConfiguration *const pin = FindPin(id);
    if (pin == nullptr)
    {
        return MF_E_INVALIDSTREAMNUMBER;
    }
    return pinAttributes[static_cast<std::size_t>(pin - configuration.pins.data())].CopyTo(store);
}

HRESULT SimulatedCamera::MFTGetOutputAvailableType(DWORD id, DWORD index, IMFMediaType **type)
{
    const HRESULT fault = CountTransformCall(Method::GetOutputAvailableType);
    if (FAILED(fault))
    {
        return fault;
    }
    if (type == nullptr)
    {
        return E_POINTER;
    }
    *type = nullptr;
    const PinConfiguration *const pin = FindPin(id);
    if (pin == nullptr)
    {
        return MF_E_INVALIDSTREAMNUMBER;
    }
    return index < pin->types.size() ? CopyType(pin->types[index].Get(), type) : MF_E_NO_MORE_TYPES;
}

HRESULT SimulatedCamera::MFTGetOutputCurrentType(DWORD id, IMFMediaType **type)
{
    const HRESULT fault = CountTransformCall(Method::GetOutputCurrentType);
    if (FAILED(fault))
    {
        return fault;
    }
    if (type == nullptr)
    {
        return E_POINTER;
    }
    *type = nullptr;
    ComPtr<IMFMediaType> current;
    const HRESULT result = pump->GetPinType(id, &current);
    return FAILED(result) ? result : CopyType(current.Get(), type);
}

HRESULT SimulatedCamera::MFTGetStreamLimits(DWORD *, DWORD *, DWORD *, DWORD *)
{
    return OtherTransformCall();
}

HRESULT SimulatedCamera::MFTGetInputStreamInfo(DWORD, MFT_INPUT_STREAM_INFO *)
{
    return OtherTransformCall();
}

HRESULT SimulatedCamera::GetInputStreamAttributes(DWORD, IMFAttributes **)
{
    return OtherTransformCall();
}

HRESULT SimulatedCamera::MFTDeleteInputStream(DWORD)
{
    return OtherTransformCall();
}

HRESULT SimulatedCamera::MFTAddInputStreams(DWORD, DWORD *)
{
    return OtherTransformCall();
}

HRESULT SimulatedCamera::MFTGetInputAvailableType(DWORD, DWORD, IMFMediaType **)
{
    return OtherTransformCall();
}

HRESULT SimulatedCamera::MFTSetInputType(DWORD, IMFMediaType *, DWORD)
{
    return OtherTransformCall();
}

HRESULT SimulatedCamera::MFTSetOutputType(DWORD, IMFMediaType *, DWORD)
{
    return OtherTransformCall();
}

HRESULT SimulatedCamera::MFTGetInputCurrentType(DWORD, IMFMediaType **)
{
    return OtherTransformCall();
}

HRESULT SimulatedCamera::MFTGetInputStatus(DWORD, DWORD *)
{
    return OtherTransformCall();
}

HRESULT SimulatedCamera::MFTGetOutputStatus(DWORD *)
{
    return OtherTransformCall();
}

HRESULT SimulatedCamera::MFTSetOutputBounds(LONGLONG, LONGLONG)
{
    return OtherTransformCall();
}

HRESULT SimulatedCamera::MFTProcessEvent(DWORD, IMFMediaEvent *)
{
    return OtherTransformCall();
}

HRESULT SimulatedCamera::MFTProcessMessage(MFT_MESSAGE_TYPE, ULONG_PTR)
{
    return OtherTransformCall();
}

HRESULT SimulatedCamera::MFTProcessInput(DWORD, IMFSample *, DWORD)
{
    return OtherTransformCall();
}

HRESULT SimulatedCamera::MFTProcessOutput(DWORD, DWORD, MFT_OUTPUT_DATA_BUFFER *, DWORD *)
{
    return OtherTransformCall();
}

HRESULT SimulatedCamera::get_NumNodes(DWORD *count)
{
    const HRESULT fault = CountTopologyCall(Method::GetNumNodes);
    if (FAILED(fault))
    {
        return fault;
    }
    if (count == nullptr)
    {
        return E_POINTER;
    }
    *count = static_cast<DWORD>(configuration.nodes.size());
    return S_OK;
}

HRESULT SimulatedCamera::get_NodeType(DWORD node, GUID *type)
{
    const HRESULT fault = CountTopologyCall(Method::GetNodeType);
    if (FAILED(fault))
    {
        return fault;
    }
    if (type == nullptr)
    {
        return E_POINTER;
    }
    *type = GUID{};
    if (node >= configuration.nodes.size())
    {
        return E_INVALIDARG;
    }
    *type = configuration.nodes[node];
    return S_OK;
}

HRESULT SimulatedCamera::get_NumCategories(DWORD *)
{
    return OtherTopologyCall();
}

HRESULT SimulatedCamera::get_Category(DWORD, GUID *)
{
    return OtherTopologyCall();
}

HRESULT SimulatedCamera::get_NumConnections(DWORD *)
{
    return OtherTopologyCall();
}

HRESULT SimulatedCamera::get_ConnectionInfo(DWORD, KSTOPOLOGY_CONNECTION *)
{
    return OtherTopologyCall();
}

HRESULT SimulatedCamera::get_NodeName(DWORD, WCHAR *, DWORD, DWORD *)
{
    return OtherTopologyCall();
}

HRESULT SimulatedCamera::CreateNodeInstance(DWORD, REFIID, void **)
{
    return OtherTopologyCall();
}

HRESULT SimulatedCamera::CountTransformCall(Method method)
{
    counters.Count(method);
    return faults->OnTransformCall();
}

HRESULT SimulatedCamera::OtherTransformCall()
{
    const HRESULT fault = CountTransformCall(Method::OtherTransform);
    return FAILED(fault) ? fault : E_NOTIMPL;
}

HRESULT SimulatedCamera::CountTopologyCall(Method method)
{
    counters.Count(method);
    return faults->OnTopologyCall();
}

HRESULT SimulatedCamera::OtherTopologyCall()
{
    const HRESULT fault = CountTopologyCall(Method::OtherTopology);
    return FAILED(fault) ? fault : E_NOTIMPL;
}

const PinConfiguration *SimulatedCamera::FindPin(DWORD streamId) const
{
    const auto found = std::ranges::find(configuration.pins, streamId, &PinConfiguration::streamId);
    return found == configuration.pins.end() ? nullptr : &*found;
}

} // namespace tarn_sim
