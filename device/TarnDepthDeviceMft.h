// Device transform of the depth filter: a depth and an infrared output from one pin.
#pragma once

#include <memory>

#include "core/DeviceMft.h"
#include "core/TopologySlot.h"
#include "device/ConfidenceMapState.h"
#include "device/FaceAuthState.h"
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
    explicit TarnDepthDeviceMft(const wchar_t *recordingFolder = mft_der::kRecordingFolder);

    // E_FAIL for a filter that does not have exactly one pin.
    HRESULT STDMETHODCALLTYPE InitializeTransform(IMFAttributes *pAttributes) override;

  protected:
    ~TarnDepthDeviceMft() override;

    HRESULT InitializeMembers() override;
    HRESULT UninitializeMembers() override TARN_REQUIRES(stateChangeLock);
    HRESULT CreateAttributes() override;
    HRESULT RegisterKsControlHandlres() override;
    CameraBlob CreateIntrinsics(const MediaTypeList &mtList, UINT32 inputStreamId) override;
    CameraBlob CreateExtrinsics(UINT32 inputStreamId) override;

    bool Allocates(const OutputStream &outputStream) const override;
    bool IsPrivate(IMFSample *input) override;

    // A start that no topology can serve changes nothing: what ran runs on. One that fails later leaves every output
    // stopped. Both leave the transform usable.
    HRESULT StartOutputStream(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType) override
        TARN_REQUIRES(stateChangeLock);
    // While another output runs its topology stays as it is.
    HRESULT StopOutputStream(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType) override
        TARN_REQUIRES(stateChangeLock);

    virtual HRESULT CreateOutputStreams();
    // E_INVALIDARG for a stream that is neither output. `topology` is untouched when it fails.
    virtual HRESULT BuildTopology(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType,
                                  std::shared_ptr<Topology> &topology) TARN_REQUIRES(stateChangeLock);

  private:
    HRESULT CreateDepthStream(const MediaTypeList &inputMediaTypes);
    HRESULT CreateIrStream(const MediaTypeList &inputMediaTypes);
    HRESULT AddFaceAuthMediaType(MediaTypeList &mtList, const MediaTypeList &inputMediaTypes);
    HRESULT AddOutputStream(OutputStreamConfiguration &configuration, UINT32 &streamIndex);

    HRESULT BuildDepthTopology(IMFMediaType *nextMediaType, std::shared_ptr<Topology> &topology)
        TARN_REQUIRES(stateChangeLock);
    HRESULT BuildIrTopology(IMFMediaType *nextMediaType, std::shared_ptr<Topology> &topology);
    void RestoreWantedPreset();

    // On an application's thread.
    HRESULT OnConfigConfidenceMap(bool enable);
    HRESULT ApplyConfidenceMap(bool enable) TARN_REQUIRES(stateChangeLock);
    HRESULT RestartForConfidenceMap(bool enable);
    HRESULT EndCombinedTopology() TARN_REQUIRES(stateChangeLock);
    HRESULT WantedInputMediaType(IMFMediaType **ppMediaType) const;

    std::shared_ptr<FirmwareCommandPipe> firmwareCommandPipe;
    std::shared_ptr<TarnDeviceInfo> devInfo;
    std::shared_ptr<TarnFwErrorHandler> fwErrorHandler;
    std::shared_ptr<TarnCalibration> calibration;
    std::shared_ptr<FaceAuthKsPropertyHandler> faceAuthKsPropertyHandler;
    std::shared_ptr<TarnConfidenceMapConfig> confidenceMapCfgHandler;
    std::shared_ptr<TarnDepthPresets> depthPresetsController;
    const std::shared_ptr<FramePrivacy> framePrivacy;
    const std::shared_ptr<FaceAuthState> faceAuth;
    const std::shared_ptr<ConfidenceMapState> confidenceMap; // changed under stateChangeLock
    // What a depth topology is built for: while the map is being switched the state to come.
    bool nextConfidenceMap TARN_GUARDED_BY(stateChangeLock) = false;
    TopologySlot currentTopology TARN_GUARDED_BY(stateChangeLock);
    UINT32 depthStreamIndex = 0;
    UINT32 irStreamIndex = 0;
};

} // namespace mft_core
