// TarnDepthDeviceMft, second part: which topology serves the running outputs, and the changes between them.
#include "device/TarnDepthDeviceMft.h"

#include <mutex>
#include <utility>

#include "device/topologies/TarnDepthDepthTopology.h"
#include "device/topologies/TarnDepthIRTopology.h"
#include "device/topologies/TarnDepthZITopology.h"
#include "base/Checked.h"
#include "trace/Guard.h"

using mft_utils::At;
using std::make_shared;

namespace mft_core
{

namespace
{
bool IsRunning(const OutputStream &stream)
{
    return stream.GetState() == DeviceStreamState_Run;
}

HRESULT RestartPin(InputStream &pin, IMFMediaType *currentMediaType, IMFMediaType *nextMediaType)
{
    CHECK_HR_AS("inputStream->SetPreferredState(DeviceStreamState::DeviceStreamState_Stop, currentMediaType)",
                pin.SetPreferredState(DeviceStreamState_Stop, currentMediaType));
    CHECK_HR_AS("inputStream->SetPreferredState(DeviceStreamState::DeviceStreamState_Run, nextMediaType)",
                pin.SetPreferredState(DeviceStreamState_Run, nextMediaType));
    return S_OK;
}
} // namespace

HRESULT TarnDepthDeviceMft::BuildTopology(const std::shared_ptr<OutputStream> &outputStream,
                                          IMFMediaType *nextMediaType, std::shared_ptr<Topology> &topology)
{
    if (outputStream->GetID() == depthStreamIndex)
    {
        return BuildDepthTopology(nextMediaType, topology);
    }
    if (outputStream->GetID() == irStreamIndex)
    {
        return BuildIrTopology(nextMediaType, topology);
    }
    TRACE_ERROR("%s: no topology serves %s", GetName(), outputStream->GetName());
    return E_INVALIDARG;
}

HRESULT TarnDepthDeviceMft::BuildDepthTopology(IMFMediaType *nextMediaType, std::shared_ptr<Topology> &topology)
{
    const auto &inputStream = At(inputStreams, 0);
    const auto &depthOutStream = At(outputStreams, depthStreamIndex);
    const auto &irOutStream = At(outputStreams, irStreamIndex);
    const WorkQueueParameters workQueue = GetWorkQueueParameters();
    if (!IsRunning(*irOutStream))
    {
        const auto topo = make_shared<TarnDepthDepthTopology>(GetNameCopy(), framePrivacy, calibration);
        CHECK_HR_AS("topo->Init(inputStream, depthOutStream, nextMediaType, wqParams, confidenceMapCfgHandler)",
                    topo->Init(inputStream, depthOutStream, nextMediaType, workQueue, confidenceMapCfgHandler));
        topology = topo;
        return S_OK;
    }
    ComPtr<IMFMediaType> irOutMediaType;
    CHECK_HR(irOutStream->GetCurrentMediaType(irOutMediaType.GetAddressOf()));
    const auto topo = make_shared<TarnDepthZITopology>(GetNameCopy(), framePrivacy, calibration);
    CHECK_HR_AS("topo->Init(inputStream, depthOutStream, nextMediaType, irOutStream, irOutMediaType.Get(), wqParams)",
                topo->Init(inputStream, depthOutStream, nextMediaType, irOutStream, irOutMediaType.Get(), workQueue));
    topology = topo;
    return S_OK;
}

HRESULT TarnDepthDeviceMft::BuildIrTopology(IMFMediaType *nextMediaType, std::shared_ptr<Topology> &topology)
{
    const auto &inputStream = At(inputStreams, 0);
    const auto &depthOutStream = At(outputStreams, depthStreamIndex);
    const auto &irOutStream = At(outputStreams, irStreamIndex);
    const WorkQueueParameters workQueue = GetWorkQueueParameters();
    if (!IsRunning(*depthOutStream))
    {
        const auto topo = make_shared<TarnDepthIRTopology>(GetNameCopy(), faceAuthKsPropertyHandler->faceAuthMode,
                                                           depthPresetsController, framePrivacy, calibration);
        CHECK_HR_AS("topo->Init(inputStream, irOutStream, nextMediaType, wqParams)",
                    topo->Init(inputStream, irOutStream, nextMediaType, workQueue));
        topology = topo;
        return S_OK;
    }
    ComPtr<IMFMediaType> depthOutMediaType;
    CHECK_HR(depthOutStream->GetCurrentMediaType(depthOutMediaType.GetAddressOf()));
    const auto topo = make_shared<TarnDepthZITopology>(GetNameCopy(), framePrivacy, calibration);
    CHECK_HR_AS(
        "topo->Init(inputStream, depthOutStream, depthOutMediaType.Get(), irOutStream, nextMediaType, wqParams)",
        topo->Init(inputStream, depthOutStream, depthOutMediaType.Get(), irOutStream, nextMediaType, workQueue));
    topology = topo;
    return S_OK;
}

// Depth alone comes in the camera's samples; which of the two it is changes while it runs.
bool TarnDepthDeviceMft::Allocates(const OutputStream & /*outputStream*/) const
{
    return true;
}

HRESULT TarnDepthDeviceMft::StartOutputStream(const std::shared_ptr<OutputStream> &outputStream,
                                              IMFMediaType *nextMediaType)
{
    // The new topology is built before anything that runs is touched: one that cannot be built costs nothing.
    std::shared_ptr<Topology> topology;
    const bool couldChangeMode = faceAuthKsPropertyHandler->AllowModeChange(false); // the topology reads the mode
    const HRESULT built = mft_utils::Guarded([&] { return BuildTopology(outputStream, nextMediaType, topology); });
    if (FAILED(built))
    {
        faceAuthKsPropertyHandler->AllowModeChange(couldChangeMode);
    }
    CHECK_HR_AS("BuildTopology(outputStream, nextMediaType, topology)", built);
    framePrivacy->AskCamera(filterKsControl.Get()); // before the first frame, which may not tell
    const HRESULT result =
        mft_utils::Guarded([&]() -> HRESULT { return RunTopology(outputStream, nextMediaType, topology); });
    if (FAILED(result))
    {
        // The old topology is gone and the new one does not run: say so rather than stall.
        StopAllOutputs();
    }
    return result;
}

HRESULT TarnDepthDeviceMft::RunTopology(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType,
                                        const std::shared_ptr<Topology> &topology)
{
    CHECK_HR_AS("currentTopology->Deactivate()", EndCurrentTopology());
    if (FAILED(depthPresetsController->RestoreWantedPreset()))
    {
        TRACE_ERROR("%s: goes on with another preset than the wanted one", GetName());
    }
    if (IsRunning(*outputStream))
    {
        CHECK_HR(outputStream->Flush()); // what is queued has the former media type
    }
    CHECK_HR(outputStream->SetCurrentMediaType(nextMediaType));
    CHECK_HR(outputStream->SetState(DeviceStreamState_Run));
    currentTopology = topology;
    CHECK_HR(currentTopology->Activate());
    return S_OK;
}

HRESULT TarnDepthDeviceMft::StopOutputStream(const std::shared_ptr<OutputStream> &outputStream,
                                             IMFMediaType *nextMediaType)
{
    CHECK_HR(outputStream->SetState(DeviceStreamState_Stop));
    CHECK_HR(outputStream->SetCurrentMediaType(nextMediaType));
    bool anyRuns = false;
    for (const auto &stream : outputStreams)
    {
        if (IsRunning(*stream))
        {
            TRACE_INFO("%s: output %u (%s) still runs", GetName(), stream->GetID(), stream->GetName());
            anyRuns = true;
        }
    }
    if (!anyRuns && currentTopology)
    {
        const HRESULT deactivated = EndCurrentTopology();
        faceAuthKsPropertyHandler->AllowModeChange(true); // nothing runs, however it ended
        CHECK_HR_AS("currentTopology->Deactivate()", deactivated);
    }
    return S_OK;
}

HRESULT TarnDepthDeviceMft::EndCurrentTopology()
{
    const std::shared_ptr<Topology> ending = std::exchange(currentTopology, nullptr);
    return ending ? ending->Deactivate() : S_OK;
}

void TarnDepthDeviceMft::StopAllOutputs()
{
    if (FAILED(EndCurrentTopology()))
    {
        TRACE_ERROR("%s: the topology did not deactivate cleanly", GetName());
    }
    for (const auto &stream : outputStreams)
    {
        if (IsRunning(*stream))
        {
            TRACE_ERROR("%s: output %u (%s) is stopped", GetName(), stream->GetID(), stream->GetName());
            stream->SetState(DeviceStreamState_Stop);
        }
    }
    faceAuthKsPropertyHandler->AllowModeChange(true);
}

HRESULT TarnDepthDeviceMft::OnConfigConfidenceMap(bool enable)
{
    // An application's thread: no output may start or stop meanwhile.
    const std::scoped_lock guard(stateChangeLock);
    const auto &inputStream = At(inputStreams, 0);
    if (IsRunning(*At(outputStreams, irStreamIndex)))
    {
        TRACE_ERROR("%s: no confidence map while infrared runs", GetName());
        return E_UNEXPECTED;
    }
    if (!IsRunning(*At(outputStreams, depthStreamIndex)))
    {
        return S_OK; // the next depth topology asks
    }
    if (dynamic_cast<TarnDepthDepthTopology *>(currentTopology.get()) == nullptr)
    {
        CHECK_HR(EndCombinedTopology());
        return S_OK; // built for the state to come
    }
    ComPtr<IMFMediaType> currentMediaType;
    CHECK_HR_AS("inputStream->GetCurrentMediaType(currentMediaType.GetAddressOf())",
                WantedInputMediaType(currentMediaType.GetAddressOf()));
    ComPtr<IMFMediaType> requiredMediaType;
    CHECK_HR(MFCreateMediaType(requiredMediaType.GetAddressOf()));
    CHECK_HR(currentMediaType->CopyAllItems(requiredMediaType.Get()));
    CHECK_HR_AS(enable ? "requiredMediaType->SetGUID(MF_MT_SUBTYPE, CUSTOM_GUID_KELP_ZC)"
                       : "requiredMediaType->SetGUID(MF_MT_SUBTYPE, CUSTOM_GUID_KELP_Z)",
                requiredMediaType->SetGUID(MF_MT_SUBTYPE, TarnDepthDepthTopology::InputSubtype(enable)));
    ComPtr<IMFMediaType> nextMediaType;
    CHECK_HR_AS("inputStream->FindMatchingMediaType(nextMediaType.GetAddressOf(), requiredMediaType)",
                inputStream->FindMatchingMediaType(nextMediaType.GetAddressOf(), requiredMediaType.Get()));
    const HRESULT result =
        mft_utils::Guarded([&] { return RestartPin(*inputStream, currentMediaType.Get(), nextMediaType.Get()); });
    if (FAILED(result))
    {
        // Depth runs on as before; without this the pipeline may have been told half and leave the pin stopped.
        inputStream->SetPreferredState(DeviceStreamState_Run, currentMediaType.Get());
    }
    return result;
}

// Infrared has stopped and left depth the topology of both, which takes no other format. Without a format for the state
// to come nothing changes.
HRESULT TarnDepthDeviceMft::EndCombinedTopology()
{
    const auto &depthOutStream = At(outputStreams, depthStreamIndex);
    ComPtr<IMFMediaType> depthOutMediaType;
    CHECK_HR(depthOutStream->GetCurrentMediaType(depthOutMediaType.GetAddressOf()));
    CHECK_HR(StartWithListener(depthOutStream, depthOutMediaType.Get(), DeviceStreamState_Run));
    return S_OK;
}

// What the pin was last asked for; the pipeline may not have got round to it yet.
HRESULT TarnDepthDeviceMft::WantedInputMediaType(IMFMediaType **ppMediaType) const
{
    const auto &inputStream = At(inputStreams, 0);
    DeviceStreamState preferredState = DeviceStreamState_Stop;
    ComPtr<IMFMediaType> preferredMt;
    CHECK_HR(inputStream->GetPreferredState(&preferredState, preferredMt.GetAddressOf()));
    if (preferredState == DeviceStreamState_Run && preferredMt)
    {
        *ppMediaType = preferredMt.Detach();
        return S_OK;
    }
    CHECK_HR(inputStream->GetCurrentMediaType(ppMediaType));
    return S_OK;
}

} // namespace mft_core
