// Private property: version of the application interface.
#pragma once

#include "ks/KsCallHandler.h"

namespace mft_core
{

// Thread-safe.
class TarnApiVersion : public KsPropHandler
{
  public:
    TarnApiVersion();

    // Get only, KSPROPERTY_TARN_API_VERSION. ERROR_MORE_DATA as an HRESULT below 8 bytes, E_UNEXPECTED for a set,
    // E_INVALIDARG for other requests.
    HRESULT Run(PKSPROPERTY pProperty, ULONG ulPropertyLength, LPVOID pvPropertyData, ULONG ulDataLength,
                ULONG *pBytesReturned) override;
};

} // namespace mft_core
