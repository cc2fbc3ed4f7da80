// Base of the handlers that serve KS calls: what set and id a handler stands for.
#pragma once

#include "platform/MediaFoundation.h"

#include "ks/KsControlKind.h"
#include "base/Object.h"

namespace mft_core
{

// One served identifier. Shared by the dispatcher's table and the transform that registered it. Thread-safe.
class KsControlHandler : public user_space_frameworks::Object
{
  public:
    // `ksControl` is what forwarding handlers call; others pass null.
    KsControlHandler(const GUID &set, ULONG id, KsControlKind kind, std::string handlerName,
                     ComPtr<IKsControl> ksControl);

    // Same set and id: both may not stand in one table.
    virtual bool IsSameControl(const KsControlHandler &other) const noexcept;

    // Flags are not looked at.
    virtual bool Handles(const KSIDENTIFIER &identifier) const noexcept;

    const GUID &GetSet() const noexcept
    {
        return setGuid;
    }

  private:
    const GUID setGuid;
    const ULONG controlId;

  protected:
    const ComPtr<IKsControl> myKsControl;
};

} // namespace mft_core
