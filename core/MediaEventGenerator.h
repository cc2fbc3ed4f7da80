// Event queue of a device transform (IMFMediaEventGenerator).
#pragma once

#include "platform/MediaFoundation.h"

#include "core/RecordedPart.h"
#include "base/CriticalSection.h"

namespace mft_core
{

// Base of the device transform, which supplies IUnknown. Thread-safe; its lock is taken after a stream's lock.
class MediaEventGenerator : public IMFMediaEventGenerator, public virtual RecordedPart
{
  public:
    using ComInterface = IMFMediaEventGenerator;

    // All four: E_OUTOFMEMORY when the queue could not be created, MF_E_SHUTDOWN after Shutdown.
    HRESULT STDMETHODCALLTYPE GetEvent(DWORD dwFlags, IMFMediaEvent **ppEvent) override;
    HRESULT STDMETHODCALLTYPE BeginGetEvent(IMFAsyncCallback *pCallback, IUnknown *punkState) override;
    HRESULT STDMETHODCALLTYPE EndGetEvent(IMFAsyncResult *pResult, IMFMediaEvent **ppEvent) override;
    HRESULT STDMETHODCALLTYPE QueueEvent(MediaEventType met, REFGUID guidExtendedType, HRESULT hrStatus,
                                         const PROPVARIANT *pvValue) override;

    // The transform's own events. All fail as QueueEvent does.
    HRESULT Raise(MediaEventType type, REFGUID extendedType = {}, HRESULT status = S_OK,
                  const PROPVARIANT *value = nullptr);
    HRESULT Raise(IMFMediaEvent *event);
    // METransformHaveOutput, of which a recording says for what output and sample.
    HRESULT RaiseHaveOutput(UINT32 streamId, IMFSample *sample);
    // For a recording: nobody will come for what this output held. To be called under the output's lock.
    void TellEmptied(UINT32 streamId) const noexcept;

    // Wakes every waiter with MF_E_SHUTDOWN. MF_E_SHUTDOWN when already shut down.
    HRESULT Shutdown();

  protected:
    MediaEventGenerator();

    bool IsShutdown() const;

  private:
    template <class Given, class Taken, class Body>
    HRESULT FetchEvent(std::uint16_t call, Given &&given, Taken &&taken, Body &&body,
                       std::source_location location = std::source_location::current()) noexcept;
    HRESULT CheckUsable() const TARN_REQUIRES(lock);
    template <class Describe>
    HRESULT RaiseRecorded(MediaEventType type, REFGUID extendedType, HRESULT status, const PROPVARIANT *value,
                          Describe &&describe);

    mutable user_space_frameworks::CriticalSection lock;
    ComPtr<IMFMediaEventQueue> pQueue TARN_GUARDED_BY(lock);
    bool shutdown TARN_GUARDED_BY(lock) = false;
    bool initialized = false;
};

} // namespace mft_core
