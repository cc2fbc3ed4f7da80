// An IKsControl in front of another that lets observers watch what passes.
#pragma once

#include "ks/KsControlsSubject.h"
#include "base/ComObject.h"

namespace mft_core
{

// Put between a component and the control it talks to. Thread-safe as far as the target is.
class KsControlsProxy : public user_space_frameworks::ComObject<IKsControl>, public KsControlsSubject
{
  public:
    explicit KsControlsProxy(ComPtr<IKsControl> forwardTo);

    // The target's result, unchanged. E_POINTER when made without a target.
    HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY Property, ULONG PropertyLength, LPVOID PropertyData,
                                         ULONG DataLength, ULONG *BytesReturned) noexcept override;
    HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD Method, ULONG MethodLength, LPVOID MethodData, ULONG DataLength,
                                       ULONG *BytesReturned) noexcept override;
    HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT Event, ULONG EventLength, LPVOID EventData, ULONG DataLength,
                                      ULONG *BytesReturned) noexcept override;

  private:
    const ComPtr<IKsControl> target;
};

} // namespace mft_core
