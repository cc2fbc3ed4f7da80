#include "core/PassThroughDeviceMft.h"

#include <mutex>
#include <utility>

#include "core/PassThroughTopology.h"
#include "base/Checked.h"
#include "trace/Guard.h"

using mft_utils::At;

namespace mft_core
{

PassThroughDeviceMft::PassThroughDeviceMft(const std::string &objectName, const GUID &extensionUnitSet,
                                           ULONG extensionUnitControl)
    : Object(objectName), DeviceMft(objectName, extensionUnitSet, extensionUnitControl)
{
}

PassThroughDeviceMft::~PassThroughDeviceMft() = default;

HRESULT PassThroughDeviceMft::InitializeTransform(IMFAttributes *pAttributes)
{
    return mft_utils::EntryPoint(GetName(), [&]() -> HRESULT {
        CHECK_HR(DeviceMft::InitializeTransform(pAttributes));
        for (const auto &inputStream : inputStreams)
        {
            CHECK_HR(CreateOutputStream(inputStream));
        }
        const std::scoped_lock guard(stateChangeLock);
        currentTopologies.resize(outputStreams.size());
        return S_OK;
    });
}

std::shared_ptr<InputStream> PassThroughDeviceMft::InputStreamOf(const OutputStream &outputStream) const
{
    return At(inputStreams, outputStream.GetID());
}

HRESULT PassThroughDeviceMft::BuildTopology(const std::shared_ptr<OutputStream> &outputStream,
                                            IMFMediaType *nextMediaType, std::shared_ptr<Topology> &topology)
{
    const std::shared_ptr<InputStream> inputStream = InputStreamOf(*outputStream);
    CHECK_POINTER(inputStream);
    const auto topo = std::make_shared<PassThroughTopology>();
    CHECK_HR(topo->Init(inputStream, outputStream, nextMediaType));
    topology = topo;
    return S_OK;
}

HRESULT PassThroughDeviceMft::StartOutputStream(const std::shared_ptr<OutputStream> &outputStream,
                                                IMFMediaType *nextMediaType)
{
    // Refused before anything that runs is touched.
    CHECK_HR_AS("outputStream->IsSupported(nextMediaType)",
                outputStream->IsSupported(nextMediaType) ? S_OK : MF_E_INVALIDMEDIATYPE);
    const HRESULT result = mft_utils::Guarded([&]() -> HRESULT {
        stateChangeLock.AssertHeld();
        return RunOutputStream(outputStream, nextMediaType);
    });
    if (FAILED(result))
    {
        // The old topology is gone and the new one does not run: say so rather than stall.
        EndTopology(At(currentTopologies, outputStream->GetID()));
        outputStream->SetState(DeviceStreamState_Stop);
    }
    return result;
}

HRESULT PassThroughDeviceMft::RunOutputStream(const std::shared_ptr<OutputStream> &outputStream,
                                              IMFMediaType *nextMediaType)
{
    std::shared_ptr<Topology> &slot = At(currentTopologies, outputStream->GetID());
    if (slot)
    {
        CHECK_HR_AS("currentTopologies.at(topoId)->Deactivate()", EndTopology(slot));
        CHECK_HR(outputStream->Flush()); // what is queued has the former media type
    }
    std::shared_ptr<Topology> topology;
    CHECK_HR(BuildTopology(outputStream, nextMediaType, topology));
    slot = topology;
    CHECK_HR(outputStream->SetCurrentMediaType(nextMediaType));
    CHECK_HR(outputStream->SetState(DeviceStreamState_Run));
    CHECK_HR_AS("currentTopologies.at(topoId)->Activate()", slot->Activate());
    return S_OK;
}

HRESULT PassThroughDeviceMft::StopOutputStream(const std::shared_ptr<OutputStream> &outputStream,
                                               IMFMediaType *nextMediaType)
{
    CHECK_HR(outputStream->SetState(DeviceStreamState_Stop));
    CHECK_HR(outputStream->SetCurrentMediaType(nextMediaType));
    CHECK_HR_AS("currentTopologies.at(topoId)->Deactivate()",
                EndTopology(At(currentTopologies, outputStream->GetID())));
    return S_OK;
}

HRESULT PassThroughDeviceMft::EndTopology(std::shared_ptr<Topology> &topology)
{
    const std::shared_ptr<Topology> ending = std::exchange(topology, nullptr);
    return ending ? ending->Deactivate() : S_OK;
}

HRESULT PassThroughDeviceMft::UninitializeMembers()
{
    for (std::shared_ptr<Topology> &topology : currentTopologies)
    {
        if (FAILED(EndTopology(topology)))
        {
            TRACE_ERROR("%s: a topology did not deactivate cleanly", GetName());
        }
    }
    CHECK_HR(DeviceMft::UninitializeMembers());
    return S_OK;
}

} // namespace mft_core
