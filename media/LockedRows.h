// Scoped lock of the rows of a buffer that is written.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstddef>

namespace mft_core
{

// Keeps the buffer alive and locked from a successful Lock to destruction. Confined.
class LockedRows
{
  public:
    LockedRows() = default;
    ~LockedRows();
    LockedRows(const LockedRows &) = delete;
    LockedRows &operator=(const LockedRows &) = delete;

    // Once per object. Where the buffer is two-dimensional the memory itself: a linear lock of it would be a copy.
    // MF_E_BUFFERTOOSMALL when it does not hold `rows` rows of `rowBytes`, or the buffer's own failure; nothing is
    // locked then.
    HRESULT Lock(IMFMediaBuffer *mediaBuffer, DWORD rowBytes, DWORD rows) noexcept;

    BYTE *first = nullptr;
    std::ptrdiff_t pitchBytes = 0; // below 0 where the last row comes first

  private:
    HRESULT LockPlane(DWORD rowBytes, DWORD rows) noexcept;
    HRESULT LockLinear(IMFMediaBuffer *mediaBuffer, DWORD rowBytes, DWORD rows) noexcept;

    ComPtr<IMF2DBuffer2> plane;
    ComPtr<IMFMediaBuffer> linear;
};

} // namespace mft_core
