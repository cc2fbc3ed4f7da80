#include "device/TarnColorDeviceMft.h"

#include "ks/CompleteSetPropsHandler.h"
#include "tarn/calibration_table.h"
#include "tarn/tarn_dmft.h"
#include "trace/Check.h"

using std::make_shared;

namespace mft_core
{

TarnColorDeviceMft::TarnColorDeviceMft()
    : Object("Tarn Color DMFT"), PassThroughDeviceMft("Tarn Color DMFT", KSPROPERTYSETID_TARN_COLOR_CONTROL,
                                                      static_cast<ULONG>(KSPROPERTY_XU_TARN_COLOR::XU_ERROR))
{
}

TarnColorDeviceMft::~TarnColorDeviceMft() = default;

HRESULT TarnColorDeviceMft::InitializeMembers()
{
    CHECK_HR_AS("PassThroughDeviceMft::InitializeMembers()", PassThroughDeviceMft::InitializeMembers());
    calibration =
        make_shared<TarnCalibration>(deviceXuKsControl.Get(), deviceXuSetId, TARN_CALIBRATION_CONTROL, GetNameCopy());
    CHECK_HR(calibration->Init());
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

} // namespace mft_core
