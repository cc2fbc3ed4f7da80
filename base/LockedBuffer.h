// Scoped lock of a media buffer.
#pragma once

#include "platform/MediaFoundation.h"

namespace user_space_frameworks
{

// Keeps the buffer alive and locked from a successful Lock to destruction. Confined.
class LockedBuffer
{
  public:
    LockedBuffer() = default;
    ~LockedBuffer();
    LockedBuffer(const LockedBuffer &) = delete;
    LockedBuffer &operator=(const LockedBuffer &) = delete;

    // Once per object. The buffer's own failure, or E_UNEXPECTED for data that lie nowhere; nothing is locked then.
    HRESULT Lock(IMFMediaBuffer *mediaBuffer) noexcept;

    BYTE *data = nullptr;
    DWORD length = 0;   // bytes that hold data: the buffer's current length
    DWORD capacity = 0; // bytes that it has room for

  private:
    ComPtr<IMFMediaBuffer> locked;
};

} // namespace user_space_frameworks
