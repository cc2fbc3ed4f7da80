// Base of the handlers that serve KS events: holds the subscriber's duplicated event handle.
#pragma once

#include "ks/KsCallHandler.h"
#include "base/CriticalSection.h"
#include "base/UniqueHandle.h"

namespace mft_core
{

// Derive, pass set, id and name, override Run. One subscriber at a time. Thread-safe: an application arms the handler
// while the device side fires it.
class KsEventHandler : public KsCallHandler<KsControlKind::Event>
{
  public:
    using KsCallHandler::KsCallHandler;

    // Ends the subscription made under this address (which is compared and never read). ERROR_NOT_FOUND as an HRESULT
    // when it is not this handler's.
    virtual HRESULT AttemptToResetRegularEvent(KSEVENTDATA *eventData);

    // Keeps a duplicate of the subscriber's event. ERROR_INVALID_STATE as an HRESULT while one is held; the failure of
    // DuplicateHandle otherwise.
    HRESULT DuplicateEventHandle(HANDLE event);

  protected:
    // Arms the handler with the event in `pEventData`. E_INVALIDARG when the block is missing or too short.
    HRESULT Subscribe(LPVOID pEventData, ULONG ulDataLength);

    user_space_frameworks::CriticalSection lock;
    user_space_frameworks::UniqueHandle eventHandle TARN_GUARDED_BY(lock);
};

} // namespace mft_core
