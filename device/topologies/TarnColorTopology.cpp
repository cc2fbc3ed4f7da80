#include "device/topologies/TarnColorTopology.h"

#include <functional>
#include <utility>

#include "core/NodeChain.h"
#include "core/TopologySettings.h"
#include "device/nodes/TarnCalibrationTopologyNode.h"
#include "device/nodes/TarnColorPrivacyTopologyNode.h"
#include "device/nodes/TarnDepthMetadataTopologyNode.h"
#include "trace/Check.h"

namespace mft_core
{

TarnColorTopology::TarnColorTopology(const std::string &ownerName, std::shared_ptr<FramePrivacy> framePrivacy,
                                     std::shared_ptr<const TarnCalibration> cameraCalibration)
    : Topology(ownerName + " Color Topology"), privacyState(std::move(framePrivacy)),
      calibrationTable(std::move(cameraCalibration))
{
}

HRESULT TarnColorTopology::Init(std::shared_ptr<InputStream> inputStream, std::shared_ptr<OutputStream> outputStream,
                                IMFMediaType *mediaType)
{
    CHECK_POINTER(calibrationTable);
    const TopologySettings settings{inputStream, {{outputStream, mediaType}}};
    CHECK_HR(settings.Validate());
    UINT32 width = 0;
    UINT32 height = 0;
    if (FAILED(MFGetAttributeSize(mediaType, MF_MT_FRAME_SIZE, &width, &height)))
    {
        TRACE_INFO("%s: a media type without frame size, its samples carry no intrinsics", GetName());
    }

    const auto first =
        NodeChain()
            .Then<TarnColorPrivacyTopologyNode>(privacyState, mediaType)
            .Then<TarnCalibrationTopologyNode>(std::cref(*outputStream),
                                               calibrationTable->CreateFrameIntrinsics(FrameGeometry(width, height)))
            .Then<TarnDepthMetadataTopologyNode>()
            .EndIn(AddOutput(outputStream));
    AddConnection(std::move(inputStream), first, mediaType);
    return S_OK;
}

} // namespace mft_core
