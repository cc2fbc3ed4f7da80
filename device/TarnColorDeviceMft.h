// Device transform of the color filter: one output per pin, formats untouched.
#pragma once

#include <memory>

#include "core/PassThroughDeviceMft.h"
#include "device/nodes/FramePrivacy.h"
#include "device/calibration/TarnCalibration.h"
#include "device/TarnFwErrorHandler.h"

namespace mft_core
{

// Its outputs publish intrinsics and extrinsics when the camera has a calibration table, and so do their samples, which
// carry the camera's record of the frame as well. Only privacy changes a frame's bytes. Thread words as for its base.
class TarnColorDeviceMft : public PassThroughDeviceMft
{
  public:
    explicit TarnColorDeviceMft(const wchar_t *recordingFolder = mft_der::kRecordingFolder);

  protected:
    ~TarnColorDeviceMft() override;

    HRESULT InitializeMembers() override;
    bool IsPrivate(IMFSample *input) override;
    HRESULT UninitializeMembers() override TARN_REQUIRES(stateChangeLock);
    // Puts the color extension unit's property set before the pass-through handlers.
    HRESULT RegisterKsControlHandlres() override;
    CameraBlob CreateIntrinsics(const MediaTypeList &mtList, UINT32 inputStreamId) override;
    CameraBlob CreateExtrinsics(UINT32 inputStreamId) override;
    HRESULT BuildTopology(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType,
                          std::shared_ptr<Topology> &topology) override;

  private:
    const std::shared_ptr<FramePrivacy> framePrivacy;
    std::shared_ptr<TarnFwErrorHandler> fwErrorHandler;
    std::shared_ptr<TarnCalibration> calibration;
};

} // namespace mft_core
