// Private property: confidence map on or off.
#pragma once

#include <functional>
#include <memory>

#include "device/ConfidenceMapState.h"
#include "ks/KsCallHandler.h"

namespace mft_core
{

// Reads requests and answers them from the state that the transform keeps. Thread-safe.
class TarnConfidenceMapConfig : public KsPropHandler
{
  public:
    // Changes the state, or leaves it and refuses the request with its failure.
    using SetCallback = std::function<HRESULT(bool enable)>;

    // What the callback refers to outlives the handler's last call.
    TarnConfidenceMapConfig(SetCallback onSet, std::shared_ptr<const ConfidenceMapState> mapState);

    // Get and set, KSPROPERTY_TARN_CONFIDENCE_MAP_CFG. ERROR_MORE_DATA as an HRESULT below 4 bytes, E_POINTER without a
    // buffer, the callback's failure, E_INVALIDARG for other requests. Throws std::runtime_error for a set without a
    // callback.
    HRESULT Run(PKSPROPERTY pProperty, ULONG ulPropertyLength, LPVOID pvPropertyData, ULONG ulDataLength,
                ULONG *pBytesReturned) override;

  private:
    HRESULT Set(bool nextEnabled) const;

    const SetCallback setCallback;
    const std::shared_ptr<const ConfidenceMapState> enabled;
};

} // namespace mft_core
