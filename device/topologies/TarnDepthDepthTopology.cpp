#include "device/topologies/TarnDepthDepthTopology.h"

#include <functional>
#include <utility>

#include "core/AsyncTopologyNode.h"
#include "core/NodeChain.h"
#include "core/TopologySettings.h"
#include "device/topologies/ReliableDepth.h"
#include "device/nodes/TarnCalibrationTopologyNode.h"
#include "device/nodes/TarnConfidenceMapTopologyNode.h"
#include "device/nodes/TarnDepthMetadataTopologyNode.h"
#include "device/nodes/TarnDepthPrivacyTopologyNode.h"
#include "device/nodes/TarnFrameFormatTopologyNode.h"
#include "tarn/tarn_formats.h"
#include "nodes/DepthRangeTopologyNode.h"
#include "trace/Check.h"

using mft_utils::MediaTypeData;
using mft_utils::MediaTypeParser;

namespace mft_core
{

TarnDepthDepthTopology::TarnDepthDepthTopology(const std::string &ownerName, std::shared_ptr<FramePrivacy> framePrivacy,
                                               std::shared_ptr<const TarnCalibration> cameraCalibration)
    : Topology(ownerName + " Depth Standalone Topology"), privacyState(std::move(framePrivacy)),
      calibrationTable(std::move(cameraCalibration))
{
}

const GUID &TarnDepthDepthTopology::InputSubtype(bool withConfidenceMap) noexcept
{
    return withConfidenceMap ? CUSTOM_GUID_KELP_ZC : CUSTOM_GUID_KELP_Z;
}

HRESULT TarnDepthDepthTopology::Init(std::shared_ptr<InputStream> inputStream,
                                     std::shared_ptr<OutputStream> depthOutStream, IMFMediaType *nextMediaType,
                                     const WorkQueueParameters &wqParams,
                                     const std::shared_ptr<const ConfidenceMapState> &confidenceMap, bool withMap)
{
    CHECK_POINTER(confidenceMap);
    CHECK_POINTER(calibrationTable);
    const TopologySettings settings{inputStream, {{depthOutStream, nextMediaType}}};
    CHECK_HR(settings.Validate());
    ComPtr<IMFMediaType> requiredInputMediaType;
    CHECK_HR(MFCreateMediaType(requiredInputMediaType.GetAddressOf()));
    CHECK_HR(nextMediaType->CopyAllItems(requiredInputMediaType.Get()));
    MediaTypeData outputMtData;
    CHECK_HR(MediaTypeParser::GetMediaTypeData(outputMtData, nextMediaType));
    ComPtr<IMFAttributes> depthAttributes;
    CHECK_HR(depthOutStream->GetAttributes(depthAttributes.GetAddressOf()));

    CHECK_HR_AS(withMap ? "requiredInputMediaType->SetGUID(MF_MT_SUBTYPE, CUSTOM_GUID_KELP_ZC)"
                        : "requiredInputMediaType->SetGUID(MF_MT_SUBTYPE, CUSTOM_GUID_KELP_Z)",
                requiredInputMediaType->SetGUID(MF_MT_SUBTYPE, InputSubtype(withMap)));
    ComPtr<IMFMediaType> inputMediaType;
    CHECK_HR_AS("inputStream->FindMatchingMediaType(inputMediaType.GetAddressOf(), requiredInputMediaType)",
                inputStream->FindMatchingMediaType(inputMediaType.GetAddressOf(), requiredInputMediaType.Get()));

    const FrameGeometry geometry(outputMtData.width, outputMtData.height);
    // The confidence node is always there: the map may be switched on while the topology runs.
    const auto first =
        NodeChain()
            .Then<AsyncTopologyNode>(GetNameCopy(), wqParams)
            .Then<TarnFrameFormatTopologyNode>(std::cref(*inputStream),
                                               std::vector<GUID>{InputSubtype(false), InputSubtype(true)},
                                               outputMtData.width, outputMtData.height, confidenceMap)
            .Then<TarnConfidenceMapTopologyNode>(static_cast<std::int32_t>(outputMtData.width),
                                                 static_cast<std::int32_t>(outputMtData.height), confidenceMap)
            .Then<TarnDepthPrivacyTopologyNode>(privacyState)
            .Then<TarnCalibrationTopologyNode>(std::cref(*depthOutStream),
                                               calibrationTable->CreateFrameIntrinsics(geometry))
            .Then<TarnDepthMetadataTopologyNode>()
            .Then<DepthRangeTopologyNode>(depthAttributes.Get(), kMinReliableDepthCm, kMaxReliableDepthCm)
            .EndIn(AddOutput(depthOutStream));
    AddConnection(std::move(inputStream), first, inputMediaType.Get());
    return S_OK;
}

} // namespace mft_core
