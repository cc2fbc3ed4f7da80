// Says in the trace which error the camera's firmware reports.
#pragma once

#include "platform/MediaFoundation.h"

#include <string>

#include "ks/KsEventsObserver.h"
#include "ks/UvcCommand.h"

namespace mft_core
{

// Observes the auto-update event. Shared by the transform and its event listener. Thread-safe.
class TarnFwErrorHandler : public KsEventsObserver
{
  public:
    // `errorControlId` is the error control of the extension unit.
    TarnFwErrorHandler(ComPtr<IKsControl> extensionUnit, const GUID &set, ULONG errorControlId,
                       const std::string &ownerName);

    void OnEvent() override;

  private:
    HRESULT TraceError();

    UvcCommand errorControl;
};

} // namespace mft_core
