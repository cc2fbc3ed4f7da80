// Forwards every KS method it is given to the camera filter.
#pragma once

#include "ks/KsMethodHandler.h"

namespace mft_core
{

// Meant as a default handler. Thread-safe as far as the filter is.
class PassthroughKsMethodsHandler : public KsMethodHandler
{
  public:
    explicit PassthroughKsMethodsHandler(ComPtr<IKsControl> ksControl);

    // The filter's result, unchanged. E_POINTER when made without a filter.
    HRESULT Run(PKSMETHOD pMethod, ULONG ulPropertyLength, LPVOID pvPropertyData, ULONG ulDataLength,
                ULONG *pulBytesReturned) override;
};

} // namespace mft_core
