// Someone who wants to hear each time the camera signals an event.
#pragma once

#include "base/Object.h"

namespace mft_core
{

// Called on a work-queue thread, without any lock of the listener. Must not stop the listener from within: the stop
// would wait for the notification that makes it.
class KsEventsObserver : public user_space_frameworks::Object
{
  public:
    using Object::Object;

    virtual void OnEvent() = 0;
};

} // namespace mft_core
