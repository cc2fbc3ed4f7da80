// Answers the warm-start control for a camera that cannot warm start.
#pragma once

#include "ks/KsCallHandler.h"

namespace mft_core
{

// Accepts "off", refuses "on", stores nothing. Thread-safe.
class WarmStartKsPropsHandler : public KsPropHandler
{
  public:
    WarmStartKsPropsHandler();

    // ERROR_MORE_DATA as an HRESULT below 40 bytes, E_INVALIDARG for a request to switch warm start on.
    HRESULT Run(PKSPROPERTY pProperty, ULONG ulPropertyLength, LPVOID pvPropertyData, ULONG ulDataLength,
                ULONG *pulBytesReturned) override;

  private:
    HRESULT Set(const void *data);
    HRESULT Get(void *data);
};

} // namespace mft_core
