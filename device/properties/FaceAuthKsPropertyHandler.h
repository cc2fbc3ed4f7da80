// Face-authentication mode of the depth camera.
#pragma once

#include <atomic>

#include "ks/KsCallHandler.h"
#include "base/CriticalSection.h"

namespace mft_core
{

// The transform reads the mode when it builds an infrared topology and says when it may change. Thread-safe.
class FaceAuthKsPropertyHandler : public KsPropHandler
{
  public:
    FaceAuthKsPropertyHandler();

    // Get and set, the platform's 40-byte extended control. ERROR_SET_NOT_FOUND (0x492) as a plain number while face
    // authentication is not supported. ERROR_MORE_DATA as an HRESULT below 40 bytes, E_POINTER for null arguments,
    // E_FAIL for a set while the mode is in use, E_INVALIDARG for unknown modes and requests; the mode stays then.
    HRESULT Run(PKSPROPERTY property, ULONG propertyLength, LPVOID data, ULONG dataLength,
                ULONG *bytesReturned) override;

    // Returns what held before. After a "no" the mode stays: a set that was under way has ended.
    bool AllowModeChange(bool allowed);

    std::atomic<bool> faceAuthMode{false};
    std::atomic<bool> canChangeMode{true};
    std::atomic<bool> faceAuthSupported{false};

  private:
    HRESULT Set(const void *data);
    void Get(void *data) const noexcept;

    user_space_frameworks::CriticalSection lock; // held from the question whether the mode may change to its change
};

} // namespace mft_core
