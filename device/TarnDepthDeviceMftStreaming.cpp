// TarnDepthDeviceMft, second part: which topology serves the running outputs, and the changes between them.
#include "device/TarnDepthDeviceMft.h"

#include <mutex>

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

const char *StateName(bool enabled) noexcept
{
    return enabled ? "Enabled" : "Disabled";
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
        CHECK_HR_AS(
            "topo->Init(inputStream, depthOutStream, nextMediaType, wqParams, confidenceMapCfgHandler)",
            topo->Init(inputStream, depthOutStream, nextMediaType, workQueue, confidenceMap, nextConfidenceMap));
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
        const auto topo = make_shared<TarnDepthIRTopology>(GetNameCopy(), faceAuth->faceAuthMode,
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
    faceAuth->AllowModeChange(false); // the topology reads the mode
    const HRESULT started = mft_utils::Guarded([&] {
        stateChangeLock.AssertHeld();
        return currentTopology.Start(
            outputStream, nextMediaType,
            [&](std::shared_ptr<Topology> &topology) {
                stateChangeLock.AssertHeld();
                const HRESULT built = BuildTopology(outputStream, nextMediaType, topology);
                if (SUCCEEDED(built))
                {
                    framePrivacy->AskCamera(filterKsControl.Get()); // before the first frame, which may not tell
                }
                return built;
            },
            [&] { RestoreWantedPreset(); });
    });
    if (FAILED(started) && !currentTopology.Runs())
    {
        faceAuth->AllowModeChange(true);
    }
    return started;
}

void TarnDepthDeviceMft::RestoreWantedPreset()
{
    if (FAILED(depthPresetsController->RestoreWantedPreset()))
    {
        TRACE_ERROR("%s: goes on with another preset than the wanted one", GetName());
    }
}

HRESULT TarnDepthDeviceMft::StopOutputStream(const std::shared_ptr<OutputStream> &outputStream,
                                             IMFMediaType *nextMediaType)
{
    const bool ran = currentTopology.Runs();
    const HRESULT stopped = currentTopology.Stop(outputStream, nextMediaType);
    if (ran && !currentTopology.Runs())
    {
        faceAuth->AllowModeChange(true); // however it ended
    }
    return stopped;
}

HRESULT TarnDepthDeviceMft::OnConfigConfidenceMap(bool enable)
{
    const std::scoped_lock guard(stateChangeLock); // no output may start or stop meanwhile
    recorder.ChangeBegins();
    const bool previous = confidenceMap->IsEnabled();
    if (enable == previous)
    {
        TRACE_INFO("confidence map stays %s", StateName(previous));
        return S_OK;
    }
    TRACE_INFO("confidence map: %s -> %s", StateName(previous), StateName(enable));
    nextConfidenceMap = enable;
    const HRESULT applied = mft_utils::Guarded([&] {
        stateChangeLock.AssertHeld();
        return ApplyConfidenceMap(enable);
    });
    if (FAILED(applied))
    {
        nextConfidenceMap = previous;
        return applied;
    }
    confidenceMap->Set(enable);
    return S_OK;
}

HRESULT TarnDepthDeviceMft::ApplyConfidenceMap(bool enable)
{
    const auto &irOutStream = At(outputStreams, irStreamIndex);
    if (IsRunning(*irOutStream))
    {
        TRACE_ERROR("%s: no confidence map while infrared runs", GetName());
        return E_UNEXPECTED;
    }
    if (!IsRunning(*At(outputStreams, depthStreamIndex)))
    {
        return S_OK; // the next depth topology is built for it
    }
    return currentTopology.Serves(*irOutStream) ? EndCombinedTopology() : RestartForConfidenceMap(enable);
}

HRESULT TarnDepthDeviceMft::RestartForConfidenceMap(bool enable)
{
    const auto &inputStream = At(inputStreams, 0);
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
