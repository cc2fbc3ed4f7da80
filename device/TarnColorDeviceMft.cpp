#include "device/TarnColorDeviceMft.h"

#include <mutex>

#include "device/topologies/TarnColorTopology.h"
#include "ks/CompleteSetPropsHandler.h"
#include "tarn/calibration_table.h"
#include "tarn/tarn_dmft.h"
#include "trace/Check.h"

using std::make_shared;

namespace mft_core
{

namespace
{
constexpr auto kColorErrorControl = static_cast<ULONG>(KSPROPERTY_XU_TARN_COLOR::XU_ERROR);
} // namespace

TarnColorDeviceMft::TarnColorDeviceMft(const wchar_t *recordingFolder)
    : Object("Tarn Color DMFT"),
      PassThroughDeviceMft("Tarn Color DMFT", KSPROPERTYSETID_TARN_COLOR_CONTROL, kColorErrorControl, recordingFolder),
      framePrivacy(make_shared<FramePrivacy>("Tarn Color DMFT"))
{
}

TarnColorDeviceMft::~TarnColorDeviceMft() = default;

bool TarnColorDeviceMft::IsPrivate(IMFSample *input)
{
    return input == nullptr ? framePrivacy->IsOn() : framePrivacy->MayCover(input);
}

HRESULT TarnColorDeviceMft::InitializeMembers()
{
    CHECK_HR_AS("PassThroughDeviceMft::InitializeMembers()", PassThroughDeviceMft::InitializeMembers());
    fwErrorHandler =
        make_shared<TarnFwErrorHandler>(deviceXuKsControl.Get(), deviceXuSetId, kColorErrorControl, GetNameCopy());
    {
        const std::scoped_lock guard(stateChangeLock);
        CHECK_HR(autoUpdateEventListener.RegisterObserver(fwErrorHandler));
    }
    calibration =
        make_shared<TarnCalibration>(deviceXuKsControl.Get(), deviceXuSetId, TARN_CALIBRATION_CONTROL, GetNameCopy());
    CHECK_HR(calibration->Init());
    return S_OK;
}

HRESULT TarnColorDeviceMft::UninitializeMembers()
{
    if (fwErrorHandler)
    {
        autoUpdateEventListener.UnregisterObserver(fwErrorHandler);
        fwErrorHandler.reset();
    }
    CHECK_HR_AS("PassThroughDeviceMft::UninitializeMembers()", PassThroughDeviceMft::UninitializeMembers());
    return S_OK;
}

HRESULT TarnColorDeviceMft::RegisterKsControlHandlres()
{
    CHECK_HR_AS("PassThroughDeviceMft::RegisterKsControlHandlres()", PassThroughDeviceMft::RegisterKsControlHandlres());
    CHECK_HR_AS(
        "RegisterKsPropertyHandler(make_shared<CompleteSetPropsHandler>(deviceXuKsControl, deviceXuSetId))",
        RegisterKsPropertyHandler(make_shared<CompleteSetPropsHandler>(deviceXuKsControl.Get(), deviceXuSetId)));
    return S_OK;
}

CameraBlob TarnColorDeviceMft::CreateIntrinsics(const MediaTypeList &mtList, UINT32)
{
    return calibration ? calibration->CreateIntrinsics(mtList) : CameraBlob{};
}

// The color camera is the origin to which the table relates the depth camera.
CameraBlob TarnColorDeviceMft::CreateExtrinsics(UINT32)
{
    return calibration ? calibration->CreateExtrinsics(CameraPose::Origin) : CameraBlob{};
}

HRESULT TarnColorDeviceMft::BuildTopology(const std::shared_ptr<OutputStream> &outputStream,
                                          IMFMediaType *nextMediaType, std::shared_ptr<Topology> &topology)
{
    const auto inputStream = InputStreamOf(*outputStream);
    CHECK_POINTER(inputStream);
    const auto topo = make_shared<TarnColorTopology>(GetNameCopy(), framePrivacy, calibration);
    CHECK_HR(topo->Init(inputStream, outputStream, nextMediaType));
    framePrivacy->AskCamera(filterKsControl.Get()); // before the first frame, which may not tell
    topology = topo;
    return S_OK;
}

} // namespace mft_core
