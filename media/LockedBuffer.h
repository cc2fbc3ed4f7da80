// Scoped lock of a media buffer whose failure is a result, not an exception.
#pragma once

#include "platform/MediaFoundation.h"

namespace mft_core
{

// Keeps the buffer alive and locked from a successful Lock to destruction. Confined.
class LockedBuffer
{
  public:
    LockedBuffer() = default;
    ~LockedBuffer();
    LockedBuffer(const LockedBuffer &) = delete;
    LockedBuffer &operator=(const LockedBuffer &) = delete;

    // Once per object. The buffer's own failure, or E_UNEXPECTED for a null pointer to data; nothing is locked then.
    HRESULT Lock(IMFMediaBuffer *mediaBuffer) noexcept;

    BYTE *data = nullptr;
    DWORD length = 0; // bytes that hold data

  private:
    ComPtr<IMFMediaBuffer> locked;
};

} // namespace mft_core
