#include "core/AutoUpdateListening.h"

#include <utility>

#include "base/HResultFromWin32.h"
#include "trace/Check.h"

namespace mft_core
{

AutoUpdateListening::~AutoUpdateListening()
{
    End();
}

HRESULT AutoUpdateListening::Init(IKsControl *filterKsControl, const std::string &ownerName)
{
    const auto autoUpdateEventListener = user_space_frameworks::MakeCom<KsEventListener>(
        KSEVENTSETID_VIDCAPTOSTI, KSEVENT_VIDCAP_AUTO_UPDATE, ownerName + " Auto Update Event Listener");
    CHECK_POINTER(autoUpdateEventListener);
    CHECK_HR(autoUpdateEventListener->Init(filterKsControl));
    listener = autoUpdateEventListener;
    return S_OK;
}

HRESULT AutoUpdateListening::RegisterObserver(std::shared_ptr<KsEventsObserver> observer)
{
    return listener ? listener->RegisterObserver(std::move(observer)) : E_UNEXPECTED;
}

void AutoUpdateListening::UnregisterObserver(const std::shared_ptr<KsEventsObserver> &observer)
{
    if (listener)
    {
        listener->UnregisterObserver(observer);
    }
}

HRESULT AutoUpdateListening::Start()
{
    if (!listener || listener->IsStarted()) // by another output
    {
        return S_OK;
    }
    CHECK_HR_AS("autoUpdateEventListener->Stop()", listener->Stop());
    const HRESULT listening = listener->Start();
    switch (listening)
    {
    case E_NOTIMPL: // a camera without the event streams without it
    case mft_utils::HResultFromWin32(ERROR_SET_NOT_FOUND):
    case mft_utils::HResultFromWin32(ERROR_NOT_FOUND):
        TRACE_INFO("%s: the camera has no such event", listener->GetName());
        return S_OK;
    default:
        CHECK_HR_AS("autoUpdateEventListener->Start()", listening);
        return S_OK;
    }
}

void AutoUpdateListening::Stop()
{
    if (!listener)
    {
        return;
    }
    if (const HRESULT stopped = listener->Stop(); FAILED(stopped))
    {
        TRACE_ERROR("%s: did not stop, hr 0x%08lX", listener->GetName(), static_cast<unsigned long>(stopped));
    }
}

void AutoUpdateListening::End()
{
    if (!listener)
    {
        return;
    }
    // It refers to itself until then.
    if (const HRESULT ended = listener->Uninit(); FAILED(ended))
    {
        TRACE_ERROR("%s: did not end, hr 0x%08lX", listener->GetName(), static_cast<unsigned long>(ended));
    }
    listener.Reset();
}

} // namespace mft_core
