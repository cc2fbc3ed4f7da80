// The simplest device transform: one output stream per input stream, samples unchanged.
#pragma once

#include "core/DeviceMft.h"
#include "core/TopologySlot.h"

namespace mft_core
{

class PassThroughDeviceMft : public DeviceMft
{
  public:
    explicit PassThroughDeviceMft(const std::string &objectName, const GUID &extensionUnitSet = {},
                                  ULONG extensionUnitControl = 0,
                                  const wchar_t *recordingFolder = mft_der::kRecordingFolder);

    HRESULT STDMETHODCALLTYPE InitializeTransform(IMFAttributes *pAttributes) override;

  protected:
    ~PassThroughDeviceMft() override;

    // A start that no topology can serve changes nothing; one that fails later leaves the stream stopped.
    HRESULT StartOutputStream(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType) override
        TARN_REQUIRES(stateChangeLock);
    HRESULT StopOutputStream(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType) override
        TARN_REQUIRES(stateChangeLock);
    HRESULT UninitializeMembers() override TARN_REQUIRES(stateChangeLock);

    virtual HRESULT BuildTopology(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType,
                                  std::shared_ptr<Topology> &topology);

    // The input stream that serves an output stream; null when there is none.
    std::shared_ptr<InputStream> InputStreamOf(const OutputStream &outputStream) const;

  private:
    // One slot per output stream, at the stream's id.
    std::vector<TopologySlot> currentTopologies TARN_GUARDED_BY(stateChangeLock);
};

} // namespace mft_core
