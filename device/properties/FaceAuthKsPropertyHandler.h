// Face-authentication mode of the depth camera.
#pragma once

#include <memory>

#include "device/FaceAuthState.h"
#include "ks/KsCallHandler.h"

namespace mft_core
{

// Reads requests and answers them from the state that it shares with the transform. Thread-safe.
class FaceAuthKsPropertyHandler : public KsPropHandler
{
  public:
    explicit FaceAuthKsPropertyHandler(std::shared_ptr<FaceAuthState> faceAuthState);

    // Get and set, the platform's 40-byte extended control. ERROR_SET_NOT_FOUND (0x492) as a plain number while face
    // authentication is not supported. ERROR_MORE_DATA as an HRESULT below 40 bytes, E_POINTER for null arguments,
    // E_FAIL for a set while the mode is in use, E_INVALIDARG for unknown modes and requests; the mode stays then.
    HRESULT Run(PKSPROPERTY property, ULONG propertyLength, LPVOID data, ULONG dataLength,
                ULONG *bytesReturned) override;

  private:
    HRESULT Set(const void *data);
    void Get(void *data) const noexcept;

    const std::shared_ptr<FaceAuthState> state;
};

} // namespace mft_core
