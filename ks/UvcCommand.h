// One extension-unit control used as a raw buffer.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstddef>

#include "base/Object.h"

namespace mft_core
{

// Takes no lock: who needs a write and its read kept together sees to it. Thread-safe as far as the control is.
class UvcCommand : public user_space_frameworks::Object
{
  public:
    UvcCommand(ComPtr<IKsControl> targetKsControl, const GUID &set, ULONG id, std::string objectName);

    // The control's failure, unchanged. E_POINTER when made without a control.
    HRESULT Set(const void *buffer, std::size_t length);

    // The same; `bytesReturned` is what the control says and may exceed `length` when the camera errs.
    HRESULT Get(void *buffer, std::size_t length, ULONG &bytesReturned);

  private:
    KSPROPERTY Request(ULONG flags) const noexcept;

    const ComPtr<IKsControl> ksControl;
    const GUID setGuid;
    const ULONG controlId;
};

} // namespace mft_core
