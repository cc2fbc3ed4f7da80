// Forwards all properties of one set to another control, for example the extension unit.
#pragma once

#include "ks/KsCallHandler.h"

namespace mft_core
{

// Shadows later handlers of the same set. Thread-safe as far as the target is.
class CompleteSetPropsHandler : public KsPropHandler
{
  public:
    CompleteSetPropsHandler(ComPtr<IKsControl> ksControl, const GUID &set);

    // True for every id of the set.
    bool Handles(const KSIDENTIFIER &identifier) const noexcept override;

    // The target's result, unchanged. E_POINTER when made without a target.
    HRESULT Run(PKSPROPERTY pProperty, ULONG ulPropertyLength, LPVOID pPropertyData, ULONG ulDataLength,
                ULONG *pBytesReturned) override;

    // Same set, whatever the ids.
    virtual bool IsSameSet(const KsControlHandler &other) const noexcept;
};

} // namespace mft_core
