// Device transform of the depth filter: a depth and an infrared output from one pin.
#pragma once

#include <memory>

#include "core/DeviceMft.h"
#include "core/Topology.h"
#include "device/properties/FaceAuthKsPropertyHandler.h"
#include "device/nodes/FramePrivacy.h"
#include "device/calibration/TarnCalibration.h"
#include "device/properties/TarnConfidenceMapConfig.h"
#include "device/TarnDepthPresets.h"
#include "device/TarnDeviceInfo.h"
#include "device/TarnFwErrorHandler.h"
#include "ks/FirmwareCommandPipe.h"

namespace mft_core
{

// One topology at a time serves the outputs that run; it is replaced with every start. Thread-safe as its base.
class TarnDepthDeviceMft : public DeviceMft
{
  public:
    TarnDepthDeviceMft();

    // E_FAIL for a filter that does not have exactly one pin.
    HRESULT STDMETHODCALLTYPE InitializeTransform(IMFAttributes *pAttributes) override;

  protected:
    ~TarnDepthDeviceMft() override;

    HRESULT InitializeMembers() override;
    HRESULT UninitializeMembers() override;
    HRESULT CreateAttributes() override;
    HRESULT RegisterKsControlHandlres() override;
    CameraBlob CreateIntrinsics(const MediaTypeList &mtList, UINT32 inputStreamId) override;
    CameraBlob CreateExtrinsics(UINT32 inputStreamId) override;

    bool Allocates(const OutputStream &outputStream) const override;

    // A start that no topology can serve changes nothing: what ran runs on. One that fails later leaves every output
    // stopped. Both leave the transform usable.
    HRESULT StartOutputStream(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType) override;
    // While another output runs its topology stays as it is.
    HRESULT StopOutputStream(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType) override;

    virtual HRESULT CreateOutputStreams();
    // E_INVALIDARG for a stream that is neither output. `topology` is untouched when it fails.
    virtual HRESULT BuildTopology(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType,
                                  std::shared_ptr<Topology> &topology);

  private:
    HRESULT CreateDepthStream(const MediaTypeList &inputMediaTypes);
    HRESULT CreateIrStream(const MediaTypeList &inputMediaTypes);
    HRESULT AddFaceAuthMediaType(MediaTypeList &mtList, const MediaTypeList &inputMediaTypes);
    HRESULT AddOutputStream(OutputStreamConfiguration &configuration, UINT32 &streamIndex);

    HRESULT BuildDepthTopology(IMFMediaType *nextMediaType, std::shared_ptr<Topology> &topology);
    HRESULT BuildIrTopology(IMFMediaType *nextMediaType, std::shared_ptr<Topology> &topology);
    HRESULT RunTopology(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType,
                        const std::shared_ptr<Topology> &topology);
    HRESULT EndCurrentTopology();
    void StopAllOutputs();

    HRESULT OnConfigConfidenceMap(bool enable);
    HRESULT EndCombinedTopology();
    HRESULT WantedInputMediaType(IMFMediaType **ppMediaType) const;

    std::shared_ptr<FirmwareCommandPipe> firmwareCommandPipe;
    std::shared_ptr<TarnDeviceInfo> devInfo;
    std::shared_ptr<TarnFwErrorHandler> fwErrorHandler;
    std::shared_ptr<TarnCalibration> calibration;
    std::shared_ptr<FaceAuthKsPropertyHandler> faceAuthKsPropertyHandler;
    std::shared_ptr<TarnConfidenceMapConfig> confidenceMapCfgHandler;
    std::shared_ptr<TarnDepthPresets> depthPresetsController;
    const std::shared_ptr<FramePrivacy> framePrivacy;
    std::shared_ptr<Topology> currentTopology; // guarded by stateChangeLock
    UINT32 depthStreamIndex = 0;
    UINT32 irStreamIndex = 0;
};

} // namespace mft_core
