// Scoped owner of a variant value.
#pragma once

#include <windows.h>

#include <propidl.h>

namespace mft_utils
{

// Cleared when destroyed. Confined.
class PropVariant
{
  public:
    PropVariant() noexcept
    {
        PropVariantInit(&value);
    }
    ~PropVariant()
    {
        PropVariantClear(&value);
    }
    PropVariant(const PropVariant &) = delete;
    PropVariant &operator=(const PropVariant &) = delete;

    const PROPVARIANT &Get() const noexcept
    {
        return value;
    }

    // For functions that fill it in; lets go of the present value first.
    PROPVARIANT *Receive() noexcept
    {
        PropVariantClear(&value);
        return &value;
    }

  private:
    PROPVARIANT value;
};

} // namespace mft_utils
