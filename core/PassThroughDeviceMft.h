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
    HRESULT StartOutputStream(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType) override;
    HRESULT StopOutputStream(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType) override;
    HRESULT UninitializeMembers() override;

    virtual HRESULT BuildTopology(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType,
                                  std::shared_ptr<Topology> &topology);

    // The input stream that serves an output stream; null when there is none.
    std::shared_ptr<InputStream> InputStreamOf(const OutputStream &outputStream) const;

  private:
    HRESULT RunOutputStream(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType);
    HRESULT EndTopology(std::shared_ptr<Topology> &topology);

    // One slot per output stream, at the stream's id. Guarded by stateChangeLock.
    std::vector<std::shared_ptr<Topology>> currentTopologies;
};

} // namespace mft_core
