// Forwards every KS property it is given to the camera filter.
#pragma once

#include "ks/KsPropHandler.h"

namespace mft_core
{

// Meant as a default handler. Thread-safe as far as the filter is.
class PassthroughKsPropsHandler : public KsPropHandler
{
  public:
    explicit PassthroughKsPropsHandler(ComPtr<IKsControl> ksControl);

    // The filter's result, unchanged. E_POINTER when made without a filter.
    HRESULT Run(PKSPROPERTY pProperty, ULONG ulPropertyLength, LPVOID pvPropertyData, ULONG ulDataLength,
                ULONG *pulBytesReturned) override;
};

} // namespace mft_core
