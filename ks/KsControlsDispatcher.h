// The transform's IKsControl: routes each application call to the handler that serves it.
#pragma once

#include "platform/MediaFoundation.h"

#include <memory>

#include "ks/KsControlDispatcher.h"
#include "ks/KsControlsSubject.h"
#include "ks/KsEventsDispatcher.h"

namespace mft_core
{

// Base of the device transform, which implements IUnknown and registers the handlers while it initializes; from then on
// the tables are only read. Thread-safe after that.
class KsControlsDispatcher : public IKsControl, public virtual user_space_frameworks::Object, public KsControlsSubject
{
  public:
    using ComInterface = IKsControl;

    KsControlsDispatcher();

    // The handler's result, unchanged, also where it is a positive number. A null identifier gives E_POINTER (except
    // for KsEvent), one shorter than 24 bytes E_INVALIDARG; neither reaches an observer or a handler.
    HRESULT STDMETHODCALLTYPE KsProperty(PKSPROPERTY Property, ULONG PropertyLength, LPVOID PropertyData,
                                         ULONG DataLength, ULONG *BytesReturned) noexcept override;
    HRESULT STDMETHODCALLTYPE KsMethod(PKSMETHOD Method, ULONG MethodLength, LPVOID MethodData, ULONG DataLength,
                                       ULONG *BytesReturned) noexcept override;
    // A null event ends the subscription made under the address of `EventData`.
    HRESULT STDMETHODCALLTYPE KsEvent(PKSEVENT Event, ULONG EventLength, LPVOID EventData, ULONG DataLength,
                                      ULONG *BytesReturned) noexcept override;

    // E_INVALIDARG for null, E_FAIL for a second handler of the same set and id.
    HRESULT RegisterKsPropertyHandler(const std::shared_ptr<KsPropHandler> &handler);
    HRESULT RegisterKsPropertyDefaultHandler(const std::shared_ptr<KsPropHandler> &handler);
    HRESULT RegisterKsEventHandler(const std::shared_ptr<KsEventHandler> &handler);
    HRESULT RegisterKsEventDefaultHandler(const std::shared_ptr<KsEventHandler> &handler);
    HRESULT RegisterKsMethodHandler(const std::shared_ptr<KsMethodHandler> &handler);
    HRESULT RegisterKsMethodDefaultHandler(const std::shared_ptr<KsMethodHandler> &handler);

  protected:
    // The spelling of these three is part of the interface.
    KsControlDispatcher<KsPropHandler> propertiesDispathcer;
    KsEventsDispatcher eventsDispathcer;
    KsControlDispatcher<KsMethodHandler> methodsDispathcer;

  private:
    struct CallKind;

    template <class Dispatcher>
    HRESULT DispatchCall(const CallKind &kind, Dispatcher &dispatcher, const KsCallArguments &call);
    HRESULT EndSubscription(const CallKind &kind, const KsCallArguments &call);
};

} // namespace mft_core
