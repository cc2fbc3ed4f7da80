// Base of every device transform: the COM surface, the streams and the connection to the camera filter.
#pragma once

#include "platform/DeviceTransform.h"

#include <atomic>
#include <functional>
#include <memory>
#include <source_location>
#include <string>
#include <vector>

#include "core/AutoUpdateListening.h"
#include "core/InputStream.h"
#include "core/MediaEventGenerator.h"
#include "core/OutputStream.h"
#include "core/RealTimeClient.h"
#include "core/SampleAllocatorControl.h"
#include "core/StreamTable.h"
#include "core/TransformFace.h"
#include "ks/ExtensionUnitKsControl.h"
#include "ks/KsControlsDispatcher.h"
#include "base/ComObject.h"

namespace mft_core
{

// Made by its creator with one reference; the pipeline owns it. Streams and KS handlers are immutable after Init.
// Thread-safe; changes of output states are serialised by a lock that no work item takes.
class DeviceMft
    : public user_space_frameworks::ComObject<IMFDeviceTransform, TransformFace, IMFShutdown, MediaEventGenerator,
                                              RealTimeClient, SampleAllocatorControl, KsControlsDispatcher>
{
  public:
    // IMFDeviceTransform
    // E_INVALIDARG without attributes, MF_E_ALREADY_INITIALIZED on a second call. After another failure the object is
    // only good for release.
    HRESULT STDMETHODCALLTYPE InitializeTransform(IMFAttributes *pAttributes) override;
    HRESULT STDMETHODCALLTYPE GetInputAvailableType(DWORD dwInputStreamID, DWORD dwTypeIndex,
                                                    IMFMediaType **ppMediaType) override;
    HRESULT STDMETHODCALLTYPE GetInputCurrentType(DWORD dwInputStreamID, IMFMediaType **ppMediaType) override;
    HRESULT STDMETHODCALLTYPE GetInputStreamAttributes(DWORD dwInputStreamID, IMFAttributes **ppAttributes) override;
    HRESULT STDMETHODCALLTYPE GetOutputAvailableType(DWORD dwOutputStreamID, DWORD dwTypeIndex,
                                                     IMFMediaType **ppMediaType) override;
    HRESULT STDMETHODCALLTYPE GetOutputCurrentType(DWORD dwOutputStreamID, IMFMediaType **ppMediaType) override;
    HRESULT STDMETHODCALLTYPE GetOutputStreamAttributes(DWORD dwOutputStreamID, IMFAttributes **ppAttributes) override;
    HRESULT STDMETHODCALLTYPE GetStreamCount(DWORD *pdwInputStreams, DWORD *pdwOutputStreams) override;
    HRESULT STDMETHODCALLTYPE GetStreamIDs(DWORD inSize, DWORD *pInIds, DWORD outSize, DWORD *pOutIds) override;
    HRESULT STDMETHODCALLTYPE ProcessEvent(DWORD dwInputStreamID, IMFMediaEvent *pEvent) override;
    HRESULT STDMETHODCALLTYPE ProcessInput(DWORD dwInputStreamID, IMFSample *pSample, DWORD dwFlags) override;
    HRESULT STDMETHODCALLTYPE ProcessMessage(MFT_MESSAGE_TYPE eMessage, ULONG_PTR ulParam) override;
    HRESULT STDMETHODCALLTYPE ProcessOutput(DWORD dwFlags, DWORD cOutputBufferCount,
                                            MFT_OUTPUT_DATA_BUFFER *pOutputSamples, DWORD *pdwStatus) override;
    HRESULT STDMETHODCALLTYPE SetInputStreamState(DWORD dwStreamID, IMFMediaType *pMediaType, DeviceStreamState value,
                                                  DWORD dwFlags) override;
    HRESULT STDMETHODCALLTYPE GetInputStreamState(DWORD dwStreamID, DeviceStreamState *value) override;
    HRESULT STDMETHODCALLTYPE SetOutputStreamState(DWORD dwStreamID, IMFMediaType *pMediaType, DeviceStreamState value,
                                                   DWORD dwFlags) override;
    HRESULT STDMETHODCALLTYPE GetOutputStreamState(DWORD dwStreamID, DeviceStreamState *value) override;
    HRESULT STDMETHODCALLTYPE GetInputStreamPreferredState(DWORD dwStreamID, DeviceStreamState *value,
                                                           IMFMediaType **ppMediaType) override;
    HRESULT STDMETHODCALLTYPE FlushInputStream(DWORD dwStreamIndex, DWORD dwFlags) override;
    HRESULT STDMETHODCALLTYPE FlushOutputStream(DWORD dwStreamIndex, DWORD dwFlags) override;

    // IMFTransform, beyond TransformFace
    HRESULT STDMETHODCALLTYPE GetAttributes(IMFAttributes **pAttributes) override;

    // IMFShutdown
    HRESULT STDMETHODCALLTYPE Shutdown() override;
    HRESULT STDMETHODCALLTYPE GetShutdownStatus(MFSHUTDOWN_STATUS *pStatus) override;

  protected:
    // `extensionUnitSet` is the property set of the device's extension unit, null for a device without one;
    // `extensionUnitControl` is any control that the unit has.
    // What is recorded goes to `recordingFolder`, when that is there now.
    explicit DeviceMft(const std::string &objectName, const GUID &extensionUnitSet = {}, ULONG extensionUnitControl = 0,
                       const wchar_t *recordingFolder = mft_der::kRecordingFolder);
    ~DeviceMft() override;

    // Frame of InitializeTransform, here and in classes that extend it: one call in recordings.
    HRESULT Initialize(IMFAttributes *filterAttributes, const std::function<HRESULT()> &body,
                       std::source_location location = std::source_location::current()) noexcept;

    // Hooks, in the order in which InitializeTransform and the streams use them.
    virtual HRESULT CreateAttributes();
    // Spelling is part of the interface. Registers the pass-through default handlers; overrides call it first.
    virtual HRESULT RegisterKsControlHandlres();
    // Called last by InitializeTransform; its result is ignored.
    virtual HRESULT OnTransformInitialized();
    virtual HRESULT CreateInputStreams();
    // Media subtypes that input streams leave out.
    virtual std::vector<GUID> GetExcludedSubtypes();
    virtual HRESULT StartOutputStream(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType)
        TARN_REQUIRES(stateChangeLock) = 0;
    virtual HRESULT StopOutputStream(const std::shared_ptr<OutputStream> &outputStream, IMFMediaType *nextMediaType)
        TARN_REQUIRES(stateChangeLock) = 0;
    virtual CameraBlob CreateIntrinsics(const MediaTypeList &mtList, UINT32 inputStreamId);
    virtual CameraBlob CreateExtrinsics(UINT32 inputStreamId);
    virtual HRESULT CreateOutputStream(const std::shared_ptr<InputStream> &inputStream);
    virtual HRESULT InitOutputStreamConfiguration(OutputStreamConfiguration &configuration,
                                                  const std::shared_ptr<InputStream> &inputStream);
    virtual HRESULT ExtractFilterInfo(IMFAttributes *filterAttributes);
    // Runs when the filter's interfaces are known; overrides call it first, then create their components.
    virtual HRESULT InitializeMembers();
    // Overrides release their components, then call it. May run more than once.
    virtual HRESULT UninitializeMembers() TARN_REQUIRES(stateChangeLock);

    // Starts the output, and the listener when the output did not run before. When nothing runs after a failure the
    // listener does not either. Call under stateChangeLock.
    HRESULT StartWithListener(const std::shared_ptr<OutputStream> &stream, IMFMediaType *nextMediaType,
                              DeviceStreamState previous) TARN_REQUIRES(stateChangeLock);

    // Throws std::logic_error("stream id mismatch") when the stream's id is not its position.
    void AppendOutputStream(std::shared_ptr<OutputStream> stream);

    StreamTable<InputStream> inputStreams;
    StreamTable<OutputStream> outputStreams;
    ComPtr<IMFAttributes> attributes;
    ComPtr<IMFTransform> sourceTransform;
    ComPtr<IKsControl> filterKsControl;

    const GUID deviceXuSetId;
    ComPtr<ExtensionUnitKsControl> deviceXuKsControl; // answers E_NOINTERFACE when the camera has no such unit
    ComPtr<ExtensionUnitKsControl> msXuKsControl;     // Microsoft's camera-control unit, likewise
    // Runs from the start of an output to the next stop of any. Ends with Shutdown.
    AutoUpdateListening autoUpdateEventListener TARN_GUARDED_BY(stateChangeLock);

    // Serialises changes of output states and shutdown, and what applications change of them. Taken before every other
    // lock.
    user_space_frameworks::CriticalSection stateChangeLock;

    // Whether the output's samples are new ones; otherwise those of the input at its place come out.
    virtual bool Allocates(const OutputStream &outputStream) const;

    // Whether the recorder must leave out the pixels of an input; null asks for an output, which is private too when
    // the input of its time was.
    virtual bool IsPrivate(IMFSample *input);

  private:
    IMFDeviceTransform &DeviceFace() noexcept override;
    HRESULT FindOutlet(DWORD outputStreamId, Outlet &outlet) const override;

    void RecordOutput(mft_der::RecordBuilder &values, const MFT_OUTPUT_DATA_BUFFER &buffer, bool isFilled);
    HRESULT GetFilterStreamIds(std::vector<DWORD> &ids);
    HRESULT ChangeOutputStreamState(DWORD streamId, IMFMediaType *nextMediaType, DeviceStreamState value)
        TARN_REQUIRES(stateChangeLock);
    HRESULT StopAndReport(const std::shared_ptr<OutputStream> &stream, IMFMediaType *nextMediaType)
        TARN_REQUIRES(stateChangeLock);
    bool AnyOutputRuns() const;
    HRESULT FlushAllStreams();
    HRESULT RedirectCallToInputStream(DWORD streamId, const std::function<HRESULT(InputStream &stream)> &body);
    HRESULT RedirectCallToOutputStream(DWORD streamId, const std::function<HRESULT(OutputStream &stream)> &body);

    const ULONG deviceXuKnownControl;
    std::atomic<bool> initializationBegun{false};
    std::atomic<DWORD> initializingThread{0};
};

} // namespace mft_core
