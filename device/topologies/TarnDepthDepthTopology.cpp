#include "device/topologies/TarnDepthDepthTopology.h"

#include <utility>

#include "core/AsyncTopologyNode.h"
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
using std::make_shared;

namespace mft_core
{

TarnDepthDepthTopology::TarnDepthDepthTopology(const std::string &ownerName, std::shared_ptr<FramePrivacy> framePrivacy,
                                               std::shared_ptr<const TarnCalibration> cameraCalibration)
    : Topology(ownerName + " Depth Standalone Topology"), privacyState(std::move(framePrivacy)),
      calibrationTable(std::move(cameraCalibration))
{
}

HRESULT TarnDepthDepthTopology::Init(std::shared_ptr<InputStream> inputStream,
                                     std::shared_ptr<OutputStream> depthOutStream, IMFMediaType *nextMediaType,
                                     const WorkQueueParameters &wqParams,
                                     std::shared_ptr<TarnConfidenceMapConfig> confidenceMapCfgHandler)
{
    CHECK_POINTER(confidenceMapCfgHandler);
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

    if (confidenceMapCfgHandler->WillBeEnabled())
    {
        CHECK_HR(requiredInputMediaType->SetGUID(MF_MT_SUBTYPE, CUSTOM_GUID_KELP_ZC));
    }
    else
    {
        CHECK_HR(requiredInputMediaType->SetGUID(MF_MT_SUBTYPE, CUSTOM_GUID_KELP_Z));
    }
    ComPtr<IMFMediaType> inputMediaType;
    CHECK_HR_AS("inputStream->FindMatchingMediaType(inputMediaType.GetAddressOf(), requiredInputMediaType)",
                inputStream->FindMatchingMediaType(inputMediaType.GetAddressOf(), requiredInputMediaType.Get()));

    // From the end: each node is given its successor. The confidence node is always there: the map may be switched on
    // while the topology runs.
    const auto range = make_shared<DepthRangeTopologyNode>(AddOutput(depthOutStream), depthAttributes.Get(),
                                                           kMinReliableDepthCm, kMaxReliableDepthCm);
    const auto metadata = make_shared<TarnDepthMetadataTopologyNode>(range);
    const auto calibration = make_shared<TarnCalibrationTopologyNode>(
        metadata, *depthOutStream,
        calibrationTable->CreateFrameIntrinsics(FrameGeometry(outputMtData.width, outputMtData.height)));
    const auto privacy = make_shared<TarnDepthPrivacyTopologyNode>(calibration, privacyState);
    const auto confidence = make_shared<TarnConfidenceMapTopologyNode>(
        privacy, static_cast<std::int32_t>(outputMtData.width), static_cast<std::int32_t>(outputMtData.height),
        confidenceMapCfgHandler);
    const std::vector<GUID> formats{CUSTOM_GUID_KELP_Z, CUSTOM_GUID_KELP_ZC};
    const auto format = make_shared<TarnFrameFormatTopologyNode>(
        confidence, *inputStream, formats, outputMtData.width, outputMtData.height, std::move(confidenceMapCfgHandler));
    AddConnection(std::move(inputStream), make_shared<AsyncTopologyNode>(format, GetNameCopy(), wqParams),
                  inputMediaType.Get());
    return S_OK;
}

} // namespace mft_core
