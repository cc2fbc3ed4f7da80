#include "device/topologies/TarnDepthZITopology.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "core/AsyncTopologyNode.h"
#include "core/NodeChain.h"
#include "core/TopologySettings.h"
#include "device/topologies/ReliableDepth.h"
#include "device/nodes/TarnCalibrationTopologyNode.h"
#include "device/nodes/TarnDepthMetadataTopologyNode.h"
#include "device/nodes/TarnDepthPrivacyTopologyNode.h"
#include "device/nodes/TarnFrameFormatTopologyNode.h"
#include "device/nodes/TarnIr10to8TopologyNode.h"
#include "tarn/tarn_formats.h"
#include "nodes/Crop16BitTopologyNode.h"
#include "nodes/DepthRangeTopologyNode.h"
#include "nodes/SampleCopyTopologyNode.h"
#include "nodes/SplitterTopologyNode.h"
#include "trace/Check.h"

using mft_utils::MediaTypeData;
using mft_utils::MediaTypeParser;
using std::make_shared;

namespace mft_core
{

namespace
{
// Where the depth plane lies in a frame, as fractions: the infrared plane comes first.
constexpr double kDepthPlaneOffset = 0.5;
constexpr double kDepthPlaneLength = 0.5;
} // namespace

// The name is the depth topology's; recordings are read by it.
TarnDepthZITopology::TarnDepthZITopology(const std::string &ownerName, std::shared_ptr<FramePrivacy> framePrivacy,
                                         std::shared_ptr<const TarnCalibration> cameraCalibration)
    : Topology(ownerName + " Depth Standalone Topology"), privacyState(std::move(framePrivacy)),
      calibrationTable(std::move(cameraCalibration))
{
}

HRESULT TarnDepthZITopology::Init(std::shared_ptr<InputStream> inputStream,
                                  std::shared_ptr<OutputStream> depthOutStream, IMFMediaType *depthMediaType,
                                  std::shared_ptr<OutputStream> irOutStream, IMFMediaType *irMediaType,
                                  const WorkQueueParameters &wqParams)
{
    CHECK_POINTER(calibrationTable);
    const TopologySettings settings{inputStream, {{depthOutStream, depthMediaType}, {irOutStream, irMediaType}}};
    CHECK_HR(settings.Validate());
    MediaTypeData depthMtData;
    CHECK_HR(MediaTypeParser::GetMediaTypeData(depthMtData, depthMediaType));
    MediaTypeData irMtData;
    CHECK_HR(MediaTypeParser::GetMediaTypeData(irMtData, irMediaType));
    const UINT32 maxWidth = std::max(depthMtData.width, irMtData.width);
    const UINT32 maxHeight = std::max(depthMtData.height, irMtData.height);
    const UINT32 maxFps = std::max(depthMtData.FPS(), irMtData.FPS());
    const GUID requiredSubType = CUSTOM_GUID_KELP_ZI;
    ComPtr<IMFMediaType> inputMediaType;
    CHECK_HR(
        inputStream->FindClosestMediaType(inputMediaType.GetAddressOf(), requiredSubType, maxFps, maxWidth, maxHeight));
    MediaTypeData inputMtData;
    CHECK_HR(MediaTypeParser::GetMediaTypeData(inputMtData, inputMediaType.Get()));
    ComPtr<IMFAttributes> depthAttributes;
    CHECK_HR(depthOutStream->GetAttributes(depthAttributes.GetAddressOf()));

    // Applications get the samples of both branches: nothing that is written into one may show up in the other.
    const auto splitter = make_shared<SplitterTopologyNode>(InfraredBranch(irOutStream, inputMtData, irMtData),
                                                            BranchSamples::Separate, "ZI to Z topology node");
    splitter->AddNextNode(DepthBranch(depthOutStream, depthAttributes.Get(), inputMtData, depthMtData));
    const auto first =
        NodeChain()
            .Then<AsyncTopologyNode>(GetNameCopy(), wqParams)
            .Then<TarnFrameFormatTopologyNode>(std::cref(*inputStream), std::vector<GUID>{requiredSubType},
                                               inputMtData.width, inputMtData.height)
            .Then<TarnDepthPrivacyTopologyNode>(privacyState)
            .Then<TarnDepthMetadataTopologyNode>()
            .EndIn(splitter);
    AddConnection(std::move(inputStream), first, inputMediaType.Get());
    return S_OK;
}

CameraBlob TarnDepthZITopology::CroppedIntrinsics(const MediaTypeData &inputMtData,
                                                  const MediaTypeData &outputMtData) const
{
    return calibrationTable->CreateFrameIntrinsics(
        FrameGeometry(inputMtData.width, inputMtData.height).CropCentre(outputMtData.width, outputMtData.height));
}

std::shared_ptr<ITopologyNode> TarnDepthZITopology::InfraredBranch(const std::shared_ptr<OutputStream> &irOutStream,
                                                                   const MediaTypeData &inputMtData,
                                                                   const MediaTypeData &irMtData)
{
    return NodeChain()
        .Then<Crop16BitTopologyNode>(inputMtData.width, inputMtData.height, irMtData.width, irMtData.height, nullptr,
                                     OutputMemory::View)
        .Then<TarnIr10to8TopologyNode>(static_cast<std::int32_t>(irMtData.width),
                                       static_cast<std::int32_t>(irMtData.height), 0.0, irOutStream->Allocator(),
                                       static_cast<std::int32_t>(inputMtData.width))
        .Then<TarnCalibrationTopologyNode>(std::cref(*irOutStream), CroppedIntrinsics(inputMtData, irMtData))
        .EndIn(AddOutput(irOutStream));
}

std::shared_ptr<ITopologyNode> TarnDepthZITopology::DepthBranch(const std::shared_ptr<OutputStream> &depthOutStream,
                                                                IMFAttributes *depthAttributes,
                                                                const MediaTypeData &inputMtData,
                                                                const MediaTypeData &depthMtData)
{
    // A driver may pad its frames: the fractions are the frame's, not the buffer's.
    const auto frameBytes = static_cast<std::size_t>(
        TarnFrameFormatTopologyNode::FrameBytes(CUSTOM_GUID_KELP_ZI, inputMtData.width, inputMtData.height));
    // Only the next node reads the plane; no branch writes into the frame that both share.
    return NodeChain()
        .Then<SampleCopyTopologyNode>(kDepthPlaneOffset, kDepthPlaneLength, "Depth plane topology node", frameBytes,
                                      OutputMemory::View)
        .Then<Crop16BitTopologyNode>(inputMtData.width, inputMtData.height, depthMtData.width, depthMtData.height,
                                     depthOutStream->Allocator())
        .Then<TarnCalibrationTopologyNode>(std::cref(*depthOutStream), CroppedIntrinsics(inputMtData, depthMtData))
        .Then<DepthRangeTopologyNode>(depthAttributes, kMinReliableDepthCm, kMaxReliableDepthCm)
        .EndIn(AddOutput(depthOutStream));
}

} // namespace mft_core
