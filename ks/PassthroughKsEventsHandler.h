// Forwards every KS event it is given to the camera filter.
#pragma once

#include "ks/KsEventHandler.h"

namespace mft_core
{

// Meant as a default handler. Thread-safe as far as the filter is.
class PassthroughKsEventsHandler : public KsEventHandler
{
  public:
    explicit PassthroughKsEventsHandler(ComPtr<IKsControl> ksControl);

    // The filter's result, unchanged. E_POINTER when made without a filter.
    HRESULT Run(PKSEVENT pEvent, ULONG ulEventLength, LPVOID pEventData, ULONG ulDataLength,
                ULONG *pBytesReturned) override;
};

} // namespace mft_core
