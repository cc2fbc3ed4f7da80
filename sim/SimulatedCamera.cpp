#include "sim/SimulatedCamera.h"

#include <algorithm>

#include "sim/GeneratedScene.h"
#include "sim/SimulatedStream.h"

namespace tarn_sim
{

SimulatedCamera::SimulatedCamera(CameraConfiguration cameraConfiguration)
    : configuration(std::move(cameraConfiguration)),
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
    return TransformCall(Method::GetStreamCount, [&]() -> HRESULT {
        if (inputs == nullptr || outputs == nullptr)
        {
            return E_POINTER;
        }
        *inputs = configuration.inputPinCount;
        *outputs = static_cast<DWORD>(configuration.pins.size());
        return S_OK;
    });
}

HRESULT SimulatedCamera::MFTGetStreamIDs(DWORD inSize, DWORD *inIds, DWORD outSize, DWORD *outIds)
{
    return TransformCall(Method::GetStreamIDs, [&]() -> HRESULT {
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
        std::ranges::transform(configuration.pins, outIds, &PinConfiguration::streamId);
        return S_OK;
    });
}

template <class T, class Answer>
HRESULT SimulatedCamera::PinCall(Method method, DWORD id, T *result, const Answer &answer)
{
    return TransformCall(method, [&]() -> HRESULT {
        if (result == nullptr)
        {
            return E_POINTER;
        }
        *result = {};
        const auto pin = std::ranges::find(configuration.pins, id, &PinConfiguration::streamId);
        return pin == configuration.pins.end() ? MF_E_INVALIDSTREAMNUMBER : answer(*pin);
    });
}

HRESULT SimulatedCamera::MFTGetOutputStreamInfo(DWORD id, MFT_OUTPUT_STREAM_INFO *info)
{
    return PinCall(Method::GetOutputStreamInfo, id, info, [&](const PinConfiguration &) {
        info->dwFlags = MFT_OUTPUT_STREAM_WHOLE_SAMPLES | MFT_OUTPUT_STREAM_PROVIDES_SAMPLES;
        return S_OK;
    });
}

HRESULT SimulatedCamera::GetAttributes(IMFAttributes **store)
{
    return TransformCall(Method::GetAttributes,
                         [&]() -> HRESULT { return store == nullptr ? E_POINTER : attributes.CopyTo(store); });
}

HRESULT SimulatedCamera::GetOutputStreamAttributes(DWORD id, IMFAttributes **store)
{
    return PinCall(Method::GetOutputStreamAttributes, id, store, [&](const PinConfiguration &pin) {
        return pinAttributes[static_cast<std::size_t>(&pin - configuration.pins.data())].CopyTo(store);
    });
}

HRESULT SimulatedCamera::MFTGetOutputAvailableType(DWORD id, DWORD index, IMFMediaType **type)
{
    return PinCall(Method::GetOutputAvailableType, id, type, [&](const PinConfiguration &pin) {
        return index < pin.types.size() ? CopyType(pin.types[index].Get(), type) : MF_E_NO_MORE_TYPES;
    });
}

HRESULT SimulatedCamera::MFTGetOutputCurrentType(DWORD id, IMFMediaType **type)
{
    return PinCall(Method::GetOutputCurrentType, id, type, [&](const PinConfiguration &pin) {
        ComPtr<IMFMediaType> current;
        const HRESULT result = pump->GetPinType(pin.streamId, &current);
        return FAILED(result) ? result : CopyType(current.Get(), type);
    });
}

HRESULT SimulatedCamera::get_NumNodes(DWORD *count)
{
    return TopologyCall(Method::GetNumNodes, [&]() -> HRESULT {
        if (count == nullptr)
        {
            return E_POINTER;
        }
        *count = static_cast<DWORD>(configuration.nodes.size());
        return S_OK;
    });
}

HRESULT SimulatedCamera::get_NodeType(DWORD node, GUID *type)
{
    return TopologyCall(Method::GetNodeType, [&]() -> HRESULT {
        if (type == nullptr)
        {
            return E_POINTER;
        }
        const bool isNode = node < configuration.nodes.size();
        *type = isNode ? configuration.nodes[node] : GUID{};
        return isNode ? S_OK : E_INVALIDARG;
    });
}

} // namespace tarn_sim
