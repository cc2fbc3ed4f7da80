// Serves an event that a subscriber enables and may disable again.
#pragma once

#include "ks/KsEventHandler.h"

namespace mft_core
{

// Armed by an enable request, disarmed by firing or by a reset. Thread-safe.
class RegularKsEventHandler : public KsEventHandler
{
  public:
    using KsEventHandler::KsEventHandler;

    // E_INVALIDARG for missing arguments, E_NOTIMPL for anything but an enable request, ERROR_INVALID_STATE as an
    // HRESULT while armed.
    HRESULT Run(PKSEVENT pEvent, ULONG ulEventLength, LPVOID pEventData, ULONG ulDataLength,
                ULONG *pBytesReturned) override;

    HRESULT AttemptToResetRegularEvent(KSEVENTDATA *eventData) override;

    // Fires and ends the subscription; the duplicated handle stays open by contract. S_OK also when signalling fails
    // (traced); ERROR_INVALID_STATE as an HRESULT without a subscriber.
    HRESULT Set();

    // The same as AttemptToResetRegularEvent.
    HRESULT Reset(KSEVENTDATA *eventData);

  protected:
    // Compared by address only, never read. Run leaves it null; a derived handler that lets its subscriber disable the
    // event by address records it here.
    KSEVENTDATA *registeredEventData TARN_GUARDED_BY(lock) = nullptr;
};

} // namespace mft_core
