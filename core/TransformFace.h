// The IMFTransform face of a device transform.
#pragma once

#include "platform/DeviceTransform.h"

namespace mft_core
{

// The pipeline speaks to a device transform only through IMFDeviceTransform, so most methods here are refused with
// E_NOTIMPL; the rest forward to the device face. GetInputCurrentType is refused although its output twin is not: that
// asymmetry is intended. Thread-safe as the device face is.
class TransformFace : public IMFTransform
{
  public:
    using ComInterface = IMFTransform;

    HRESULT STDMETHODCALLTYPE MFTGetStreamLimits(DWORD *, DWORD *, DWORD *, DWORD *) override;
    HRESULT STDMETHODCALLTYPE MFTGetStreamCount(DWORD *inputStreams, DWORD *outputStreams) override;
    HRESULT STDMETHODCALLTYPE MFTGetStreamIDs(DWORD inputSize, DWORD *inputs, DWORD outputSize,
                                              DWORD *outputs) override;
    HRESULT STDMETHODCALLTYPE MFTGetInputStreamInfo(DWORD, MFT_INPUT_STREAM_INFO *) override;
    HRESULT STDMETHODCALLTYPE MFTGetOutputStreamInfo(DWORD, MFT_OUTPUT_STREAM_INFO *) override;
    HRESULT STDMETHODCALLTYPE MFTDeleteInputStream(DWORD) override;
    HRESULT STDMETHODCALLTYPE MFTAddInputStreams(DWORD, DWORD *) override;
    HRESULT STDMETHODCALLTYPE MFTGetInputAvailableType(DWORD id, DWORD index, IMFMediaType **type) override;
    HRESULT STDMETHODCALLTYPE MFTGetOutputAvailableType(DWORD id, DWORD index, IMFMediaType **type) override;
    HRESULT STDMETHODCALLTYPE MFTSetInputType(DWORD, IMFMediaType *, DWORD) override;
    HRESULT STDMETHODCALLTYPE MFTSetOutputType(DWORD, IMFMediaType *, DWORD) override;
    HRESULT STDMETHODCALLTYPE MFTGetInputCurrentType(DWORD, IMFMediaType **) override;
    HRESULT STDMETHODCALLTYPE MFTGetOutputCurrentType(DWORD id, IMFMediaType **type) override;
    HRESULT STDMETHODCALLTYPE MFTGetInputStatus(DWORD, DWORD *) override;
    HRESULT STDMETHODCALLTYPE MFTGetOutputStatus(DWORD *) override;
    HRESULT STDMETHODCALLTYPE MFTSetOutputBounds(LONGLONG, LONGLONG) override;
    HRESULT STDMETHODCALLTYPE MFTProcessEvent(DWORD id, IMFMediaEvent *event) override;
    HRESULT STDMETHODCALLTYPE MFTProcessMessage(MFT_MESSAGE_TYPE, ULONG_PTR) override;
    HRESULT STDMETHODCALLTYPE MFTProcessInput(DWORD, IMFSample *, DWORD) override;
    HRESULT STDMETHODCALLTYPE MFTProcessOutput(DWORD, DWORD, MFT_OUTPUT_DATA_BUFFER *, DWORD *) override;

  protected:
    virtual ~TransformFace() = default;

    virtual IMFDeviceTransform &DeviceFace() noexcept = 0;
};

} // namespace mft_core
