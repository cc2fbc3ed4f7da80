#include "device/TarnDepthDeviceMft.h"

#include "platform/CameraAttributes.h"

#include <mutex>
#include <utility>
#include <vector>

#include "device/topologies/FaceLoginFrame.h"
#include "device/properties/TarnApiVersion.h"
#include "device/properties/TarnDepthPresetsKsPropertyHandler.h"
#include "device/properties/TarnHwCommandKsPropertyHandler.h"
#include "tarn/tarn_formats.h"
#include "ks/CompleteSetPropsHandler.h"
#include "tarn/calibration_table.h"
#include "tarn/tarn_dmft.h"
#include "base/Callback.h"
#include "base/Checked.h"
#include "trace/Check.h"

using mft_utils::At;
using mft_utils::MediaTypeData;
using mft_utils::MediaTypeParser;
using std::make_shared;

namespace mft_core
{

namespace
{
constexpr auto kDepthErrorControl = static_cast<ULONG>(KSPROPERTY_XU_TARN_DEPTH::XU_ERROR);
constexpr auto kCommandControl = static_cast<ULONG>(KSPROPERTY_XU_TARN_DEPTH::COMMAND);
constexpr TopologySlot::CheckTexts kCheckTexts{"currentTopology->Activate()", "currentTopology->Deactivate()"};
constexpr UINT32 kFaceAuthFps = 60;
constexpr UINT32 kDepthBitsPerPixel = 16;
constexpr UINT32 kInfraredBitsPerPixel = 8;
constexpr UINT64 kDepthUnitNanometres = 125000; // 1/8 mm

// Frame size, and where the type states them the stride and the size of a sample.
HRESULT SetInfraredFrameSize(IMFMediaType *faceAuthMt, UINT32 width, UINT32 height)
{
    CHECK_HR_AS("MFSetAttributeSize(faceAuthMt.Get(), MF_MT_FRAME_SIZE, width, height)",
                MFSetAttributeSize(faceAuthMt, MF_MT_FRAME_SIZE, width, height));
    UINT32 present = 0;
    if (SUCCEEDED(faceAuthMt->GetUINT32(MF_MT_DEFAULT_STRIDE, &present)))
    {
        CHECK_HR(faceAuthMt->SetUINT32(MF_MT_DEFAULT_STRIDE, width));
    }
    if (SUCCEEDED(faceAuthMt->GetUINT32(MF_MT_SAMPLE_SIZE, &present)))
    {
        CHECK_HR(faceAuthMt->SetUINT32(MF_MT_SAMPLE_SIZE, width * height));
    }
    return S_OK;
}
} // namespace

TarnDepthDeviceMft::TarnDepthDeviceMft(const wchar_t *recordingFolder)
    : Object("Tarn Depth DMFT"),
      DeviceMft("Tarn Depth DMFT", KSPROPERTYSETID_TARN_DEPTH_CONTROL, kDepthErrorControl, recordingFolder),
      framePrivacy(make_shared<FramePrivacy>("Tarn Depth DMFT")),
      faceAuth(make_shared<FaceAuthState>(recorder.Changes())), confidenceMap(make_shared<ConfidenceMapState>()),
      currentTopology(kCheckTexts)
{
}

TarnDepthDeviceMft::~TarnDepthDeviceMft() = default;

HRESULT TarnDepthDeviceMft::InitializeTransform(IMFAttributes *pAttributes)
{
    return Initialize(pAttributes, [&]() -> HRESULT {
        CHECK_HR(DeviceMft::InitializeTransform(pAttributes));
        CHECK_HR(CreateOutputStreams());
        return S_OK;
    });
}

HRESULT TarnDepthDeviceMft::InitializeMembers()
{
    CHECK_HR(DeviceMft::InitializeMembers());
    fwErrorHandler =
        make_shared<TarnFwErrorHandler>(deviceXuKsControl.Get(), deviceXuSetId, kDepthErrorControl, GetNameCopy());
    {
        const std::scoped_lock guard(stateChangeLock);
        CHECK_HR(autoUpdateEventListener.RegisterObserver(fwErrorHandler));
    }
    firmwareCommandPipe =
        make_shared<FirmwareCommandPipe>(deviceXuKsControl.Get(), deviceXuSetId, kCommandControl, GetNameCopy());
    const auto info = make_shared<TarnDeviceInfo>(firmwareCommandPipe, "Tarn Depth device info");
    CHECK_HR_AS("devInfo->Init()", info->Init());
    devInfo = info;
    calibration =
        make_shared<TarnCalibration>(deviceXuKsControl.Get(), deviceXuSetId, TARN_CALIBRATION_CONTROL, GetNameCopy());
    CHECK_HR(calibration->Init());
    faceAuthKsPropertyHandler = make_shared<FaceAuthKsPropertyHandler>(faceAuth);
    confidenceMapCfgHandler = make_shared<TarnConfidenceMapConfig>(
        mft_utils::Callback<TarnDepthDeviceMft, bool, HRESULT>(this, &TarnDepthDeviceMft::OnConfigConfidenceMap),
        confidenceMap);
    depthPresetsController = make_shared<TarnDepthPresets>(deviceXuKsControl.Get(), firmwareCommandPipe);
    CHECK_HR(depthPresetsController->Init());
    return S_OK;
}

HRESULT TarnDepthDeviceMft::UninitializeMembers()
{
    currentTopology.End();
    if (fwErrorHandler)
    {
        autoUpdateEventListener.UnregisterObserver(fwErrorHandler);
        fwErrorHandler.reset();
    }
    DeviceMft::UninitializeMembers();
    return S_OK;
}

bool TarnDepthDeviceMft::IsPrivate(IMFSample *input)
{
    return input == nullptr ? framePrivacy->IsOn() : framePrivacy->MayCover(input);
}

HRESULT TarnDepthDeviceMft::CreateAttributes()
{
    CHECK_HR(DeviceMft::CreateAttributes());
    CHECK_HR(devInfo->AddTo(attributes.Get()));
    return S_OK;
}

HRESULT TarnDepthDeviceMft::RegisterKsControlHandlres()
{
    CHECK_HR(DeviceMft::RegisterKsControlHandlres());
    CHECK_HR_AS(
        "RegisterKsPropertyHandler(make_shared<CompleteSetPropsHandler>(deviceXuKsControl, deviceXuSetId))",
        RegisterKsPropertyHandler(make_shared<CompleteSetPropsHandler>(deviceXuKsControl.Get(), deviceXuSetId)));
    CHECK_HR(RegisterKsPropertyHandler(faceAuthKsPropertyHandler));
    CHECK_HR(RegisterKsPropertyHandler(make_shared<TarnDepthPresetsKsPropertyHandler>(depthPresetsController)));
    CHECK_HR(RegisterKsPropertyHandler(confidenceMapCfgHandler));
    CHECK_HR(RegisterKsPropertyHandler(make_shared<TarnApiVersion>()));
    CHECK_HR(RegisterKsPropertyHandler(make_shared<TarnHwCommandKsPropertyHandler>(firmwareCommandPipe)));
    return S_OK;
}

CameraBlob TarnDepthDeviceMft::CreateIntrinsics(const MediaTypeList &mtList, UINT32)
{
    return calibration ? calibration->CreateIntrinsics(mtList) : CameraBlob{};
}

CameraBlob TarnDepthDeviceMft::CreateExtrinsics(UINT32)
{
    return calibration ? calibration->CreateExtrinsics(CameraPose::Depth) : CameraBlob{};
}

HRESULT TarnDepthDeviceMft::CreateOutputStreams()
{
    if (inputStreams.size() != 1)
    {
        TRACE_ERROR("%s: %zu pins instead of one", GetName(), inputStreams.size());
        return E_FAIL;
    }
    const auto &inputStream = At(inputStreams, 0);
    MediaTypeList inputMediaTypes;
    CHECK_HR(inputStream->GetSupportedMediaTypes(inputMediaTypes));
    CHECK_HR(CreateDepthStream(inputMediaTypes));
    CHECK_HR(CreateIrStream(inputMediaTypes));
    const std::scoped_lock guard(stateChangeLock);
    for (const auto &outputStream : outputStreams)
    {
        currentTopology.Add(outputStream);
    }
    return S_OK;
}

HRESULT TarnDepthDeviceMft::CreateDepthStream(const MediaTypeList &inputMediaTypes)
{
    const std::vector<GUID> depthInputSubTypes{CUSTOM_GUID_KELP_ZI, CUSTOM_GUID_KELP_Z, CUSTOM_GUID_KELP_ZC};
    OutputStreamConfiguration configuration;
    CHECK_HR_AS("MediaTypeParser::CreateMediaTypeListSubset(*configuration.mtList.get(), inputMediaTypes, "
                "depthInputSubTypes, MFVideoFormat_D16, 16)",
                MediaTypeParser::CreateMediaTypeListSubset(*configuration.mtList, inputMediaTypes, depthInputSubTypes,
                                                           MFVideoFormat_D16, kDepthBitsPerPixel));
    configuration.depth = DepthDescription{DistanceToFocalPlane, kDepthUnitNanometres};
    CHECK_HR(AddOutputStream(configuration, depthStreamIndex));
    return S_OK;
}

HRESULT TarnDepthDeviceMft::CreateIrStream(const MediaTypeList &inputMediaTypes)
{
    OutputStreamConfiguration configuration;
    CHECK_HR(AddFaceAuthMediaType(*configuration.mtList, inputMediaTypes));
    const std::vector<GUID> irInputSubTypes{CUSTOM_GUID_KELP_ZI};
    CHECK_HR_AS("MediaTypeParser::CreateMediaTypeListSubset(*configuration.mtList.get(), inputMediaTypes, "
                "irInputSubTypes, MFVideoFormat_L8, 8)",
                MediaTypeParser::CreateMediaTypeListSubset(*configuration.mtList, inputMediaTypes, irInputSubTypes,
                                                           MFVideoFormat_L8, kInfraredBitsPerPixel));
    CHECK_HR(AddOutputStream(configuration, irStreamIndex));
    return S_OK;
}

// The first of the list, so that an application that takes the first type finds it.
HRESULT TarnDepthDeviceMft::AddFaceAuthMediaType(MediaTypeList &mtList, const MediaTypeList &inputMediaTypes)
{
    faceAuth->faceAuthSupported = false;
    const std::vector<GUID> irInputSubTypes{CUSTOM_GUID_KELP_FACE_LOGIN};
    MediaTypeList faceAuthMtList;
    CHECK_HR_AS("MediaTypeParser::CreateMediaTypeListSubset(faceAuthMtList, inputMediaTypes, irInputSubTypes, "
                "MFVideoFormat_L8, 8)",
                MediaTypeParser::CreateMediaTypeListSubset(faceAuthMtList, inputMediaTypes, irInputSubTypes,
                                                           MFVideoFormat_L8, kInfraredBitsPerPixel));
    for (const auto &faceAuthMt : faceAuthMtList)
    {
        MediaTypeData data;
        if (SUCCEEDED(MediaTypeParser::GetMediaTypeData(data, faceAuthMt.Get())) && data.FPS() >= kFaceAuthFps &&
            data.width >= kFaceLoginSide && data.height >= kFaceLoginSide)
        {
            CHECK_HR(SetInfraredFrameSize(faceAuthMt.Get(), kFaceLoginSide, kFaceLoginSide));
            mtList.push_back(faceAuthMt);
            faceAuth->faceAuthSupported = true;
            return S_OK;
        }
    }
    TRACE_INFO("%s: the camera has no face-login format", GetName());
    return S_OK;
}

HRESULT TarnDepthDeviceMft::AddOutputStream(OutputStreamConfiguration &configuration, UINT32 &streamIndex)
{
    const UINT32 inputStreamId = At(inputStreams, 0)->GetID();
    const auto streamId = static_cast<UINT32>(outputStreams.size());
    configuration.parentName = GetNameCopy();
    configuration.intrinsics = CreateIntrinsics(*configuration.mtList, inputStreamId);
    configuration.extrinsics = CreateExtrinsics(inputStreamId);
    CHECK_HR(MFCreateAttributes(configuration.attributes.GetAddressOf(), 4)); // what applications can read of it
    CHECK_HR(devInfo->AddTo(configuration.attributes.Get()));
    AppendOutputStream(make_shared<OutputStream>(streamId, this, configuration));
    streamIndex = streamId;
    return S_OK;
}

} // namespace mft_core
