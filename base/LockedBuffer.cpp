#include "base/LockedBuffer.h"

namespace user_space_frameworks
{

LockedBuffer::~LockedBuffer()
{
    if (locked)
    {
        locked->Unlock();
    }
}

HRESULT LockedBuffer::Lock(IMFMediaBuffer *mediaBuffer) noexcept
{
    BYTE *bytes = nullptr;
    DWORD room = 0;
    DWORD count = 0;
    const HRESULT result = mediaBuffer->Lock(&bytes, &room, &count);
    if (FAILED(result))
    {
        return result;
    }
    if (bytes == nullptr && count != 0)
    {
        mediaBuffer->Unlock();
        return E_UNEXPECTED;
    }
    locked = mediaBuffer;
    data = bytes;
    length = count;
    capacity = bytes == nullptr ? 0 : room;
    return S_OK;
}

} // namespace user_space_frameworks
