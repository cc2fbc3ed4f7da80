// Forward every KS call they are given to the camera filter.
#pragma once

#include <utility>

#include "ks/KsEventHandler.h"
#include "trace/Check.h"

namespace mft_core
{

// Meant as a default handler. `Call` names the handler, its base, the method it forwards to and the text that a failure
// is logged with. Thread-safe as far as the filter is.
template <class Call>
class PassthroughKsHandler : public Call::Base
{
  public:
    explicit PassthroughKsHandler(ComPtr<IKsControl> ksControl)
        : Call::Base(GUID{}, 0, Call::kName, std::move(ksControl))
    {
    }

    // The filter's result, unchanged. E_POINTER when made without a filter.
    HRESULT Run(KSIDENTIFIER *request, ULONG requestLength, LPVOID data, ULONG dataLength,
                ULONG *bytesReturned) override
    {
        CHECK_POINTER(myKsControl);
        const HRESULT result =
            (myKsControl.Get()->*Call::kMethod)(request, requestLength, data, dataLength, bytesReturned);
        CHECK_HR_AS(Call::kText, result);
        return result;
    }

  private:
    using Call::Base::myKsControl;
};

struct ForwardedProperty
{
    using Base = KsPropHandler;
    static constexpr auto kMethod = &IKsControl::KsProperty;
    static constexpr const char *kName = "Pass Through KS Properties Handler";
    static constexpr const char *kText =
        "myKsControl->KsProperty(pProperty, ulPropertyLength, pvPropertyData, ulDataLength, pulBytesReturned)";
};

struct ForwardedMethod
{
    using Base = KsMethodHandler;
    static constexpr auto kMethod = &IKsControl::KsMethod;
    static constexpr const char *kName = "Pass Through KS Methods Handler";
    static constexpr const char *kText =
        "myKsControl->KsMethod(pMethod, ulPropertyLength, pvPropertyData, ulDataLength, pulBytesReturned)";
};

struct ForwardedEvent
{
    using Base = KsEventHandler;
    static constexpr auto kMethod = &IKsControl::KsEvent;
    static constexpr const char *kName = "Pass Through KS Events Handler";
    static constexpr const char *kText =
        "myKsControl->KsEvent(pEvent, ulEventLength, pEventData, ulDataLength, pBytesReturned)";
};

using PassthroughKsPropsHandler = PassthroughKsHandler<ForwardedProperty>;
using PassthroughKsMethodsHandler = PassthroughKsHandler<ForwardedMethod>;
using PassthroughKsEventsHandler = PassthroughKsHandler<ForwardedEvent>;

} // namespace mft_core
