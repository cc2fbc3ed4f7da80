#include "core/PassThroughDeviceMft.h"

#include <mutex>

#include "core/PassThroughTopology.h"
#include "base/Checked.h"
#include "trace/Guard.h"

using mft_utils::At;

namespace mft_core
{

namespace
{
constexpr TopologySlot::CheckTexts kCheckTexts{"currentTopologies.at(topoId)->Activate()",
                                               "currentTopologies.at(topoId)->Deactivate()"};
} // namespace

PassThroughDeviceMft::PassThroughDeviceMft(const std::string &objectName, const GUID &extensionUnitSet,
                                           ULONG extensionUnitControl, const wchar_t *recordingFolder)
    : Object(objectName), DeviceMft(objectName, extensionUnitSet, extensionUnitControl, recordingFolder)
{
}

PassThroughDeviceMft::~PassThroughDeviceMft() = default;

HRESULT PassThroughDeviceMft::InitializeTransform(IMFAttributes *pAttributes)
{
    return Initialize(pAttributes, [&]() -> HRESULT {
        CHECK_HR(DeviceMft::InitializeTransform(pAttributes));
        for (const auto &inputStream : inputStreams)
        {
            CHECK_HR(CreateOutputStream(inputStream));
        }
        const std::scoped_lock guard(stateChangeLock);
        for (const auto &outputStream : outputStreams)
        {
            currentTopologies.emplace_back(kCheckTexts).Add(outputStream);
        }
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
    return At(currentTopologies, outputStream->GetID())
        .Start(outputStream, nextMediaType, [&](std::shared_ptr<Topology> &topology) {
            return BuildTopology(outputStream, nextMediaType, topology);
        });
}

HRESULT PassThroughDeviceMft::StopOutputStream(const std::shared_ptr<OutputStream> &outputStream,
                                               IMFMediaType *nextMediaType)
{
    return At(currentTopologies, outputStream->GetID()).Stop(outputStream, nextMediaType);
}

HRESULT PassThroughDeviceMft::UninitializeMembers()
{
    for (TopologySlot &slot : currentTopologies)
    {
        slot.End();
    }
    CHECK_HR(DeviceMft::UninitializeMembers());
    return S_OK;
}

} // namespace mft_core
