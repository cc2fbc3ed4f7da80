#include "device/topologies/TarnDepthIRTopology.h"

#include <functional>
#include <utility>

#include "core/AsyncTopologyNode.h"
#include "core/NodeChain.h"
#include "core/TopologySettings.h"
#include "nodes/CropMmTopologyNode.h"
#include "device/topologies/FaceLoginFrame.h"
#include "nodes/SharpeningTopologyNode.h"
#include "device/nodes/TarnCalibrationTopologyNode.h"
#include "device/nodes/TarnDepthMetadataTopologyNode.h"
#include "device/nodes/TarnDepthPrivacyTopologyNode.h"
#include "device/nodes/TarnFrameFormatTopologyNode.h"
#include "device/nodes/TarnIr10to8TopologyNode.h"
#include "device/nodes/TarnIrIlluminationTopologyNode.h"
#include "tarn/tarn_formats.h"
#include "nodes/Crop16BitTopologyNode.h"
#include "nodes/ImageResizeTopologyNode.h"
#include "nodes/ImageThresholdTopologyNode.h"
#include "trace/Guard.h"

using mft_utils::MediaTypeData;
using mft_utils::MediaTypeParser;

namespace mft_core
{

namespace
{
constexpr UINT32 kFaceLoginInputFps = 60;
constexpr UINT32 kFaceLoginInputWidth = 640;
constexpr UINT32 kFaceLoginInputHeight = 480;
// Side of the square that is cut out and sharpened, and of what is left of it without the sharpening's border.
constexpr std::int32_t kSharpenedSide = 434;
constexpr std::uint32_t kResizedSide = 415;
constexpr std::uint16_t kLargestInfrared = 1023; // of 10 bits; the sharpening overshoots
} // namespace

TarnDepthIRTopology::TarnDepthIRTopology(const std::string &ownerName, bool isFaceAuthMode,
                                         std::shared_ptr<TarnDepthPresets> presetsController,
                                         std::shared_ptr<FramePrivacy> framePrivacy,
                                         std::shared_ptr<const TarnCalibration> cameraCalibration)
    : Topology(ownerName + " IR Standalone Topology"), faceAuthMode(isFaceAuthMode),
      depthPresetsController(std::move(presetsController)), privacyState(std::move(framePrivacy)),
      calibrationTable(std::move(cameraCalibration))
{
}

TarnDepthIRTopology::~TarnDepthIRTopology()
{
    mft_utils::Guarded([&] { return EndFaceLogin(); });
}

HRESULT TarnDepthIRTopology::Init(std::shared_ptr<InputStream> inputStream, std::shared_ptr<OutputStream> irOutStream,
                                  IMFMediaType *nextMediaType, const WorkQueueParameters &wqParams)
{
    CHECK_POINTER(depthPresetsController);
    CHECK_POINTER(calibrationTable);
    const TopologySettings settings{inputStream, {{irOutStream, nextMediaType}}};
    CHECK_HR(settings.Validate());
    MediaTypeData outputMtData;
    CHECK_HR(MediaTypeParser::GetMediaTypeData(outputMtData, nextMediaType));
    ComPtr<IMFMediaType> inputMediaType;
    CHECK_HR(FindInputMediaType(inputMediaType.GetAddressOf(), *inputStream, outputMtData));
    MediaTypeData inputMtData;
    CHECK_HR(MediaTypeParser::GetMediaTypeData(inputMtData, inputMediaType.Get()));

    const std::vector<GUID> formats{faceAuthMode ? CUSTOM_GUID_KELP_FACE_LOGIN : CUSTOM_GUID_KELP_ZI};
    NodeChain chain;
    chain.Then<AsyncTopologyNode>(GetNameCopy(), wqParams)
        .Then<TarnFrameFormatTopologyNode>(std::cref(*inputStream), formats, inputMtData.width, inputMtData.height);
    if (faceAuthMode)
    {
        AddFaceLoginNodes(chain, inputMtData, outputMtData);
    }
    else
    {
        // Only the next node reads what is cut out.
        chain.Then<Crop16BitTopologyNode>(inputMtData.width, inputMtData.height, outputMtData.width,
                                          outputMtData.height, nullptr, OutputMemory::View);
    }
    const auto pitch = static_cast<std::int32_t>(faceAuthMode ? outputMtData.width : inputMtData.width);
    const auto first =
        chain
            .Then<TarnIr10to8TopologyNode>(static_cast<std::int32_t>(outputMtData.width),
                                           static_cast<std::int32_t>(outputMtData.height), 0.0,
                                           irOutStream->Allocator(), pitch)
            .Then<TarnIrIlluminationTopologyNode>()
            .Then<TarnDepthPrivacyTopologyNode>(privacyState)
            .Then<TarnCalibrationTopologyNode>(
                std::cref(*irOutStream), calibrationTable->CreateFrameIntrinsics(GeometryOf(inputMtData, outputMtData)))
            .Then<TarnDepthMetadataTopologyNode>()
            .EndIn(AddOutput(irOutStream));
    AddConnection(std::move(inputStream), first, inputMediaType.Get());
    return S_OK;
}

HRESULT TarnDepthIRTopology::FindInputMediaType(IMFMediaType **ppFound, const InputStream &inputStream,
                                                const MediaTypeData &outputMtData)
{
    if (faceAuthMode)
    {
        if (SUCCEEDED(FindFaceLoginMediaType(ppFound, inputStream, outputMtData)))
        {
            return S_OK;
        }
        TRACE_ERROR("%s: no face login at %ux%u, ordinary frames instead", GetName(), outputMtData.width,
                    outputMtData.height);
        faceAuthMode = false;
    }
    CHECK_HR_AS("inputStream->FindClosestMediaType(inputMediaType.GetAddressOf(), CUSTOM_GUID_KELP_ZI, "
                "outputMtData.FPS(), outputMtData.width, outputMtData.height)",
                inputStream.FindClosestMediaType(ppFound, CUSTOM_GUID_KELP_ZI, outputMtData.FPS(), outputMtData.width,
                                                 outputMtData.height));
    return S_OK;
}

HRESULT TarnDepthIRTopology::FindFaceLoginMediaType(IMFMediaType **ppFound, const InputStream &inputStream,
                                                    const MediaTypeData &outputMtData) const
{
    if (outputMtData.width != kFaceLoginSide || outputMtData.height != kFaceLoginSide)
    {
        return E_FAIL;
    }
    return inputStream.FindClosestMediaType(ppFound, CUSTOM_GUID_KELP_FACE_LOGIN, kFaceLoginInputFps,
                                            kFaceLoginInputWidth, kFaceLoginInputHeight);
}

void TarnDepthIRTopology::AddFaceLoginNodes(NodeChain &chain, const MediaTypeData &inputMtData,
                                            const MediaTypeData &outputMtData)
{
    chain
        .Then<CropMmTopologyNode>(static_cast<std::int32_t>(inputMtData.width),
                                  static_cast<std::int32_t>(inputMtData.height), kSharpenedSide, kSharpenedSide)
        .Then<SharpeningTopologyNode>(kSharpenedSide, kSharpenedSide)
        .Then<Crop16BitTopologyNode>(std::uint32_t{kSharpenedSide}, std::uint32_t{kSharpenedSide}, kResizedSide,
                                     kResizedSide, nullptr, OutputMemory::View)
        .Then<ImageResizeTopologyNode>(kResizedSide, kResizedSide, outputMtData.width, outputMtData.height,
                                       std::uint32_t{kSharpenedSide})
        .Then<ImageThresholdTopologyNode>(outputMtData.width, outputMtData.height, kLargestInfrared);
}

// What the nodes of the chain do to the picture, in their order.
FrameGeometry TarnDepthIRTopology::GeometryOf(const MediaTypeData &inputMtData, const MediaTypeData &outputMtData) const
{
    const FrameGeometry camera(inputMtData.width, inputMtData.height);
    return faceAuthMode ? camera.CropCentre(kSharpenedSide, kSharpenedSide)
                              .CropCentre(kResizedSide, kResizedSide)
                              .Scale(outputMtData.width, outputMtData.height)
                        : camera.CropCentre(outputMtData.width, outputMtData.height);
}

HRESULT TarnDepthIRTopology::Activate()
{
    if (faceAuthMode)
    {
        CHECK_HR_AS("depthPresetsController->ApplyPreset(TarnDepthPresets::PresetTypes::FACE_LOGIN)",
                    depthPresetsController->BeginFaceLogin());
        hasBegunFaceLogin = true;
    }
    CHECK_HR(Topology::Activate());
    return S_OK;
}

HRESULT TarnDepthIRTopology::Deactivate()
{
    const HRESULT deactivated = Topology::Deactivate();
    const HRESULT restored = EndFaceLogin();
    CHECK_HR_AS("Topology::Deactivate()", deactivated);
    CHECK_HR_AS("depthPresetsController->ApplyPreset(previousPreset)", restored);
    return S_OK;
}

HRESULT TarnDepthIRTopology::EndFaceLogin()
{
    return std::exchange(hasBegunFaceLogin, false) ? depthPresetsController->EndFaceLogin() : S_OK;
}

} // namespace mft_core
