// Serves an event that a subscriber hears once.
#pragma once

#include "ks/KsEventHandler.h"

namespace mft_core
{

// Armed by a one-shot request, disarmed by firing. Thread-safe.
class OneShotKsEventHandler : public KsEventHandler
{
  public:
    using KsEventHandler::KsEventHandler;

    // E_INVALIDARG for missing arguments, E_NOTIMPL for anything but a one-shot request, ERROR_INVALID_STATE as an
    // HRESULT while armed.
    HRESULT Run(PKSEVENT pEvent, ULONG ulEventLength, LPVOID pEventData, ULONG ulDataLength,
                ULONG *pBytesReturned) override;

    // Fires. ERROR_INVALID_STATE as an HRESULT without a subscriber; a failed signal keeps the subscriber.
    HRESULT Set();
};

} // namespace mft_core
