// Table of the event handlers, which can also be asked to end a subscription.
#pragma once

#include "ks/KsControlDispatcher.h"
#include "ks/KsEventHandler.h"

namespace mft_core
{

// Immutable after Init.
class KsEventsDispatcher : public KsControlDispatcher<KsEventHandler>
{
  public:
    // Asks the handlers in order, not the default one. ERROR_NOT_FOUND as an HRESULT when the subscription is nobody's.
    HRESULT ResetRegularEvent(KSEVENTDATA *eventData);
};

} // namespace mft_core
