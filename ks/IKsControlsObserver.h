// Someone who watches KS calls, for example a recorder.
#pragma once

#include "platform/MediaFoundation.h"

#include "ks/KsControlType.h"

namespace mft_core
{

// Told on the caller's thread, possibly on several at once. The blocks are the caller's: read-only, for the length of
// the notification, and any pointer may be null.
class IKsControlsObserver
{
  public:
    virtual ~IKsControlsObserver() = default;

    // Before the call runs.
    virtual void OnKsControlEntry(KsControlType, const KSIDENTIFIER * /*request*/, ULONG /*requestLength*/,
                                  const void * /*data*/, ULONG /*dataLength*/, const ULONG * /*bytesReturned*/)
    {
    }

    // After it returned.
    virtual void OnKsControlExit(KsControlType, const KSIDENTIFIER * /*request*/, ULONG /*requestLength*/,
                                 const void * /*data*/, ULONG /*dataLength*/, const ULONG * /*bytesReturned*/,
                                 HRESULT /*result*/)
    {
    }
};

} // namespace mft_core
