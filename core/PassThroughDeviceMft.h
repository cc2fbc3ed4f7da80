// The simplest device transform: one output stream per input stream, samples unchanged.
#pragma once

#include "core/DeviceMft.h"
#include "core/Topology.h"

namespace mft_core
{

class PassThroughDeviceMft : public DeviceMft
{
  public:
    explicit PassThroughDeviceMft(const std::string &objectName, const GUID &extensionUnitSet = {},
                                  ULONG extensionUnitControl = 0);

    HRESULT STDMETHODCALLTYPE InitializeTransform(IMFAttributes *pAttributes) override;

  protected:
    ~PassThroughDeviceMft() override;

    // A failed start leaves the stream stopped; one that is refused for its media type changes nothing.
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
    HRESULT RunOutputStream(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType)
        TARN_REQUIRES(stateChangeLock);
    HRESULT EndTopology(std::shared_ptr<Topology> &topology) TARN_REQUIRES(stateChangeLock);

    // One slot per output stream, at the stream's id.
    std::vector<std::shared_ptr<Topology>> currentTopologies TARN_GUARDED_BY(stateChangeLock);
};

} // namespace mft_core
