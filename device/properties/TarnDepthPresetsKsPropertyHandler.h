// Private property: the depth preset that applications want.
#pragma once

#include <memory>

#include "device/TarnDepthPresets.h"
#include "ks/KsCallHandler.h"

namespace mft_core
{

// Thread-safe.
class TarnDepthPresetsKsPropertyHandler : public KsPropHandler
{
  public:
    explicit TarnDepthPresetsKsPropertyHandler(std::shared_ptr<TarnDepthPresets> controller);

    // Get and set, KSPROPERTY_TARN_DEPTH_PRESET. While face login lasts a set comes into force at its end; a get
    // answers what was set last in any case. ERROR_MORE_DATA as an HRESULT below 4 bytes, E_POINTER without a buffer,
    // E_INVALIDARG for an unknown preset and for other requests, the camera's failure; the preset stays then.
    HRESULT Run(PKSPROPERTY pProperty, ULONG ulPropertyLength, LPVOID pvPropertyData, ULONG ulDataLength,
                ULONG *pBytesReturned) override;

  private:
    const std::shared_ptr<TarnDepthPresets> depthPresetsController;
};

} // namespace mft_core
