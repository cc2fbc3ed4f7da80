// Device transform of the color filter: one output per pin, formats untouched.
#pragma once

#include <memory>

#include "core/PassThroughDeviceMft.h"
#include "device/calibration/TarnCalibration.h"

namespace mft_core
{

// Its outputs publish intrinsics when the camera has a calibration table. Thread words as for its base.
class TarnColorDeviceMft : public PassThroughDeviceMft
{
  public:
    TarnColorDeviceMft();

  protected:
    ~TarnColorDeviceMft() override;

    HRESULT InitializeMembers() override;
    // Puts the color extension unit's property set before the pass-through handlers.
    HRESULT RegisterKsControlHandlres() override;
    CameraBlob CreateIntrinsics(const MediaTypeList &mtList, UINT32 inputStreamId) override;

  private:
    std::shared_ptr<TarnCalibration> calibration;
};

} // namespace mft_core
